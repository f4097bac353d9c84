#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "RecordingHttpServer.h"
#include "ValuePrinting.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/host/VVHostClientConfig.h"
#include "velmo/runtime/VVDI.h"
#include "velmo/service/VPAccountData.h"
#include "velmo/service/VPBaseAPIClient.h"

namespace velmo::test {

/// The service's client as the tests bind it: links it would open are kept, not opened, and the
/// token goes to the token store when `useKeychain` is on.
class TestAPIClient : public VPBaseAPIClient {
public:
    static const VDClass& classObject() {
        static const VDClass cls("TestAPIClient", &VPBaseAPIClient::classObject(),
                                 [] { return std::shared_ptr<Object>(std::make_shared<TestAPIClient>()); });
        return cls;
    }
    const VDClass& objectClass() const override { return classObject(); }

    bool shouldUseKeychainForToken() const override { return useKeychain; }
    /// The base's own way of opening links, for the test of it.
    void openWithTheSystem(const std::string& url) { VPBaseAPIClient::openURL(url); }

    bool useKeychain = false;
    std::vector<std::string> opened;

protected:
    void openURL(const std::string& url) override { opened.push_back(url); }
};

/// Binds a client configuration whose token store name is `keyChainServiceName`. Registry bindings
/// live for the process, so each configuration is made once and kept.
inline void bindClientConfig(const std::string& keyChainServiceName = kVPTokenKeychainService) {
    static auto* configs = new std::map<std::string, std::unique_ptr<VVHostClientConfig>>();
    auto& config = (*configs)[keyChainServiceName];
    if (!config) {
        VVHostClientConfig::Values values;
        values.clientID = "client-42";
        values.hostVersion = "99.1";
        values.clientName = "ServiceTests";
        values.keyChainServiceName = keyChainServiceName;
        config = std::make_unique<VVHostClientConfig>(values);
    }
    VVDI::shared().bindClass(config.get(), kVVClientConfigInterface);
}

/// The process's shared client, made once as a `TestAPIClient` with the test configuration.
inline std::shared_ptr<TestAPIClient> sharedTestClient() {
    static const std::shared_ptr<TestAPIClient> client = [] {
        bindClientConfig();
        VVDI::shared().bindClass(&TestAPIClient::classObject(), kVVAPIClientInterface);
        return std::dynamic_pointer_cast<TestAPIClient>(VPBaseAPIClient::sharedClient());
    }();
    return client;
}

inline Value json(std::string_view text) {
    return Json::parse(text);
}

/// A JSON answer with a status.
inline RecordingHttpServer::Handler answer(int status, std::string body) {
    return [status, body = std::move(body)](const httplib::Request&, httplib::Response& res) {
        res.status = status;
        res.set_content(body, "application/json");
    };
}

/// What one (response, error) completion received.
struct Outcome {
    int calls = 0;
    Value response;
    VPErrorPtr error;

    VPBaseAPIClient::Completion completion() {
        return [this](const Value& r, VPErrorPtr e) {
            ++calls;
            response = r;
            error = std::move(e);
        };
    }
    bool wait() {
        return runMainLoopUntil([this] { return calls > 0; }, std::chrono::seconds(10));
    }
};

/// Runs the main loop a little longer, for answers that must change nothing.
inline void settle() {
    runMainLoopUntil([] { return false; }, std::chrono::milliseconds(200));
}

/// The shared client pointed at a recording peer, as a fresh client stands: no token, form
/// bodies, an empty account cache. Routes are added to `peer` before `startPeer`.
class ServiceTest : public testing::Test {
protected:
    ServiceTest() : client(sharedTestClient()) {
        previousSink_ = SystemLog::setSink([](std::string_view) {});
        client->useKeychain = false;
        client->clearToken();
        client->setSendParametersAsJSON(false);
        client->setLastFetchedUser(Dictionary{{"email", Value("ann@example.com")}});
        client->opened.clear();
        VPAccountData::shared().setCachedProjects(Array::create());
        VPAccountData::shared().setCachedTeams(Array::create());
        VPAccountData::shared().setCachedUser(Value());
    }
    ~ServiceTest() override {
        peer.stop();
        VPBaseAPIClient::setCustomAPIBaseURL("");
        SystemLog::setSink(previousSink_);
    }

    void startPeer() {
        peer.start();
        VPBaseAPIClient::setCustomAPIBaseURL(peer.baseURL());
    }

    std::shared_ptr<TestAPIClient> client;
    RecordingHttpServer peer;

private:
    SystemLog::Sink previousSink_;
};

} // namespace velmo::test
