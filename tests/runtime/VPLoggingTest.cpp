#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TestClientConfig.h"
#include "tests/support/LocalHttpServer.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/VPError.h"
#include "velmo/host/VVHostUserData.h"
#include "velmo/runtime/VPLogging.h"
#include "velmo/runtime/VVDI.h"

namespace velmo {
namespace {

using namespace std::chrono_literals;

constexpr const char* kMachineId = "0123456789abcdef0123456789abcdef";

struct Received {
    std::string path;
    Dictionary body;
    std::map<std::string, std::string> headers;
};

// The logging endpoint: records every post; can hold requests until the test lets them go.
class LogServer {
public:
    LogServer() {
        auto handler = [this](const httplib::Request& request, httplib::Response& response) {
            holdIfAsked();
            Received received{request.path,
                              Json::tryParse(request.body).dictionary(),
                              {request.headers.begin(), request.headers.end()}};
            std::lock_guard lock(mutex_);
            received_.push_back(std::move(received));
            changed_.notify_all();
            response.set_content("{}", "application/json");
        };
        // One request per connection: the shared logger outlives the server, and its idle
        // connections would hold the server's stop until they time out.
        http_.server().set_keep_alive_max_count(1);
        http_.server().Post("/events/", handler);
        http_.server().Post("/mixpanel", handler);
        http_.server().Post("/ready", [](const httplib::Request&, httplib::Response&) {});
        http_.start();
        // One request before any concurrent ones: the server's first request sets up its lazily
        // made statics, which a thread sanitizer can't see guarded inside the uninstrumented library.
        httplib::Client client(http_.baseURL());
        client.Post("/ready", httplib::Headers{{"X-Client-Id", "ready"}}, "{}", "application/json");
    }
    ~LogServer() {
        hold(false);
        http_.stop();
    }

    std::string baseURL() const { return http_.baseURL(); }

    // Bounds against a hang, not measures of speed.
    bool waitFor(const std::function<bool(const std::vector<Received>&)>& done) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 60s, [&] { return done(received_); });
    }
    bool waitForEvent(std::string_view event) {
        return waitFor([&](const std::vector<Received>& all) {
            return std::any_of(all.begin(), all.end(),
                               [&](const Received& r) { return r.body.get("event").stringView() == event; });
        });
    }
    std::vector<Received> received() {
        std::lock_guard lock(mutex_);
        return received_;
    }

    // Requests wait in the handler while held.
    void hold(bool holding) {
        std::lock_guard lock(mutex_);
        holding_ = holding;
        changed_.notify_all();
    }
    bool waitUntilHeld(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 60s, [&] { return held_ == count; });
    }
    // The most requests held at once, and whether one was held until it gave up.
    std::pair<int, bool> holdStats() {
        std::lock_guard lock(mutex_);
        return {peakHeld_, heldTooLong_};
    }

private:
    void holdIfAsked() {
        std::unique_lock lock(mutex_);
        if (!holding_) return;
        ++held_;
        peakHeld_ = std::max(peakHeld_, held_);
        changed_.notify_all();
        // Only the test lets go; running out of time here means the caller waited for us.
        if (!changed_.wait_for(lock, 30s, [this] { return !holding_; })) heldTooLong_ = true;
        --held_;
    }

    test::LocalHttpServer http_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Received> received_;
    bool holding_ = false;
    int held_ = 0;
    int peakHeld_ = 0;
    bool heldTooLong_ = false;
};

