// The local service, driven by the service's own client over loopback: every call's round trip,
// refusals in the service's words, restarts and concurrent clients.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include <SQLiteCpp/Statement.h>
#include <fmt/format.h>
#include <httplib.h>

#include "ServiceTestSupport.h"
#include "server/ServiceSchema.h"
#include "server/ServiceServer.h"
#include "velmo/foundation/DateFormatter.h"
#include "velmo/foundation/Files.h"
#include "velmo/net/VPHTTPClient.h"

using namespace velmo;
using namespace velmo::server;
using namespace velmo::test;
namespace fs = std::filesystem;

// Before main, so before any thread and any use of the token store: the store of these tests is
// the private file under the run's own VELMO_HOME, never a secret service of the user's session.
static const bool kTokenStoreIsPrivate = [] {
    return ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/velmo-server-tests", 1) == 0;
}();

namespace {

constexpr std::size_t kSmallBodyLimit = 64 * 1024;

/// A service on a free loopback port with its data in a fresh folder: Ann is in the team
/// "Design", Bob in "Other".
class LocalService : public ServiceTest {
protected:
    LocalService() : folder_(Files::makeTemporaryDirectory("velmo-server")) {
        startServer();
        ServiceStore& store = server_->store();
        ann = store.addUser("ann@example.com", "Ann");
        bob = store.addUser("bob@example.com", "Bob");
        bool created = false;
        design = store.addTeam("Design", {"ann@example.com"}, created).get("id").str();
        other = store.addTeam("Other", {"bob@example.com"}, created).get("id").str();
        client->setAccessToken(ann.token);
    }
    ~LocalService() override {
        stopServer();
        fs::remove_all(folder_);
    }

    void startServer() {
        ServiceOptions options;
        options.port = 0;
        options.dataFolder = folder_ / "data";
        options.configFile = folder_ / "plugin_config.json";
        options.maxBodyBytes = kSmallBodyLimit;
        options.maxEvents = 3;
        server_ = std::make_unique<ServiceServer>(options);
        server_->bind();
        thread_ = std::thread([this] { server_->serve(); });
        VPBaseAPIClient::setCustomAPIBaseURL(server_->baseURL());
    }
    void stopServer() {
        server_->stop();
        thread_.join();
        server_.reset();
    }

    /// The names of a team's projects, straight from the store.
    std::set<std::string> projectNames(const ServiceStore::NewToken& user, const std::string& team) {
        std::set<std::string> names;
        for (const Value& project : server_->store().teamProjects(user.user, team))
            names.insert(project.dictionary().get("name").str());
        return names;
    }

    /// Waits for one (response, error) call.
    template <class Call> Outcome call(Call&& start) {
        Outcome outcome;
        start(outcome.completion());
        EXPECT_TRUE(outcome.wait());
        return outcome;
    }

    fs::path folder_;
    std::unique_ptr<ServiceServer> server_;
    std::thread thread_;
    ServiceStore::NewToken ann;
    ServiceStore::NewToken bob;
    std::string design;
    std::string other;
};

} // namespace

