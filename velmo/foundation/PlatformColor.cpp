#include "velmo/foundation/PlatformColor.h"

namespace velmo {

PlatformColor PlatformColor::rgb(double red, double green, double blue, double alpha) {
    return PlatformColor{ColorSpaceModel::RGB, {red, green, blue, alpha}};
}

PlatformColor PlatformColor::gray(double white, double alpha) {
    return PlatformColor{ColorSpaceModel::Gray, {white, alpha}};
}

PlatformColor PlatformColor::cmyk(double cyan, double magenta, double yellow, double black, double alpha) {
    return PlatformColor{ColorSpaceModel::CMYK, {cyan, magenta, yellow, black, alpha}};
}

PlatformColor PlatformColor::usingDeviceRGB() const {
    const auto& c = components;
    switch (model) {
    case ColorSpaceModel::RGB:
        return *this;
    case ColorSpaceModel::Gray:
        return rgb(c[0], c[0], c[0], c[1]);
    case ColorSpaceModel::CMYK:
        return rgb((1 - c[0]) * (1 - c[3]), (1 - c[1]) * (1 - c[3]), (1 - c[2]) * (1 - c[3]), c[4]);
    }
    return *this;
}

} // namespace velmo
