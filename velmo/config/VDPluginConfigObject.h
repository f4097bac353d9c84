#pragma once

#include <memory>
#include <vector>

#include "velmo/config/VDCodePrefConfigItemObject.h"
#include "velmo/model/core/VDBaseObject.h"

namespace velmo {

// Keys of the configuration document.
inline constexpr const char* kVDPluginConfigFeaturesKey = "features";
inline constexpr const char* kVDPluginConfigFastPreviewKey = "fast_preview";
inline constexpr const char* kVDPluginConfigFastPreviewExportKey = "fast_preview_export";
inline constexpr const char* kVDPluginConfigFastProcessingKey = "fast_processing_enabled";
inline constexpr const char* kVDPluginConfigPreviewRatingKey = "preview_rating_enabled";
inline constexpr const char* kVDPluginConfigPreviewRatingMaxKey = "preview_rating_max_per_day";
inline constexpr const char* kVDPluginConfigCodeOptimizationsKey = "available_code_optimizations";

/// The plugin's switches, read from the configuration document:
///
///     {"features": {"fast_preview": ..., "fast_preview_export": ..., "fast_processing_enabled": ...,
///                   "preview_rating_enabled": ..., "preview_rating_max_per_day": ...},
///      "available_code_optimizations": [item, ...]}
///
/// Other keys fall away. Values are read tolerantly: a value of the wrong kind counts as absent,
/// which is false for the switches, nothing for the daily limit and no items for the list.
class VDPluginConfigObject : public VDBaseObject {
public:
    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// Both keys in the shape above. The features are built with all five values: with no
    /// `ratePreviewRatingMax` this throws `std::invalid_argument`, so such a configuration can't be
    /// serialized, and a remote refresh over it is lost (the resource must carry the limit).
    Dictionary jsonMap() const override;
    void initWithSerializableObject(const Value& object) override;
    /// The three processing switches and a deep copy of the items. The rating fields aren't
    /// copied: a copy has false and no limit.
    std::shared_ptr<VDBaseObject> copy() const override;

    /// The first item of kind notification, or nullptr.
    std::shared_ptr<VDCodePrefConfigItemObject> notifItem() const;

    /// "features"/"fast_preview": the native preview is available (read by the host).
    bool fastPreviewEnabled = false;
    /// "features"/"fast_preview_export": export from the preview window.
    bool fastPreviewExportEnabled = false;
    /// "features"/"fast_processing_enabled": processing of the model in the background (read by
    /// the host).
    bool bgModelProcessingEnabled = false;
    /// "features"/"preview_rating_enabled": the rating pop-up is allowed (read by the host).
    bool ratePreviewEnabled = false;
    /// "features"/"preview_rating_max_per_day": the pop-up's daily limit; nil when absent.
    Value ratePreviewRatingMax;
    /// "available_code_optimizations": the rows of the code preferences pop-up.
    std::vector<std::shared_ptr<VDCodePrefConfigItemObject>> codePrefItems;
};

} // namespace velmo
