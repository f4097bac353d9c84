// The view's variable names. They belong to VDModelView but live here, with the actions: a
// parent's subviews and actions share one namespace, and a rename reaches the paths that
// states and actions keep.
#include <string>
#include <unordered_set>

#include <fmt/format.h>

#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/values/StringExtensions.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

namespace {

using NameSet = std::unordered_set<std::string>;

// The names a parent's namespace holds, lower-cased: its subviews' and its actions'.
NameSet namespaceOf(const VDModelView& parent) {
    NameSet taken;
    for (const Array& names : {parent.allVariableIDs(), parent.allActionNames()}) {
        for (const Value& v : names)
            taken.insert(lowercaseString(v.stringView()));
    }
    return taken;
}

NameSet setOf(const std::vector<std::string>& names) {
    return NameSet(names.begin(), names.end());
}

// The legal form of the suggestion when it is free; else it (or, when empty, the class's
// prefix) numbered from 1. "title1" taken gives "title11": trailing digits aren't read.
std::string uniqueName(const VDModelView& view, const std::optional<std::string>& suggestion,
                       const NameSet& taken, const NameSet& forbidden) {
    const auto isFree = [&](const std::string& name) {
        const std::string lower = lowercaseString(name);
        return !taken.contains(lower) && !forbidden.contains(lower);
    };
    const std::string legal = toLegalVarName(suggestion.value_or(""));
    if (!legal.empty() && isFree(legal)) return legal;
    const std::string base = legal.empty() ? view.beautyIDPrefix() : legal;
    for (std::size_t n = 1;; ++n) {
        std::string candidate = toLegalVarName(fmt::format("{}{}", base, n));
        if (isFree(candidate)) return candidate;
    }
}

std::optional<std::string> suggestionOf(const VDModelView& view) {
    const auto& name = view.viewName();
    return name && !name->empty() ? name : std::nullopt;
}

std::shared_ptr<VDModelView> asView(const Value& v) {
    return v.objectAs<VDModelView>();
}

// fillMissingVarNamesForSubView:takenNamesLower: with the list's set beside it, so a large
// subtree isn't searched name by name.
void fillMissing(VDModelView& view, std::vector<std::string>& taken, NameSet& takenSet) {
    NameSet scope = namespaceOf(view);
    for (const Value& v : view.subviewsForTreeView()) {
        const auto sub = asView(v);
        if (!sub) continue;
        if (!sub->variableID()) {
            std::string name = uniqueName(*sub, suggestionOf(*sub), scope, takenSet);
            sub->setVariableID(name);
            std::string lower = lowercaseString(name);
            scope.insert(lower);
            takenSet.insert(lower);
            taken.push_back(std::move(lower));
        }
        fillMissing(*sub, taken, takenSet);
    }
}

} // namespace

Array VDModelView::allVariableIDs() const {
    Array names = Array::create(subviews().size());
    for (const Value& v : subviews()) {
        const auto sub = asView(v);
        if (sub && sub->variableID()) names.push_back(Value(*sub->variableID()));
    }
    return names;
}

Array VDModelView::allActionNames() const {
    Array names = Array::create(actions_.size());
    for (const Value& v : actions_) {
        const auto action = v.objectAs<VDModelAction>();
        if (action && action->name()) names.push_back(Value(*action->name()));
    }
    return names;
}

bool VDModelView::isLegalVariableOrActionName(std::string_view name) const {
    return !namespaceOf(*this).contains(lowercaseString(name));
}

std::string VDModelView::uniqueNameForVariable(const VDModelView& view,
                                               const std::optional<std::string>& suggestion) const {
    return uniqueName(view, suggestion, namespaceOf(*this), NameSet());
}

std::string VDModelView::uniqueNameForVariable(const VDModelView& view,
                                               const std::optional<std::string>& suggestion,
                                               const std::vector<std::string>& forbiddenNamesLower) const {
    return uniqueName(view, suggestion, namespaceOf(*this), setOf(forbiddenNamesLower));
}

void VDModelView::updateVarIdFromName() {
    const std::string legal = toLegalVarName(viewName().value_or(""));
    if (legal.empty()) return;
    const auto parent = parentView();
    // A clash keeps the old name; there is no numbered fallback here.
    if (parent && parent->isLegalVariableOrActionName(legal)) setVariableID(legal);
}

