#pragma once

#include "velmo/model/records/VDModelSpan.h"
#include "velmo/model/records/VDModelTextFields.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// Static text, with styled runs (`VDModelSpan`s) over it. Its class operations hold the tables
/// of the phone platform's font families, which hosts fill their font pickers from; the library
/// itself doesn't read them.
class VDModelLabel : public VDModelTextFields<VDModelView> {
    VD_MODEL_CLASS(VDModelLabel)

    /// "Text" in black 12-point "System", named "Label".
    void fillDefaultValues() override;

    /// Stores the text with each line separator (U+2028) turned into "\n". A label still named
    /// "View" (or unnamed) is named after the text, "Label: <text>", unless a person named it;
    /// an empty text names it "Label" whatever the person did. Any other name stays.
    void setText(std::optional<std::string> v) override;
    bool respondsToLines() const override { return true; }
    std::int32_t lines() const override { return lines_; }
    void setLines(std::int32_t v) override { lines_ = v; }
    bool isMinWidth() const { return isMinWidth_ != 0; }
    void setIsMinWidth(bool v) { isMinWidth_ = v ? 1 : 0; }
    bool isAutoWidth() const { return isAutoWidth_ != 0; }
    void setIsAutoWidth(bool v) { isAutoWidth_ = v ? 1 : 0; }
    bool hasUnderline() const { return hasUnderline_ != 0; }
    void setHasUnderline(bool v) { hasUnderline_ = v ? 1 : 0; }
    bool hasBullets() const { return hasBullets_ != 0; }
    void setHasBullets(bool v) { hasBullets_ = v ? 1 : 0; }
    bool hasNumbers() const { return hasNumbers_ != 0; }
    void setHasNumbers(bool v) { hasNumbers_ = v ? 1 : 0; }
    bool hasStrike() const { return hasStrike_ != 0; }
    void setHasStrike(bool v) { hasStrike_ = v ? 1 : 0; }
    /// The styled runs, `VDModelSpan` values in text order; nil when the text has one style.
    const Array& spans() const { return spans_; }
    void setSpans(Array v) { spans_ = std::move(v); }
    /// Vertical alignment.
    const std::optional<std::string>& vAlignment() const { return vAlignment_; }
    void setVAlignment(std::optional<std::string> v) { vAlignment_ = std::move(v); }

    /// fixFontNameForMacOS: — the name the desktop knows a phone font by: a leading "." goes
    /// (and nothing else is tried), "SFUIText" gains "-Regular", "System" is "SF UI Text".
    static std::string fixFontNameForMacOS(std::string_view name);

    // ---- the phone platform's font families, made on first call and kept; read-only

    /// The 77 family names, "System" first.
    static const Array& familyNames();
    /// A font's PostScript name to the pair [family, style] ("CourierNewPS-BoldMT" gives
    /// ["Courier New", "Bold"]).
    static const Dictionary& fontsToFamilyNames();
    /// The same turned round: a family to its [style, PostScript name] pairs, in the order a
    /// picker offers them.
    static const Dictionary& familyNamesToFonts();

private:
    std::int32_t lines_ = 0;
    std::uint8_t isMinWidth_ = 0;
    std::uint8_t isAutoWidth_ = 0;
    std::uint8_t hasUnderline_ = 0;
    std::uint8_t hasBullets_ = 0;
    std::uint8_t hasNumbers_ = 0;
    std::uint8_t hasStrike_ = 0;
    Array spans_;
    std::optional<std::string> vAlignment_;
};

} // namespace velmo
