#pragma once

#include <string>

namespace velmo {

/// Random (version 4) UUIDs, through libuuid.
class Uuid {
public:
    /// Canonical text in upper case, as the platform prints a UUID.
    static std::string string();
    /// Canonical text in lower case.
    static std::string lowercaseString();
};

} // namespace velmo
