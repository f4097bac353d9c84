#include "TestModel.h"

#include <mutex>

#include "velmo/model/core/VDModelDecoder.h"

namespace velmo::test {

const VDModelClass& VDModelTestModel::classObject() {
    using C = VDModelTestModel;
    static const VDModelClass cls("VDModelTestModel", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::title, &C::setTitle>("title"),
                                      field<&C::ratio, &C::setRatio>("ratio"),
                                      field<&C::precise, &C::setPrecise>("precise"),
                                      field<&C::count, &C::setCount>("count"),
                                      field<&C::big, &C::setBig>("big"),
                                      field<&C::enabled, &C::setEnabled>("enabled"),
                                      field<&C::width, &C::setWidth>("width"),
                                      field<&C::child, &C::setChild>("child"),
                                      field<&C::tags, &C::setTags>("tags"),
                                      field<&C::info, &C::setInfo>("info"),
                                      field<&C::extra, &C::setExtra>("extra"),
                                      unlistedField<&C::scratch, &C::setScratch>("scratch"),
                                  });
    return cls;
}

void VDModelTestModel::fillDefaultValues() {
    VDModel::fillDefaultValues();
    ratio_ = 0.5f;
    tags_ = Array::create();
}

const VDModelClass& VDModelTestSubModel::classObject() {
    static const VDModelClass cls("VDModelTestSubModel", &VDModelTestModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {},
                                  {.removedFields = {"variableID"}, .prefix = "sub"});
    return cls;
}

void registerTestModels() {
    static std::once_flag once;
    std::call_once(once, [] {
        VDModelDecoder::sharedInstance()->registerClass(VDModelTestModel::classObject());
        VDModelDecoder::sharedInstance()->registerClass(VDModelTestSubModel::classObject());
    });
}

} // namespace velmo::test
