#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "velmo/model/view/VDModelView.h"

namespace velmo::bench {

/// A view "owner" with `descendants` views below it, ten subviews to a parent, filled level by
/// level; the views are named "v0", "v1", ... in that order.
std::shared_ptr<VDModelView> generateViewTree(std::size_t descendants);

/// Every view below `view`, depth first.
void forEachDescendant(VDModelView& view, const std::function<void(VDModelView&)>& block);

} // namespace velmo::bench
