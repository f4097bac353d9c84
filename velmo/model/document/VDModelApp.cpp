#include "velmo/model/document/VDModelApp.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_set>

#include <fmt/format.h>

#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/foundation/Uuid.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/document/VDModelTabBarScreen.h"
#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/values/StringExtensions.h"
#include "velmo/runtime/VVClientConfig.h"

namespace velmo {

const VDModelClass& VDModelApp::classObject() {
    using C = VDModelApp;
    static const VDModelClass cls(
        "VDModelApp", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::appVersion, &C::setAppVersion>("appVersion"),
            field<&C::client_version, &C::setClient_version>("client_version"),
            field<&C::client_id, &C::setClient_id>("client_id"),
            field<&C::name, &C::setName>("name"),
            field<&C::ownerName, &C::setOwnerName>("ownerName"),
            field<&C::appID, &C::setAppID>("appID"),
            field<&C::ownerID, &C::setOwnerID>("ownerID"),
            field<&C::screens, &C::setScreens>("screens"),
            field<&C::views, &C::setViews>("views"),
            field<&C::theme, &C::setTheme>("theme"),
            field<&C::links, &C::setLinks>("links"),
            field<&C::codeLanguage, &C::setCodeLanguage>("codeLanguage"),
            field<&C::githubRepoOwner, &C::setGithubRepoOwner>("githubRepoOwner"),
            field<&C::githubRepoName, &C::setGithubRepoName>("githubRepoName"),
            field<&C::lastKnownFilePath, &C::setLastKnownFilePath>("lastKnownFilePath"),
            field<&C::sketchPageID, &C::setSketchPageID>("sketchPageID"),
            field<&C::swipeScreensDisabled, &C::setSwipeScreensDisabled>("swipeScreensDisabled"),
            field<&C::uniqueVarsPerScreen, &C::setUniqueVarsPerScreen>("uniqueVarsPerScreen"),
            field<&C::similarScreenIds, &C::setSimilarScreenIds>("similarScreenIds"),
            field<&C::widgetSnippet, &C::setWidgetSnippet>("widgetSnippet"),
            field<&C::fontFallbacks, &C::setFontFallbacks>("fontFallbacks"),
            field<&C::customMetaTags, &C::setCustomMetaTags>("customMetaTags"),
            field<&C::isComponent, &C::setIsComponent>("isComponent"),
            field<&C::isPrivate, &C::setIsPrivate>("isPrivate"),
            field<&C::components, &C::setComponents>("components"),
            // Filled from the service's metadata or by the host: reachable by name, never encoded.
            unlistedField<&C::sketchPluginVersion, &C::setSketchPluginVersion>("sketchPluginVersion"),
            unlistedField<&C::isMirrored, &C::setIsMirrored>("isMirrored"),
            unlistedField<&C::isCustomSlug, &C::setIsCustomSlug>("isCustomSlug"),
            unlistedField<&C::isWhiteLabel, &C::setIsWhiteLabel>("isWhiteLabel"),
            unlistedField<&C::isPortfolio, &C::setIsPortfolio>("isPortfolio"),
            unlistedField<&C::isPublished, &C::setIsPublished>("isPublished"),
            unlistedField<&C::slug, &C::setSlug>("slug"),
            unlistedField<&C::domain, &C::setDomain>("domain"),
            unlistedField<&C::metaTitle, &C::setMetaTitle>("metaTitle"),
            unlistedField<&C::metaTagDescription, &C::setMetaTagDescription>("metaTagDescription"),
            unlistedField<&C::metaTagLanguage, &C::setMetaTagLanguage>("metaTagLanguage"),
            unlistedField<&C::metaTagImageURL, &C::setMetaTagImageURL>("metaTagImageURL"),
            unlistedField<&C::metaFaviconImageURL, &C::setMetaFaviconImageURL>("metaFaviconImageURL"),
            unlistedField<&C::isEnabledMetaTagsFacebook, &C::setIsEnabledMetaTagsFacebook>(
                "isEnabledMetaTagsFacebook"),
            unlistedField<&C::isEnabledMetaTagsTwitter, &C::setIsEnabledMetaTagsTwitter>(
                "isEnabledMetaTagsTwitter"),
            unlistedField<&C::analyticsSnippet, &C::setAnalyticsSnippet>("analyticsSnippet"),
            unlistedField<&C::folderPath, &C::setFolderPath>("folderPath"),
            unlistedField<&C::liveReleaseVersion, &C::setLiveReleaseVersion>("liveReleaseVersion"),
            unlistedField<&C::latestReleaseVersion, &C::setLatestReleaseVersion>("latestReleaseVersion"),
            unlistedField<&C::latestReleaseShortId, &C::setLatestReleaseShortId>("latestReleaseShortId"),
            unlistedField<&C::promotion, &C::setPromotion>("promotion"),
            unlistedField<&C::zipFileLocalPath, &C::setZipFileLocalPath>("zipFileLocalPath"),
            unlistedField<&C::assetsZipFileUrl, &C::setAssetsZipFileUrl>("assetsZipFileUrl"),
            unlistedField<&C::assetsVersion, &C::setAssetsVersion>("assetsVersion"),
            unlistedField<&C::updatedLocally, &C::setUpdatedLocally>("updatedLocally"),
            unlistedField<&C::variantScreenIds, &C::setVariantScreenIds>("variantScreenIds"),
            unlistedField<&C::raceFlag, &C::setRaceFlag>("raceFlag"),
        });
    return cls;
}