class VPLoggingTest : public testing::Test {
protected:
    void SetUp() override {
        folder_ = Files::makeTemporaryDirectory("velmo-logging");
        ASSERT_TRUE(Files::writeAtomically(folder_ / "os-release", "NAME=\"Test\"\nVERSION_ID=\"12.5\"\n"));
        ASSERT_TRUE(Files::writeAtomically(folder_ / "machine-id", std::string(kMachineId) + "\n"));
        test::TestClientConfig::bind({.logsURL = server_.baseURL()});
        VVDI::shared().bindInstance(std::make_shared<VVHostUserData>("ann@example.com", "u-7"), kVVUserData);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    // One post at a time, so records arrive in the order they were made.
    VPLogging::Options options() {
        VPLogging::Options o;
        o.osReleasePath = folder_ / "os-release";
        o.machineIdPath = folder_ / "machine-id";
        o.clock = [this] { return now_; };
        o.limits.maxInFlight = 1;
        return o;
    }

    LogServer server_;
    std::filesystem::path folder_;
    Date now_ = Date(std::chrono::hours(24 * 365 * 50));
};

TEST_F(VPLoggingTest, LinesCarryTheLevelTheMessageAndTheContext) {
    VPLogging logging(options());
    const auto error =
        VPError::make("VPAPIClient", 7, Dictionary{{kNSLocalizedDescriptionKey, Value("Not found")}});
    const std::string userInfo = Value(error->userInfo()).description();
    logging.logError("boom");
    logging.logDebug("a detail");
    logging.logMessage("careful", "WARN");
    logging.logErrorWithNSError(error, "upload:");
    logging.logErrorWithNSError(nullptr, "upload:");
    logging.logJSError("TypeError", "at a", "at b");
    logging.logError("bad \xff byte, overlong \xc0\xaf slash");
    const std::vector<std::string> expected = {
        "[ERROR] boom",
        "[DEBUG] a detail",
        "[WARN] careful",
        "[ERROR] upload: Not found " + userInfo,
        "[ERROR] upload: (null) (null)",
        "[ERROR] Plugin JS Error: TypeError\n---\nat a\n---\nat b",
        "[ERROR] bad \uFFFD byte, overlong \uFFFD slash",
    };
    ASSERT_TRUE(server_.waitFor([&](const auto& all) { return all.size() == expected.size(); }));
    const auto received = server_.received();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i]);
        EXPECT_EQ(received[i].path, "/events/");
        EXPECT_EQ(received[i].headers.at("Content-Type"), "application/json");
        EXPECT_EQ(received[i].body, (Dictionary{{"text", Value(expected[i])},
                                                {"plugin_version", Value("1.2.3")},
                                                {"plugin_name", Value("TestClient")},
                                                {"system_version", Value("12.5")},
                                                {"sketch_version", Value("99.1")}}));
    }
}

