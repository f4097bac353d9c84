#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "velmo/foundation/DateFormatter.h"
#include "velmo/model/document/VDModelAppLinks.h"
#include "velmo/model/document/VDModelIDRegistry.h"
#include "velmo/model/document/VDModelScreen.h"
#include "velmo/model/records/VDModelTheme.h"

namespace velmo {

class VDModelAction;
class VDModelActionReference;

inline constexpr const char* kVDModelAppItemIDUpdatedNotification = "kVDModelAppItemIDUpdatedNotification";
inline constexpr const char* kVDModelAppItemIDRemovedNotification = "kVDModelAppItemIDRemovedNotification";

/// The root of a document: the screens, the free views, the components and the theme of one
/// design, with the project's identity on the service. It keeps an index of the identifiers in
/// use, so that objects a person creates get short sequential ones ("Label_3"), and it holds
/// the document's side of the rules on names: the names of screens and of actions.
class VDModelApp : public VDModel {
    VD_MODEL_CLASS(VDModelApp)

    /// +appWithDictionary: — the class comes from the dictionary's "model_class"; nullptr when
    /// it names no model class.
    static std::shared_ptr<VDModel> appWithDictionary(const Dictionary& dictionary);
    /// +uuidString — a random UUID in upper-case text, unlike the lower-case form in identifiers.
    static std::string uuidString();

    /// Defaults, one screen and one free view made through the registry ("screen_1", "View_1").
    void fillDefaultValues() override;
    /// Decodes, then builds the registry from what was decoded.
    void initWithDictionary(const Dictionary& dictionary) override;
    /// The same class and equal, non-nil `appID`s.
    bool isEqual(const Object& other) const override;
    /// The base encoding, with `raceFlag` raised around it.
    Dictionary toDictionary() override;
    /// Compact JSON of a private copy; empty text when the writer fails.
    std::string toJson() override;
    /// The base copy, then what a copy keeps of the service's metadata: `appServerLastUpdate`,
    /// `assetsZipFileUrl`, `assetsVersion`, `appID`. The rest of the metadata is lost.
    std::shared_ptr<VDModel> copy() override;

    void postUpdateNotification() override;
    void postUpdateNotificationType(std::uint32_t type) override;
    void postUpdateNotificationType(std::uint32_t type, const Dictionary& userInfo) override;
    void postStateUpdatedNotification() override;

    // ---- encoded fields

