#include "TestViews.h"

namespace velmo {

std::shared_ptr<VDModelView> view(const char* name, std::vector<std::shared_ptr<VDModelView>> children) {
    auto v = VDModelView::create();
    v->setVariableID(name);
    Array subviews = Array::create(children.size());
    for (auto& c : children)
        subviews.push_back(Value(c));
    v->setSubviews(subviews);
    return v;
}

} // namespace velmo
