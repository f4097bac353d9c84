#include "velmo/service/VPBaseAPIClient.h"

#include <charconv>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <utility>

#include <boost/url/encode.hpp>
#include <boost/url/grammar/alnum_chars.hpp>
#include <boost/url/grammar/lut_chars.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/keychain/VPKeychain.h"
#include "velmo/keychain/VPKeychainErrors.h"
#include "velmo/model/values/ArrayExtensions.h"
#include "velmo/runtime/VPAsyncTask.h"
#include "velmo/runtime/VPLogging.h"
#include "velmo/runtime/VPSystemInfo.h"
#include "velmo/runtime/VVClientConfig.h"
#include "velmo/service/VPAccountData.h"

namespace velmo {

namespace {

namespace urls = boost::urls;

constexpr const char* kSharedClientIdentifier = "master";
/// What a path holds where a value is missing, as the platform formats nothing.
constexpr const char* kAbsentText = "(null)";

// What a URL query allows as it stands: letters, digits and "!$&'()*+,-./:;=?@_~".
constexpr urls::grammar::lut_chars kQueryAllowedChars =
    urls::grammar::lut_chars(urls::grammar::alnum_chars) + "!$&'()*+,-./:;=?@_~";

std::string queryEncoded(std::string_view text) {
    return urls::encode(text, kQueryAllowedChars);
}

struct CustomBase {
    std::string url;
};

Guarded<CustomBase>& customBase() {
    static auto* base = new Guarded<CustomBase>(); // read by any thread until exit
    return *base;
}

/// The client that the calls of the whole process go through; the receiver in a running system.
std::shared_ptr<VPHTTPClient> sharedSender() {
    return VPHTTPClient::sharedClientWithIdentifier(kSharedClientIdentifier, VPBaseAPIClient::classObject(),
                                                    true);
}

/// A value in a path: text as it is, numbers in their plain form, nothing as "(null)".
std::string pathText(const Value& value) {
    if (value.isString()) return value.str();
    if (value.isNone()) return kAbsentText;
    return value.description();
}

/// A reference to a resource of the service, as bodies carry them.
Value reference(const char* type, const Value& identifier) {
    return Value(Dictionary{{"type", Value(type)}, {"id", identifier}});
}

/// The error with the service's "error" and "message" lifted into it; no error stays none.
VPErrorPtr withServiceMessage(const VPErrorPtr& error, const Value& response) {
    return error ? error->errorWithResponse(response) : nullptr;
}

/// A request's answer handed to the caller as it came, inside the guard.
VPHTTPRequest::Completion passedOn(VPBaseAPIClient::Completion completion) {
    return [completion = std::move(completion)](const Value& response, std::shared_ptr<HTTPURLResponse>,
                                                VPErrorPtr error) {
        VP_TRY
        if (completion) completion(response, error);
        VP_CATCH()
    };
}

/// The system's version as three numbers, as the platform gives it: "12" is "12.0.0".
std::string osVersionText() {
    const std::string version = VPSystemInfo::systemVersion();
    long parts[3] = {0, 0, 0};
    std::string_view rest = version;
    for (long& part : parts) {
        if (rest.empty()) break;
        const auto dot = rest.find('.');
        const std::string_view piece = rest.substr(0, dot);
        if (std::from_chars(piece.data(), piece.data() + piece.size(), part).ec != std::errc()) part = 0;
        rest = dot == std::string_view::npos ? std::string_view() : rest.substr(dot + 1);
    }
    return fmt::format("{}.{}.{}", parts[0], parts[1], parts[2]);
}

std::string hostName() {
    char name[HOST_NAME_MAX + 1] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return {};
    return name;
}

std::optional<std::string> nonEmpty(std::string text) {
    if (text.empty()) return std::nullopt;
    return text;
}

/// A failed token read or write: logged as the guard logs, and the caller goes on.
void logTokenFailure(const char* function, int line, const VPErrorPtr& error) {
    if (!error || error->code() == kVPKeychainErrorItemNotFound) return;
    VPLogging::shared().logError(
        fmt::format("{} [Line {}] Exception: {}", function, line, error->localizedDescription()));
}

std::optional<std::filesystem::path> programOnPath(std::string_view name) {
    const char* path = std::getenv("PATH");
    std::string_view folders = path ? path : "/usr/local/bin:/usr/bin:/bin";
    while (true) {
        const auto colon = folders.find(':');
        const std::string_view folder = folders.substr(0, colon);
        const std::filesystem::path candidate =
            std::filesystem::path(folder.empty() ? "." : std::string(folder)) / name;
        std::error_code ec;
        if (std::filesystem::is_regular_file(candidate, ec) && ::access(candidate.c_str(), X_OK) == 0)
            return candidate;
        if (colon == std::string_view::npos) return std::nullopt;
        folders.remove_prefix(colon + 1);
    }
}

// ---- refreshing projects: state shared by the steps, touched on the main queue only

struct RefreshProjectsRun {
    Array accumulator = Array::create();
    int pending = 1;
    /// The holder of the finishing step: emptied once it has reported, so later answers are quiet.
    bool holding = true;
    VVAPIClientInterface::Completion completion;
};
using RefreshProjectsRunPtr = std::shared_ptr<RefreshProjectsRun>;

/// The list under "results", nil when there is none.
Array resultsOf(const Value& response) {
    return response.dictionary().get("results").array();
}

/// The failure of a list's answer: the transfer's, or a list that came without "results".
VPErrorPtr listError(const Value& response, const VPErrorPtr& error, const Array& results) {
    if (error) return withServiceMessage(error, response);
    if (results.isNil()) return VPError::make(kVPSelectProjectControllerErrorDomain, 1);
    return nullptr;
}

void finishRefresh(const RefreshProjectsRunPtr& run, const std::weak_ptr<VPBaseAPIClient>& client,
                   const VPErrorPtr& error) {
    if (error) {
        auto completion = std::move(run->completion);
        run->holding = false;
        if (completion) completion(Value(), error);
        return;
    }
    if (run->pending > 0) return;
    VPAccountData& account = VPAccountData::shared();
    const auto self = client.lock();
    account.setCachedUser(self ? self->lastFetchedUser().get("email") : Value());
    account.setCachedProjects(run->accumulator);
    auto completion = std::move(run->completion);
    run->holding = false;
    if (completion) completion(Value(), nullptr);
}

/// One answer is in: unless the run has reported already, count it and see whether it finishes.
void settleRefresh(const RefreshProjectsRunPtr& run, const std::weak_ptr<VPBaseAPIClient>& client,
                   const VPErrorPtr& error) {
    if (!run->holding) return;
    --run->pending;
    finishRefresh(run, client, error);
}

} // namespace

// ---------------------------------------------------------------- the machine's name

// The job that reads the machine's name may outlive the client: it reaches the client through
// this, which the client's destructor empties under the same lock.
struct VPBaseAPIClient::MacNameJob {
    std::mutex mutex;
    VPBaseAPIClient* client = nullptr;
};

VPBaseAPIClient::VPBaseAPIClient() {
    setDefaultHeaders();
    startMacNameJob();
    // Every request goes to the service: nothing is answered from a local cache.
    setCachePolicy(1);
}

VPBaseAPIClient::~VPBaseAPIClient() {
    std::lock_guard lock(macNameJob_->mutex);
    macNameJob_->client = nullptr;
}

void VPBaseAPIClient::setDefaultHeaders() {
    VP_TRY
    const VVClientConfigInterface& config = VVClientConfig::current();
    setValue(osVersionText(), kVPOSVersionHeader);
    // The host application's version and build; the hosts here have one text for both.
    const std::string hostVersion = config.hostVersion();
    setValue(hostVersion.empty() ? std::nullopt
                                 : std::optional(fmt::format("{}({})", hostVersion, hostVersion)),
             kVPClientVersionHeader);
    setValue(nonEmpty(config.clientID()), kVPClientIdHeader);
    setValue(nonEmpty(VPLogging::shared().serialNumber()), kVPMacSerialNumberHeader);
    VP_CATCH()
}

void VPBaseAPIClient::startMacNameJob() {
    macNameJob_ = std::make_shared<MacNameJob>();
    macNameJob_->client = this;
    // Naming the machine may wait on the resolver; requests sent before it ends go without the name.
    DispatchQueue::global(DispatchQueue::Priority::Low).async([job = macNameJob_] {
        VP_TRY
        const std::string value = macNameHeaderValue(hostName());
        std::lock_guard lock(job->mutex);
        if (job->client) job->client->setValue(nonEmpty(value), kVPMacNameHeader);
        VP_CATCH()
    });
}

std::string VPBaseAPIClient::macNameHeaderValue(std::string_view name) {
    std::string plain;
    constexpr std::string_view kTypographicApostrophe = "\u2019";
    for (std::size_t i = 0; i < name.size();) {
        if (name.substr(i).starts_with(kTypographicApostrophe)) {
            plain += '\'';
            i += kTypographicApostrophe.size();
        } else {
            plain += name[i++];
        }
    }
    return queryEncoded(plain);
}

// ---------------------------------------------------------------- class

const VDClass& VPBaseAPIClient::classObject() {
    static const VDClass cls("VPBaseAPIClient", &VPHTTPClient::classObject(),
                             [] { return std::shared_ptr<Object>(std::make_shared<VPBaseAPIClient>()); });
    return cls;
}

std::shared_ptr<VPBaseAPIClient> VPBaseAPIClient::sharedClient() {
    return std::dynamic_pointer_cast<VPBaseAPIClient>(sharedSender());
}

std::string VPBaseAPIClient::apiBaseURL() {
    std::string custom = customAPIBaseURL();
    return custom.empty() ? std::string(kVPDefaultAPIBaseURL) : custom;
}

std::string VPBaseAPIClient::codeGenBaseURL() {
    std::string custom = customAPIBaseURL();
    return custom.empty() ? std::string(kVPDefaultCodeGenBaseURL) : custom;
}

std::string VPBaseAPIClient::customAPIBaseURL() {
    return customBase().get(&CustomBase::url);
}

void VPBaseAPIClient::setCustomAPIBaseURL(std::string url) {
    customBase().set(&CustomBase::url, std::move(url));
}

std::string VPBaseAPIClient::webAppBaseURL() const {
    return kVPWebAppBaseURL;
}

Dictionary VPBaseAPIClient::lastFetchedUser() const {
    return fields_.get(&Fields::lastFetchedUser);
}

void VPBaseAPIClient::setLastFetchedUser(Dictionary user) {
    fields_.set(&Fields::lastFetchedUser, std::move(user));
}

// ---------------------------------------------------------------- the token

std::optional<std::string> VPBaseAPIClient::accessToken() const {
    if (!shouldUseKeychainForToken()) return fields_.get(&Fields::accessToken);
    try {
        VPErrorPtr error;
        auto token = VPKeychain::passwordForService(kVPTokenKeychainService, kVPTokenKeychainAccount, &error);
        if (!token) logTokenFailure(__PRETTY_FUNCTION__, __LINE__, error);
        return token;
    } catch (...) {
        VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);
        return std::nullopt;
    }
}

