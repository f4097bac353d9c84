#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <thread>

#include "ServiceTestSupport.h"
#include "velmo/foundation/Files.h"
#include "velmo/keychain/VPKeychain.h"
#include "velmo/runtime/VPLogging.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

// Before main, so before any thread and any use of the token store: the store of these tests is
// the private file under the run's own VELMO_HOME, never a secret service of the user's session.
static const bool kTokenStoreIsPrivate = [] {
    return ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/velmo-service-tests", 1) == 0;
}();

namespace {

const std::vector<std::string> kIdentity = {kVPOSVersionHeader, kVPClientVersionHeader,
                                            kVPClientIdHeader,  kVPMacSerialNumberHeader,
                                            kVPMacNameHeader,   kVPAuthorizationHeader};

std::string hostName() {
    char name[HOST_NAME_MAX + 1] = {};
    ::gethostname(name, sizeof name - 1);
    return name;
}

} // namespace

TEST_F(ServiceTest, IdentityHeadersGoInTheOrderTheyWereSetAndTheTokenHeaderFollowsSetAndClear) {
    peer.handle("GET", "/v2/users/me/team_memberships", answer(200, R"({"results":[]})"));
    startPeer();
    ASSERT_TRUE(runMainLoopUntil([&] { return client->HTTPHeaderFields().contains(kVPMacNameHeader); },
                                 std::chrono::seconds(10)))
        << "the background job names the machine";

    struct Step {
        std::function<void()> change;
        std::optional<std::string> authorization;
    };
    const std::vector<Step> steps = {
        {[] {}, std::nullopt},
        {[&] { client->setAccessToken("tok 1"); }, "JWT tok 1"},
        {[&] { client->setAccessToken("tok 2"); }, "JWT tok 2"},
        {[&] { client->clearToken(); }, std::nullopt},
        {[&] { client->setAccessToken("tok 3"); }, "JWT tok 3"},
        {[&] { client->setAccessToken(std::nullopt); }, std::nullopt},
    };
    std::vector<std::string> expectedOrder(kIdentity.begin(), kIdentity.end() - 1);
    if (VPLogging::shared().serialNumber().empty()) std::erase(expectedOrder, kVPMacSerialNumberHeader);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        steps[i].change();
        Outcome outcome;
        client->refreshTeams(outcome.completion());
        ASSERT_TRUE(outcome.wait());
        const RecordedRequest sent = peer.requests().back();
        std::vector<std::string> order = expectedOrder;
        if (steps[i].authorization) order.push_back(kVPAuthorizationHeader);
        EXPECT_EQ(sent.headerOrder(kIdentity), order) << "step " << i;
        EXPECT_EQ(sent.header(kVPAuthorizationHeader), steps[i].authorization.value_or("")) << "step " << i;
        EXPECT_EQ(client->accessToken(),
                  steps[i].authorization ? std::optional(steps[i].authorization->substr(4)) : std::nullopt);
    }
    const RecordedRequest sent = peer.requests().front();
    EXPECT_TRUE(std::regex_match(sent.header(kVPOSVersionHeader), std::regex(R"(\d+\.\d+\.\d+)")));
    EXPECT_EQ(sent.header(kVPClientVersionHeader), "99.1(99.1)");
    EXPECT_EQ(sent.header(kVPClientIdHeader), "client-42");
    EXPECT_EQ(sent.header(kVPMacSerialNumberHeader), VPLogging::shared().serialNumber());
    EXPECT_EQ(sent.header(kVPMacNameHeader), VPBaseAPIClient::macNameHeaderValue(hostName()));
    EXPECT_FALSE(sent.hasHeader("User-Agent"));
    EXPECT_FALSE(sent.hasHeader("Velmo-Redirect"));
}

TEST(VPBaseAPIClientText, MachineNamesAndTokensAreEncodedAsAQueryAllows) {
    EXPECT_EQ(VPBaseAPIClient::macNameHeaderValue("Ann\u2019s box"), "Ann's%20box");
    EXPECT_EQ(VPBaseAPIClient::macNameHeaderValue("caf\u00e9-1.local"), "caf%C3%A9-1.local");

    VPBaseAPIClient client;
    EXPECT_EQ(client.addTokenToLink("https://app.test/p/1"), "https://app.test/p/1") << "no token, no change";
    client.setAccessToken("a b");
    const std::vector<std::pair<std::string, std::string>> links = {
        {"https://app.test/p/1", "https://app.test/p/1?t=a%20b"},
        {"https://app.test/p/1?view=2", "https://app.test/p/1?view=2&t=a%20b"},
        {"https://app.test/p/1?t=own", "https://app.test/p/1?t=own"},
        {"https://app.test/p/1?view=2&t=own", "https://app.test/p/1?view=2&t=own"},
    };
    for (const auto& [link, signedLink] : links)
        EXPECT_EQ(client.addTokenToLink(link), signedLink);
}