    const std::optional<std::string>& appVersion() const { return appVersion_; }
    void setAppVersion(std::optional<std::string> v) { appVersion_ = std::move(v); }
    const std::optional<std::string>& client_version() const { return clientVersion_; }
    void setClient_version(std::optional<std::string> v) { clientVersion_ = std::move(v); }
    const std::optional<std::string>& client_id() const { return clientID_; }
    void setClient_id(std::optional<std::string> v) { clientID_ = std::move(v); }
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }
    const std::optional<std::string>& ownerName() const { return ownerName_; }
    void setOwnerName(std::optional<std::string> v) { ownerName_ = std::move(v); }
    /// The document's identifier on the service; equality rests on it.
    const std::optional<std::string>& appID() const { return appID_; }
    void setAppID(std::optional<std::string> v) { appID_ = std::move(v); }
    const std::optional<std::string>& ownerID() const { return ownerID_; }
    void setOwnerID(std::optional<std::string> v) { ownerID_ = std::move(v); }
    /// `VDModelScreen`s in order; the first is the fallback home page. Replaced, never changed.
    const Array& screens() const { return screens_; }
    void setScreens(Array v) { screens_ = std::move(v); }
    /// The document's free views.
    const Array& views() const { return views_; }
    void setViews(Array v) { views_ = std::move(v); }
    const std::shared_ptr<VDModelTheme>& theme() const { return theme_; }
    void setTheme(std::shared_ptr<VDModelTheme> v) { theme_ = std::move(v); }
    const std::shared_ptr<VDModelAppLinks>& links() const { return links_; }
    void setLinks(std::shared_ptr<VDModelAppLinks> v) { links_ = std::move(v); }
    std::int32_t codeLanguage() const { return codeLanguage_; }
    void setCodeLanguage(std::int32_t v) { codeLanguage_ = v; }
    const std::optional<std::string>& githubRepoOwner() const { return githubRepoOwner_; }
    void setGithubRepoOwner(std::optional<std::string> v) { githubRepoOwner_ = std::move(v); }
    const std::optional<std::string>& githubRepoName() const { return githubRepoName_; }
    void setGithubRepoName(std::optional<std::string> v) { githubRepoName_ = std::move(v); }
    const std::optional<std::string>& lastKnownFilePath() const { return lastKnownFilePath_; }
    void setLastKnownFilePath(std::optional<std::string> v) { lastKnownFilePath_ = std::move(v); }
    const std::optional<std::string>& sketchPageID() const { return sketchPageID_; }
    void setSketchPageID(std::optional<std::string> v) { sketchPageID_ = std::move(v); }
    bool swipeScreensDisabled() const { return swipeScreensDisabled_ != 0; }
    void setSwipeScreensDisabled(bool v) { swipeScreensDisabled_ = v ? 1 : 0; }
    /// Variable names are unique per screen rather than per parent; the host reads it.
    bool uniqueVarsPerScreen() const { return uniqueVarsPerScreen_ != 0; }
    void setUniqueVarsPerScreen(bool v) { uniqueVarsPerScreen_ = v ? 1 : 0; }
    /// Groups of screen identifiers that are one page at several widths.
    const Array& similarScreenIds() const { return similarScreenIds_; }
    void setSimilarScreenIds(Array v) { similarScreenIds_ = std::move(v); }
    const std::optional<std::string>& widgetSnippet() const { return widgetSnippet_; }
    void setWidgetSnippet(std::optional<std::string> v) { widgetSnippet_ = std::move(v); }
    const std::optional<std::string>& fontFallbacks() const { return fontFallbacks_; }
    void setFontFallbacks(std::optional<std::string> v) { fontFallbacks_ = std::move(v); }
    const std::optional<std::string>& customMetaTags() const { return customMetaTags_; }
    void setCustomMetaTags(std::optional<std::string> v) { customMetaTags_ = std::move(v); }
    bool isComponent() const { return isComponent_ != 0; }
    void setIsComponent(bool v) { isComponent_ = v ? 1 : 0; }
    bool isPrivate() const { return isPrivate_ != 0; }
    void setIsPrivate(bool v) { isPrivate_ = v ? 1 : 0; }
    /// Master views of components; nil reads as empty everywhere.
    const Array& components() const { return components_; }
    void setComponents(Array v) { components_ = std::move(v); }

    // ---- fields from the service or the host, never encoded

