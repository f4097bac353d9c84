#pragma once

#include <filesystem>
#include <string>

namespace velmo::cli {

/// Why files can't be made in `folder`, in the system's words ("Permission denied", "Not a
/// directory"), or "" when they can. With `mayBeMade`, a missing folder is judged by the nearest
/// folder above it that exists, in which it would be made.
std::string unwritableReason(std::filesystem::path folder, bool mayBeMade);

} // namespace velmo::cli
