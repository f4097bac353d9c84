#pragma once

#include <functional>
#include <optional>
#include <string>

namespace velmo {

/// What a view asks of the actions it holds: their name, the relative paths they keep to other
/// views, and whether they animate a screen change. The action family answers it.
class VDModelActionPaths {
public:
    virtual ~VDModelActionPaths() = default;

    using PathBlock = std::function<std::string(const std::string& relativePath)>;

    virtual const std::optional<std::string>& name() const = 0;
    /// updateRelativePathsWithBlock: — each relative path the action holds is replaced by the
    /// callback's answer.
    virtual void updateRelativePathsWithBlock(const PathBlock& block) = 0;
    /// True for a screen presentation whose `autoAnimate` is set.
    virtual bool hasAutoAnimate() const { return false; }
    /// A state of the owning view was renamed: the state names the action holds follow.
    virtual void refactorStateName(const std::string& oldName, const std::string& newName) {
        (void)oldName;
        (void)newName;
    }
};

} // namespace velmo
