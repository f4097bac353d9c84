// The view's operations on its states. They belong to VDModelView but live here, with the
// states, so that the view layer needs nothing of the layer above it.
#include <algorithm>
#include <stdexcept>
#include <unordered_set>

#include <fmt/format.h>

#include "velmo/foundation/NotificationCenter.h"
#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/model/view/VDModelViewPathIndex.h"

namespace velmo {

void VDModelView::setStates(Array v) {
    if (v.isNil()) {
        states_ = Array();
        return;
    }
    Array states = Array::create(v.size());
    for (const Value& state : v) {
        if (state.objectAs<VDModelViewState>()) states.push_back(state);
    }
    states_ = std::move(states);
}

namespace {

// A key of a change set as a path from the owner: old "." delimiters read as ";", and the
// leading "this" goes, so that "this" alone names the owner itself.
std::string_view pathFromOwner(std::string& key) {
    std::replace(key.begin(), key.end(), '.', ';');
    std::string_view path = key;
    if (path.starts_with("this;")) return path.substr(5);
    if (path == "this") return {};
    return path;
}

} // namespace

void VDModelView::applyModelState(const VDModelViewState& state) {
    VDModelViewPathIndex index;
    for (const auto& [key, fields] : state.overrides()) {
        std::string k = key.str();
        const auto target = modelWithRelativePath(pathFromOwner(k), &index);
        if (!target) continue;
        for (const auto& [name, value] : fields.dictionary()) {
            const auto model = value.objectAs<VDModel>();
            try {
                target->setValueForKey(model ? Value(model->copy()) : value, name.stringView());
            } catch (const std::invalid_argument&) {
                // A field the view doesn't have, or a value it can't take: the rest still applies.
            }
        }
    }
}

void VDModelView::reverseStateWithOriginalModel(VDModelView& original) {
    const auto state = VDModelViewState::create();
    state->updateWithOriginalModel(*this, original);
    applyModelState(*state);
}

std::string VDModelView::generateUniqueStateName(const std::optional<std::string>& base) const {
    const std::string stem = base.value_or("keyframe");
    std::unordered_set<std::string> taken;
    for (const Value& v : states_) {
        if (const auto state = v.objectAs<VDModelViewState>(); state && state->name())
            taken.insert(*state->name());
    }
    std::string candidate = stem + "1";
    for (int n = 2; taken.contains(candidate); ++n)
        candidate = fmt::format("{}{}", stem, n);
    return candidate;
}

std::shared_ptr<VDModelViewState>
VDModelView::addStateWithSuggestedName(const std::optional<std::string>& name) {
    auto state = VDModelViewState::create();
    state->setName(generateUniqueStateName(name));
    addState(state);
    return state;
}

void VDModelView::addState(const std::shared_ptr<VDModelViewState>& state) {
    if (!state) return;
    Array states = states_.isNil() ? Array::create(1) : states_.copy();
    states.push_back(Value(state));
    states_ = std::move(states);
    // The update climbs to the root first; listeners of the new state then find it in place.
    postUpdateNotification();
    NotificationCenter::defaultCenter().post(kTimelineStateAdded, shared_from_this());
}

std::shared_ptr<VDModelViewState> VDModelView::stateNamed(std::string_view name) const {
    if (name.empty()) return nullptr;
    for (const Value& v : states_) {
        auto state = v.objectAs<VDModelViewState>();
        if (state && state->name() == name) return state;
    }
    return nullptr;
}

std::shared_ptr<VDModelViewState> VDModelView::defaultState() const {
    return defaultStateName_ ? stateNamed(*defaultStateName_) : nullptr;
}

void VDModelView::refactorStateNameFrom(const std::string& oldName, const std::string& newName) {
    if (const auto state = stateNamed(oldName)) state->setName(newName);
    for (const Value& v : actions_) {
        if (const auto action = v.objectAs<VDModelAction>()) action->refactorStateNameFrom(oldName, newName);
    }
    if (defaultStateName_ == oldName) setDefaultStateName(newName);
}

} // namespace velmo
