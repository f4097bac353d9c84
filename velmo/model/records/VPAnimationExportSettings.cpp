#include "velmo/model/records/VPAnimationExportSettings.h"

#include "velmo/foundation/UserDefaults.h"

namespace velmo {

const VDModelClass& VPAnimationExportSettings::classObject() {
    using C = VPAnimationExportSettings;
    static const VDModelClass cls("VPAnimationExportSettings", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::fps, &C::setFps>("fps"),
                                      field<&C::scale, &C::setScale>("scale"),
                                      field<&C::loopCount, &C::setLoopCount>("loopCount"),
                                      field<&C::transparency, &C::setTransparency>("transparency"),
                                  });
    return cls;
}

Dictionary VPAnimationExportSettings::archive() const {
    return Dictionary{
        {"fps", Value(static_cast<long long>(fps_))},
        {"scale", Value(static_cast<long long>(scale_))},
        {"loopCount", Value(static_cast<long long>(loopCount_))},
        {"transparency", Value(transparency())},
    };
}

std::shared_ptr<VPAnimationExportSettings> VPAnimationExportSettings::unarchive(const Value& archive) {
    if (!archive.isDictionary()) return nullptr;
    const Dictionary d = archive.dictionary();
    auto settings = create();
    settings->fps_ = d.get("fps").int64Value();
    settings->scale_ = d.get("scale").int64Value();
    settings->loopCount_ = d.get("loopCount").int64Value();
    settings->setTransparency(d.get("transparency").boolValue());
    return settings;
}

bool VPAnimationExportSettings::save() const {
    auto& defaults = UserDefaults::standardUserDefaults();
    const bool stored = defaults.setObject(Value(archive()), kAnimationExportSettingsDefaultsKey);
    return defaults.synchronize() && stored;
}

std::shared_ptr<VPAnimationExportSettings> VPAnimationExportSettings::load() {
    if (auto saved = unarchive(
            UserDefaults::standardUserDefaults().objectForKey(kAnimationExportSettingsDefaultsKey))) {
        return saved;
    }
    auto settings = create();
    settings->fps_ = 30;
    settings->scale_ = 100;
    settings->setTransparency(false);
    return settings;
}

} // namespace velmo
