#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A web page embedded in the prototype, on white.
class VDModelWebView : public VDModelView {
    VD_MODEL_CLASS(VDModelWebView)

    void fillDefaultValues() override;

    const std::optional<std::string>& url() const { return url_; }
    void setUrl(std::optional<std::string> v) { url_ = std::move(v); }
    /// The editor loads the page instead of a placeholder.
    bool previewInEditor() const { return previewInEditor_ != 0; }
    void setPreviewInEditor(bool v) { previewInEditor_ = v ? 1 : 0; }

private:
    std::optional<std::string> url_;
    std::uint8_t previewInEditor_ = 0;
};

} // namespace velmo
