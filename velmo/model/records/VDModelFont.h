#pragma once

#include <optional>
#include <string>

#include "velmo/model/core/VDModel.h"
#include "velmo/model/core/VDNumber.h"

namespace velmo {

/// One font entry of the theme: a font the document uses, and where the generated code gets it
/// from (a copied file, a web font's style sheet, or the platform). Compared by value, so a
/// merge of themes keeps one entry per font.
class VDModelFont : public VDModel {
    VD_MODEL_CLASS(VDModelFont)

    /// The font name as the document used it.
    const std::optional<std::string>& familyName() const { return familyName_; }
    void setFamilyName(std::optional<std::string> v) { familyName_ = std::move(v); }
    /// File name of a copied font file.
    const std::optional<std::string>& fileName() const { return fileName_; }
    void setFileName(std::optional<std::string> v) { fileName_ = std::move(v); }
    /// Style-sheet URL of a web font.
    const std::optional<std::string>& cssLink() const { return cssLink_; }
    void setCssLink(std::optional<std::string> v) { cssLink_ = std::move(v); }
    /// CSS weight.
    const std::optional<std::string>& weight() const { return weight_; }
    void setWeight(std::optional<std::string> v) { weight_ = std::move(v); }
    const std::optional<std::string>& fontName() const { return fontName_; }
    void setFontName(std::optional<std::string> v) { fontName_ = std::move(v); }
    const VDNumber& size() const { return size_; }
    void setSize(VDNumber v) { size_ = std::move(v); }
    const VDNumber& lineSpacing() const { return lineSpacing_; }
    void setLineSpacing(VDNumber v) { lineSpacing_ = std::move(v); }
    const VDNumber& letterSpacing() const { return letterSpacing_; }
    void setLetterSpacing(VDNumber v) { letterSpacing_ = std::move(v); }
    /// "normal" or "italic".
    const std::optional<std::string>& style() const { return style_; }
    void setStyle(std::optional<std::string> v) { style_ = std::move(v); }
    /// The family to ask the platform for.
    const std::optional<std::string>& originalFontName() const { return originalFontName_; }
    void setOriginalFontName(std::optional<std::string> v) { originalFontName_ = std::move(v); }
    /// The design tool's style text, looked at for "Bold" and "Italic".
    const std::optional<std::string>& originalStyle() const { return originalStyle_; }
    void setOriginalStyle(std::optional<std::string> v) { originalStyle_ = std::move(v); }

    /// An object of exactly this class whose names, file, link, weight, size and spacings all
    /// match (nil matching only nil). `style` and `originalStyle` take no part: two entries that
    /// differ only there are one font, and a merge keeps the first.
    bool isEqual(const Object& other) const override;
    /// The sum of the hashes of `familyName`, `fileName` and `cssLink`.
    std::size_t hash() const override;

private:
    std::optional<std::string> familyName_;
    std::optional<std::string> fileName_;
    std::optional<std::string> cssLink_;
    std::optional<std::string> weight_;
    std::optional<std::string> fontName_;
    VDNumber size_;
    VDNumber lineSpacing_;
    VDNumber letterSpacing_;
    std::optional<std::string> style_;
    std::optional<std::string> originalFontName_;
    std::optional<std::string> originalStyle_;
};

} // namespace velmo
