#pragma once

#include <string>
#include <string_view>

#include "velmo/foundation/PlatformColor.h"
#include "velmo/model/core/VDModel.h"

namespace velmo {

/// A colour of the document: four components in 0 to 1, single precision. No identifier, no
/// variable name; compared by value.
class VDModelColor : public VDModel {
    VD_MODEL_CLASS(VDModelColor)

    /// Opaque white, and nothing of the base class: colours have no identifier.
    void fillDefaultValues() override;
    bool needsModelID() const override { return false; }

    float red() const { return red_; }
    void setRed(float v) { red_ = v; }
    float green() const { return green_; }
    void setGreen(float v) { green_ = v; }
    float blue() const { return blue_; }
    void setBlue(float v) { blue_ = v; }
    float alpha() const { return alpha_; }
    void setAlpha(float v) { alpha_ = v; }

    /// colorWithRed:green:blue:alpha:
    static std::shared_ptr<VDModelColor> colorWithRed(float red, float green, float blue, float alpha);
    static std::shared_ptr<VDModelColor> blackColor();
    static std::shared_ptr<VDModelColor> whiteColor();
    /// White with alpha 0, not black.
    static std::shared_ptr<VDModelColor> clearColor();
    static std::shared_ptr<VDModelColor> navBarDefaultColor();
    static std::shared_ptr<VDModelColor> navBarDefaultTintColor();
    static std::shared_ptr<VDModelColor> tableSeperatorDefaultColor();
    static std::shared_ptr<VDModelColor> placeHolderColor();

    /// colorFromHex:alpha: — "#RRGGBB", "0xRRGGBB" and longer forms (read as their first six
    /// digits); five characters or fewer give opaque black whatever the alpha.
    static std::shared_ptr<VDModelColor> colorFromHex(std::string_view hex, float alpha);

    /// "#rrggbb", each component times 255 in single precision, cut to an integer. No alpha.
    std::string hex() const;
    /// Alpha below 0.04, compared in double precision on the widened float.
    bool isTransparent() const;
    /// All four components above 0.96.
    bool isWhite() const;

    /// Same object, or one of this class or a subclass with exactly equal components.
    bool isEqual(const Object& other) const override;
    /// The sum of the components times 255, cut to an unsigned integer.
    std::size_t hash() const override;

private:
    float red_ = 1;
    float green_ = 1;
    float blue_ = 1;
    float alpha_ = 1;
};

/// `+colorFromModelColor:` — the four components as they are.
PlatformColor colorFromModelColor(const VDModelColor& color);
/// The colour's four components after conversion to device RGB.
std::shared_ptr<VDModelColor> modelColor(const PlatformColor& color);

} // namespace velmo