TEST(VPBaseAPIClientText, ACustomBaseReplacesBothServiceBasesButNotTheWebApplication) {
    for (const char* base : {kVPDefaultAPIBaseURL, kVPDefaultCodeGenBaseURL, kVPWebAppBaseURL}) {
        EXPECT_TRUE(std::string_view(base).starts_with("https://")) << base;
        EXPECT_FALSE(std::string_view(base).ends_with("/")) << base;
    }
    VPBaseAPIClient client;
    EXPECT_EQ(VPBaseAPIClient::apiBaseURL(), kVPDefaultAPIBaseURL);
    EXPECT_EQ(VPBaseAPIClient::codeGenBaseURL(), kVPDefaultCodeGenBaseURL);
    VPBaseAPIClient::setCustomAPIBaseURL("http://127.0.0.1:9");
    EXPECT_EQ(VPBaseAPIClient::apiBaseURL(), "http://127.0.0.1:9");
    EXPECT_EQ(VPBaseAPIClient::codeGenBaseURL(), "http://127.0.0.1:9");
    EXPECT_EQ(client.webAppBaseURL(), kVPWebAppBaseURL);
    VPBaseAPIClient::setCustomAPIBaseURL("");
    EXPECT_EQ(VPBaseAPIClient::apiBaseURL(), kVPDefaultAPIBaseURL);
}

TEST_F(ServiceTest, BodiesAreFormsUntilACallSwitchesToJSONAndJSONFromThenOnAtEachCallsPath) {
    for (const char* method : {"POST", "PUT"})
        peer.handle(method, ".*", answer(200, R"({"id":"x"})"));
    startPeer();
    struct Call {
        std::function<void(Outcome&)> send;
        std::string target;
        std::string contentType;
        std::string body; // a form as it is sent, JSON as a value
    };
    const auto rated = [](Outcome& o) {
        return [completion = o.completion()](VPErrorPtr error) { completion(Value(), std::move(error)); };
    };
    const std::vector<Call> calls = {
        {[&](Outcome& o) { client->sendClientInstallation(o.completion()); }, "/v2/users/me/installations",
         "application/x-www-form-urlencoded", "client_id=client-42"},
        {[&](Outcome& o) { client->createProjectWithName("Two words", std::nullopt, o.completion()); },
         "/v2/teams/(null)/projects", "application/x-www-form-urlencoded", "name=Two%20words"},
        {[&](Outcome& o) {
             client->checkAvailableFonts(Array{Value("Inter"), Value("Lato")}, o.completion());
         },
         "/rpc/get_available_fonts", "application/json", R"({"font_names":["Inter","Lato"]})"},
        {[&](Outcome& o) { client->sendClientInstallation(o.completion()); }, "/v2/users/me/installations",
         "application/json", R"({"client_id":"client-42"})"},
        {[&](Outcome& o) { client->createProjectWithName("Site", "t1", o.completion()); },
         "/v2/teams/t1/projects", "application/json", R"({"name":"Site","team":{"type":"teams","id":"t1"}})"},
        {[&](Outcome& o) { client->sendPreviewRate(4, "r9", true, "ok", rated(o)); },
         "/v2/releases/r9/preview_ratings", "application/json", R"({"comment":"ok","rating":4})"},
        {[&](Outcome& o) { client->sendPreviewRate(2, "p1", false, "", rated(o)); },
         "/v2/projects/p1/preview_ratings", "application/json", R"({"comment":"","rating":2})"},
        {[&](Outcome& o) { client->sendPreviewRate(5, "", true, "", rated(o)); }, "/v2/preview_ratings",
         "application/json", R"({"comment":"","rating":5})"},
        {[&](Outcome& o) {
             client->syncRelease(json(R"({"project":"p1","id":"r1"})").dictionary(), o.completion());
         },
         "/v2/projects/p1", "application/json",
         R"({"live_project_release":{"type":"project_releases","id":"x"}})"},
    };
    for (const Call& call : calls) {
        Outcome outcome;
        call.send(outcome);
        ASSERT_TRUE(outcome.wait()) << call.target;
        EXPECT_EQ(outcome.error, nullptr) << call.target;
        const RecordedRequest sent = peer.requests().back();
        EXPECT_EQ(sent.target, call.target);
        EXPECT_EQ(sent.header("Content-Type"), call.contentType) << call.target;
        if (call.contentType == "application/json") {
            EXPECT_EQ(json(sent.body), json(call.body)) << call.target;
        } else {
            EXPECT_EQ(sent.body, call.body) << call.target;
        }
    }
    const auto sent = peer.requests();
    ASSERT_EQ(sent.size(), calls.size() + 1) << "the release is named first";
    EXPECT_EQ(sent[sent.size() - 2].target, "/v2/projects/p1/project_releases/");
    EXPECT_EQ(json(sent[sent.size() - 2].body), json(R"({"release":{"type":"releases","id":"r1"}})"));
    EXPECT_EQ(sent.back().method, "PUT");
    EXPECT_THROW(client->sendPreviewRate(1, "r9", true, std::nullopt, nullptr), std::invalid_argument)
        << "a rating always carries its feedback";
}

