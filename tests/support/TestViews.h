#pragma once

#include <memory>
#include <vector>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A view with a variable name and the given subviews, as the model tests build their trees.
std::shared_ptr<VDModelView> view(const char* name, std::vector<std::shared_ptr<VDModelView>> children = {});

} // namespace velmo
