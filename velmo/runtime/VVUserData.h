#pragma once

#include <memory>
#include <string>

#include "velmo/foundation/Object.h"

namespace velmo {

/// The signed-in user, as the host knows them: an instance the host binds to "VVUserData".
/// An empty string means unknown. Read from any thread.
class VVUserData : public Object {
public:
    virtual std::string userEmail() const = 0;
    virtual std::string userID() const = 0;

    /// The bound instance, or nullptr when the host bound none (or something else).
    static std::shared_ptr<VVUserData> current();
};

} // namespace velmo
