#include "velmo/model/interaction/VDModelViewState.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "velmo/model/values/StringExtensions.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/model/view/VDModelViewPathIndex.h"

namespace velmo {

const VDModelClass& VDModelViewState::classObject() {
    using C = VDModelViewState;
    static const VDModelClass cls("VDModelViewState", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::name, &C::setName>("name"),
                                      field<&C::overrides, &C::setOverrides>("overrides"),
                                  });
    return cls;
}

void VDModelViewState::initWithDictionary(const Dictionary& dictionary) {
    VDModel::initWithDictionary(dictionary);
    fixLegacyDelimiter();
}

namespace {

constexpr std::string_view kThis = "this";

// The same object, or equal values.
bool sameValue(const Value& a, const Value& b) {
    if (a.isObject() && b.isObject() && a.object() == b.object()) return true;
    return a == b;
}

// A recorded dimension changed when the two entries disagree on it and at least one holds it.
bool dimensionChanged(const Dictionary& previous, const Dictionary& current, std::string_view name) {
    const Value& before = previous.get(name);
    const Value& after = current.get(name);
    return !(before == after) && !(before.isNil() && after.isNil());
}

void record(VDModelView& model, VDModelView& state, const std::string& path, Dictionary& res,
            bool incremental, VDModelViewPathIndex& stateIndex) {
    const Dictionary previous = res.get(path).dictionary();
    Dictionary current = previous.isNil() ? Dictionary() : previous.copy();

    for (std::string_view name : model.stateAffectedFields()) {
        const Value a = model.valueForKey(name);
        Value b = state.valueForKey(name);
        if (sameValue(a, b)) {
            if (!current.isNil()) current.remove(name);
            continue;
        }
        if (current.isNil()) current = Dictionary::create();
        current.set(name, std::move(b)); // nil leaves no entry for the name
    }

    // A move, a fade or a turn costs one entry; only a change of the recorded size makes the
    // subtree worth examining again.
    const bool descend = !incremental || dimensionChanged(previous, current, "width") ||
                         dimensionChanged(previous, current, "height");
    if (descend) {
        for (const Value& v : model.subviews()) {
            const auto sub = v.objectAs<VDModelView>();
            if (!sub) continue;
            if (!sub->variableID()) {
                throw std::invalid_argument(
                    fmt::format("a view below \"{}\" has no variable name, so it has no path", path));
            }
            // Matched by variable name, never by position: a view only the state has isn't
            // recorded, and one the state lost keeps whatever entries it had.
            const auto counterpart = state.modelWithRelativePath(*sub->variableID(), &stateIndex);
            if (!counterpart) continue;
            record(*sub, *counterpart, path + ';' + *sub->variableID(), res, incremental, stateIndex);
        }
    }

    if (current.isNil()) return;
    if (current.empty()) {
        res.remove(path);
    } else {
        res.set(path, Value(current));
    }
}

} // namespace

void VDModelViewState::recordChangesetOfModel(VDModelView& model, VDModelView& state, const std::string& path,
                                              Dictionary& res, bool incremental) {
    VDModelViewPathIndex stateIndex;
    record(model, state, path, res, incremental, stateIndex);
}

void VDModelViewState::updateWithOriginalModel(VDModelView& original, VDModelView& stateView) {
    Dictionary res = Dictionary::create();
    recordChangesetOfModel(original, stateView, std::string(kThis), res, false);
    // Whatever the designer did to the owner itself stays out of its states.
    res.remove(kThis);
    setOverrides(std::move(res));
}

void VDModelViewState::updateWithOriginalModel(VDModelView& original, VDModelView& stateView,
                                               VDModelView& changed) {
    // The change set is replaced, not changed in place, unless nobody else holds it: then the
    // copy would cost as much as the whole set for an edit of one view.
    Dictionary res = std::move(overrides_);
    if (res.isNil()) {
        res = Dictionary::create();
    } else if (!res.isUniquelyReferenced()) {
        res = res.copy();
    }
    const std::string path = stateView.relativePathToModel(changed);
    if (const auto counterpart = original.modelWithRelativePath(path))
        recordChangesetOfModel(*counterpart, changed, path, res, true);
    res.remove(kThis);
    setOverrides(std::move(res));
}

Dictionary VDModelViewState::reversedOverridesWithModel(VDModelView& view) const {
    Dictionary reversed = Dictionary::create(overrides_.size());
    VDModelViewPathIndex index;
    for (const auto& [path, fields] : overrides_) {
        const auto target = view.modelWithRelativePath(path.stringView(), &index);
        if (!target) continue;
        Dictionary back = Dictionary::create();
        for (const auto& [name, value] : fields.dictionary()) {
            Value now;
            try {
                now = target->valueForKey(name.stringView());
            } catch (const std::invalid_argument&) {
                continue; // a name the view doesn't have: nothing to go back to
            }
            if (!sameValue(now, value)) back.setEntry(name, std::move(now));
        }
        reversed.setEntry(path, Value(back));
    }
    return reversed;
}

void VDModelViewState::refactorPath(std::string_view oldPath, std::string_view newPath) {
    std::vector<std::pair<std::string, Value>> moves;
    for (const auto& [key, fields] : overrides_) {
        if (auto to = pathMovedFrom(key.stringView(), oldPath, newPath))
            moves.emplace_back(std::move(*to), fields);
    }
    if (moves.empty()) return;
    // Built in one pass rather than by removing keys one by one, which costs the whole set each
    // time: the keys that stay keep their order, moved keys follow, and a moved key takes the
    // place of an equal key that stayed.
    Dictionary moved = Dictionary::create(overrides_.size());
    for (const auto& [key, fields] : overrides_) {
        if (!pathMovedFrom(key.stringView(), oldPath, newPath)) moved.setEntry(key, fields);
    }
    for (auto& [key, fields] : moves)
        moved.set(key, std::move(fields));
    setOverrides(std::move(moved));
}

void VDModelViewState::fixLegacyDelimiter() {
    if (overrides_.empty()) return;
    if (overrides_.begin()->key.stringView().find('.') == std::string_view::npos) return;
    Dictionary fixed = Dictionary::create(overrides_.size());
    for (const auto& [key, fields] : overrides_) {
        std::string k = key.str();
        std::replace(k.begin(), k.end(), '.', ';');
        fixed.set(k, fields);
    }
    setOverrides(std::move(fixed));
    fixedLegacyDelimiter_ = true;
}

std::string VDModelViewState::description() const {
    return fmt::format("[{}] <{}> {}", static_cast<const void*>(this), modelClass().name(),
                       name_.value_or("(null)"));
}

} // namespace velmo
