#pragma once

// Lets GoogleTest print values in their JSON-like form when an expectation fails.

#include <ostream>

#include "velmo/foundation/Value.h"

namespace velmo {
void PrintTo(const Value& value, std::ostream* os);
void PrintTo(const Array& value, std::ostream* os);
void PrintTo(const Dictionary& value, std::ostream* os);
} // namespace velmo
