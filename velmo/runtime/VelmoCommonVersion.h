#pragma once

#include <string>

namespace velmo {

/// The library's version, as the build gives it ("0.1.0").
std::string velmoCommonVersion();

} // namespace velmo
