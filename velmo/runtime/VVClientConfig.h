#pragma once

#include "velmo/runtime/VVClientConfigInterface.h"

namespace velmo {

/// Reading the host's client configuration.
class VVClientConfig {
public:
    /// The class bound to "VVClientConfigInterface" when it implements the interface; otherwise a
    /// configuration that answers empty values, so callers need no test.
    static const VVClientConfigInterface& current();
    /// True when a class that implements the interface is bound.
    static bool isBound();
};

} // namespace velmo
