#pragma once

#include <cstddef>
#include <string>

namespace velmo::bench {

/// Document-shaped JSON for benchmarks: screens whose views nest `depth` levels deep, each view
/// with an identifier, a name, a frame, colours, a specification record, a constraint set and a
/// few plain values, as an exporter writes them. The top level is a view holding the screens as
/// its subviews.
struct DocumentShape {
    std::size_t views = 10'000;
    std::size_t depth = 6;
    /// Subviews per view below the screens.
    std::size_t fanOut = 4;
};

std::string generateDocumentJson(const DocumentShape& shape);
/// Views enough for about `bytes` of JSON.
std::string generateDocumentJsonOfSize(std::size_t bytes);

} // namespace velmo::bench
