#pragma once

#include <string>

#include "velmo/foundation/VPError.h"

namespace velmo {

/// A transfer failure of libcurl as an error of the URL error domain, with the failing URL in
/// the user information. `curlCode` is a CURLcode; `detail` the transfer's own message.
VPErrorPtr urlErrorForCurlCode(int curlCode, const std::string& url, const std::string& detail);

} // namespace velmo
