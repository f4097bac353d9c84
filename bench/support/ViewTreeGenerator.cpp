#include "support/ViewTreeGenerator.h"

#include <deque>
#include <fmt/format.h>

#include "velmo/model/core/VDModelDecoder.h"

namespace velmo::bench {

std::shared_ptr<VDModelView> generateViewTree(std::size_t descendants) {
    VDModelDecoder::sharedInstance(); // copies decode through it
    auto owner = VDModelView::create();
    owner->setVariableID("owner");
    std::deque<std::shared_ptr<VDModelView>> open{owner};
    std::size_t made = 0;
    while (made < descendants) {
        auto parent = open.front();
        open.pop_front();
        Array subviews = Array::create(10);
        for (int i = 0; i < 10 && made < descendants; ++i, ++made) {
            auto sub = VDModelView::create();
            sub->setVariableID(fmt::format("v{}", made));
            subviews.push_back(Value(sub));
            open.push_back(sub);
        }
        parent->setSubviews(subviews);
    }
    return owner;
}

void forEachDescendant(VDModelView& view, const std::function<void(VDModelView&)>& block) {
    for (const Value& v : view.subviews()) {
        if (const auto sub = v.objectAs<VDModelView>()) {
            block(*sub);
            forEachDescendant(*sub, block);
        }
    }
}

} // namespace velmo::bench
