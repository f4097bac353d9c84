#include "velmo/model/interaction/VDModelActionSelectTab.h"

#include <fmt/format.h>

namespace velmo {

const VDModelClass& VDModelActionSelectTab::classObject() {
    using C = VDModelActionSelectTab;
    static const VDModelClass cls("VDModelActionSelectTab", &VDModelAction::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {field<&C::tabIndex, &C::setTabIndex>("tabIndex")},
                                  {.prefix = "SelectTab"});
    return cls;
}

std::optional<std::string> VDModelActionSelectTab::layerTitle() const {
    return fmt::format("{}: Select Tab {}", shortTitleForTrigger().value_or(""), tabIndex_);
}

} // namespace velmo
