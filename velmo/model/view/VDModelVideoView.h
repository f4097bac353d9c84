#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A video from the document's assets or from an address, on black.
class VDModelVideoView : public VDModelView {
    VD_MODEL_CLASS(VDModelVideoView)

    void fillDefaultValues() override;

    const std::optional<std::string>& videoName() const { return videoName_; }
    void setVideoName(std::optional<std::string> v) { videoName_ = std::move(v); }
    bool noControls() const { return noControls_ != 0; }
    void setNoControls(bool v) { noControls_ = v ? 1 : 0; }
    bool autoplay() const { return autoplay_ != 0; }
    void setAutoplay(bool v) { autoplay_ = v ? 1 : 0; }
    bool allowFullScreen() const { return allowFullScreen_ != 0; }
    void setAllowFullScreen(bool v) { allowFullScreen_ = v ? 1 : 0; }
    bool loop() const { return loop_ != 0; }
    void setLoop(bool v) { loop_ = v ? 1 : 0; }
    bool cover() const { return cover_ != 0; }
    void setCover(bool v) { cover_ = v ? 1 : 0; }
    bool playOnHover() const { return playOnHover_ != 0; }
    void setPlayOnHover(bool v) { playOnHover_ = v ? 1 : 0; }

private:
    std::optional<std::string> videoName_;
    std::uint8_t noControls_ = 0;
    std::uint8_t autoplay_ = 0;
    std::uint8_t allowFullScreen_ = 0;
    std::uint8_t loop_ = 0;
    std::uint8_t cover_ = 0;
    std::uint8_t playOnHover_ = 0;
};

} // namespace velmo
