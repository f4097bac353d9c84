#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "velmo/foundation/Guarded.h"
#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"
#include "velmo/net/VPHTTPClient.h"
#include "velmo/service/VVAPIClientInterface.h"

namespace velmo {

/// Domain of the client's own failures (a missing payload, missing ids).
inline constexpr const char* kVPAPIClientErrorDomain = "VPAPIClient";
/// Domain of a membership or project list that came without "results".
inline constexpr const char* kVPSelectProjectControllerErrorDomain = "VPSelectProjectController";
inline constexpr const char* kVPMissingPayloadDescription = "Missing payload";

/// The service's endpoints: full bases without a trailing slash.
inline constexpr const char* kVPDefaultAPIBaseURL = "https://api.velmoapp.com";
inline constexpr const char* kVPDefaultCodeGenBaseURL = "https://codegen.velmoapp.com";
inline constexpr const char* kVPWebAppBaseURL = "https://app.velmoapp.com";

/// The token store's item that holds the user's token. The client reads and deletes it under this
/// service name, and writes it under the host's `keyChainServiceName`: a host that wants the
/// token back returns this name there.
inline constexpr const char* kVPTokenKeychainService = "Velmo-Sketch-Plugin";
inline constexpr const char* kVPTokenKeychainAccount = "user";

// Headers that say who calls.
inline constexpr const char* kVPOSVersionHeader = "X-OS-Version";
inline constexpr const char* kVPClientVersionHeader = "X-Client-Version";
inline constexpr const char* kVPClientIdHeader = "X-Client-Id";
inline constexpr const char* kVPMacSerialNumberHeader = "X-Mac-Serial-Number";
inline constexpr const char* kVPMacNameHeader = "X-Mac-Name";
inline constexpr const char* kVPAuthorizationHeader = "Authorization";

/// The one client of the hosted service: its base URLs, the headers that identify the machine,
/// the user's token and one operation per service call.
///
/// Made once through `sharedClient`, from the class bound to "VVAPIClientInterface" (this one
/// unless the host bound its own), and then bound there as the interface's instance. Calls are
/// made on the main thread and complete on the main queue; every body and every response step
/// runs inside the catch-all guard, and a step that fails there calls nothing back.
///
/// Paths are the base URL with the call's path after it, so that a base set by the user (a local
/// service) serves every call. Bodies go as forms until a call that needs JSON switches the
/// client's sticky `sendParametersAsJSON` on; nothing switches it off.
class VPBaseAPIClient : public VPHTTPClient, public VVAPIClientInterface {
public:
    using Completion = VVAPIClientInterface::Completion;
    using ErrorCompletion = std::function<void(VPErrorPtr error)>;

    /// Sets the identifying headers; a background job of the lowest priority adds "X-Mac-Name".
    VPBaseAPIClient();
    ~VPBaseAPIClient() override;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// The process's client (identifier "master"); nullptr when a plain HTTP client took that
    /// identifier first.
    static std::shared_ptr<VPBaseAPIClient> sharedClient();

    // ---- where the service is

    /// `customAPIBaseURL` when set, otherwise the service's API endpoint.
    static std::string apiBaseURL();
    /// `customAPIBaseURL` when set, otherwise the code-generation endpoint; for the host.
    static std::string codeGenBaseURL();
    /// The process-wide override of both bases; empty when none.
    static std::string customAPIBaseURL();
    static void setCustomAPIBaseURL(std::string url);
    /// Never overridden.
    std::string webAppBaseURL() const override;

    // ---- the token

    /// False here; a specialisation answers true to keep the token in the secret token store.
    virtual bool shouldUseKeychainForToken() const { return false; }
    /// From the token store's item when the hook is on, else the one in memory.
    std::optional<std::string> accessToken() const;
    /// Stores the token and sets "Authorization" to "JWT <token>"; with the hook on, it is also
    /// written to the token store under the host's `keyChainServiceName`. No token: as `clearToken`
    /// with the hook on, else the header goes.
    /// setAccessToken:
    void setAccessToken(std::optional<std::string> token);
    /// Forgets the token and removes "Authorization"; with the hook on, deletes the store's item.
    void clearToken();
    /// The link with "t=<token>" added to its query, unless there is no token or the link has a
    /// "t" parameter already.
    /// addTokenToLink:
    std::string addTokenToLink(std::string_view link) const;
    /// openLinkWithToken:
    void openLinkWithToken(const std::string& link) override;

    /// The user record as the host last fetched it; only its "email" is read here.
    Dictionary lastFetchedUser() const;
    void setLastFetchedUser(Dictionary user);

    // ---- service calls; every completion is optional unless said otherwise

    /// POST "<base>/v2/teams/<team>/projects" with "name" and, with a team, "team" as a reference.
    /// Without a team the path holds "(null)" where the team goes. A team makes the body nested,
    /// which only a JSON client can send. The error carries the service's message; a missing
    /// payload is "VPAPIClient" 1. Sent through the shared client.
    /// createProjectWithName:teamId:completion:
    void createProjectWithName(const std::string& name, const std::optional<std::string>& teamId,
                               Completion completion) override;
    /// GET "<base>/v2/users/me/team_memberships"; the completion gets what arrived. Sent through
    /// the shared client.
    void refreshTeams(Completion completion) override;
    /// POST "<base>/v2/users/me/installations" with "client_id"; the completion gets what arrived.
    /// Sent through the shared client.
    void sendClientInstallation(Completion completion);
    /// The memberships, then each team's projects at once; the memberships go to the account cache
    /// as they come, the projects, merged by "id", only when all teams answered. The first failure
    /// is reported at once and nothing after it; the completion's response is always nil.
    void refreshProjectsWithCompletion(Completion completion) override;
    /// Makes a release the live one of its project: POST "<base>/v2/projects/<project>/
    /// project_releases/" naming the release, then PUT "<base>/v2/projects/<project>" naming the
    /// new project release. A release without "project" or "id" fails with "VPAPIClient" 1. Needs
    /// a JSON client (nested bodies). Sent through the shared client.
    /// syncRelease:completion:
    void syncRelease(const Dictionary& release, Completion completion);
    /// POST "<base>/v2/<releases|projects>/<id>/preview_ratings", or "<base>/v2/preview_ratings"
    /// for the id "", with "comment" and "rating", as JSON. No feedback at all throws
    /// `std::invalid_argument`. The completion gets nil on success. Not guarded.
    /// sendPreviewRate:withID:useRelease:feedback:completion:
    void sendPreviewRate(int rate, const std::string& identifier, bool useRelease,
                         const std::optional<std::string>& feedback, ErrorCompletion completion);
    /// POST "<base>/rpc/get_available_fonts" with "font_names", as JSON. Not guarded.
    /// checkAvailableFonts:completion:
    void checkAvailableFonts(const Array& fontNames, Completion completion);

    /// The value of "X-Mac-Name" for a host name: typographic apostrophes made plain, then
    /// percent-encoded as a URL query allows.
    static std::string macNameHeaderValue(std::string_view hostName);

protected:
    /// Opens the link in the user's browser: xdg-open, found on PATH. A host with its own way
    /// overrides it.
    virtual void openURL(const std::string& url);
    /// The in-memory token and "Authorization", which always change together; the token store is
    /// left alone.
    void storeToken(std::optional<std::string> token);

private:
    struct MacNameJob;

    void setDefaultHeaders();
    void startMacNameJob();

    struct Fields {
        std::optional<std::string> accessToken;
        Dictionary lastFetchedUser;
    };
    Guarded<Fields> fields_;
    std::shared_ptr<MacNameJob> macNameJob_;
};

} // namespace velmo