std::shared_ptr<VDModel> VDModelApp::appWithDictionary(const Dictionary& dictionary) {
    return VDModelDecoder::modelObjectFromDictionary(dictionary);
}

std::string VDModelApp::uuidString() {
    return Uuid::string();
}

namespace {
std::optional<std::string> nonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(std::move(text));
}
} // namespace

void VDModelApp::fillDefaultValues() {
    VDModel::fillDefaultValues();
    appVersion_ = "1.0";
    // Who made the document: the client configuration the host bound.
    const VVClientConfigInterface& client = VVClientConfig::current();
    clientVersion_ = nonEmpty(client.clientVersion());
    clientID_ = nonEmpty(client.clientID());
    name_ = "Untitled";
    ownerName_ = "Unknown";
    ownerID_ = "Unknown";
    theme_ = VDModelTheme::create();
    theme_->setName("Default Theme");
    // The registry doesn't exist yet: the first creation builds it from the document so far.
    screens_ = Array{Value(createInstanceOfModelClass(VDModelScreen::classObject()))};
    views_ = Array{Value(createInstanceOfModelClass(VDModelView::classObject()))};
    links_ = VDModelAppLinks::create();
}

void VDModelApp::initWithDictionary(const Dictionary& dictionary) {
    VDModel::initWithDictionary(dictionary);
    updateModelIDsMap();
}

bool VDModelApp::isEqual(const Object& other) const {
    const auto* app = dynamic_cast<const VDModelApp*>(&other);
    return app && appID_ && app->appID_ && *appID_ == *app->appID_;
}

Dictionary VDModelApp::toDictionary() {
    raceFlag_ = 1;
    Dictionary encoded = VDModel::toDictionary();
    raceFlag_ = 0;
    return encoded;
}

std::string VDModelApp::toJson() {
    // Built from a private snapshot, and compact: documents are large and go over the wire.
    try {
        const auto snapshot = copy();
        return snapshot ? Json::write(Value(snapshot->toDictionary()), false) : std::string();
    } catch (const std::exception&) {
        return std::string();
    }
}

void VDModelApp::postUpdateNotification() {
    raceFlag_ = 1;
    VDModel::postUpdateNotification();
    // The plain update leaves the marker raised until another announcement ends.
    raceFlag_ = 1;
}

void VDModelApp::postUpdateNotificationType(std::uint32_t type) {
    raceFlag_ = 1;
    VDModel::postUpdateNotificationType(type);
    raceFlag_ = 0;
}

void VDModelApp::postUpdateNotificationType(std::uint32_t type, const Dictionary& userInfo) {
    raceFlag_ = 1;
    VDModel::postUpdateNotificationType(type, userInfo);
    raceFlag_ = 0;
}

void VDModelApp::postStateUpdatedNotification() {
    raceFlag_ = 1;
    VDModel::postStateUpdatedNotification();
    raceFlag_ = 0;
}

// ---------------------------------------------------------------- metadata and passes

namespace {

// "As it comes": text stays text, and a value of another kind is kept in its text form rather
// than lost; null and a missing key give nothing.
std::optional<std::string> textOf(const Value& v) {
    if (v.isNone()) return std::nullopt;
    return v.isString() ? v.str() : v.description();
}

} // namespace