TEST_F(VPLoggingTest, TheContextIsAllOrNothing) {
    struct Case {
        const char* name;
        test::TestClientConfig::Values config;
        bool osRelease;
        Dictionary expected;
    };
    const Case cases[] = {
        {"no client version",
         {.clientVersion = ""},
         true,
         Dictionary{{"plugin_version", Value("Unknown")},
                    {"plugin_name", Value("TestClient")},
                    {"system_version", Value("12.5")},
                    {"sketch_version", Value("99.1")}}},
        {"no client name", {.clientName = ""}, true, Dictionary::create()},
        {"no host version", {.hostVersion = ""}, true, Dictionary::create()},
        {"no system version", {}, false, Dictionary::create()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        test::TestClientConfig::bind(c.config);
        EXPECT_EQ(VPLogging::generateContextDict(c.osRelease ? folder_ / "os-release" : folder_ / "missing"),
                  c.expected);
    }
}

TEST_F(VPLoggingTest, AConfigurationThatThrowsReachesNoCaller) {
    test::TestClientConfig::bind({.logsURL = server_.baseURL(), .throws = true});
    VPLogging logging(options());
    EXPECT_EQ(logging.contextDict(), Dictionary::create());
    // Anything escaping these would end the test: they are noexcept.
    logging.logError("lost");
    logging.logMixpanelEvent("lost", Dictionary::create(), true);
    logging.logErrorWithNSError(nullptr, "lost");

    test::TestClientConfig::bind({.logsURL = server_.baseURL()});
    logging.logMixpanelEvent("marker");
    ASSERT_TRUE(server_.waitForEvent("marker"));
    EXPECT_EQ(server_.received().size(), 1u);
}

TEST_F(VPLoggingTest, EventsCarryPropertiesIdentityContextAndHeaders) {
    VPLogging logging(options());
    logging.logMixpanelEvent(kVPEventExportCodePressed, Dictionary{{"source", Value("fast_preview")},
                                                                   {"plugin_name", Value("mine")},
                                                                   {"event", Value("other")}});
    ASSERT_TRUE(server_.waitForEvent("Export.Code.Pressed"));
    const Received r = server_.received().front();
    EXPECT_EQ(r.path, "/mixpanel");
    EXPECT_EQ(r.body.get("source"), Value("fast_preview"));
    EXPECT_EQ(r.body.get("plugin_name"), Value("TestClient")); // the context wins
    EXPECT_EQ(r.body.get("system_version"), Value("12.5"));
    EXPECT_EQ(r.body.get("mac_serial_number").str(), logging.serialNumber());
    EXPECT_EQ(r.headers.at("Content-Type"), "application/json");
    EXPECT_EQ(r.headers.at("X-Client-Id"), "client-42");
    EXPECT_EQ(r.headers.at("X-User-Id"), "u-7");
    EXPECT_EQ(r.headers.at("X-User-Email"), "ann@example.com");
}

TEST_F(VPLoggingTest, HeadersGoOnlyWithAKnownValueOnOneLine) {
    struct Case {
        const char* email;
        const char* id;
        const char* clientID;
        std::vector<std::string> present;
        std::vector<std::string> absent;
    };
    const Case cases[] = {
        {"", "", "client-42", {"X-Client-Id"}, {"X-User-Id", "X-User-Email"}},
        {"ann@example.com\r\nX-Injected: 1",
         "u-7\n",
         "client\rX-Injected: 2",
         {"Content-Type"},
         {"X-User-Id", "X-User-Email", "X-Client-Id", "X-Injected"}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const Case& c = cases[i];
        SCOPED_TRACE(i);
        test::TestClientConfig::bind({.logsURL = server_.baseURL(), .clientID = c.clientID});
        VVDI::shared().bindInstance(std::make_shared<VVHostUserData>(c.email, c.id), kVVUserData);
        VPLogging logging(options());
        const std::string event = "case-" + std::to_string(i);
        logging.logMixpanelEvent(event);
        ASSERT_TRUE(server_.waitForEvent(event));
        for (const auto& r : server_.received()) {
            if (r.body.get("event").stringView() != event) continue;
            for (const auto& name : c.present)
                EXPECT_EQ(r.headers.count(name), 1u) << name;
            for (const auto& name : c.absent)
                EXPECT_EQ(r.headers.count(name), 0u) << name;
        }
    }
}

// The death test's fresh process is one where no serial number is kept yet.
using VPLoggingDeathTest = VPLoggingTest;
TEST_F(VPLoggingDeathTest, TheSerialNumberIsKeptForTheProcessOnceFound) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const auto serialSent = [&](const std::filesystem::path& machineId, const std::string& event) {
                VPLogging::Options o = options();
                o.machineIdPath = machineId;
                VPLogging logging(o);
                logging.logMixpanelEvent(event);
                if (!server_.waitForEvent(event)) std::_Exit(3);
                for (const auto& r : server_.received()) {
                    if (r.body.get("event").stringView() == event)
                        return r.body.get("mac_serial_number").str();
                }
                return std::string();
            };
            const std::string none = serialSent(folder_ / "missing", "first");
            const std::string found = serialSent(folder_ / "machine-id", "second");
            const std::string kept = serialSent(folder_ / "missing", "third");
            std::_Exit(none == "None" && found.size() == 64 && kept == found ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(VPLoggingTest, AThrottledEventGoesOutOnceInFiveHours) {
    VPLogging logging(options());
    const Date start = now_;
    struct Step {
        std::chrono::seconds at;
        const char* event;
        bool throttle;
    };
    const Step steps[] = {
        {0s, "A", true},      // sent
        {1h, "A", true},      // held back
        {4h, "A", false},     // never held back, and doesn't restart the interval
        {5h - 1s, "A", true}, // held back
        {5h, "A", true},      // sent
        {5h + 1s, "B", true}, // other events are on their own
    };
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        now_ = start + steps[i].at;
        logging.logMixpanelEvent(steps[i].event, Dictionary{{"step", Value(int(i))}}, steps[i].throttle);
    }
    logging.logMixpanelEvent("marker");
    ASSERT_TRUE(server_.waitForEvent("marker"));
    std::vector<std::int64_t> sent;
    for (const auto& r : server_.received()) {
        if (r.body.contains("step")) sent.push_back(r.body.get("step").int64Value());
    }
    EXPECT_EQ(sent, (std::vector<std::int64_t>{0, 2, 4, 5}));
    EXPECT_EQ(logging.throttleDict(),
              (std::map<std::string, Date>{{"A", start + 5h}, {"B", start + 5h + 1s}}));
}

TEST_F(VPLoggingTest, WhatCannotBeSentIsDroppedInSilence) {
    test::TestClientConfig::bind({.logsURL = ""});
    VPLogging logging(options());
    logging.logError("nowhere"); // no endpoint
    test::TestClientConfig::bind({.logsURL = server_.baseURL()});
    logging.logMixpanelEvent("bad", Dictionary{{"x", Value(std::numeric_limits<double>::quiet_NaN())}});
    logging.logMixpanelEvent("bytes", Dictionary{{"x", Value::bytes("\x01\x02")}});
    logging.logMixpanelEvent("marker");
    ASSERT_TRUE(server_.waitForEvent("marker"));
    EXPECT_EQ(server_.received().size(), 1u);
}

TEST_F(VPLoggingTest, AHangingEndpointNeverHoldsTheCallerAndPostsInFlightAreBounded) {
    VPLogging::Options o = options();
    o.limits.maxInFlight = 2;
    o.limits.maxQueued = 3;
    VPLogging logging(o);
    server_.hold(true);
    logging.logError("first");
    logging.logError("second");
    ASSERT_TRUE(server_.waitUntilHeld(2));
    // Both connections hang: three more wait their turn, the rest are dropped, and no call waits.
    for (int i = 0; i < 48; ++i)
        logging.logError("more");
    server_.hold(false);
    ASSERT_TRUE(server_.waitFor([](const auto& all) { return all.size() == 5; }));
    logging.logMixpanelEvent("marker");
    ASSERT_TRUE(server_.waitForEvent("marker"));
    EXPECT_EQ(server_.received().size(), 6u);
    EXPECT_EQ(server_.holdStats(), std::make_pair(2, false));
}

// The guard's line names the function and the line of the handler.
constexpr int kGuardLine = __LINE__ + 5;
int guarded(bool standard) {
    VP_TRY
    if (standard) throw std::runtime_error("boom");
    throw 42;
    VP_CATCH(-1)
}

constexpr int kVoidGuardLine = __LINE__ + 5;
bool guardedVoidRan = false;
void guardedVoid() {
    VP_TRY
    throw std::out_of_range("no such index");
    VP_CATCH()
    guardedVoidRan = true;
}

TEST_F(VPLoggingTest, TheGuardLogsTheFailureAndReturnsTheEmptyResult) {
    EXPECT_EQ(guarded(true), -1);
    EXPECT_EQ(guarded(false), -1);
    guardedVoid();
    EXPECT_FALSE(guardedVoidRan);
    ASSERT_TRUE(server_.waitFor([](const auto& all) { return all.size() == 3; }));
    std::set<std::string> endings;
    for (const auto& r : server_.received()) {
        const std::string text = r.body.get("text").str();
        EXPECT_EQ(text.rfind("[ERROR] ", 0), 0u) << text;
        EXPECT_NE(text.find("guarded"), std::string::npos) << text;
        endings.insert(text.substr(std::min(text.find(" [Line "), text.size())));
    }
    const auto line = [](int number) { return " [Line " + std::to_string(number) + "] Exception: "; };
    EXPECT_EQ(endings,
              (std::set<std::string>{line(kGuardLine) + "boom", line(kGuardLine) + "unknown exception",
                                     line(kVoidGuardLine) + "no such index"}));
}

} // namespace
} // namespace velmo
