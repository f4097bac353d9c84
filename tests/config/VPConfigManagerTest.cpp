#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LocalHttpServer.h"
#include "ValuePrinting.h"
#include "velmo/config/VPPluginConfigManager.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/runtime/VVDI.h"

namespace velmo {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kLocal = R"({"features": {"fast_preview": true, "fast_preview_export": true,
    "fast_processing_enabled": true, "preview_rating_enabled": false, "preview_rating_max_per_day": 1},
    "available_code_optimizations": [{"type": "title", "text": "Layout"},
                                     {"type": "checkbox", "text": "Flexbox", "value": "flexbox"}]})";

// A manager whose sources the test chooses.
class TestManager : public VPPluginConfigManager {
public:
    fs::path resource;
    std::string url;
    double refresh = kVPConfigManagerRefreshTimeout;
    fs::path localConfigResourcePath() const override { return resource; }
    std::string remoteConfigURL() const override { return url; }
    double refreshTimeout() const override { return refresh; }
};

// Serves the remote document: each request takes the next of `bodies`, the last one repeating.
class RemoteConfigTest : public ::testing::Test {
protected:
    struct Body {
        std::string text;
        std::string contentType = "text/plain";
        int status = 200;
    };

    void SetUp() override {
        folder_ = Files::makeTemporaryDirectory("velmo-config");
        server_.server().Get(kVPConfigManagerRemotePath,
                             [this](const httplib::Request&, httplib::Response& res) {
                                 std::lock_guard lock(mutex_);
                                 const Body& body = bodies_.at(std::min(requests_, bodies_.size() - 1));
                                 ++requests_;
                                 res.status = body.status;
                                 res.set_content(body.text, body.contentType);
                             });
        // One request per connection, so that stopping the server doesn't wait for idle ones.
        server_.server().set_keep_alive_max_count(1);
        server_.start();
    }
    void TearDown() override { fs::remove_all(folder_); }

    void serve(std::vector<Body> bodies) {
        std::lock_guard lock(mutex_);
        bodies_ = std::move(bodies);
        requests_ = 0;
    }
    std::size_t requests() {
        std::lock_guard lock(mutex_);
        return requests_;
    }

    std::shared_ptr<TestManager> manager(const char* local = kLocal) {
        auto made = std::make_shared<TestManager>();
        made->resource = folder_ / "plugin_config.json";
        if (local) Files::writeAtomically(made->resource, local);
        made->url = server_.baseURL() + kVPConfigManagerRemotePath;
        made->setRemoteLoadHandler([this](std::string_view failure) {
            ++loads_;
            lastFailure_ = failure;
        });
        return made;
    }
    /// Runs the main loop until `count` remote loads have ended in all.
    bool waitForLoads(int count) {
        return runMainLoopUntil([&] { return loads_ >= count; }, 10s);
    }

    fs::path folder_;
    test::LocalHttpServer server_;
    std::mutex mutex_;
    std::vector<Body> bodies_{{"{}"}};
    std::size_t requests_ = 0;
    int loads_ = 0;
    std::string lastFailure_;
};

Value features(const VPConfigManager& manager) {
    return manager.config()->serialize().dictionary().get(kVDPluginConfigFeaturesKey);
}

