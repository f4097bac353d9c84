#pragma once

#include "velmo/foundation/Value.h"

namespace velmo {

// The conversions between mutable and immutable forms log each value they visit, so a host can
// see which values of a script-made structure the library can't carry.

/// One line "valid: <class>" or "invalid: <class>"; an invalid value adds a line of slashes.
/// Strings, numbers, arrays and dictionaries are valid.
void logValueDiagnostic(const Value& value);
/// Deep mutable form of any value; containers are all mutable here, so they come back themselves.
Value vp_toMutableValue(const Value& value);
/// An array's immutable form: a copy of the top level, whose nested containers go through the
/// mutable form and stay mutable. Other values come back as they are.
Value vp_toImmutableValue(const Value& value);

} // namespace velmo