void VDModelApp::fillMetadata(const Dictionary& info) {
    const auto get = [&](std::string_view key) -> const Value& { return info.get(key); };
    appID_ = textOf(get("id"));
    assetsZipFileUrl_ = textOf(get("assets_file_url"));
    appVersion_ = textOf(get("version"));
    assetsVersion_ = get("assets_file_version").int64Value();
    githubRepoName_ = textOf(get("github_repo_name"));
    githubRepoOwner_ = textOf(get("github_repo_owner"));
    if (const auto page = textOf(get("sketch_page_id"))) sketchPageID_ = page;
    slug_ = textOf(get("slug"));
    setIsCustomSlug(get("is_custom_slug").boolValue());
    setIsWhiteLabel(get("is_white_label").boolValue());
    setIsPortfolio(get("is_portfolio").boolValue());
    setIsPublished(get("is_published").boolValue());
    setIsPrivate(get("is_private").boolValue());
    name_ = textOf(get("name"));
    domain_ = textOf(get("domain"));
    metaTitle_ = textOf(get("meta_title"));
    metaTagDescription_ = textOf(get("meta_description"));
    metaTagLanguage_ = textOf(get("meta_language"));
    metaTagImageURL_ = textOf(get("meta_image_url"));
    metaFaviconImageURL_ = textOf(get("meta_favicon_url"));
    folderPath_ = textOf(get("folder_path"));
    promotion_ = get("promotion").dictionary();
    setIsEnabledMetaTagsFacebook(get("is_meta_enabled_facebook").boolValue());
    setIsEnabledMetaTagsTwitter(get("is_meta_enabled_twitter").boolValue());
    analyticsSnippet_ = textOf(get("analytics_snippet"));
    // Read as 32-bit integers, then widened.
    liveReleaseVersion_ = get("live_release_version").int32Value();
    latestReleaseVersion_ = get("latest_release_version").int32Value();
    latestReleaseShortId_ = textOf(get("latest_release_short_id"));
    if (const Value& updated = get("updated_at"); !updated.isNil()) {
        appServerLastUpdate_ =
            updated.isString() ? dateFormatter().dateFromString(updated.stringView()) : std::nullopt;
    }
}

void VDModelApp::copyMetadata(const VDModelApp& other) {
    assetsZipFileUrl_ = other.assetsZipFileUrl_;
    assetsVersion_ = other.assetsVersion_;
    appVersion_ = other.appVersion_;
    appID_ = other.appID_;
    appServerLastUpdate_ = other.appServerLastUpdate_;
}

std::shared_ptr<VDModel> VDModelApp::copy() {
    auto copied = std::dynamic_pointer_cast<VDModelApp>(VDModel::copy());
    if (!copied) return copied;
    copied->appServerLastUpdate_ = appServerLastUpdate_;
    copied->assetsZipFileUrl_ = assetsZipFileUrl_;
    copied->assetsVersion_ = assetsVersion_;
    copied->appID_ = appID_;
    return copied;
}

void VDModelApp::handleFileLocationChange() {
    if (links_) {
        links_->setLastShareLinkValid(false);
        links_->setLastCodeExportLinkValid(false);
    }
    githubRepoOwner_.reset();
    githubRepoName_.reset();
}

namespace {
template <class Pass> void forEachRoot(std::initializer_list<Array> lists, Pass pass) {
    for (const Array& roots : lists) {
        for (const Value& v : roots) {
            if (const auto root = v.objectAs<VDModelView>()) pass(*root);
        }
    }
}
} // namespace

void VDModelApp::markFormsAccordingToSubmitButtons() {
    forEachRoot({screens_}, [](VDModelView& root) { root.markFormsAccordingToSubmitButtons(); });
}

void VDModelApp::enforceChildrenNamesDistinctFromParents() {
    forEachRoot({screens_, components_},
                [](VDModelView& root) { root.enforceChildrenNamesDistinctFromParents(); });
}

void VDModelApp::fixModelAfterSketchExport() {
    forEachRoot({screens_, components_}, [](VDModelView& root) { root.fixAfterSketchExport(); });
}

// ---------------------------------------------------------------- screens

std::shared_ptr<VDModelScreen> VDModelApp::screenWithId(std::string_view modelID) const {
    for (const Value& v : screens_) {
        auto screen = v.objectAs<VDModelScreen>();
        if (screen && screen->modelID() == modelID) return screen;
    }
    return nullptr;
}

