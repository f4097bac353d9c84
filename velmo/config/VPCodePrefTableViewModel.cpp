#include "velmo/config/VPCodePrefTableViewModel.h"

#include <algorithm>
#include <utility>

#include "velmo/config/VPPluginConfigManager.h"

namespace velmo {

namespace {

constexpr double kTableMargin = 40;
constexpr double kTableMaxHeight = 260;

bool isType(const VDCodePrefConfigItemObject& item, VDCodePrefConfigItemType type) {
    return item.type == static_cast<std::uint32_t>(type);
}

} // namespace

const VDClass& VPCodePrefTableViewModel::classObject() {
    static const VDClass* cls = [] {
        static const VDClass c("VPCodePrefTableViewModel", &VPObservableObject::classObject(), nullptr);
        VDPropertyRegistry::registerClass(c,
                                          {observableProp("enabledCodePrefsItems", "NSArray",
                                                          &VPCodePrefTableViewModel::enabledCodePrefsItems)});
        return &c;
    }();
    return *cls;
}

std::shared_ptr<VPCodePrefTableViewModel> VPCodePrefTableViewModel::make(
    const std::vector<std::shared_ptr<VDCodePrefConfigItemObject>>& codePrefItems) {
    classObject();
    std::shared_ptr<VPCodePrefTableViewModel> made(new VPCodePrefTableViewModel());
    made->rows_ = rowsFromModel(codePrefItems);
    made->subsribeOnCodePrefChanges();
    return made;
}

std::vector<std::shared_ptr<VPCodePrefRowViewModel>> VPCodePrefTableViewModel::rowsFromModel(
    const std::vector<std::shared_ptr<VDCodePrefConfigItemObject>>& items) {
    std::vector<std::shared_ptr<VPCodePrefRowViewModel>> rows;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!items[i]) continue;
        // The first two items never get a separator before them.
        if (i >= 2 && isType(*items[i], VDCodePrefConfigItemType::Title))
            rows.push_back(std::make_shared<VPCodePrefRowViewModel>(nullptr));
        rows.push_back(std::make_shared<VPCodePrefRowViewModel>(items[i]));
    }
    return rows;
}

void VPCodePrefTableViewModel::subsribeOnCodePrefChanges() {
    std::weak_ptr<VPCodePrefTableViewModel> weak =
        std::static_pointer_cast<VPCodePrefTableViewModel>(shared_from_this());
    for (const auto& row : rows_) {
        if (row->type() != static_cast<std::uint32_t>(VDCodePrefConfigItemType::Checkbox)) continue;
        // On the presence of a state, not its truth: every checkbox starts in the set.
        if (!row->enabled().isNil()) enabledCodePrefsSet_.push_back(row->model());
        row->subscribe("enabled", [weak](const Value& changed) {
            const auto self = weak.lock();
            const auto changedRow = changed.objectAs<VPCodePrefRowViewModel>();
            if (self && changedRow) self->rowDidChange(*changedRow);
        });
    }
}

void VPCodePrefTableViewModel::rowDidChange(const VPCodePrefRowViewModel& row) {
    const auto& item = row.model();
    const auto found = std::find(enabledCodePrefsSet_.begin(), enabledCodePrefsSet_.end(), item);
    if (row.isOn()) {
        if (found == enabledCodePrefsSet_.end()) enabledCodePrefsSet_.push_back(item);
    } else if (found != enabledCodePrefsSet_.end()) {
        enabledCodePrefsSet_.erase(found);
    }
    Array items = Array::create(enabledCodePrefsSet_.size());
    for (const auto& member : enabledCodePrefsSet_)
        items.push_back(Value(member));
    setEnabledCodePrefsItems(_vp_observable(Value(items)));
}

void VPCodePrefTableViewModel::setEnabledCodePrefsItems(Value items) {
    enabledCodePrefsItems_ = std::move(items);
    didChangeValueForKey("enabledCodePrefsItems");
}

Array VPCodePrefTableViewModel::enabledCodePrefValues() const {
    Array values = Array::create();
    for (const Value& member : enabledCodePrefsItems_.array()) {
        const auto item = member.objectAs<VDCodePrefConfigItemObject>();
        if (item && item->value) values.push_back(Value(*item->value));
    }
    return values;
}

std::shared_ptr<VPCodePrefRowViewModel> VPCodePrefTableViewModel::rowAtIndex(std::size_t index) const {
    return index < rows_.size() ? rows_[index] : nullptr;
}

double VPCodePrefTableViewModel::tableHeight() const {
    double height = kTableMargin;
    for (const auto& row : rows_)
        height += row->rowHeight() + cellSpacing();
    return std::min(height, kTableMaxHeight);
}

void VPCodePrefTableViewModel::markNotificationSeen() const {
    const auto manager = VPPluginConfigManager::shared();
    const auto config = manager ? manager->pluginConfig() : nullptr;
    const auto item = config ? config->notifItem() : nullptr;
    if (item) manager->setLastCodePrefNotifID(item->notifID);
}

} // namespace velmo