void VDModelView::fillMissingVarNamesForSubViewsRecursive() {
    NameSet taken = namespaceOf(*this);
    for (const Value& v : subviewsForTreeView()) {
        const auto sub = asView(v);
        if (!sub) continue;
        // Only a missing name is filled: an empty one stays.
        if (!sub->variableID()) {
            std::string name = uniqueName(*sub, suggestionOf(*sub), taken, NameSet());
            taken.insert(lowercaseString(name));
            sub->setVariableID(std::move(name));
        }
        sub->fillMissingVarNamesForSubViewsRecursive();
    }
}

void VDModelView::fillVarNamesUniquePerContainer() {
    // The view's own name enters as it stands; names views already had don't enter at all.
    std::vector<std::string> taken;
    if (variableID()) taken.push_back(*variableID());
    fillMissingVarNamesForSubView(*this, taken);
}

void VDModelView::fillMissingVarNamesForSubView(VDModelView& view,
                                                std::vector<std::string>& takenNamesLower) {
    NameSet takenSet = setOf(takenNamesLower);
    fillMissing(view, takenNamesLower, takenSet);
}

void VDModelView::enforceChildrenNamesDistinctFromParents() {
    std::vector<std::string> forbidden;
    if (variableID()) forbidden.push_back(lowercaseString(*variableID()));
    enforceUniqueVarNameWithHierarchy({}, forbidden);
}

void VDModelView::enforceUniqueVarNameWithHierarchy(
    const std::vector<std::shared_ptr<VDModelView>>& hierarchy,
    const std::vector<std::string>& forbiddenVarIds) {
    std::vector<std::shared_ptr<VDModelView>> chain = hierarchy;
    chain.push_back(std::static_pointer_cast<VDModelView>(sharedFromThis()));
    // Each level has a list of its own: breadth first, siblings before their children.
    std::vector<std::string> forbidden = forbiddenVarIds;
    const Array subviews = this->subviews();
    for (const Value& v : subviews) {
        const auto sub = asView(v);
        if (!sub) continue;
        sub->selfEnforceUniqueVarNameWithHierarchy(chain, forbidden);
        if (sub->variableID()) forbidden.push_back(lowercaseString(*sub->variableID()));
    }
    for (const Value& v : subviews) {
        if (const auto sub = asView(v)) sub->enforceUniqueVarNameWithHierarchy(chain, forbidden);
    }
}

void VDModelView::selfEnforceUniqueVarNameWithHierarchy(
    const std::vector<std::shared_ptr<VDModelView>>& hierarchy,
    const std::vector<std::string>& forbiddenVarIds) {
    if (!variableID()) return;
    const std::string lower = lowercaseString(*variableID());
    for (const std::string& name : forbiddenVarIds) {
        if (name == lower) {
            renameVarNameWithHierarchy(hierarchy, forbiddenVarIds);
            return;
        }
    }
}

void VDModelView::renameVarNameWithHierarchy(const std::vector<std::shared_ptr<VDModelView>>& hierarchy,
                                             const std::vector<std::string>& forbiddenVarIds) {
    if (hierarchy.empty()) return;
    const std::string oldName = variableID().value_or("");
    // The parent still lists the old name, so a number is always added.
    const std::string newName = hierarchy.back()->uniqueNameForVariable(*this, variableID(), forbiddenVarIds);
    setVariableID(newName);
    for (std::size_t i = 0; i < hierarchy.size(); ++i) {
        const std::vector<std::shared_ptr<VDModelView>> below(
            hierarchy.begin() + static_cast<std::ptrdiff_t>(i) + 1, hierarchy.end());
        hierarchy[i]->refactorVar(oldName, newName, below);
    }
}

void VDModelView::refactorVar(const std::string& oldName, const std::string& newName,
                              const std::vector<std::shared_ptr<VDModelView>>& hierarchy) {
    std::string prefix;
    for (const auto& view : hierarchy) {
        prefix += view->variableID().value_or("");
        prefix += ';';
    }
    const std::string shortForm = prefix + oldName;
    const std::string longForm = "this;" + shortForm;
    const std::string target = "this;" + prefix + newName;
    // A reference without the "this" lead comes out with it.
    for (const Value& v : states_) {
        if (const auto state = v.objectAs<VDModelViewState>()) {
            state->refactorPath(shortForm, target);
            state->refactorPath(longForm, target);
        }
    }
    for (const Value& v : actions_) {
        if (const auto action = v.objectAs<VDModelAction>()) {
            action->refactorPath(shortForm, target);
            action->refactorPath(longForm, target);
        }
    }
}

} // namespace velmo