    const std::optional<std::string>& sketchPluginVersion() const { return sketchPluginVersion_; }
    void setSketchPluginVersion(std::optional<std::string> v) { sketchPluginVersion_ = std::move(v); }
    bool isMirrored() const { return isMirrored_ != 0; }
    void setIsMirrored(bool v) { isMirrored_ = v ? 1 : 0; }
    bool isCustomSlug() const { return isCustomSlug_ != 0; }
    void setIsCustomSlug(bool v) { isCustomSlug_ = v ? 1 : 0; }
    bool isWhiteLabel() const { return isWhiteLabel_ != 0; }
    void setIsWhiteLabel(bool v) { isWhiteLabel_ = v ? 1 : 0; }
    bool isPortfolio() const { return isPortfolio_ != 0; }
    void setIsPortfolio(bool v) { isPortfolio_ = v ? 1 : 0; }
    bool isPublished() const { return isPublished_ != 0; }
    void setIsPublished(bool v) { isPublished_ = v ? 1 : 0; }
    const std::optional<std::string>& slug() const { return slug_; }
    void setSlug(std::optional<std::string> v) { slug_ = std::move(v); }
    const std::optional<std::string>& domain() const { return domain_; }
    void setDomain(std::optional<std::string> v) { domain_ = std::move(v); }
    const std::optional<std::string>& metaTitle() const { return metaTitle_; }
    void setMetaTitle(std::optional<std::string> v) { metaTitle_ = std::move(v); }
    const std::optional<std::string>& metaTagDescription() const { return metaTagDescription_; }
    void setMetaTagDescription(std::optional<std::string> v) { metaTagDescription_ = std::move(v); }
    const std::optional<std::string>& metaTagLanguage() const { return metaTagLanguage_; }
    void setMetaTagLanguage(std::optional<std::string> v) { metaTagLanguage_ = std::move(v); }
    const std::optional<std::string>& metaTagImageURL() const { return metaTagImageURL_; }
    void setMetaTagImageURL(std::optional<std::string> v) { metaTagImageURL_ = std::move(v); }
    const std::optional<std::string>& metaFaviconImageURL() const { return metaFaviconImageURL_; }
    void setMetaFaviconImageURL(std::optional<std::string> v) { metaFaviconImageURL_ = std::move(v); }
    bool isEnabledMetaTagsFacebook() const { return isEnabledMetaTagsFacebook_ != 0; }
    void setIsEnabledMetaTagsFacebook(bool v) { isEnabledMetaTagsFacebook_ = v ? 1 : 0; }
    bool isEnabledMetaTagsTwitter() const { return isEnabledMetaTagsTwitter_ != 0; }
    void setIsEnabledMetaTagsTwitter(bool v) { isEnabledMetaTagsTwitter_ = v ? 1 : 0; }
    const std::optional<std::string>& analyticsSnippet() const { return analyticsSnippet_; }
    void setAnalyticsSnippet(std::optional<std::string> v) { analyticsSnippet_ = std::move(v); }
    const std::optional<std::string>& folderPath() const { return folderPath_; }
    void setFolderPath(std::optional<std::string> v) { folderPath_ = std::move(v); }
    std::int64_t liveReleaseVersion() const { return liveReleaseVersion_; }
    void setLiveReleaseVersion(std::int64_t v) { liveReleaseVersion_ = v; }
    std::int64_t latestReleaseVersion() const { return latestReleaseVersion_; }
    void setLatestReleaseVersion(std::int64_t v) { latestReleaseVersion_ = v; }
    const std::optional<std::string>& latestReleaseShortId() const { return latestReleaseShortId_; }
    void setLatestReleaseShortId(std::optional<std::string> v) { latestReleaseShortId_ = std::move(v); }
    const Dictionary& promotion() const { return promotion_; }
    void setPromotion(Dictionary v) { promotion_ = std::move(v); }
    /// Where the host keeps the zipped assets (a file URL or path).
    const std::optional<std::string>& zipFileLocalPath() const { return zipFileLocalPath_; }
    void setZipFileLocalPath(std::optional<std::string> v) { zipFileLocalPath_ = std::move(v); }
    const std::optional<Date>& appServerLastUpdate() const { return appServerLastUpdate_; }
    void setAppServerLastUpdate(std::optional<Date> v) { appServerLastUpdate_ = v; }
    const std::optional<std::string>& assetsZipFileUrl() const { return assetsZipFileUrl_; }
    void setAssetsZipFileUrl(std::optional<std::string> v) { assetsZipFileUrl_ = std::move(v); }
    std::int64_t assetsVersion() const { return assetsVersion_; }
    void setAssetsVersion(std::int64_t v) { assetsVersion_ = v; }
    bool updatedLocally() const { return updatedLocally_ != 0; }
    void setUpdatedLocally(bool v) { updatedLocally_ = v ? 1 : 0; }
    const Array& variantScreenIds() const { return variantScreenIds_; }
    void setVariantScreenIds(Array v) { variantScreenIds_ = std::move(v); }
    /// A marker raised while the document is read whole or announces a change; nothing depends
    /// on it. A plain update leaves it raised until the next of the other announcements ends.
    bool raceFlag() const { return raceFlag_ != 0; }
    void setRaceFlag(bool v) { raceFlag_ = v ? 1 : 0; }

    // ---- the project's record on the service, and passes over the whole document

