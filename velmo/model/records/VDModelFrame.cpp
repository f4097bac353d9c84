#include "velmo/model/records/VDModelFrame.h"

#include <cmath>
#include <functional>

namespace velmo {

const VDModelClass& VDModelFrame::classObject() {
    using C = VDModelFrame;
    static const VDModelClass cls("VDModelFrame", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::x, &C::setX>("x"),
                                      field<&C::y, &C::setY>("y"),
                                      field<&C::width, &C::setWidth>("width"),
                                      field<&C::height, &C::setHeight>("height"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

bool VDModelFrame::isEqual(const Object& other) const {
    if (this == &other) return true;
    if (!other.isKindOf(objectClass())) return false;
    const auto& f = static_cast<const VDModelFrame&>(other);
    const auto same = [](const VDNumber& a, const VDNumber& b) { return a && b && a == b; };
    return same(x_, f.x_) && same(y_, f.y_) && same(width_, f.width_) && same(height_, f.height_);
}

namespace {
// Whole numbers hash to themselves, as the platform's numbers do; others by their bits.
std::size_t numberHash(const VDNumber& n) {
    if (!n) return 0;
    const double d = n.doubleValue();
    double whole;
    if (std::modf(d, &whole) == 0.0 && std::fabs(d) < 9.2e18)
        return static_cast<std::size_t>(static_cast<long long>(d));
    return std::hash<double>{}(d);
}
} // namespace

std::size_t VDModelFrame::hash() const {
    return numberHash(x_) + numberHash(y_) + numberHash(width_) + numberHash(height_);
}

} // namespace velmo