std::shared_ptr<VDModelScreen> VDModelApp::screenWithVarID(std::string_view variableID) const {
    for (const Value& v : screens_) {
        auto screen = v.objectAs<VDModelScreen>();
        if (screen && screen->variableID() == variableID) return screen;
    }
    return nullptr;
}

void VDModelApp::removeScreenWithVarID(std::string_view variableID) {
    const auto screen = screenWithVarID(variableID);
    Array kept = Array::create(screens_.size());
    std::size_t index = screens_.size();
    for (std::size_t i = 0; i < screens_.size(); ++i) {
        if (screen && screens_[i].objectPointer() == screen.get() && index == screens_.size()) {
            index = i;
            continue;
        }
        kept.push_back(screens_[i]);
    }
    setScreens(std::move(kept));
    if (!screen) {
        throw std::invalid_argument(
            fmt::format("removeScreenWithVarID: no screen is named \"{}\"", variableID));
    }
    removeItemID(screen->modelID().value_or(""));
    postUpdateNotificationType(kModelUpdateTypeScreenRemoved,
                               Dictionary{{"screen", Value(screen)}, {"screenIndex", Value(index)}});
}

void VDModelApp::addScreen(const std::shared_ptr<VDModelScreen>& screen, std::size_t index) {
    index = std::min(index, screens_.size());
    Array next = screens_.isNil() ? Array::create(1) : screens_.copy();
    next.insert(index, Value(screen));
    setScreens(std::move(next));
    postUpdateNotificationType(kModelUpdateTypeScreenAdded,
                               Dictionary{{"screen", Value(screen)}, {"screenIndex", Value(index)}});
}

std::shared_ptr<VDModelView> VDModelApp::viewWithAbsolutePath(std::string_view path) const {
    const std::size_t cut = path.find(';');
    const auto screen = screenWithVarID(path.substr(0, cut));
    if (!screen || cut == std::string_view::npos) return screen;
    return screen->modelWithRelativePath(path.substr(cut + 1));
}

Dictionary VDModelApp::allScreensSubviewsByPath() const {
    Dictionary all = Dictionary::create();
    for (const Value& v : screens_) {
        if (const auto screen = v.objectAs<VDModelView>()) {
            for (const auto& [key, view] : screen->subviewsByPath())
                all.setEntry(key, view);
        }
    }
    return all;
}

Array VDModelApp::allScreenNames() const {
    Array names = Array::create(screens_.size() + components_.size());
    for (const Array& roots : {screens_, components_}) {
        for (const Value& v : roots) {
            const auto root = v.objectAs<VDModelView>();
            if (root && root->variableID()) names.push_back(Value(*root->variableID()));
        }
    }
    return names;
}

namespace {
// The first screen's value, replaced by that of every screen marked as the home page: the last
// mark wins.
template <class Read> std::optional<std::string> homepage(const Array& screens, Read read) {
    if (screens.empty()) return std::nullopt;
    const auto first = screens.first().objectAs<VDModelView>();
    std::optional<std::string> result = first ? read(*first) : std::nullopt;
    for (const Value& v : screens) {
        const auto screen = v.objectAs<VDModelScreen>();
        if (screen && screen->isAppRoot()) result = read(*screen);
    }
    return result;
}
} // namespace

std::optional<std::string> VDModelApp::homepageVarId() const {
    return homepage(screens_, [](const VDModelView& v) { return v.variableID(); });
}

std::optional<std::string> VDModelApp::homepageName() const {
    return homepage(screens_, [](const VDModelView& v) { return v.viewName(); });
}

bool VDModelApp::hasAutoAnimateAction() const {
    for (const Value& v : screens_) {
        const auto screen = v.objectAs<VDModelView>();
        if (screen && screen->hasAutoAnimateAction()) return true;
    }
    return false;
}

bool VDModelApp::hasTabBar() const {
    return std::any_of(screens_.begin(), screens_.end(),
                       [](const Value& v) { return v.objectAs<VDModelTabBarScreen>() != nullptr; });
}

Array VDModelApp::allLayersIdsForView(const VDModelView& view) {
    Array ids = Array::create();
    const std::function<void(const VDModelView&)> collect = [&](const VDModelView& v) {
        if (v.sketchId()) ids.push_back(Value(*v.sketchId()));
        for (const Value& sub : v.subviews()) {
            if (const auto s = sub.objectAs<VDModelView>()) collect(*s);
        }
    };
    collect(view);
    return ids;
}

