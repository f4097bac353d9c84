#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "velmo/model/records/VDModelColor.h"

namespace velmo {

/// What labels, their styled runs and text inputs have in common, so that code can read and set
/// text properties without knowing which of them it holds: reach it from a model with
/// `std::dynamic_pointer_cast<VDModelWithTextProperties>`.
///
/// Sizes and weights are text, as the design tool writes them; the integers of `linebreak` and
/// `alignment` are settled by the exporter and the code generator, and only carried here.
class VDModelWithTextProperties {
public:
    virtual ~VDModelWithTextProperties() = default;

    virtual const std::optional<std::string>& text() const = 0;
    virtual void setText(std::optional<std::string> v) = 0;
    /// The font's name.
    virtual const std::optional<std::string>& font() const = 0;
    virtual void setFont(std::optional<std::string> v) = 0;
    virtual const std::optional<std::string>& fontWeight() const = 0;
    virtual void setFontWeight(std::optional<std::string> v) = 0;
    virtual const std::optional<std::string>& textSize() const = 0;
    virtual void setTextSize(std::optional<std::string> v) = 0;
    virtual const std::shared_ptr<VDModelColor>& textColor() const = 0;
    virtual void setTextColor(std::shared_ptr<VDModelColor> v) = 0;
    virtual std::int32_t linebreak() const = 0;
    virtual void setLinebreak(std::int32_t v) = 0;
    virtual std::int32_t alignment() const = 0;
    virtual void setAlignment(std::int32_t v) = 0;
    /// Letter spacing.
    virtual float kern() const = 0;
    virtual void setKern(float v) = 0;
    virtual float lineHeight() const = 0;
    virtual void setLineHeight(float v) = 0;
    /// Paragraph spacing.
    virtual float pSpacing() const = 0;
    virtual void setPSpacing(float v) = 0;

    /// Whether the object has a number of lines, which is optional: only labels have one.
    virtual bool respondsToLines() const { return false; }
    /// The number of lines; 0 where `respondsToLines` is false.
    virtual std::int32_t lines() const { return 0; }
    /// Has no effect where `respondsToLines` is false.
    virtual void setLines(std::int32_t v) { (void)v; }

protected:
    VDModelWithTextProperties() = default;
    VDModelWithTextProperties(const VDModelWithTextProperties&) = default;
    VDModelWithTextProperties& operator=(const VDModelWithTextProperties&) = default;
};

} // namespace velmo