    /// fillMetadata: — every field of the metadata table from a complete project record: a
    /// missing key blanks its field, but for "sketch_page_id" and "updated_at", which keep theirs.
    void fillMetadata(const Dictionary& info);
    /// copyMetadata: — the assets archive, its version, `appVersion`, `appID` and the last update.
    void copyMetadata(const VDModelApp& other);
    /// The design file moved: links derived from its place no longer hold, nor does the
    /// repository. The link texts stay.
    void handleFileLocationChange();
    /// On each screen, not on free views or components.
    void markFormsAccordingToSubmitButtons();
    /// On each screen, then on each component.
    void enforceChildrenNamesDistinctFromParents();
    /// `fixAfterSketchExport` on each screen, then on each component.
    void fixModelAfterSketchExport();

    // ---- screens

    /// screenWithId: — the first screen with the identifier.
    std::shared_ptr<VDModelScreen> screenWithId(std::string_view modelID) const;
    /// screenWithVarID: — the first screen with the variable name.
    std::shared_ptr<VDModelScreen> screenWithVarID(std::string_view variableID) const;
    /// removeScreenWithVarID: — posts type 1 with "screen" and "screenIndex". A name that names
    /// no screen throws `std::invalid_argument`: callers check with `screenWithVarID` first.
    void removeScreenWithVarID(std::string_view variableID);
    /// addScreen:withIndex: — an index past the end appends; posts type 2 with "screen" and the
    /// index it took.
    void addScreen(const std::shared_ptr<VDModelScreen>& screen, std::size_t index);
    /// viewWithAbsolutePath: — "screen;sub;sub": a screen by its variable name, then the path.
    std::shared_ptr<VDModelView> viewWithAbsolutePath(std::string_view path) const;
    /// Every screen's `subviewsByPath`, later screens winning on equal keys.
    Dictionary allScreensSubviewsByPath() const;
    /// The screens' variable names, then the components'.
    Array allScreenNames() const;
    /// The last screen marked `isAppRoot`, else the first; nothing without screens.
    std::optional<std::string> homepageVarId() const;
    std::optional<std::string> homepageName() const;
    /// Some screen presents another with automatic animation.
    bool hasAutoAnimateAction() const;
    /// Some screen is a tab bar screen.
    bool hasTabBar() const;
    /// Every screen's layer identifiers from the design tool; nil when there are none.
    Array allLayersIDs() const;
    /// allLayersIdsForView: — the view's `sketchId`, then its subviews', depth first.
    static Array allLayersIdsForView(const VDModelView& view);
    /// actionForRef:referencingModel: — the action a reference names, from the view holding it.
    std::shared_ptr<VDModelAction> actionForRef(const VDModelActionReference& ref,
                                                VDModelView& referencingModel) const;

    // ---- the identifier registry

