#pragma once

#include <cstddef>

#include "velmo/foundation/Value.h"

namespace velmo {

class VDClass;

// Operations on arrays that the rest of the library calls by name. All leave the receiver
// unchanged and give a new array, unless an index is out of range where they say so.

/// A copy without the element; an index at or past the end gives the receiver itself.
Array arrayByRemovingObjectAtIndex(const Array& receiver, std::size_t index);
/// A copy without every element equal to the argument.
Array arrayByRemovingObject(const Array& receiver, const Value& object);
/// arrayByInsertingObject:atIndex: — an index past the end is clamped to the end.
Array arrayByInsertingObject(const Array& receiver, const Value& object, std::size_t index);
/// arrayByReplacingObjectAtIndex:with: — an index at or past the end gives the receiver.
Array arrayByReplacingObjectAtIndex(const Array& receiver, std::size_t index, const Value& object);
/// arrayByReplacingObjectAtIndex:withIndex: — the two elements swapped; the receiver when either
/// index is at or past the end.
Array arrayByReplacingObjectAtIndexWithIndex(const Array& receiver, std::size_t index, std::size_t other);
/// The elements that are objects of the class or its subclasses, in order.
Array arrayByFilteringToClass(const Array& receiver, const VDClass& cls);
Array reversedArray(const Array& receiver);
/// Deep mutable form, with the diagnostics of the dictionary's.
Array vp_toMutable(const Array& receiver);
/// A copy of the top level; nested containers go through the mutable form and stay mutable.
Array vp_toImmutable(const Array& receiver);
/// Merge of arrays of dictionaries by their "id": each dictionary of `other`, in order, removes
/// the first element of the receiver with the same "id" and is appended at the end.
Array vp_arrayByAddingUniqueObjectsFromArray(const Array& receiver, const Array& other);

} // namespace velmo
