#pragma once

#include "velmo/model/records/VDModelBar.h"

namespace velmo {

/// The document's theme: navigation bar, status bar, recently used fonts, the fonts of the
/// document with their style-sheet mapping, and the colour and text-style libraries.
class VDModelTheme : public VDModel {
    VD_MODEL_CLASS(VDModelTheme)

    void fillDefaultValues() override;

    const std::shared_ptr<VDModelBar>& navBar() const { return navBar_; }
    void setNavBar(std::shared_ptr<VDModelBar> v) { navBar_ = std::move(v); }
    std::int32_t statusbarType() const { return statusbarType_; }
    void setStatusbarType(std::int32_t v) { statusbarType_ = v; }
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }
    /// Strings, most recent first.
    const Array& recentFonts() const { return recentFonts_; }
    void setRecentFonts(Array v) { recentFonts_ = std::move(v); }
    const Array& recentFontsFamilies() const { return recentFontsFamilies_; }
    void setRecentFontsFamilies(Array v) { recentFontsFamilies_ = std::move(v); }
    /// `VDModelFont` values; nil until fonts are collected.
    const Array& fonts() const { return fonts_; }
    void setFonts(Array v) { fonts_ = std::move(v); }
    const Dictionary& fontsCssMapping() const { return fontsCssMapping_; }
    void setFontsCssMapping(Dictionary v) { fontsCssMapping_ = std::move(v); }
    const Dictionary& globalColors() const { return globalColors_; }
    void setGlobalColors(Dictionary v) { globalColors_ = std::move(v); }
    const Dictionary& documentColors() const { return documentColors_; }
    void setDocumentColors(Dictionary v) { documentColors_ = std::move(v); }
    const Dictionary& textStyles() const { return textStyles_; }
    void setTextStyles(Dictionary v) { textStyles_ = std::move(v); }

    /// addRecentFont:family: — each list on its own: equal entries go, the new one comes first,
    /// five are kept. One family serves several fonts, so the lists can shrink apart.
    void addRecentFont(const std::string& font, const std::string& family);
    /// mergeFonts: — appends each font of the other theme that this one lacks. A nil `fonts`
    /// stays nil: a theme is expected to hold an array before fonts are merged into it.
    void mergeFonts(const VDModelTheme& other);

private:
    std::shared_ptr<VDModelBar> navBar_;
    std::int32_t statusbarType_ = 0;
    std::optional<std::string> name_;
    Array recentFonts_;
    Array recentFontsFamilies_;
    Array fonts_;
    Dictionary fontsCssMapping_;
    Dictionary globalColors_;
    Dictionary documentColors_;
    Dictionary textStyles_;
};

} // namespace velmo
