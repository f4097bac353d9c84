#pragma once

#include <optional>
#include <string>

#include "velmo/foundation/URLRequest.h"
#include "velmo/foundation/VPError.h"

namespace velmo {

/// The blocking request of the platform's old connection class, still used by a few callers
/// that run on background queues.
class URLConnection {
public:
    /// `+sendSynchronousRequest:returningResponse:error:`: runs the request and blocks the calling
    /// thread until it ends. Stores the response and the error where asked; gives the body, or
    /// nothing when there was an error. An HTTP status is not an error here. It runs on the HTTP
    /// engine, so it speaks http and https only (any other scheme, file:// too, is an unsupported
    /// URL) and fails as the engine's transfers do. Never call it on the main thread: it waits for
    /// the network.
    static std::optional<std::string> sendSynchronousRequest(const URLRequest& request,
                                                             HTTPURLResponse* response, VPErrorPtr* error);
};

} // namespace velmo
