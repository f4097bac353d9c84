#include "velmo/model/interaction/VDModelSubmitAction.h"

namespace velmo {

const VDModelClass& VDModelSubmitAction::classObject() {
    using C = VDModelSubmitAction;
    static const VDModelClass cls("VDModelSubmitAction", &VDModelAction::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::email, &C::setEmail>("email"),
                                      field<&C::spreadsheet, &C::setSpreadsheet>("spreadsheet"),
                                      field<&C::successScreenID, &C::setSuccessScreenID>("successScreenID"),
                                      field<&C::failureScreenID, &C::setFailureScreenID>("failureScreenID"),
                                  },
                                  // The prefix of the base class, as the class never named one.
                                  {.prefix = "Action"});
    return cls;
}

Array VDModelSubmitAction::linkedScreenIDs() const {
    Array ids = Array::create(2);
    if (successScreenID_) ids.push_back(Value(*successScreenID_));
    if (failureScreenID_) ids.push_back(Value(*failureScreenID_));
    return ids;
}

} // namespace velmo
