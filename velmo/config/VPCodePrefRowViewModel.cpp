#include "velmo/config/VPCodePrefRowViewModel.h"

#include <utility>

#include "velmo/config/VPPluginConfigManager.h"

namespace velmo {

namespace {

using Type = VDCodePrefConfigItemType;

constexpr std::uint32_t number(Type type) {
    return static_cast<std::uint32_t>(type);
}

// Whether the user's stored values hold the item's value.
bool isStoredAsEnabled(const VDCodePrefConfigItemObject& item) {
    if (!item.value) return false;
    const auto manager = VPPluginConfigManager::shared();
    if (!manager) return false;
    for (const Value& stored : manager->enabledCodePrefValues()) {
        if (stored.isString() && stored.stringView() == *item.value) return true;
    }
    return false;
}

} // namespace

const VDClass& VPCodePrefRowViewModel::classObject() {
    static const VDClass* cls = [] {
        static const VDClass c("VPCodePrefRowViewModel", &VPObservableObject::classObject(), nullptr);
        VDPropertyRegistry::registerClass(
            c, {observableProp("enabled", "NSNumber", &VPCodePrefRowViewModel::enabled)});
        return &c;
    }();
    return *cls;
}

VPCodePrefRowViewModel::VPCodePrefRowViewModel(std::shared_ptr<VDCodePrefConfigItemObject> model)
    : model_(std::move(model)) {
    classObject();
    if (!model_) return;
    type_ = model_->type;
    title_ = model_->text;
    if (type_ == number(Type::Checkbox))
        enabled_ = Value(isStoredAsEnabled(*model_) || model_->defaultValueIsOn());
    if (type_ == number(Type::Notification)) {
        badgeTitle_ = model_->badgeTitle;
        linkTitle_ = model_->linkTitle;
    }
}

double VPCodePrefRowViewModel::rowHeightForType(std::uint32_t type) {
    switch (static_cast<Type>(type)) {
    case Type::Separator:
        return 1;
    case Type::Title:
    case Type::Checkbox:
        return 30;
    case Type::Notification:
        return 40;
    default:
        return 0;
    }
}

const char* VPCodePrefRowViewModel::cellIdentifierForType(std::uint32_t type) {
    switch (static_cast<Type>(type)) {
    case Type::Title:
        return kVPCodePrefTitleCellID;
    case Type::Checkbox:
        return kVPCodePrefCheckBoxCellID;
    case Type::Notification:
        return kVPCodePrefNotifCellID;
    default:
        return kVPCodePrefSeparatorCellID;
    }
}

void VPCodePrefRowViewModel::setEnabled(Value enabled) {
    enabled_ = std::move(enabled);
    didChangeValueForKey("enabled");
}

} // namespace velmo