TEST_F(LocalService, EveryCallOfTheClientRoundTrips) {
    const Outcome teams = call([&](auto done) { client->refreshTeams(done); });
    ASSERT_FALSE(teams.error) << teams.error->description();
    const Array memberships = teams.response.dictionary().get("results").array();
    ASSERT_EQ(memberships.size(), 1u);
    EXPECT_EQ(memberships[0].dictionary().get("team"), Value(design));
    EXPECT_EQ(memberships[0].dictionary().get("team_name"), Value("Design"));
    EXPECT_TRUE(memberships[0].dictionary().get("id").isString());

    // A fresh client reports its installation as a form; later, after a JSON call, as JSON.
    const Outcome installed = call([&](auto done) { client->sendClientInstallation(done); });
    ASSERT_FALSE(installed.error) << installed.error->description();
    EXPECT_EQ(installed.response.dictionary().get("client_id"), Value("client-42"));
    client->setSendParametersAsJSON(true);
    const Outcome reinstalled = call([&](auto done) { client->sendClientInstallation(done); });
    EXPECT_EQ(reinstalled.response.dictionary().get("reports"), Value(2));

    const Outcome site = call([&](auto done) { client->createProjectWithName("Site", design, done); });
    ASSERT_FALSE(site.error) << site.error->description();
    const Dictionary project = site.response.dictionary();
    EXPECT_EQ(project.get("team"), Value(design));
    EXPECT_EQ(project.get("slug"), Value("site"));
    // Every key a document's metadata is filled from is in the record.
    for (const char* key : {"version", "is_private", "is_published", "assets_file_url", "sketch_page_id",
                            "live_release_version", "latest_release_short_id", "analytics_snippet"})
        EXPECT_TRUE(project.contains(key)) << key;
    EXPECT_TRUE(DateFormatter().dateFromString(project.get("updated_at").stringView()));

    const Outcome notes =
        call([&](auto done) { client->createProjectWithName("Notes", std::nullopt, done); });
    ASSERT_FALSE(notes.error) << notes.error->description();
    EXPECT_FALSE(notes.response.dictionary().contains("team")) << "a personal project has no team";

    const Outcome refreshed = call([&](auto done) { client->refreshProjectsWithCompletion(done); });
    ASSERT_FALSE(refreshed.error) << refreshed.error->description();
    ASSERT_EQ(VPAccountData::shared().cachedProjects().size(), 1u);
    EXPECT_EQ(VPAccountData::shared().cachedProjects()[0].dictionary().get("id"), project.get("id"));
    EXPECT_EQ(VPAccountData::shared().cachedTeams().size(), 1u);

    const std::string projectId = project.get("id").str();
    const Dictionary release = server_->store().createRelease(projectId);
    const Outcome live = call([&](auto done) {
        client->syncRelease(Dictionary{{"project", Value(projectId)}, {"id", release.get("id")}}, done);
    });
    ASSERT_FALSE(live.error) << live.error->description();
    EXPECT_TRUE(live.response.dictionary().get("live_project_release").isString());
    EXPECT_EQ(live.response.dictionary().get("live_release_version"), Value(1));
    EXPECT_EQ(live.response.dictionary().get("is_published"), Value(true));

    struct Rating {
        int stars;
        std::string id;
        bool useRelease;
    };
    for (const Rating& rating :
         {Rating{5, "", true}, Rating{4, projectId, false}, Rating{3, release.get("id").str(), true}}) {
        int calls = 0;
        VPErrorPtr error;
        client->sendPreviewRate(rating.stars, rating.id, rating.useRelease, std::string("fine"),
                                [&](VPErrorPtr e) {
                                    ++calls;
                                    error = std::move(e);
                                });
        ASSERT_TRUE(runMainLoopUntil([&] { return calls > 0; }, std::chrono::seconds(10)));
        EXPECT_FALSE(error) << "rating " << rating.stars << ": " << error->description();
    }
    const int ratings = server_->store().database().read([](SQLite::Database& db) {
        return db
            .execAndGet("SELECT COUNT(*) FROM preview_ratings WHERE subject_kind IS NULL OR subject_id <> ''")
            .getInt();
    });
    EXPECT_EQ(ratings, 3);

    server_->store().addFonts({"Inter"});
    const Outcome fonts = call([&](auto done) {
        client->checkAvailableFonts(Array{Value(Dictionary{{"familyName", Value("Inter")}}),
                                          Value(Dictionary{{"familyName", Value("Comic Serif")}})},
                                    done);
    });
    ASSERT_FALSE(fonts.error) << fonts.error->description();
    const Dictionary results = fonts.response.dictionary().get("results").dictionary();
    EXPECT_EQ(results.get("Inter"), Value(1));
    EXPECT_EQ(results.get("Comic Serif"), Value(0));
}

TEST_F(LocalService, RefusalsReachTheCallbacksInTheServiceWords) {
    client->setSendParametersAsJSON(true);
    ASSERT_FALSE(call([&](auto done) { client->createProjectWithName("Taken", design, done); }).error);
    struct Case {
        const char* what;
        std::optional<std::string> token;
        std::function<void(VPBaseAPIClient::Completion)> start;
        std::int64_t status;
        std::string error;
        std::string messageHas;
        /// The memberships call hands its error on as it came; the service's words are in the body.
        bool asReceived = false;
    };
    const std::vector<Case> cases = {
        {"no token", std::nullopt, [&](auto done) { client->refreshTeams(done); }, 401, "not_authenticated",
         "JWT", true},
        {"unknown token", "nope", [&](auto done) { client->refreshTeams(done); }, 401, "invalid_token",
         "token", true},
        {"another team", ann.token, [&](auto done) { client->createProjectWithName("X", other, done); }, 403,
         "forbidden", other},
        {"no such team", ann.token, [&](auto done) { client->createProjectWithName("X", "t-none", done); },
         404, "not_found", "t-none"},
        {"blank name", ann.token, [&](auto done) { client->createProjectWithName("  ", design, done); }, 400,
         "invalid_field", "\"name\""},
        {"name taken", ann.token, [&](auto done) { client->createProjectWithName("Taken", design, done); },
         409, "name_taken", "Taken"},
        {"unknown release", ann.token,
         [&](auto done) {
             const std::string project =
                 VPAccountData::shared().cachedProjects().empty()
                     ? server_->store().teamProjects(ann.user, design)[0].dictionary().get("id").str()
                     : "";
             client->syncRelease(Dictionary{{"project", Value(project)}, {"id", Value("r-none")}}, done);
         },
         400, "invalid_field", "\"release\""},
    };
    for (const Case& c : cases) {
        client->setAccessToken(c.token);
        const Outcome outcome = call(c.start);
        ASSERT_TRUE(outcome.error) << c.what;
        EXPECT_EQ(outcome.error->code(), c.status) << c.what;
        const VPErrorPtr said =
            c.asReceived ? outcome.error->errorWithResponse(outcome.response) : outcome.error;
        EXPECT_EQ(said->localizedDescription(), c.error) << c.what;
        EXPECT_NE(said->userInfo().get("message").str().find(c.messageHas), std::string::npos)
            << c.what << ": " << said->userInfo().get("message").str();
    }
    EXPECT_EQ(projectNames(ann, design), std::set<std::string>{"Taken"}) << "no refusal made a project";
}

