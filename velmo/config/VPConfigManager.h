#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/config/VPUserStoredConfig.h"
#include "velmo/config/VVConfigManagerInterface.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/model/core/VDBaseObject.h"
#include "velmo/runtime/VPObservableObject.h"

namespace velmo {

/// The path of the remote document below the object store's base.
inline constexpr const char* kVPConfigManagerRemotePath = "/sketchplugin/plugin_config.json";
/// The name of the local copy among the library's resources.
inline constexpr const char* kVPConfigManagerLocalResourceName = "plugin_config";
/// Seconds between remote refreshes: a day.
inline constexpr double kVPConfigManagerRefreshTimeout = 86400;
/// Seconds a remote load may take.
inline constexpr unsigned kVPConfigManagerRemoteTimeout = 20;

/// The configuration engine: a local copy of the configuration document, shipped among the
/// library's resources, stands from the first moments on, also offline; the remote document is
/// merged over it at start and then on a repeating refresh timer. Beside it, the user's own
/// settings (`userStoredConfig`).
///
/// `config` isn't observable and nothing announces a new one: readers ask for it when they need
/// it. It is written by the background load of the local copy and on the main thread after a
/// remote load, and read on any thread (under a lock here, where the original had none). All
/// remote failures are silent and keep the configuration in force; a debug line says why.
///
/// `shared` makes the class bound to "VVConfigManagerInterface", `VPPluginConfigManager` unless the
/// host bound another. Other instances (tests, tools) are made with `std::make_shared`.
class VPConfigManager : public VPObservableObject, public VVConfigManagerInterface {
public:
    /// Called on the main thread when a remote load has ended: with an empty text when the remote
    /// document was merged, else with what stopped it.
    using RemoteLoadHandler = std::function<void(std::string_view failure)>;

    VPConfigManager();
    ~VPConfigManager() override;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// The one manager, made at first use: an object of the class bound to
    /// "VVConfigManagerInterface" (this class when the binding makes no configuration manager).
    static std::shared_ptr<VPConfigManager> shared();

    // ---- where the configuration comes from

    /// The object store's base for every manager of the process, "" for none: the host sets it
    /// from its configuration before `start`.
    static void setRemoteConfigBaseURL(std::string baseURL);
    static std::string remoteConfigBaseURL();

    /// The base and "/sketchplugin/plugin_config.json"; empty without a base.
    std::string remoteConfigURL() const override;
    std::string localConfigResourceName() const override { return kVPConfigManagerLocalResourceName; }
    double refreshTimeout() const override { return kVPConfigManagerRefreshTimeout; }
    const VDClass& configModelClass() const override { return VDBaseObject::classObject(); }

    /// The folders that the library's resources are looked for in, in order: `$VELMO_RESOURCES`
    /// alone when set; else "share/velmo/resources" beside the running program
    /// (<prefix>/bin/program finds <prefix>/share/velmo/resources), then the installed data folder.
    static std::vector<std::filesystem::path> resourceFolders();
    /// The local copy: "<localConfigResourceName>.json" in the first of `resourceFolders` that has
    /// it; empty when none has.
    virtual std::filesystem::path localConfigResourcePath() const;

    // ---- the configuration

    /// The configuration in force; nullptr before the local copy is read (or when it can't be).
    std::shared_ptr<VDBaseObject> config() const;
    void setConfig(std::shared_ptr<VDBaseObject> config);

    /// Reads the local copy, then loads the remote document, on a background queue of default
    /// priority, and starts the refresh timer on the calling thread's loop (the main thread).
    /// Returns at once. The host calls it once, at start.
    void start();

    /// The background step of `start`: reads the local copy, sets it as the configuration, and
    /// starts a remote load. Without a readable local copy nothing is set and nothing is loaded
    /// until the timer fires.
    void loadLocalConfig();
    /// The background step's work, on the calling thread: reads the local copy into
    /// `configModelClass` and sets it as the configuration (a blank object when the text isn't
    /// JSON, nullptr when it is JSON but no object). Returns false, setting nothing, when the copy
    /// can't be found or read as UTF-8 text.
    bool readLocalConfig();
    /// Fetches the remote document through the HTTP engine, bypassing caches, with a time-out of
    /// 20 seconds, and merges it over the configuration in force on the main thread. The HTTP
    /// status isn't looked at: an error page is simply not JSON. A document that doesn't arrive or
    /// isn't a JSON dictionary changes nothing.
    void loadRemoteConfig();
    /// The main-thread half of a remote load: the configuration in force, serialized, with the
    /// remote dictionary deep-merged over it (dictionaries merge key by key, anything else
    /// replaces), read back into `configModelClass`. Without a configuration in force the remote
    /// dictionary alone is read. Gives what stopped it, or "" when the configuration was replaced.
    std::string mergeRemoteConfig(const Value& remote);

    /// Stops any running refresh timer, then repeats `loadRemoteConfig` every `interval` seconds
    /// on the calling thread's loop, holding the manager weakly. A non-positive interval only stops.
    /// setupRefreshTimer:
    void setupRefreshTimer(double interval);
    bool isRefreshTimerRunning() const;

    /// Told of the end of every remote load, on the main thread. For hosts that show it.
    void setRemoteLoadHandler(RemoteLoadHandler handler);

    // ---- the user's settings and the observable state

    const std::shared_ptr<VPUserStoredConfig>& userStoredConfig() const { return userStoredConfig_; }

    /// Observable: show the badge on the code preferences button.
    virtual bool shouldShowNotifBadge() const;
    void setShouldShowNotifBadge(bool show);
    /// Observable: mirror of the user's choice of fast processing.
    virtual bool isFastModelProcessingEnabled() const;
    void setIsFastModelProcessingEnabled(bool enabled);

protected:
    /// Cached observable values: nothing until set or first computed.
    mutable std::optional<bool> shouldShowNotifBadge_;
    mutable std::optional<bool> isFastModelProcessingEnabled_;

private:
    void finishRemoteLoad(std::string_view failure);

    std::shared_ptr<VPUserStoredConfig> userStoredConfig_;
    mutable std::mutex mutex_;
    std::shared_ptr<VDBaseObject> config_;
    RemoteLoadHandler remoteLoadHandler_;
    std::unique_ptr<DispatchTimer> refreshTimer_;
};

} // namespace velmo
