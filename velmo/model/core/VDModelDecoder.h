#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "velmo/foundation/Value.h"
#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The class registry: maps a "model_class" name to a class, and is the one public door through
/// which a document dictionary becomes a model tree. Its shared instance installs itself as the
/// model's mapping when first made.
class VDModelDecoder : public VDModelMapping {
public:
    /// The names that the registry answers first, in this order. Every row names its own class,
    /// so a look-up keyed on the class name gives the same answers; the registry enters these
    /// classes first, in this order, as they exist.
    static constexpr std::array<std::string_view, 31> kFastTableNames = {
        "VDModelViewConstraints", "VDModelConstraint",   "VDModelHover",          "VDModelApp",
        "VDModelWidget",          "VDModelScreen",       "VDModelLabel",          "VDModelView",
        "VDModelImageView",       "VDModelTableView",    "VDModelCellView",       "VDModelTextView",
        "VDModelMapView",         "VDModelWebView",      "VDModelSliderView",     "VDModelSwitchView",
        "VDModelGradientView",    "VDModelProgressView", "VDModelCollectionView", "VDModelVideoView",
        "VDModelBlurView",        "VDModelTabBarScreen", "VDModelTabBar",         "VDModelTabBarItem",
        "VDModelStackView",       "VDModelSubmitAction", "VDModelViewPadding",    "VDModelFrame",
        "VDModelBorder",          "VDModelShadow",       "VDModelSpecsInfo",
    };

    /// The shared instance; making it installs it with `VDModel::setMapping`.
    static const std::shared_ptr<VDModelDecoder>& sharedInstance();

    /// The top-level road of decoding. Installs the shared decoder when no mapping is in force;
    /// a dictionary whose "model_class" isn't a model class is logged as
    /// "Wrong model class in dictionary: %@" and gives nullptr.
    static std::shared_ptr<VDModel> modelObjectFromDictionary(const Dictionary& dictionary);
    /// `modelObjectFromDictionary` of each element, in order; failures are left out.
    static Array modelArrayFromDictionaryArray(const Array& dictionaries);

    const VDClass* classForModelClassName(std::string_view name) const override;

    /// Enters a class (model or not) under its own name. The library's classes are entered by
    /// `registerModelClasses`; hosts and tests may add their own.
    void registerClass(const VDClass& cls);
    /// Every class the registry knows, in the order entered.
    std::vector<const VDClass*> registeredClasses() const;

private:
    VDModelDecoder();
    mutable std::mutex mutex_;
    std::unordered_map<std::string_view, const VDClass*> classes_;
    std::vector<const VDClass*> order_;
};

} // namespace velmo
