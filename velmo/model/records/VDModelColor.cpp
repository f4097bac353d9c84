#include "velmo/model/records/VDModelColor.h"

#include <fmt/format.h>

#include "velmo/model/values/ColorExtensions.h"

namespace velmo {

const VDModelClass& VDModelColor::classObject() {
    using C = VDModelColor;
    static const VDModelClass cls("VDModelColor", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::red, &C::setRed>("red"),
                                      field<&C::green, &C::setGreen>("green"),
                                      field<&C::blue, &C::setBlue>("blue"),
                                      field<&C::alpha, &C::setAlpha>("alpha"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

void VDModelColor::fillDefaultValues() {
    red_ = green_ = blue_ = alpha_ = 1;
}

std::shared_ptr<VDModelColor> VDModelColor::colorWithRed(float red, float green, float blue, float alpha) {
    auto color = create();
    color->red_ = red;
    color->green_ = green;
    color->blue_ = blue;
    color->alpha_ = alpha;
    return color;
}

std::shared_ptr<VDModelColor> VDModelColor::blackColor() {
    return colorWithRed(0, 0, 0, 1);
}
std::shared_ptr<VDModelColor> VDModelColor::whiteColor() {
    return colorWithRed(1, 1, 1, 1);
}
std::shared_ptr<VDModelColor> VDModelColor::clearColor() {
    return colorWithRed(1, 1, 1, 0);
}
std::shared_ptr<VDModelColor> VDModelColor::navBarDefaultColor() {
    return colorWithRed(250 / 255.0f, 250 / 255.0f, 250 / 255.0f, 1);
}
std::shared_ptr<VDModelColor> VDModelColor::navBarDefaultTintColor() {
    return colorWithRed(0, 107 / 255.0f, 1, 1);
}
std::shared_ptr<VDModelColor> VDModelColor::tableSeperatorDefaultColor() {
    return colorWithRed(200 / 255.0f, 199 / 255.0f, 204 / 255.0f, 1);
}
std::shared_ptr<VDModelColor> VDModelColor::placeHolderColor() {
    return colorWithRed(186 / 255.0f, 187 / 255.0f, 194 / 255.0f, 1);
}

PlatformColor colorFromModelColor(const VDModelColor& color) {
    return PlatformColor::rgb(color.red(), color.green(), color.blue(), color.alpha());
}

std::shared_ptr<VDModelColor> modelColor(const PlatformColor& color) {
    const PlatformColor rgb = color.usingDeviceRGB();
    const auto& c = rgb.components;
    return VDModelColor::colorWithRed(static_cast<float>(c[0]), static_cast<float>(c[1]),
                                      static_cast<float>(c[2]), static_cast<float>(c[3]));
}

std::shared_ptr<VDModelColor> VDModelColor::colorFromHex(std::string_view hex, float alpha) {
    const auto digits = detail::hexColorDigits(hex);
    if (!digits) return blackColor();
    int r = 0, g = 0, b = 0;
    if (digits->size() >= 6) detail::readHexTriple(*digits, r, g, b);
    return colorWithRed(r / 255.0f, g / 255.0f, b / 255.0f, alpha);
}

std::string VDModelColor::hex() const {
    const auto byte = [](float c) { return static_cast<unsigned>(static_cast<int>(c * 255.0f)); };
    return fmt::format("#{:02x}{:02x}{:02x}", byte(red_), byte(green_), byte(blue_));
}

bool VDModelColor::isTransparent() const {
    return static_cast<double>(alpha_) < 0.04;
}

bool VDModelColor::isWhite() const {
    return static_cast<double>(red_) > 0.96 && static_cast<double>(blue_) > 0.96 &&
           static_cast<double>(green_) > 0.96 && static_cast<double>(alpha_) > 0.96;
}

bool VDModelColor::isEqual(const Object& other) const {
    if (this == &other) return true;
    if (!other.isKindOf(objectClass())) return false;
    const auto& c = static_cast<const VDModelColor&>(other);
    return red_ == c.red_ && green_ == c.green_ && blue_ == c.blue_ && alpha_ == c.alpha_;
}

std::size_t VDModelColor::hash() const {
    const float sum = (red_ + green_ + blue_ + alpha_) * 255.0f;
    return sum > 0 ? static_cast<std::size_t>(sum) : 0;
}

} // namespace velmo
