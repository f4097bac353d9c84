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

/// A whole document as the editor saves it: a `VDModelApp` with its theme, links and two free
/// views, and `screens` `VDModelScreen`s. Each screen holds `viewsPerScreen` views below it, of
/// the same kind as above, nesting `depth` levels with `fanOut` subviews to a view; two states
/// ("compact", "expanded") whose change sets touch every tenth view; and two transitions (the
/// initial look to "compact" on a click, "compact" to "expanded" on a hover), each with a
/// listener and one timeline of one keyframe for every path either state touches. Views and
/// transitions carry readable identifiers ("View_12", "Transition_3"), as a document hands them
/// out; listeners, timelines and keyframes the long form that objects made outside a document
/// get. No identifier is used twice.
struct AppShape {
    std::size_t screens = 500;
    std::size_t viewsPerScreen = 100;
    std::size_t depth = 3;
    std::size_t fanOut = 5;
};

std::string generateAppJson(const AppShape& shape);

} // namespace velmo::bench
