#pragma once

#include <optional>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The last links the service handed out for a document. None of its own fields is in
/// `fieldNames`: they never reach the document's JSON, and a decode or a copy leaves them empty.
class VDModelAppLinks : public VDModel {
    VD_MODEL_CLASS(VDModelAppLinks)

    const std::optional<std::string>& lastShareLink() const { return lastShareLink_; }
    void setLastShareLink(std::optional<std::string> v) { lastShareLink_ = std::move(v); }
    bool lastShareLinkValid() const { return lastShareLinkValid_ != 0; }
    void setLastShareLinkValid(bool v) { lastShareLinkValid_ = v ? 1 : 0; }
    const std::optional<std::string>& lastReleaseShortID() const { return lastReleaseShortID_; }
    void setLastReleaseShortID(std::optional<std::string> v) { lastReleaseShortID_ = std::move(v); }
    const std::optional<std::string>& specsLink() const { return specsLink_; }
    void setSpecsLink(std::optional<std::string> v) { specsLink_ = std::move(v); }
    const std::optional<std::string>& lastCodeQuaymarkReleaseLink() const {
        return lastCodeQuaymarkReleaseLink_;
    }
    void setLastCodeQuaymarkReleaseLink(std::optional<std::string> v) {
        lastCodeQuaymarkReleaseLink_ = std::move(v);
    }
    const std::optional<std::string>& lastCodeQuaymarkSlugLink() const { return lastCodeQuaymarkSlugLink_; }
    void setLastCodeQuaymarkSlugLink(std::optional<std::string> v) {
        lastCodeQuaymarkSlugLink_ = std::move(v);
    }
    const std::optional<std::string>& lastCodeExportID() const { return lastCodeExportID_; }
    void setLastCodeExportID(std::optional<std::string> v) { lastCodeExportID_ = std::move(v); }
    bool lastCodeExportLinkValid() const { return lastCodeExportLinkValid_ != 0; }
    void setLastCodeExportLinkValid(bool v) { lastCodeExportLinkValid_ = v ? 1 : 0; }

private:
    std::optional<std::string> lastShareLink_;
    std::uint8_t lastShareLinkValid_ = 0;
    std::optional<std::string> lastReleaseShortID_;
    std::optional<std::string> specsLink_;
    std::optional<std::string> lastCodeQuaymarkReleaseLink_;
    std::optional<std::string> lastCodeQuaymarkSlugLink_;
    std::optional<std::string> lastCodeExportID_;
    std::uint8_t lastCodeExportLinkValid_ = 0;
};

} // namespace velmo