TEST_F(ServiceTest, CallbacksLiftTheServicesMessageExceptWhereTheyPassWhatArrived) {
    peer.handle("POST", "/v2/teams/t-taken/projects",
                answer(400, R"({"error":"name_taken","message":"Taken"})"));
    peer.handle("POST", "/v2/teams/t-terse/projects", answer(400, R"({"error":"no"})"));
    peer.handle("POST", "/v2/projects/p-denied/project_releases/",
                answer(403, R"({"error":"forbidden","message":"Not yours"})"));
    peer.handle("POST", "/v2/projects/p-noid/project_releases/", answer(200, R"({"ok":true})"));
    peer.handle("GET", "/v2/users/me/team_memberships", answer(401, R"({"error":"unauthenticated"})"));
    startPeer();
    client->setSendParametersAsJSON(true);

    struct Case {
        const char* name;
        std::function<void(Outcome&)> send;
        std::string domain;
        std::int64_t code;
        std::string description; // "" for none
        std::string message;     // "" for none
        bool responseIsBody;
    };
    auto release = [](const char* text) { return json(text).dictionary(); };
    const std::vector<Case> cases = {
        {"project with message",
         [&](Outcome& o) { client->createProjectWithName("a", "t-taken", o.completion()); },
         kNSURLErrorDomain, 400, "name_taken", "Taken", true},
        {"project without message",
         [&](Outcome& o) { client->createProjectWithName("a", "t-terse", o.completion()); },
         kNSURLErrorDomain, 400, "no", "no", true},
        {"release refused",
         [&](Outcome& o) {
             client->syncRelease(release(R"({"project":"p-denied","id":"r"})"), o.completion());
         },
         kNSURLErrorDomain, 403, "forbidden", "Not yours", false},
        {"release without new id",
         [&](Outcome& o) {
             client->syncRelease(release(R"({"project":"p-noid","id":"r"})"), o.completion());
         },
         kVPAPIClientErrorDomain, 1, "", "", false},
        {"release without project",
         [&](Outcome& o) { client->syncRelease(release(R"({"id":"r"})"), o.completion()); },
         kVPAPIClientErrorDomain, 1, "", "", false},
        {"teams as received", [&](Outcome& o) { client->refreshTeams(o.completion()); }, kNSURLErrorDomain,
         401, "", "", true},
    };
    for (const Case& c : cases) {
        Outcome outcome;
        c.send(outcome);
        ASSERT_TRUE(outcome.wait()) << c.name;
        settle();
        EXPECT_EQ(outcome.calls, 1) << c.name;
        ASSERT_NE(outcome.error, nullptr) << c.name;
        EXPECT_EQ(outcome.error->domain(), c.domain) << c.name;
        EXPECT_EQ(outcome.error->code(), c.code) << c.name;
        EXPECT_EQ(outcome.error->userInfo().get(kNSLocalizedDescriptionKey).str(), c.description) << c.name;
        EXPECT_EQ(outcome.error->userInfo().get("message").str(), c.message) << c.name;
        EXPECT_EQ(outcome.response.isDictionary(), c.responseIsBody) << c.name;
    }
    EXPECT_EQ(peer.requests().size(), 5u) << "no PUT after a failed or empty first step";
}

// ---------------------------------------------------------------- refreshing projects

