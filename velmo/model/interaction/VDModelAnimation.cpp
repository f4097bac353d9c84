#include "velmo/model/interaction/VDModelAnimation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace velmo {

namespace {

struct NamedCurve {
    std::string_view curve;
    std::string_view cubicBezier;
};

// One table for both directions: `setCurve` reads it by name, `updateCurveFromCubic` by numbers,
// in this order.
constexpr std::array<NamedCurve, 4> kNamedCurves = {{
    {"ease-in", ".42;0;1;1"},
    {"ease-in-out", ".42;0;.58;1"},
    {"ease-out", "0;0;.58;1"},
    {"linear", "0;0;1;1"},
}};

constexpr std::string_view kDefaultCurve = "ease-in-out";
constexpr std::string_view kCustomCurve = "custom";

// A part reads as the platform's float reading does: leading blanks skipped, the longest number
// at the front taken, and 0 when there is none.
float readFloat(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\n')) {
        text.remove_prefix(1);
    }
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    float value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() ? value : 0.0f;
}

std::vector<float> controlValues(std::string_view cubicBezier) {
    std::vector<float> values;
    std::size_t start = 0;
    while (true) {
        const std::size_t at = cubicBezier.find(';', start);
        values.push_back(
            readFloat(cubicBezier.substr(start, at == std::string_view::npos ? at : at - start)));
        if (at == std::string_view::npos) break;
        start = at + 1;
    }
    return values;
}

} // namespace

const VDModelClass& VDModelAnimation::classObject() {
    using C = VDModelAnimation;
    // "curve" before "cubicBezier": decoding sets them in this order.
    static const VDModelClass cls("VDModelAnimation", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::delay, &C::setDelay>("delay"),
                                      field<&C::duration, &C::setDuration>("duration"),
                                      field<&C::curve, &C::setCurve>("curve"),
                                      field<&C::cubicBezier, &C::setCubicBezier>("cubicBezier"),
                                      field<&C::state, &C::setState>("state"),
                                  });
    return cls;
}

void VDModelAnimation::fillDefaultValues() {
    VDModel::fillDefaultValues();
    delay_ = 0;
    duration_ = 0.2f;
    setCurve(std::string(kDefaultCurve));
    state_ = Dictionary();
}

void VDModelAnimation::setCurve(std::optional<std::string> v) {
    curve_ = std::move(v);
    if (!curve_) return;
    for (const NamedCurve& row : kNamedCurves) {
        if (row.curve == *curve_) {
            cubicBezier_ = std::string(row.cubicBezier);
            return;
        }
    }
}

void VDModelAnimation::updateCurveFromCubic() {
    // The first four numbers count; a value with fewer (or none) matches no row.
    const std::vector<float> values = cubicBezier_ ? controlValues(*cubicBezier_) : std::vector<float>();
    for (const NamedCurve& row : kNamedCurves) {
        const std::vector<float> rowValues = controlValues(row.cubicBezier);
        if (values.size() >= rowValues.size() &&
            std::equal(rowValues.begin(), rowValues.end(), values.begin())) {
            curve_ = std::string(row.curve);
            return;
        }
    }
    curve_ = std::string(kCustomCurve);
}

VDModel::NameList VDModelAnimation::undoAffectedFields() const {
    return {"delay", "duration", "curve", "cubicBezier", "state"};
}

} // namespace velmo
