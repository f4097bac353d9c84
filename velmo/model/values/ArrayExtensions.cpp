#include "velmo/model/values/ArrayExtensions.h"

#include <algorithm>

#include "velmo/foundation/VDClass.h"
#include "velmo/model/values/ValueDiagnostics.h"
#include "velmo/runtime/VPLogging.h"

namespace velmo {

Array arrayByRemovingObjectAtIndex(const Array& receiver, std::size_t index) {
    if (index >= receiver.size()) return receiver;
    Array out = receiver.copy();
    out.erase(index);
    return out;
}

Array arrayByRemovingObject(const Array& receiver, const Value& object) {
    Array out = Array::create(receiver.size());
    for (const Value& item : receiver) {
        if (!(item == object)) out.push_back(item);
    }
    return out;
}

Array arrayByInsertingObject(const Array& receiver, const Value& object, std::size_t index) {
    Array out = receiver.isNil() ? Array::create() : receiver.copy();
    out.insert(std::min(index, out.size()), object);
    return out;
}

Array arrayByReplacingObjectAtIndex(const Array& receiver, std::size_t index, const Value& object) {
    if (index >= receiver.size()) return receiver;
    Array out = receiver.copy();
    out.set(index, object);
    return out;
}

Array arrayByReplacingObjectAtIndexWithIndex(const Array& receiver, std::size_t index, std::size_t other) {
    if (index >= receiver.size() || other >= receiver.size()) return receiver;
    Array out = receiver.copy();
    out.set(index, receiver[other]);
    out.set(other, receiver[index]);
    return out;
}

Array arrayByFilteringToClass(const Array& receiver, const VDClass& cls) {
    Array out = Array::create();
    for (const Value& item : receiver) {
        if (item.isObject() && item.object()->isKindOf(cls)) out.push_back(item);
    }
    return out;
}

Array reversedArray(const Array& receiver) {
    std::vector<Value> items(receiver.begin(), receiver.end());
    std::reverse(items.begin(), items.end());
    return Array::fromVector(std::move(items));
}

Array vp_toMutable(const Array& receiver) {
    return vp_toMutableValue(Value(receiver)).array();
}

Array vp_toImmutable(const Array& receiver) {
    return vp_toImmutableValue(Value(receiver)).array();
}

namespace {
Array concatenation(const Array& a, const Array& b) {
    Array out = Array::create(a.size() + b.size());
    for (const Value& v : a)
        out.push_back(v);
    for (const Value& v : b)
        out.push_back(v);
    return out;
}
} // namespace

Array vp_arrayByAddingUniqueObjectsFromArray(const Array& receiver, const Array& other) {
    VP_TRY
    std::vector<Value> merged(receiver.begin(), receiver.end());
    for (const Value& item : other) {
        if (!item.isDictionary()) continue;
        const Value& id = item.dictionary().get("id");
        // An element without an "id" matches nothing, as nil compares equal to nothing.
        const auto same = std::find_if(merged.begin(), merged.end(), [&](const Value& v) {
            return !id.isNil() && v.isDictionary() && v.dictionary().get("id") == id;
        });
        if (same != merged.end()) merged.erase(same);
        merged.push_back(item);
    }
    return Array::fromVector(std::move(merged));
    VP_CATCH(concatenation(receiver, other))
}

} // namespace velmo