TEST_F(RemoteConfigTest, RemoteDocumentMergesOverTheLocalOneOrLeavesItAlone) {
    const Value local = Json::parse(kLocal);
    struct Case {
        const char* name;
        Body body;
        bool applied;
        bool exportEnabled = true;
        std::size_t items = 2;
    };
    const Case cases[] = {
        {"one feature", {R"({"features": {"fast_preview_export": false}, "extra": 1})"}, true, false},
        {"parsed by its type",
         {R"({"features": {"fast_preview_export": false}})", "application/json"},
         true,
         false},
        {"items replaced whole", {R"({"available_code_optimizations": [{"type": "title"}]})"}, true, true, 1},
        {"empty document", {"{}"}, true},
        {"wrong kind counts as absent", {R"({"features": {"fast_preview_export": [true]}})"}, true, false},
        {"not JSON", {"<html>busy</html>"}, false},
        {"broken JSON said to be JSON", {"{\"features\": ", "application/json"}, false},
        {"not an object", {"[1, 2]"}, false},
        {"not UTF-8", {"{\"a\": \"\xff\"}"}, false},
        {"empty body", {""}, false},
        {"error page", {"Not Found", "text/plain", 404}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        serve({c.body});
        const auto m = manager();
        ASSERT_TRUE(m->readLocalConfig());
        const int before = loads_;
        m->loadRemoteConfig();
        ASSERT_TRUE(waitForLoads(before + 1));
        EXPECT_EQ(lastFailure_.empty(), c.applied) << lastFailure_;
        const auto config = m->pluginConfig();
        ASSERT_TRUE(config);
        EXPECT_EQ(config->fastPreviewExportEnabled, c.exportEnabled);
        EXPECT_TRUE(config->fastPreviewEnabled) << "what the remote leaves out keeps its value";
        EXPECT_EQ(config->codePrefItems.size(), c.items);
        if (!c.applied) {
            EXPECT_EQ(m->config()->serialize(), local);
        }
    }
}

TEST_F(RemoteConfigTest, AFailedTransferAndAConfigurationWithoutTheDailyLimitKeepWhatIsInForce) {
    const auto m = manager();
    ASSERT_TRUE(m->readLocalConfig());
    const Value before = m->config()->serialize();
    server_.stop();
    m->loadRemoteConfig();
    ASSERT_TRUE(waitForLoads(1));
    EXPECT_FALSE(lastFailure_.empty());
    EXPECT_EQ(m->config()->serialize(), before);

    // Without the limit the configuration in force can't be serialized, so nothing is merged.
    const auto limitless = manager(R"({"features": {"fast_preview": true}})");
    ASSERT_TRUE(limitless->readLocalConfig());
    EXPECT_EQ(limitless->mergeRemoteConfig(Json::parse(R"({"features": {"preview_rating_max_per_day": 2}})")),
              "the configuration in force can't be serialized");
    EXPECT_TRUE(limitless->pluginConfig()->ratePreviewRatingMax.isNil());

    // No readable local copy: nothing is set.
    const auto missing = manager(nullptr);
    missing->resource = folder_ / "missing.json";
    EXPECT_FALSE(missing->readLocalConfig());
    EXPECT_FALSE(missing->config());
}

TEST_F(RemoteConfigTest, StartLoadsLocalThenRemoteAndTheTimerRefreshesFromWhatIsInForce) {
    // The second document drops what the first set: a refresh starts from the configuration in
    // force, so that value stays.
    serve(
        {{R"({"features": {"fast_preview": false}})"}, {R"({"features": {"fast_preview_export": false}})"}});
    const auto m = manager();
    m->refresh = 0.2;
    m->start();
    EXPECT_TRUE(m->isRefreshTimerRunning());
    ASSERT_TRUE(waitForLoads(1)) << "the start's load";
    EXPECT_EQ(features(*m).dictionary().get(kVDPluginConfigFastPreviewKey), Value(false));
    EXPECT_EQ(features(*m).dictionary().get(kVDPluginConfigFastPreviewExportKey), Value(true));
    ASSERT_TRUE(waitForLoads(2)) << "the timer's";
    EXPECT_EQ(features(*m).dictionary().get(kVDPluginConfigFastPreviewKey), Value(false));
    EXPECT_EQ(features(*m).dictionary().get(kVDPluginConfigFastPreviewExportKey), Value(false));

    m->setupRefreshTimer(0);
    EXPECT_FALSE(m->isRefreshTimerRunning());
    const std::size_t stopped = requests();
    runMainLoopUntil([] { return false; }, 200ms);
    EXPECT_EQ(requests(), stopped);
}

TEST(VPConfigManager, SharedIsThePluginManagerBoundInTheRegistryAndTheAddressJoinsBaseAndPath) {
    EXPECT_EQ(VVDI::shared().classForProtocol(kVVConfigManagerInterface),
              &VPPluginConfigManager::classObject());
    const auto shared = VPConfigManager::shared();
    EXPECT_EQ(shared, VPPluginConfigManager::shared());
    EXPECT_TRUE(shared->isMemberOf(VPPluginConfigManager::classObject()));
    EXPECT_EQ(&shared->configModelClass(), &VDPluginConfigObject::classObject());
    EXPECT_EQ(shared->refreshTimeout(), 86400);

    for (const char* base : {"https://store.example.com", "https://store.example.com/"}) {
        VPConfigManager::setRemoteConfigBaseURL(base);
        EXPECT_EQ(shared->remoteConfigURL(), "https://store.example.com/sketchplugin/plugin_config.json");
    }
    VPConfigManager::setRemoteConfigBaseURL("");
    EXPECT_EQ(shared->remoteConfigURL(), "");
}

} // namespace
} // namespace velmo