Array VDModelApp::allLayersIDs() const {
    Array ids = Array::create();
    for (const Value& v : screens_) {
        if (const auto screen = v.objectAs<VDModelView>()) {
            for (const Value& id : allLayersIdsForView(*screen))
                ids.push_back(id);
        }
    }
    return ids.empty() ? Array() : ids;
}

std::shared_ptr<VDModelAction> VDModelApp::actionForRef(const VDModelActionReference& ref,
                                                        VDModelView& referencingModel) const {
    const auto view = referencingModel.modelWithRelativePath(ref.viewModelPath().value_or(""));
    return view && ref.actionName() ? view->actionWithName(*ref.actionName()) : nullptr;
}

// ---------------------------------------------------------------- the identifier registry

Dictionary VDModelApp::existingIDsByPrefix() const {
    return registry_ ? registry_->toDictionary() : Dictionary();
}

void VDModelApp::updateModelIDsMap() {
    auto map = std::make_unique<VDModelIDRegistry>();
    recursiveUpdateIDsMapForItem(Value(sharedFromThis()), *map);
    registry_ = std::move(map);
}

void VDModelApp::recursiveUpdateIDsMapForItem(const Value& item, VDModelIDRegistry& map) {
    // The walk of every model through `fieldNames`, into arrays and dictionaries: models inside
    // states' change sets count too.
    VDModel::enumerateModelsForItem(item, [&](const std::shared_ptr<VDModel>& model) {
        if (model->modelID()) addItemID(*model->modelID(), map);
    });
}

void VDModelApp::addItemID(std::string_view identifier, VDModelIDRegistry& map) {
    map.add(identifier);
}

std::string VDModelApp::generateUniqueIDForClass(const VDModelClass& cls) {
    if (!registry_) updateModelIDsMap();
    return registry_->nextIdentifier(cls.beautyIDPrefix());
}

std::shared_ptr<VDModel> VDModelApp::createInstanceOfModelClass(const VDModelClass& cls) {
    const std::string identifier = generateUniqueIDForClass(cls);
    auto model = std::dynamic_pointer_cast<VDModel>(cls.create());
    if (!model) return nullptr;
    model->setModelID(identifier);
    if (auto* view = dynamic_cast<VDModelView*>(model.get())) {
        // "Label_3" names the view "Label 3".
        std::string name = identifier;
        std::replace(name.begin(), name.end(), '_', ' ');
        view->setViewName(stringWithFirstCharCapitalized(name));
    }
    registry_->add(identifier);
    return model;
}

void VDModelApp::recursiveReplaceItemIDAndRemoveActions(const std::shared_ptr<VDModel>& model) {
    if (!model) return;
    // Every model gets a new identifier, records and actions alike; variable names stay, so the
    // copy's relative paths still hold.
    model->enumerateModelsWithBlock([this](const std::shared_ptr<VDModel>& m) {
        std::string identifier = generateUniqueIDForClass(m->modelClass());
        registry_->add(identifier);
        m->setModelID(std::move(identifier));
    });
}

std::shared_ptr<VDModel> VDModelApp::createCopyOfModel(const std::shared_ptr<VDModel>& model) {
    if (!model) return nullptr;
    auto copied = model->copy();
    if (!copied) return nullptr;
    recursiveReplaceItemIDAndRemoveActions(copied);
    if (auto* view = dynamic_cast<VDModelView*>(copied.get())) {
        const std::string name = view->viewName().value_or("");
        if (!name.ends_with(" copy")) view->setViewName(name + " copy");
        view->setUserChangedViewName(false);
        view->setUserChangedVarId(false);
        view->clearConstraints();
    }
    return copied;
}

std::shared_ptr<VDModelScreen> VDModelApp::duplicateScreen(const std::shared_ptr<VDModelScreen>& screen) {
    std::size_t place = screens_.size();
    for (std::size_t i = 0; i < screens_.size(); ++i) {
        if (screens_[i].objectPointer() == screen.get()) {
            place = std::min(i + 1, screens_.size());
            break;
        }
    }
    auto copy = std::dynamic_pointer_cast<VDModelScreen>(createCopyOfModel(screen));
    if (!copy) return nullptr;
    copy->setVariableID(uniqueVarNameForRootView(*copy, copy->variableID()));
    Array next = screens_.isNil() ? Array::create(1) : screens_.copy();
    next.insert(place, Value(copy));
    setScreens(std::move(next));
    return copy;
}

