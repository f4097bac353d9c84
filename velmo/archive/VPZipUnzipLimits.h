#pragma once

#include <cstdint>
#include <limits>

namespace velmo {

/// Bounds on what one unpacking run writes, against archives that expand beyond reason. A run
/// that would pass one stops with the unpacking-limit error (-7): before it writes anything when
/// the archive declares the sizes, as soon as it happens when the data exceeds what the archive
/// declares. Inner archives share the run's bounds: each gets what is left of the total, what it
/// writes counts toward it (as does the inner archive itself), and an inner archive that passes
/// a bound ends the whole run. No limits by default.
struct VPZipUnzipLimits {
    std::uint64_t maxEntrySize = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t maxTotalSize = std::numeric_limits<std::uint64_t>::max();
};

} // namespace velmo