TEST_F(LocalService, ARestartOnTheSameFolderKeepsEverything) {
    client->setSendParametersAsJSON(true);
    ASSERT_FALSE(call([&](auto done) { client->createProjectWithName("Kept", design, done); }).error);
    ASSERT_FALSE(call([&](auto done) { client->sendClientInstallation(done); }).error);
    stopServer();
    startServer();
    const Outcome refreshed = call([&](auto done) { client->refreshProjectsWithCompletion(done); });
    ASSERT_FALSE(refreshed.error) << refreshed.error->description();
    ASSERT_EQ(VPAccountData::shared().cachedProjects().size(), 1u);
    EXPECT_EQ(VPAccountData::shared().cachedProjects()[0].dictionary().get("name"), Value("Kept"));
    const Outcome again = call([&](auto done) { client->sendClientInstallation(done); });
    EXPECT_EQ(again.response.dictionary().get("reports"), Value(2)) << "the installation was remembered";
}

TEST_F(LocalService, EightClientsCreatingAtOnceLoseNothing) {
    constexpr int kClients = 8;
    constexpr int kEach = 25;
    std::vector<std::shared_ptr<VPHTTPClient>> clients;
    int answered = 0;
    int failed = 0;
    for (int c = 0; c < kClients; ++c) {
        const auto user = server_->store().addUser("member" + std::to_string(c) + "@example.com", "");
        bool created = false;
        server_->store().addTeam("Design", {user.user.email}, created);
        auto http = std::make_shared<VPHTTPClient>();
        http->setSendParametersAsJSON(true);
        http->setValue("JWT " + user.token, "Authorization");
        for (int i = 0; i < kEach; ++i) {
            http->POST(fmt::format("{}/v2/teams/{}/projects", server_->baseURL(), design),
                       Value(Dictionary{{"name", Value(fmt::format("c{}-{}", c, i))}}),
                       [&](const Value& response, auto, VPErrorPtr error) {
                           ++answered;
                           if (error) {
                               ++failed;
                               ADD_FAILURE() << error->description() << " " << Json::write(response);
                           }
                       });
        }
        clients.push_back(http);
    }
    ASSERT_TRUE(runMainLoopUntil([&] { return answered == kClients * kEach; }, std::chrono::seconds(60)));
    EXPECT_EQ(failed, 0);
    const Array projects = server_->store().teamProjects(ann.user, design);
    std::set<std::string> names;
    std::set<std::string> slugs;
    for (const Value& project : projects) {
        names.insert(project.dictionary().get("name").str());
        slugs.insert(project.dictionary().get("slug").str());
    }
    EXPECT_EQ(names.size(), std::size_t(kClients * kEach));
    EXPECT_EQ(slugs.size(), std::size_t(kClients * kEach));
}