bool VDModelApp::isModelIdTaken(std::string_view identifier) {
    updateModelIDsMap();
    return registry_->contains(identifier);
}

void VDModelApp::addItemID(std::string_view identifier) {
    if (registry_) registry_->add(identifier);
}

void VDModelApp::removeItemIdInternal(std::string_view identifier) {
    if (registry_) registry_->removeAll(identifier);
}

void VDModelApp::changeItemID(const std::string& oldID, const std::string& newID) {
    removeItemIdInternal(oldID);
    addItemID(newID);
    NotificationCenter::defaultCenter().post(kVDModelAppItemIDUpdatedNotification, shared_from_this(),
                                             Dictionary{{"newId", Value(newID)}, {"oldId", Value(oldID)}});
}

void VDModelApp::removeItemID(const std::string& identifier) {
    NotificationCenter::defaultCenter().post(kVDModelAppItemIDRemovedNotification, shared_from_this(),
                                             Dictionary{{"removedId", Value(identifier)}});
}

// ---------------------------------------------------------------- names of roots and actions

namespace {

using NameSet = std::unordered_set<std::string>;

NameSet lowercased(const Array& names) {
    NameSet out;
    out.reserve(names.size());
    for (const Value& v : names)
        out.insert(lowercaseString(v.stringView()));
    return out;
}

// toLegalVarName of the base followed by 1, 2, ... until the test lets one through.
template <class Free> std::string firstFreeNumbered(const std::string& base, Free isFree) {
    for (std::size_t n = 1;; ++n) {
        std::string candidate = toLegalVarName(fmt::format("{}{}", base, n));
        if (isFree(candidate)) return candidate;
    }
}

} // namespace

bool VDModelApp::isLegalScreenVarName(std::string_view name) const {
    const std::string lower = lowercaseString(name);
    for (const Value& v : screens_) {
        const auto screen = v.objectAs<VDModelView>();
        if (screen && screen->variableID() && lowercaseString(*screen->variableID()) == lower) return false;
    }
    return true;
}

Array VDModelApp::allActionNames() const {
    Array names = Array::create();
    for (const Value& v : screens_) {
        const auto screen = v.objectAs<VDModelView>();
        if (!screen) continue;
        screen->enumerateActionsWithBlock([&](VDModelView&, VDModelAction& action) {
            if (action.name()) names.push_back(Value(*action.name()));
        });
    }
    return names;
}

std::string VDModelApp::uniqueVarNameForRootView(const VDModelView& root,
                                                 const std::optional<std::string>& suggestion) const {
    const std::string legal = toLegalVarName(suggestion.value_or(""));
    if (!legal.empty() && isLegalScreenVarName(legal)) return legal;
    NameSet taken = lowercased(allScreenNames());
    taken.merge(lowercased(allActionNames()));
    // Numbered after the root's own name, not the suggestion.
    return firstFreeNumbered(root.viewName().value_or(""),
                             [&](const std::string& c) { return !taken.contains(lowercaseString(c)); });
}

std::string VDModelApp::uniqueNameForAction(const VDModelAction& action,
                                            const std::optional<std::string>& suggestion) const {
    NameSet taken;
    for (const Value& v : allActionNames())
        taken.insert(v.str());
    const std::string legal = toLegalVarName(suggestion.value_or(""));
    if (!legal.empty() && !taken.contains(legal)) return legal;
    const std::string base = legal.empty() ? std::string(action.prettyNameOfClass()) : legal;
    return firstFreeNumbered(base, [&](const std::string& c) { return !taken.contains(c); });
}

void VDModelApp::fillMissingVarNamesRecursive() {
    for (const Array& roots : {screens_, components_}) {
        for (const Value& v : roots) {
            const auto root = v.objectAs<VDModelView>();
            if (!root) continue;
            if (!root->variableID() || root->variableID()->empty()) {
                const auto& viewName = root->viewName();
                root->setVariableID(uniqueVarNameForRootView(
                    *root, viewName && !viewName->empty() ? viewName : std::nullopt));
            }
            root->fillMissingVarNamesForSubViewsRecursive();
        }
    }
}

} // namespace velmo
