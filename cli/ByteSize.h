#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmo::cli {

/// A number of bytes with an optional binary suffix: "1024", "500K", "500M", "2G", "1T" (also
/// "2GB", "2GiB", any case). Nothing for other text or a size beyond 64 bits.
std::optional<std::uint64_t> parseByteSize(std::string_view text);

/// The shortest such text for a size: "4G", "1536M", "17".
std::string byteSizeText(std::uint64_t bytes);

} // namespace velmo::cli
