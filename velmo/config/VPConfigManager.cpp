#include "velmo/config/VPConfigManager.h"

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/Utf8.h"
#include "velmo/model/values/DictionaryExtensions.h"
#include "velmo/model/values/ImageExtensions.h"
#include "velmo/net/VPHTTPRequest.h"
#include "velmo/runtime/VPLogging.h"
#include "velmo/runtime/VVDI.h"

namespace velmo {

namespace {

// The platform's cache policy that loads from the origin, whatever a cache holds.
constexpr unsigned kReloadIgnoringLocalCacheData = 1;

std::mutex& baseURLMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string& baseURLStorage() {
    static std::string* baseURL = new std::string(); // read by background loads until exit
    return *baseURL;
}

void logDebug(std::string_view message) {
    VPLogging::shared().logDebug(message);
}

} // namespace

const VDClass& VPConfigManager::classObject() {
    static const VDClass* cls = [] {
        static const VDClass c("VPConfigManager", &VPObservableObject::classObject(), [] {
            return std::static_pointer_cast<Object>(std::make_shared<VPConfigManager>());
        });
        VDPropertyRegistry::registerClass(
            c, {observableProp("shouldShowNotifBadge", "NSNumber", &VPConfigManager::shouldShowNotifBadge),
                observableProp("isFastModelProcessingEnabled", "NSNumber",
                               &VPConfigManager::isFastModelProcessingEnabled)});
        return &c;
    }();
    return *cls;
}

VPConfigManager::VPConfigManager() : userStoredConfig_(std::make_shared<VPUserStoredConfig>()) {
    classObject(); // the marked properties are entered before any subscription
}

VPConfigManager::~VPConfigManager() = default;

std::shared_ptr<VPConfigManager> VPConfigManager::shared() {
    // Never destroyed: background loads and timers may still reach it while the process ends.
    static const auto* shared = [] {
        std::shared_ptr<VPConfigManager> made;
        if (const VDClass* cls = VVDI::shared().classForProtocol(kVVConfigManagerInterface))
            made = std::dynamic_pointer_cast<VPConfigManager>(cls->create());
        if (!made) made = std::make_shared<VPConfigManager>();
        return new std::shared_ptr<VPConfigManager>(std::move(made));
    }();
    return *shared;
}

// ---------------------------------------------------------------- sources

void VPConfigManager::setRemoteConfigBaseURL(std::string baseURL) {
    std::lock_guard lock(baseURLMutex());
    baseURLStorage() = std::move(baseURL);
}

std::string VPConfigManager::remoteConfigBaseURL() {
    std::lock_guard lock(baseURLMutex());
    return baseURLStorage();
}

std::string VPConfigManager::remoteConfigURL() const {
    std::string base = remoteConfigBaseURL();
    if (base.empty()) return base;
    // "https://store.example.com/" and "https://store.example.com" name the same store.
    while (!base.empty() && base.back() == '/')
        base.pop_back();
    return base + kVPConfigManagerRemotePath;
}

std::vector<std::filesystem::path> VPConfigManager::resourceFolders() {
    if (const char* folder = std::getenv("VELMO_RESOURCES"); folder && *folder) return {folder};
    std::vector<std::filesystem::path> folders;
    std::error_code ec;
    // An installed program and its build tree both lay out <prefix>/bin/program beside
    // <prefix>/share/velmo/resources, so a moved installation still finds its own resources.
    if (const auto program = std::filesystem::read_symlink("/proc/self/exe", ec); !ec)
        folders.push_back(program.parent_path().parent_path() / "share" / "velmo" / "resources");
    folders.push_back(libraryResourcesFolder());
    return folders;
}

std::filesystem::path VPConfigManager::localConfigResourcePath() const {
    const std::string file = localConfigResourceName() + ".json";
    for (const auto& folder : resourceFolders()) {
        std::error_code ec;
        if (std::filesystem::is_regular_file(folder / file, ec)) return folder / file;
    }
    return {};
}

// ---------------------------------------------------------------- the configuration

std::shared_ptr<VDBaseObject> VPConfigManager::config() const {
    std::lock_guard lock(mutex_);
    return config_;
}

void VPConfigManager::setConfig(std::shared_ptr<VDBaseObject> config) {
    std::lock_guard lock(mutex_);
    config_ = std::move(config);
}

void VPConfigManager::start() {
    loadLocalConfig();
    setupRefreshTimer(refreshTimeout());
}

void VPConfigManager::loadLocalConfig() {
    // Off the main thread, so that `start` returns at once.
    std::weak_ptr<VPConfigManager> weak = std::static_pointer_cast<VPConfigManager>(shared_from_this());
    DispatchQueue::global(DispatchQueue::Priority::Default).async([weak] {
        const auto self = weak.lock();
        if (!self) return;
        VP_TRY
        if (self->readLocalConfig()) self->loadRemoteConfig();
        VP_CATCH()
    });
}

bool VPConfigManager::readLocalConfig() {
    const std::filesystem::path file = localConfigResourcePath();
    if (file.empty()) {
        logDebug(
            fmt::format("No local configuration \"{}.json\" among the resources", localConfigResourceName()));
        return false;
    }
    std::error_code error;
    const auto text = Files::read(file, error);
    if (!text || !Utf8::isValid(*text)) {
        logDebug(fmt::format("The local configuration {} can't be read: {}", file.string(),
                             text ? "not UTF-8 text" : error.message()));
        return false;
    }
    const Value parsed = Json::tryParse(*text);
    setConfig(parsed.isNil() ? std::dynamic_pointer_cast<VDBaseObject>(configModelClass().create())
                             : VDBaseObject::modelFromValue(configModelClass(), parsed));
    return true;
}

void VPConfigManager::loadRemoteConfig() {
    const std::string address = remoteConfigURL();
    if (address.empty()) {
        logDebug("No remote configuration: no object store is configured");
        finishRemoteLoad("no remote configuration address is set");
        return;
    }
    std::weak_ptr<VPConfigManager> weak = std::static_pointer_cast<VPConfigManager>(shared_from_this());
    auto request = std::make_shared<VPHTTPRequest>(
        address, VPHTTPRequestMethod::GET, Value(),
        // On the main thread.
        [weak, address](const Value& response, std::shared_ptr<HTTPURLResponse>, VPErrorPtr error) {
            const auto self = weak.lock();
            if (!self) return;
            std::string failure;
            // A response comes as bytes, or parsed when it says it is JSON; nothing when the
            // transfer failed.
            if (response.isNil() || (response.isBytes() && response.bytesView().empty())) {
                failure = error ? error->localizedDescription() : std::string("no data");
            } else if (response.isBytes()) {
                const std::string_view data = response.bytesView();
                const Value parsed = Utf8::isValid(data) ? Json::tryParse(data) : Value();
                failure = self->mergeRemoteConfig(parsed);
            } else {
                failure = self->mergeRemoteConfig(response);
            }
            if (!failure.empty())
                logDebug(fmt::format("Remote configuration {} not applied: {}", address, failure));
            self->finishRemoteLoad(failure);
        });
    request->setCachePolicy(kReloadIgnoringLocalCacheData);
    request->setTimeoutInterval(kVPConfigManagerRemoteTimeout);
    // The transfer holds the request until its completion has run.
    request->start();
}

std::string VPConfigManager::mergeRemoteConfig(const Value& remote) {
    if (!remote.isDictionary()) return "the document isn't a JSON object";
    VP_TRY
    const auto current = config();
    // Keys the remote document leaves out keep the values in force.
    const Dictionary base = current ? current->serialize().dictionary() : Dictionary::create();
    const Dictionary merged =
        _vp_deepMergeWith(base.isNil() ? Dictionary::create() : base, remote.dictionary());
    setConfig(VDBaseObject::modelFromValue(configModelClass(), Value(merged)));
    return {};
    VP_CATCH(std::string("the configuration in force can't be serialized"))
}

void VPConfigManager::finishRemoteLoad(std::string_view failure) {
    RemoteLoadHandler handler;
    {
        std::lock_guard lock(mutex_);
        handler = remoteLoadHandler_;
    }
    if (!handler) return;
    if (isMainThread()) {
        handler(failure);
    } else {
        DispatchQueue::main().async([handler, failure = std::string(failure)] { handler(failure); });
    }
}

void VPConfigManager::setRemoteLoadHandler(RemoteLoadHandler handler) {
    std::lock_guard lock(mutex_);
    remoteLoadHandler_ = std::move(handler);
}

void VPConfigManager::setupRefreshTimer(double interval) {
    std::unique_ptr<DispatchTimer> timer;
    {
        std::lock_guard lock(mutex_);
        timer = std::move(refreshTimer_);
    }
    if (timer) timer->cancel();
    if (!(interval > 0)) return;
    timer = std::make_unique<DispatchTimer>(DispatchQueue::main());
    std::weak_ptr<VPConfigManager> weak = std::static_pointer_cast<VPConfigManager>(shared_from_this());
    timer->start(std::chrono::duration_cast<DispatchQueue::Duration>(std::chrono::duration<double>(interval)),
                 [weak] {
                     if (const auto self = weak.lock()) self->loadRemoteConfig();
                 });
    std::lock_guard lock(mutex_);
    refreshTimer_ = std::move(timer);
}

bool VPConfigManager::isRefreshTimerRunning() const {
    std::lock_guard lock(mutex_);
    return refreshTimer_ && refreshTimer_->isValid();
}

// ---------------------------------------------------------------- observable state

bool VPConfigManager::shouldShowNotifBadge() const {
    return shouldShowNotifBadge_.value_or(false);
}

void VPConfigManager::setShouldShowNotifBadge(bool show) {
    shouldShowNotifBadge_ = show;
    didChangeValueForKey("shouldShowNotifBadge");
}

bool VPConfigManager::isFastModelProcessingEnabled() const {
    return isFastModelProcessingEnabled_.value_or(false);
}

void VPConfigManager::setIsFastModelProcessingEnabled(bool enabled) {
    isFastModelProcessingEnabled_ = enabled;
    didChangeValueForKey("isFastModelProcessingEnabled");
}

} // namespace velmo