void VPBaseAPIClient::setAccessToken(std::optional<std::string> token) {
    if (shouldUseKeychainForToken()) {
        if (!token) {
            clearToken();
            return;
        }
        try {
            VPErrorPtr error;
            if (!VPKeychain::setPassword(*token, VVClientConfig::current().keyChainServiceName(),
                                         kVPTokenKeychainAccount, &error))
                logTokenFailure(__PRETTY_FUNCTION__, __LINE__, error);
        } catch (...) {
            VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);
        }
    }
    storeToken(std::move(token));
}

void VPBaseAPIClient::clearToken() {
    storeToken(std::nullopt);
    if (!shouldUseKeychainForToken()) return;
    try {
        VPErrorPtr error;
        if (!VPKeychain::deletePasswordForService(kVPTokenKeychainService, kVPTokenKeychainAccount, &error))
            logTokenFailure(__PRETTY_FUNCTION__, __LINE__, error);
    } catch (...) {
        VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);
    }
}

void VPBaseAPIClient::storeToken(std::optional<std::string> token) {
    setValue(token ? std::optional("JWT " + *token) : std::nullopt, kVPAuthorizationHeader);
    fields_.set(&Fields::accessToken, std::move(token));
}

std::string VPBaseAPIClient::addTokenToLink(std::string_view link) const {
    VP_TRY
    const auto token = accessToken();
    if (!token) return std::string(link);
    // A link that carries a token of its own keeps it.
    if (link.find("?t=") != std::string_view::npos || link.find("&t=") != std::string_view::npos)
        return std::string(link);
    const char* separator = link.find('?') != std::string_view::npos ? "&" : "?";
    return fmt::format("{}{}t={}", link, separator, queryEncoded(*token));
    VP_CATCH(std::string())
}