namespace {

/// What the peer answers in one run of refreshProjectsWithCompletion: the memberships, and per
/// team its answer and how many answers must have gone out before it.
struct Walk {
    const char* name;
    std::string memberships;
    int membershipsStatus;
    std::map<std::string, std::pair<int, std::string>> teams;
    std::map<std::string, int> teamAnswersAfter;
    // Expected:
    std::string errorDomain; // "" for success
    std::int64_t errorCode;
    std::vector<std::string> projectIds; // in any order; ignored after a failure
    std::size_t teamRequests;
};

} // namespace

TEST_F(ServiceTest, ProjectsComeFromEveryTeamOnceAndTheFirstFailureReportsOnce) {
    const std::string twoTeams =
        R"({"results":[{"id":"m1","team":"t1","team_name":"One"},{"id":"m2","team":"t2","team_name":"Two"},
                       {"id":"m3","team_name":"No team"}]})";
    const std::vector<Walk> walks = {
        {"no memberships", R"({"results":[]})", 200, {}, {}, "", 0, {}, 0},
        {"two teams share a project",
         twoTeams,
         200,
         {{"t1", {200, R"({"results":[{"id":"p1"},{"id":"p2","name":"old"}]})"}},
          {"t2", {200, R"({"results":[{"id":"p2","name":"new"},{"id":"p3"}]})"}}},
         {},
         "",
         0,
         {"p1", "p2", "p3"},
         2},
        {"the failing team answers first",
         twoTeams,
         200,
         {{"t1", {200, R"({"results":[{"id":"p1"}]})"}}, {"t2", {403, R"({"error":"forbidden"})"}}},
         {{"t1", 2}},
         kNSURLErrorDomain,
         403,
         {},
         2},
        {"the failing team answers last",
         twoTeams,
         200,
         {{"t1", {200, R"({"results":[{"id":"p1"}]})"}}, {"t2", {403, R"({"error":"forbidden"})"}}},
         {{"t2", 2}},
         kNSURLErrorDomain,
         403,
         {},
         2},
        {"a team without results",
         twoTeams,
         200,
         {{"t1", {200, R"({"results":[{"id":"p1"}]})"}}, {"t2", {200, R"({"count":0})"}}},
         {},
         kVPSelectProjectControllerErrorDomain,
         1,
         {},
         2},
        {"memberships without results",
         R"({"detail":"?"})",
         200,
         {},
         {},
         kVPSelectProjectControllerErrorDomain,
         1,
         {},
         0},
        {"memberships refused", R"({"error":"unauthenticated"})", 401, {}, {}, kNSURLErrorDomain, 401, {}, 0},
    };
    std::atomic<const Walk*> current{nullptr};
    std::atomic<int> answeredBefore{0};
    peer.handle("GET", "/v2/users/me/team_memberships", [&](const httplib::Request&, httplib::Response& res) {
        const Walk& walk = *current.load();
        res.status = walk.membershipsStatus;
        res.set_content(walk.memberships, "application/json");
    });
    peer.handle(
        "GET", R"(/v2/teams/([^/]+)/projects/)", [&](const httplib::Request& req, httplib::Response& res) {
            const Walk& walk = *current.load();
            const std::string team = req.matches[1];
            // Held back until the other answers have gone out, so the order of arrival is the walk's.
            if (const auto after = walk.teamAnswersAfter.find(team); after != walk.teamAnswersAfter.end()) {
                const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
                while (peer.answered() < answeredBefore + after->second &&
                       std::chrono::steady_clock::now() < deadline)
                    std::this_thread::sleep_for(std::chrono::milliseconds(5));
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }
            const auto& [status, body] = walk.teams.at(team);
            res.status = status;
            res.set_content(body, "application/json");
        });
    startPeer();

    const Array before = json(R"([{"id":"kept"}])").array();
    for (const Walk& walk : walks) {
        current = &walk;
        VPAccountData& account = VPAccountData::shared();
        account.setCachedProjects(before);
        account.setCachedTeams(Array::create());
        account.setCachedUser(Value());
        const std::size_t sentBefore = peer.requests().size();
        answeredBefore = peer.answered();

        Outcome outcome;
        client->refreshProjectsWithCompletion(outcome.completion());
        ASSERT_TRUE(outcome.wait()) << walk.name;
        const int expectedAnswers = answeredBefore + 1 + static_cast<int>(walk.teamRequests);
        ASSERT_TRUE(
            runMainLoopUntil([&] { return peer.answered() >= expectedAnswers; }, std::chrono::seconds(10)));
        settle();

        EXPECT_EQ(outcome.calls, 1) << walk.name;
        EXPECT_TRUE(outcome.response.isNil()) << walk.name;
        EXPECT_EQ(peer.requests().size() - sentBefore, 1 + walk.teamRequests) << walk.name;
        if (walk.membershipsStatus == 200 && json(walk.memberships).dictionary().contains("results")) {
            EXPECT_EQ(Value(account.cachedTeams()), json(walk.memberships).dictionary().get("results"))
                << walk.name << ": the memberships are kept whatever the teams answer";
        } else {
            EXPECT_TRUE(account.cachedTeams().empty()) << walk.name;
        }
        if (!walk.errorDomain.empty()) {
            ASSERT_NE(outcome.error, nullptr) << walk.name;
            EXPECT_EQ(outcome.error->domain(), walk.errorDomain) << walk.name;
            EXPECT_EQ(outcome.error->code(), walk.errorCode) << walk.name;
            EXPECT_EQ(Value(account.cachedProjects()), Value(before)) << walk.name;
            EXPECT_TRUE(account.cachedUser().isNil()) << walk.name;
            continue;
        }
        EXPECT_EQ(outcome.error, nullptr) << walk.name;
        std::vector<std::string> ids;
        for (const Value& project : account.cachedProjects())
            ids.push_back(project.dictionary().get("id").str());
        std::sort(ids.begin(), ids.end());
        EXPECT_EQ(ids, walk.projectIds) << walk.name;
        EXPECT_EQ(account.cachedUser(), Value("ann@example.com")) << walk.name;
    }
    peer.stop(); // before the walks its routes read go
}

