#pragma once

#include <memory>

#include "velmo/foundation/Object.h"

namespace velmo {

/// Access to the host's crash reporter client.
class VPRaven {
public:
    /// The crash reporter client, or nullptr. Hosts on this platform have no crash reporter for
    /// the library to reach, so the answer is always nullptr; callers already cope with that.
    static std::shared_ptr<Object> velmoRaven();
};

} // namespace velmo
