#pragma once

#include <cstdint>

#include "velmo/model/core/VDModel.h"

namespace velmo {

inline constexpr const char* kAnimationExportSettingsDefaultsKey = "com.velmoapp.animation.export.settings";

/// How an animation is rendered for export, kept in the user's defaults between sessions.
class VPAnimationExportSettings : public VDModel {
    VD_MODEL_CLASS(VPAnimationExportSettings)

    /// Frames a second.
    std::int64_t fps() const { return fps_; }
    void setFps(std::int64_t v) { fps_ = v; }
    /// Percent.
    std::int64_t scale() const { return scale_; }
    void setScale(std::int64_t v) { scale_ = v; }
    std::int64_t loopCount() const { return loopCount_; }
    void setLoopCount(std::int64_t v) { loopCount_ = v; }
    bool transparency() const { return transparency_ != 0; }
    void setTransparency(bool v) { transparency_ = v ? 1 : 0; }

    /// Stores the archive of the four values under "com.velmoapp.animation.export.settings".
    bool save() const;
    /// The saved settings; without any (or with an archive that can't be read), 30 frames a
    /// second at 100 percent, opaque, loop count 0.
    static std::shared_ptr<VPAnimationExportSettings> load();

    /// The archive: "fps", "scale", "loopCount" as integers, "transparency" as a truth value.
    Dictionary archive() const;
    /// A new object from an archive; nullptr when the value isn't one.
    static std::shared_ptr<VPAnimationExportSettings> unarchive(const Value& archive);

private:
    std::int64_t fps_ = 0;
    std::int64_t scale_ = 0;
    std::int64_t loopCount_ = 0;
    std::uint8_t transparency_ = 0;
};

} // namespace velmo
