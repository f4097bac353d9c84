#pragma once

#include <vector>

namespace velmo {

/// The platform's colour: components in a colour-space model, alpha last. What the interface
/// theme and the colour operations hand to a host.
struct PlatformColor {
    enum class ColorSpaceModel { Gray, RGB, CMYK };

    ColorSpaceModel model = ColorSpaceModel::RGB;
    /// The model's components, then alpha: gray (white, alpha), RGB (r, g, b, alpha),
    /// CMYK (c, m, y, k, alpha). Each in 0 to 1.
    std::vector<double> components{0, 0, 0, 1};

    static PlatformColor rgb(double red, double green, double blue, double alpha);
    static PlatformColor gray(double white, double alpha);
    static PlatformColor cmyk(double cyan, double magenta, double yellow, double black, double alpha);
    /// White 0 with alpha 0, as the platform's clear colour is.
    static PlatformColor clear() { return gray(0, 0); }

    double alpha() const { return components.empty() ? 1.0 : components.back(); }
    /// The same colour in device RGB.
    PlatformColor usingDeviceRGB() const;

    friend bool operator==(const PlatformColor&, const PlatformColor&) = default;
};

} // namespace velmo
