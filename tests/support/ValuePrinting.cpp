#include "ValuePrinting.h"

namespace velmo {
void PrintTo(const Value& value, std::ostream* os) {
    *os << value.description();
}
void PrintTo(const Array& value, std::ostream* os) {
    *os << Value(value).description();
}
void PrintTo(const Dictionary& value, std::ostream* os) {
    *os << Value(value).description();
}
} // namespace velmo