void VPBaseAPIClient::openLinkWithToken(const std::string& link) {
    VP_TRY
    openURL(addTokenToLink(link));
    VP_CATCH()
}

void VPBaseAPIClient::openURL(const std::string& url) {
    const auto opener = programOnPath("xdg-open");
    if (!opener) {
        // The link carries the user's token: it stays out of the log.
        VPLogging::shared().logError("[VPBaseAPIClient] No xdg-open on PATH: a link could not be opened");
        return;
    }
    VPAsyncTask task;
    task.execute(opener->string(), {url});
}

// ---------------------------------------------------------------- service calls

void VPBaseAPIClient::createProjectWithName(const std::string& name, const std::optional<std::string>& teamId,
                                            Completion completion) {
    VP_TRY
    Dictionary parameters{{"name", Value(name)}};
    if (teamId) parameters.set("team", reference("teams", Value(*teamId)));
    const std::string path =
        fmt::format("{}/v2/teams/{}/projects", apiBaseURL(), teamId ? *teamId : std::string(kAbsentText));
    sharedSender()->POST(path, Value(parameters),
                         [completion = std::move(completion)](
                             const Value& response, std::shared_ptr<HTTPURLResponse>, VPErrorPtr error) {
                             VP_TRY
                             if (response.isNil() && !error) {
                                 error = VPError::withDescription(kVPAPIClientErrorDomain, 1,
                                                                  kVPMissingPayloadDescription);
                             } else {
                                 error = withServiceMessage(error, response);
                             }
                             if (completion) completion(response, error);
                             VP_CATCH()
                         });
    VP_CATCH()
}

