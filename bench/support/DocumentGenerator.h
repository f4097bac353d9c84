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

/// A whole document as the editor saves it after an export from the design tool: a `VDModelApp`
/// with its theme (fonts, colours, text styles), links, two free views, `screens` screens and a
/// component master for every ten screens (at least three: a badge and product cards).
///
/// Every screen (every tenth a `VDModelTabBarScreen`, with its tab bar) holds `viewsPerScreen`
/// views: a header with buttons and a title in styled runs, a timeline component, a component
/// instance (props that target the master's layers, overrides, one a list for the badge nested
/// in it), a form whose button submits it, a table of header, cells and footer (static or fed
/// by a data list), a collection of video, web, map, gradient, blur and widget views, and then
/// nested sections of labels, images, text fields, slices, switches, sliders, progress bars,
/// gradients and boxes, `depth` levels deep with `fanOut` to a level (the fixed parts come first,
/// about 45 views). Each screen has two states ("compact", "expanded") whose change sets touch
/// every tenth named view, and two transitions (the initial look to "compact" on a click,
/// "compact" to "expanded" on a hover), each with a timeline for every path either touches.
/// Masters carry no `componentMasterData`: a plain master record can't be read by name, and a
/// document holding one neither decodes (the identifier registry is built by reading every
/// field) nor encodes. Instances name their master by `masterSymbolID`.
///
/// It also holds what the repairs of older documents and fresh exports exist for: timeline
/// components without a default state (some with a state already named "initial"), state keys
/// joined with ".", borders centred or outside on boxes with constraints, props and overrides
/// without paths and names (on three screens in four), views without a variable name and
/// children named as their parent. No identifier is used twice; views and actions carry the
/// short form a document hands out ("Label_12"), records the long form ("span_<uuid>").
struct AppShape {
    std::size_t screens = 500;
    std::size_t viewsPerScreen = 100;
    std::size_t depth = 3;
    std::size_t fanOut = 5;
};

std::string generateAppJson(const AppShape& shape);

} // namespace velmo::bench
