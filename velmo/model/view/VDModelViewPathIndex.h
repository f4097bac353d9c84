#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace velmo {

class VDModelView;

/// The subviews of large parents by variable name, for one pass that resolves many paths in one
/// tree (recording or applying a change set). Each path step would otherwise search the
/// parent's subviews again, which makes a pass over many siblings quadratic. An index is built
/// the first time a step passes a parent and answers as the search does: the first subview with
/// the name. It holds the tree's state of that moment, so a pass that changes names or
/// subviews uses a new index.
class VDModelViewPathIndex {
public:
    /// The first subview of `parent` whose `variableID` is `name`, or nullptr.
    std::shared_ptr<VDModelView> subviewNamed(const VDModelView& parent, std::string_view name);
    /// The same by searching, for a single look-up.
    static std::shared_ptr<VDModelView> searchSubviewNamed(const VDModelView& parent, std::string_view name);

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view s) const noexcept { return std::hash<std::string_view>{}(s); }
    };
    struct Children {
        /// Keeps the parent alive, so its address names it for the whole pass.
        std::shared_ptr<const void> parent;
        std::unordered_map<std::string, std::shared_ptr<VDModelView>, Hash, std::equal_to<>> byName;
    };

    /// Below this many subviews a search costs less than an index.
    static constexpr std::size_t kIndexedFrom = 16;

    std::unordered_map<const VDModelView*, Children> children_;
};

} // namespace velmo
