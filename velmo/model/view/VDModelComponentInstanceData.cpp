#include "velmo/model/view/VDModelComponentInstanceData.h"

#include <algorithm>
#include <unordered_set>

#include <fmt/format.h>

#include "velmo/model/values/StringExtensions.h"
#include "velmo/model/view/VDModelComponentOverride.h"
#include "velmo/model/view/VDModelProp.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

const VDModelClass& VDModelComponentInstanceData::classObject() {
    using C = VDModelComponentInstanceData;
    // "overrides" once more: the list holds the name twice, both times this class's field.
    static const VDModelClass cls("VDModelComponentInstanceData", &VDModelComponentMasterData::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {field<&C::overrides, &C::setOverrides>("overrides")});
    return cls;
}

void VDModelComponentInstanceData::fillOverridesAndPropsAfterExport() {
    const auto firstProp = props().first().objectAs<VDModelProp>();
    const auto firstOverride = overrides_.first().objectAs<VDModelComponentOverride>();
    const bool done = !props().empty() && firstProp && firstProp->path() &&
                      (overrides_.empty() || (firstOverride && firstOverride->path()));
    if (!done) fillProprsAndOverridesPath(overrides_);
}

void VDModelComponentInstanceData::subviewPathByIds(const std::vector<std::string>& ids,
                                                    const VDModelView& view,
                                                    std::vector<std::string> components, Dictionary& res) {
    if (res.size() >= ids.size()) return; // all found
    if (view.variableID()) components.push_back(*view.variableID());
    const auto holds = [&](const std::optional<std::string>& id) {
        return id && std::find(ids.begin(), ids.end(), *id) != ids.end();
    };
    std::optional<std::string> key = holds(view.importedID()) ? view.importedID()
                                     : holds(view.modelID())  ? view.modelID()
                                                              : std::nullopt;
    if (key) {
        // The first component is the owner's own name: the owner is "", a child its name.
        std::string path;
        for (std::size_t i = 1; i < components.size(); ++i) {
            if (i > 1) path += ';';
            path += components[i];
        }
        res.set(*key, Value(path));
    }
    for (const Value& v : view.subviews()) {
        if (const auto sub = v.objectAs<VDModelView>()) subviewPathByIds(ids, *sub, components, res);
    }
}

std::string
VDModelComponentInstanceData::uniquePropNameWithSuggested(const std::optional<std::string>& suggestion,
                                                          const std::vector<std::string>& taken) {
    // `taken` keeps its names as they came and the test looks for the lower-case form: a taken
    // name with a capital letter doesn't block. Generated code has always seen names this way.
    const auto isTaken = [&](const std::string& name) {
        return std::find(taken.begin(), taken.end(), lowercaseString(name)) != taken.end();
    };
    std::string base = toLegalVarName(suggestion.value_or(""));
    if (base.empty()) base = "prop";
    if (!isTaken(base)) return base;
    std::string candidate = fmt::format("{}{}", base, 1);
    for (int n = 2; isTaken(candidate); ++n)
        candidate = toLegalVarName(fmt::format("{}{}", base, n));
    return candidate;
}

void VDModelComponentInstanceData::fillProprsAndOverridesPath(const Array& list) {
    std::vector<std::string> ids;
    for (const Value& v : props()) {
        const auto prop = v.objectAs<VDModelProp>();
        if (prop && prop->targetId()) ids.push_back(*prop->targetId());
    }
    Dictionary paths = Dictionary::create();
    const auto owner = this->owner();
    if (owner) subviewPathByIds(ids, *owner, {}, paths);

    Dictionary names = Dictionary::create();
    std::vector<std::string> taken;
    for (const Value& v : props()) {
        const auto prop = v.objectAs<VDModelProp>();
        if (!prop) continue;
        const std::string target = prop->targetId().value_or("");
        if (!prop->path()) {
            const Value& found = paths.get(target);
            if (found.isString()) prop->setPath(found.str());
        }
        std::optional<std::string> suggestion;
        if (prop->path()) {
            const std::string& path = *prop->path();
            const std::size_t cut = path.rfind(';');
            suggestion = cut == std::string::npos ? path : path.substr(cut + 1);
        }
        if (!prop->name()) prop->setName(uniquePropNameWithSuggested(suggestion, taken));
        taken.push_back(*prop->name());
        names.set(target, Value(*prop->name()));
    }

    for (const Value& v : list) {
        const auto override = v.objectAs<VDModelComponentOverride>();
        if (!override) continue;
        const std::string target = override->targetId().value_or("");
        const Value& path = paths.get(target);
        const Value& name = names.get(target);
        override->setPath(path.isString() ? std::optional<std::string>(path.str()) : std::nullopt);
        override->setName(name.isString() ? std::optional<std::string>(name.str()) : std::nullopt);
        // A nested list would go to the object at the path if that object took one, but the path
        // always finds a view, which doesn't: nested lists stay as the exporter wrote them.
    }
}

} // namespace velmo
