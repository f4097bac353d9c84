#include "velmo/config/VDPluginConfigObject.h"

#include <stdexcept>

#include "velmo/model/values/DictionaryExtensions.h"

namespace velmo {

const VDClass& VDPluginConfigObject::classObject() {
    static const VDClass cls("VDPluginConfigObject", &VDBaseObject::classObject(), [] {
        return std::static_pointer_cast<Object>(std::make_shared<VDPluginConfigObject>());
    });
    return cls;
}

Dictionary VDPluginConfigObject::jsonMap() const {
    // A dictionary can't hold an absent value: the features are all five or nothing.
    if (ratePreviewRatingMax.isNone()) {
        throw std::invalid_argument(std::string("the configuration has no \"") +
                                    kVDPluginConfigPreviewRatingMaxKey + "\" to write");
    }
    const Dictionary features{
        {kVDPluginConfigFastPreviewKey, Value(fastPreviewEnabled)},
        {kVDPluginConfigFastPreviewExportKey, Value(fastPreviewExportEnabled)},
        {kVDPluginConfigFastProcessingKey, Value(bgModelProcessingEnabled)},
        {kVDPluginConfigPreviewRatingKey, Value(ratePreviewEnabled)},
        {kVDPluginConfigPreviewRatingMaxKey, ratePreviewRatingMax},
    };
    Array items = Array::create(codePrefItems.size());
    for (const auto& item : codePrefItems)
        items.push_back(Value(item));
    return Dictionary{{kVDPluginConfigFeaturesKey, Value(features)},
                      {kVDPluginConfigCodeOptimizationsKey, Value(items)}};
}

void VDPluginConfigObject::initWithSerializableObject(const Value& object) {
    VDBaseObject::initWithSerializableObject(object);
    const Dictionary d = object.dictionary();
    const Dictionary features = _vp_dicForKey(d, kVDPluginConfigFeaturesKey);
    fastPreviewEnabled = _vp_boolForKey(features, kVDPluginConfigFastPreviewKey);
    fastPreviewExportEnabled = _vp_boolForKey(features, kVDPluginConfigFastPreviewExportKey);
    bgModelProcessingEnabled = _vp_boolForKey(features, kVDPluginConfigFastProcessingKey);
    ratePreviewEnabled = _vp_boolForKey(features, kVDPluginConfigPreviewRatingKey);
    ratePreviewRatingMax = _vp_numberForKey(features, kVDPluginConfigPreviewRatingMaxKey);
    codePrefItems.clear();
    for (const Value& item : objectsArrayFromArray(VDCodePrefConfigItemObject::classObject(),
                                                   _vp_arrayForKey(d, kVDPluginConfigCodeOptimizationsKey)))
        codePrefItems.push_back(item.objectAs<VDCodePrefConfigItemObject>());
}

std::shared_ptr<VDBaseObject> VDPluginConfigObject::copy() const {
    auto made = std::static_pointer_cast<VDPluginConfigObject>(VDBaseObject::copy());
    made->fastPreviewEnabled = fastPreviewEnabled;
    made->fastPreviewExportEnabled = fastPreviewExportEnabled;
    made->bgModelProcessingEnabled = bgModelProcessingEnabled;
    for (const auto& item : codePrefItems)
        made->codePrefItems.push_back(std::static_pointer_cast<VDCodePrefConfigItemObject>(item->copy()));
    return made;
}

std::shared_ptr<VDCodePrefConfigItemObject> VDPluginConfigObject::notifItem() const {
    for (const auto& item : codePrefItems) {
        if (item->type == static_cast<std::uint32_t>(VDCodePrefConfigItemType::Notification)) return item;
    }
    return nullptr;
}

} // namespace velmo
