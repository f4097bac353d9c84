#include "velmo/model/records/VDModelPoint.h"

namespace velmo {

const VDModelClass& VDModelPoint::classObject() {
    using C = VDModelPoint;
    static const VDModelClass cls("VDModelPoint", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::x, &C::setX>("x"),
                                      field<&C::y, &C::setY>("y"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

std::shared_ptr<VDModelPoint> VDModelPoint::createWithPoint(double x, double y) {
    auto point = create();
    point->x_ = x;
    point->y_ = y;
    return point;
}

} // namespace velmo
