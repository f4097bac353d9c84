#pragma once

#include <functional>

namespace velmo {

/// Where the interface theme learns the appearance it follows: whether it is dark now, and when
/// that may have changed.
class VPAppearanceSource {
public:
    virtual ~VPAppearanceSource() = default;

    /// True when the appearance is dark now.
    virtual bool isDark() const = 0;
    /// `onChange` is called on the main thread each time the appearance may have changed, until
    /// the source goes. Set once.
    virtual void watch(std::function<void()> onChange) = 0;

protected:
    VPAppearanceSource() = default;
    VPAppearanceSource(const VPAppearanceSource&) = default;
    VPAppearanceSource& operator=(const VPAppearanceSource&) = default;
};

} // namespace velmo
