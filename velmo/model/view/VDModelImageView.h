#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A picture from the document's assets, optionally tinted. Its name follows the asset it shows
/// until a person names it.
class VDModelImageView : public VDModelView {
    VD_MODEL_CLASS(VDModelImageView)

    /// "Image", no asset, mode 2, a black tint that is off.
    void fillDefaultValues() override;

    const std::optional<std::string>& fileName() const { return fileName_; }
    void setFileName(std::optional<std::string> v) { fileName_ = std::move(v); }
    /// The asset's name.
    const std::optional<std::string>& imageName() const { return imageName_; }
    /// Also renames the view: "Image: <name>" unless a person named it; plain "Image" for an
    /// empty name, whoever named it. Decoding goes through here too.
    void setImageName(std::optional<std::string> v);
    /// Passed to the code generator as it stands.
    std::int32_t imageMode() const { return imageMode_; }
    void setImageMode(std::int32_t v) { imageMode_ = v; }
    bool isTintOn() const { return isTintOn_ != 0; }
    void setIsTintOn(bool v) { isTintOn_ = v ? 1 : 0; }
    const std::shared_ptr<VDModelColor>& tintColor() const { return tintColor_; }
    void setTintColor(std::shared_ptr<VDModelColor> v) { tintColor_ = std::move(v); }

private:
    std::optional<std::string> fileName_;
    std::optional<std::string> imageName_;
    std::int32_t imageMode_ = 0;
    std::uint8_t isTintOn_ = 0;
    std::shared_ptr<VDModelColor> tintColor_;
};

} // namespace velmo
