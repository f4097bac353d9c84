#include "velmo/model/view/VDModelViewPathIndex.h"

#include "velmo/model/view/VDModelView.h"

namespace velmo {

std::shared_ptr<VDModelView> VDModelViewPathIndex::subviewNamed(const VDModelView& parent,
                                                                std::string_view name) {
    const Array subviews = parent.subviews();
    if (subviews.size() < kIndexedFrom) return searchSubviewNamed(parent, name);
    auto [at, added] = children_.try_emplace(&parent);
    Children& children = at->second;
    if (added) {
        children.parent = parent.shared_from_this();
        children.byName.reserve(subviews.size());
        for (const Value& v : subviews) {
            auto sub = v.objectAs<VDModelView>();
            // The first of a name wins, as the search finds it.
            if (sub && sub->variableID()) children.byName.try_emplace(*sub->variableID(), std::move(sub));
        }
    }
    const auto found = children.byName.find(name);
    return found == children.byName.end() ? nullptr : found->second;
}

std::shared_ptr<VDModelView> VDModelViewPathIndex::searchSubviewNamed(const VDModelView& parent,
                                                                      std::string_view name) {
    for (const Value& v : parent.subviews()) {
        // Names first, the class only of the view that has it: most siblings are passed over.
        if (v.kind() != Value::Kind::Model) continue;
        const auto* model = static_cast<const VDModel*>(v.objectPointer());
        if (model->variableID() != name) continue;
        if (auto sub = v.objectAs<VDModelView>()) return sub;
    }
    return nullptr;
}

} // namespace velmo