void VPBaseAPIClient::refreshTeams(Completion completion) {
    VP_TRY
    sharedSender()->GET(apiBaseURL() + "/v2/users/me/team_memberships", Value(),
                        passedOn(std::move(completion)));
    VP_CATCH()
}

void VPBaseAPIClient::sendClientInstallation(Completion completion) {
    VP_TRY
    const Dictionary parameters{{"client_id", Value(VVClientConfig::current().clientID())}};
    sharedSender()->POST(apiBaseURL() + "/v2/users/me/installations", Value(parameters),
                         passedOn(std::move(completion)));
    VP_CATCH()
}

void VPBaseAPIClient::refreshProjectsWithCompletion(Completion completion) {
    VP_TRY
    auto run = std::make_shared<RefreshProjectsRun>();
    run->completion = std::move(completion);
    const std::weak_ptr<VPBaseAPIClient> weak = std::static_pointer_cast<VPBaseAPIClient>(shared_from_this());
    GET(apiBaseURL() + "/v2/users/me/team_memberships", Value(),
        [run, weak](const Value& response, std::shared_ptr<HTTPURLResponse>, VPErrorPtr error) {
            VP_TRY
            const auto self = weak.lock();
            if (!self) return;
            const Array results = resultsOf(response);
            error = listError(response, error, results);
            if (!error) {
                VPAccountData::shared().setCachedTeams(results);
                for (const Value& membership : results) {
                    // One membership that can't be read leaves the others to go on.
                    try {
                        const Value& team = membership.dictionary().get("team");
                        if (team.isNone()) continue;
                        self->GET(fmt::format("{}/v2/teams/{}/projects/", apiBaseURL(), pathText(team)),
                                  Value(),
                                  [run, weak](const Value& response, std::shared_ptr<HTTPURLResponse>,
                                              VPErrorPtr error) {
                                      VP_TRY
                                      const Array results = resultsOf(response);
                                      error = listError(response, error, results);
                                      if (!error) {
                                          run->accumulator = run->accumulator.empty()
                                                                 ? results
                                                                 : vp_arrayByAddingUniqueObjectsFromArray(
                                                                       run->accumulator, results);
                                      }
                                      settleRefresh(run, weak, error);
                                      VP_CATCH()
                                  });
                        ++run->pending;
                    } catch (...) {
                        VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);
                    }
                }
            }
            settleRefresh(run, weak, error);
            VP_CATCH()
        });
    VP_CATCH()
}