// ---------------------------------------------------------------- the token store and links

TEST_F(ServiceTest, TheTokenIsWrittenUnderTheHostsNameButReadAndDeletedUnderTheClientsOwn) {
    ASSERT_TRUE(kTokenStoreIsPrivate);
    client->setAccessToken("in memory");
    EXPECT_EQ(VPKeychain::passwordForService(kVPTokenKeychainService, kVPTokenKeychainAccount), std::nullopt)
        << "without the hook the store is left alone";

    client->useKeychain = true;
    struct Case {
        std::string hostServiceName;
        std::optional<std::string> readBack;
    };
    for (const Case& c :
         std::vector<Case>{{kVPTokenKeychainService, "stored"}, {"Other-Name", std::nullopt}}) {
        bindClientConfig(c.hostServiceName);
        client->setAccessToken("stored");
        EXPECT_EQ(VPKeychain::passwordForService(c.hostServiceName, kVPTokenKeychainAccount), "stored");
        EXPECT_EQ(client->accessToken(), c.readBack) << c.hostServiceName;
        EXPECT_EQ(client->HTTPHeaderFields().get(kVPAuthorizationHeader), Value("JWT stored"))
            << "requests are signed either way";
        client->setAccessToken(std::nullopt); // as clearToken with the hook on
        EXPECT_FALSE(client->HTTPHeaderFields().contains(kVPAuthorizationHeader));
        EXPECT_EQ(VPKeychain::passwordForService(kVPTokenKeychainService, kVPTokenKeychainAccount),
                  std::nullopt);
    }
    EXPECT_EQ(VPKeychain::passwordForService("Other-Name", kVPTokenKeychainAccount), "stored")
        << "the client never deletes under the host's name";
    VPKeychain::deletePasswordForService("Other-Name", kVPTokenKeychainAccount);
    bindClientConfig();
}

TEST_F(ServiceTest, LinksOpenSignedThroughXdgOpenOnThePath) {
    client->setAccessToken("tok");
    client->openLinkWithToken("https://app.test/p?x=1");
    EXPECT_EQ(client->opened, std::vector<std::string>{"https://app.test/p?x=1&t=tok"});

    // The base's own opener runs the first xdg-open on PATH with the signed link.
    const fs::path folder = Files::makeTemporaryDirectory("velmo-xdg");
    const fs::path seen = folder / "seen";
    ASSERT_TRUE(Files::writeAtomically(folder / "xdg-open",
                                       "#!/bin/sh\nprintf '%s' \"$1\" > " + seen.string() + "\n"));
    fs::permissions(folder / "xdg-open", fs::perms::owner_all);
    const std::string path = std::getenv("PATH") ? std::getenv("PATH") : "";
    ::setenv("PATH", (folder.string() + ":" + path).c_str(), 1);
    client->openWithTheSystem(client->addTokenToLink("https://app.test/p"));
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_TRUE(runMainLoopUntil([&] { return Files::read(seen).value_or("") == "https://app.test/p?t=tok"; },
                                 std::chrono::seconds(10)));
    fs::remove_all(folder);
}