TEST_F(LocalService, BadRequestsAreRefusedAndChangeNothing) {
    httplib::Client raw("127.0.0.1", server_->port());
    const httplib::Headers signedIn = {{"Authorization", "JWT " + ann.token}};
    const std::string create = "/v2/teams/" + design + "/projects";
    struct Case {
        const char* method;
        std::string path;
        std::string contentType;
        std::string body;
        int status;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"POST", create, "application/json", R"({"name": )", 400, "malformed_json"},
        {"POST", create, "application/json", R"(["name"])", 400, "malformed_json"},
        {"POST", create, "application/json", "{\"name\": \"\xff\"}", 400, "malformed_json"},
        {"POST", create, "text/plain", "name=x", 415, "unsupported_media_type"},
        {"POST", create, "application/x-www-form-urlencoded", "name=", 400, "invalid_field"},
        {"POST", create, "application/json", R"({"name": 7})", 400, "invalid_field"},
        {"POST", create, "application/json", R"({"name": "x", "team": {"type": "users", "id": "a"}})", 400,
         "invalid_field"},
        {"POST", create, "application/json", "{\"name\": \"" + std::string(kSmallBodyLimit, 'x') + "\"}", 413,
         "payload_too_large"},
        {"POST", "/v2/teams/..%2F..%2Fetc/projects", "application/json", R"({"name": "x"})", 404,
         "not_found"},
        {"POST", "/v2/teams/%2E%2E/projects", "application/json", R"({"name": "x"})", 400, "invalid_id"},
        {"GET", "/v2/projects/a;b", "", "", 400, "invalid_id"},
        {"PUT", "/v2/projects/" + design, "application/json", R"({"slug": "x"})", 400, "invalid_field"},
        {"DELETE", create, "", "", 405, "method_not_allowed"},
        {"GET", "/v3/anything", "", "", 404, "not_found"},
    };
    for (const Case& c : cases) {
        httplib::Request request;
        request.method = c.method;
        request.path = c.path;
        request.headers = signedIn;
        if (!c.contentType.empty()) request.set_header("Content-Type", c.contentType);
        request.body = c.body;
        const httplib::Result result = raw.send(request);
        ASSERT_TRUE(result) << c.path;
        EXPECT_EQ(result->status, c.status) << c.method << " " << c.path << " " << c.body.substr(0, 60);
        const Value body = Json::tryParse(result->body);
        EXPECT_EQ(body.dictionary().get("error"), Value(c.error)) << c.path << ": " << result->body;
        EXPECT_TRUE(body.dictionary().get("message").isString()) << c.path;
    }
    EXPECT_TRUE(projectNames(ann, design).empty());
}

TEST_F(LocalService, SinksKeepTheNewestEventsWithTheirIdentityAndNeedNoToken) {
    httplib::Client raw("127.0.0.1", server_->port());
    for (int i = 0; i < 5; ++i) {
        const httplib::Headers identity = {{"X-Client-Id", "client-42"}, {"X-User-Email", "ann@example.com"}};
        const auto result =
            raw.Post("/mixpanel", identity, fmt::format(R"({{"event": "e{}"}})", i), "application/json");
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 202);
    }
    ASSERT_EQ(raw.Post("/events/", R"({"text": "[ERROR] it broke"})", "application/json")->status, 202);
    const Array events = server_->store().events();
    ASSERT_EQ(events.size(), 3u) << "the bound lets the oldest go";
    EXPECT_EQ(events[0].dictionary().get("name"), Value("e3"));
    EXPECT_EQ(events[0].dictionary().get("client_id"), Value("client-42"));
    EXPECT_EQ(events[0].dictionary().get("user_email"), Value("ann@example.com"));
    EXPECT_EQ(events[2].dictionary().get("kind"), Value("log"));
    EXPECT_EQ(raw.Post("/mixpanel", R"({"no_event": 1})", "application/json")->status, 400);
}

TEST_F(LocalService, TheConfigurationDocumentIsTheOperatorsFileAsItStandsNow) {
    httplib::Client raw("127.0.0.1", server_->port());
    EXPECT_EQ(raw.Get("/sketchplugin/plugin_config.json")->status, 404) << "no file yet";
    for (const std::string text : {R"({"features": {"fast_preview": true}})", R"({"features": {}})"}) {
        Files::writeAtomically(folder_ / "plugin_config.json", text);
        const auto result = raw.Get("/sketchplugin/plugin_config.json");
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 200);
        EXPECT_EQ(result->body, text);
    }
}

TEST(ServiceStore, AFolderWrittenByANewerVersionIsRefusedAndAnOlderOneMigrated) {
    const fs::path folder = Files::makeTemporaryDirectory("velmo-server-schema");
    {
        ServiceStore store(folder, 1, 10);
        store.database().read([](SQLite::Database& db) {
            EXPECT_EQ(db.execAndGet("PRAGMA user_version").getInt(), ServiceSchema::currentVersion());
            EXPECT_EQ(db.execAndGet("PRAGMA journal_mode").getString(), "wal");
            EXPECT_EQ(db.execAndGet("PRAGMA foreign_keys").getInt(), 1);
        });
        store.database().read([](SQLite::Database& db) { db.exec("PRAGMA user_version = 999"); });
    }
    try {
        ServiceStore store(folder, 1, 10);
        ADD_FAILURE() << "a newer schema was opened";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("newer"), std::string::npos) << e.what();
    }
    fs::remove_all(folder);
}