void VPBaseAPIClient::syncRelease(const Dictionary& release, Completion completion) {
    VP_TRY
    const Value project = release.get("project");
    const Value releaseId = release.get("id");
    if (project.isNone() || releaseId.isNone()) {
        if (completion) completion(Value(), VPError::make(kVPAPIClientErrorDomain, 1));
        return;
    }
    const Dictionary parameters{{"release", reference("releases", releaseId)}};
    sharedSender()->POST(
        fmt::format("{}/v2/projects/{}/project_releases/", apiBaseURL(), pathText(project)),
        Value(parameters),
        [project, completion = std::move(completion)](const Value& response, std::shared_ptr<HTTPURLResponse>,
                                                      VPErrorPtr error) {
            VP_TRY
            if (error) {
                if (completion) completion(Value(), withServiceMessage(error, response));
                return;
            }
            const Value projectRelease = response.dictionary().get("id");
            if (projectRelease.isNone()) {
                if (completion) completion(Value(), VPError::make(kVPAPIClientErrorDomain, 1));
                return;
            }
            DispatchQueue::main().async([project, projectRelease, completion] {
                VP_TRY
                const Dictionary live{
                    {"live_project_release", reference("project_releases", projectRelease)}};
                sharedSender()->PUT(
                    fmt::format("{}/v2/projects/{}", apiBaseURL(), pathText(project)), Value(live),
                    [completion](const Value& response, std::shared_ptr<HTTPURLResponse>, VPErrorPtr error) {
                        VP_TRY
                        if (response.isNil() && !error) error = VPError::make(kVPAPIClientErrorDomain, 1);
                        if (completion) completion(response, withServiceMessage(error, response));
                        VP_CATCH()
                    });
                VP_CATCH()
            });
            VP_CATCH()
        });
    VP_CATCH()
}

void VPBaseAPIClient::sendPreviewRate(int rate, const std::string& identifier, bool useRelease,
                                      const std::optional<std::string>& feedback,
                                      ErrorCompletion completion) {
    if (!feedback) throw std::invalid_argument("sendPreviewRate: the feedback must be present");
    const std::string path = identifier.empty()
                                 ? apiBaseURL() + "/v2/preview_ratings"
                                 : fmt::format("{}/v2/{}/{}/preview_ratings", apiBaseURL(),
                                               useRelease ? "releases" : "projects", identifier);
    setSendParametersAsJSON(true);
    const Dictionary parameters{{"comment", Value(*feedback)}, {"rating", Value(rate)}};
    POST(path, Value(parameters),
         [completion = std::move(completion)](const Value& response, std::shared_ptr<HTTPURLResponse>,
                                              VPErrorPtr error) {
             if (completion) completion(withServiceMessage(error, response));
         });
}

void VPBaseAPIClient::checkAvailableFonts(const Array& fontNames, Completion completion) {
    setSendParametersAsJSON(true);
    const Dictionary parameters{{"font_names", Value(fontNames)}};
    POST(apiBaseURL() + "/rpc/get_available_fonts", Value(parameters),
         [completion = std::move(completion)](const Value& response, std::shared_ptr<HTTPURLResponse>,
                                              VPErrorPtr error) {
             if (completion) completion(response, withServiceMessage(error, response));
         });
}

} // namespace velmo