    /// `existingIDsByPrefix` in its dictionary form; nil before the registry was built.
    Dictionary existingIDsByPrefix() const;
    /// Rebuilds the registry from the document; the old one goes whole.
    void updateModelIDsMap();
    /// recursiveUpdateIDsMapForItem:withMap: — enters the identifier of every model in the item,
    /// models inside containers (and so inside states' change sets) included.
    static void recursiveUpdateIDsMapForItem(const Value& item, VDModelIDRegistry& map);
    /// addItemID:toMap:
    static void addItemID(std::string_view identifier, VDModelIDRegistry& map);
    /// generateUniqueIDForClass: — a free "prefix_n" for the class; not reserved.
    std::string generateUniqueIDForClass(const VDModelClass& cls);
    /// createInstanceOfModelClass: — a new object with a registered identifier; a view is named
    /// after it ("Label_3" gives "Label 3").
    std::shared_ptr<VDModel> createInstanceOfModelClass(const VDModelClass& cls);
    /// createCopyOfModel: — a copy with new identifiers; a view's copy is named "... copy" and
    /// its constraints cleared, the views below it keep theirs.
    std::shared_ptr<VDModel> createCopyOfModel(const std::shared_ptr<VDModel>& model);
    /// recursiveReplaceItemIDAndRemoveActions: — new identifiers for the model and all below
    /// it, records and actions included. In spite of the name no action goes.
    void recursiveReplaceItemIDAndRemoveActions(const std::shared_ptr<VDModel>& model);
    /// duplicateScreen: — the copy, with a unique name, placed behind the screen. Posts nothing.
    std::shared_ptr<VDModelScreen> duplicateScreen(const std::shared_ptr<VDModelScreen>& screen);
    /// isModelIdTaken: — rebuilds the registry first, every time: not for loops.
    bool isModelIdTaken(std::string_view identifier);
    /// addItemID: — nothing before the registry was built.
    void addItemID(std::string_view identifier);
    /// changeItemID:toID: — moves the identifier in the registry and posts
    /// "kVDModelAppItemIDUpdatedNotification"; the caller changes the model.
    void changeItemID(const std::string& oldID, const std::string& newID);
    /// removeItemID: — only posts "kVDModelAppItemIDRemovedNotification": the identifier keeps
    /// counting until the next rebuild, so it can't be given out again meanwhile.
    void removeItemID(const std::string& identifier);
    /// removeItemIdInternal: — every occurrence leaves its group.
    void removeItemIdInternal(std::string_view identifier);

    // ---- names of roots and actions

    /// isLegalScreenVarName: — no screen has the name, compared without case; components'
    /// names don't count here.
    bool isLegalScreenVarName(std::string_view name) const;
    /// The `name` of every action of every view of every screen, case kept.
    Array allActionNames() const;
    /// uniqueVarNameForRootView:suggestedName:
    std::string uniqueVarNameForRootView(const VDModelView& root,
                                         const std::optional<std::string>& suggestion) const;
    /// uniqueNameForAction:suggestedName: — unique among `allActionNames` as spelled.
    std::string uniqueNameForAction(const VDModelAction& action,
                                    const std::optional<std::string>& suggestion) const;
    /// Names every root (screens, then components) without one, then the views below each.
    void fillMissingVarNamesRecursive();

private:
    std::optional<std::string> appVersion_, clientVersion_, clientID_, name_, ownerName_, appID_, ownerID_;
    Array screens_, views_;
    std::shared_ptr<VDModelTheme> theme_;
    std::shared_ptr<VDModelAppLinks> links_;
    std::int32_t codeLanguage_ = 0;
    std::optional<std::string> githubRepoOwner_, githubRepoName_, lastKnownFilePath_, sketchPageID_;
    std::uint8_t swipeScreensDisabled_ = 0, uniqueVarsPerScreen_ = 0;
    Array similarScreenIds_;
    std::optional<std::string> widgetSnippet_, fontFallbacks_, customMetaTags_;
    std::uint8_t isComponent_ = 0, isPrivate_ = 0;
    Array components_;

    std::optional<std::string> sketchPluginVersion_;
    std::uint8_t isMirrored_ = 0, isCustomSlug_ = 0, isWhiteLabel_ = 0, isPortfolio_ = 0, isPublished_ = 0;
    std::optional<std::string> slug_, domain_, metaTitle_, metaTagDescription_, metaTagLanguage_,
        metaTagImageURL_, metaFaviconImageURL_;
    std::uint8_t isEnabledMetaTagsFacebook_ = 0, isEnabledMetaTagsTwitter_ = 0;
    std::optional<std::string> analyticsSnippet_, folderPath_;
    std::int64_t liveReleaseVersion_ = 0, latestReleaseVersion_ = 0;
    std::optional<std::string> latestReleaseShortId_;
    Dictionary promotion_;
    std::optional<std::string> zipFileLocalPath_;
    std::optional<Date> appServerLastUpdate_;
    std::optional<std::string> assetsZipFileUrl_;
    std::int64_t assetsVersion_ = 0;
    std::uint8_t updatedLocally_ = 0;
    Array variantScreenIds_;
    std::uint8_t raceFlag_ = 0;

    std::unique_ptr<VDModelIDRegistry> registry_;
};

} // namespace velmo
