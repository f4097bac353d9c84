#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "NetTestServer.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/net/VPHTTPClient.h"
#include "velmo/runtime/VVDI.h"

using namespace velmo;
using namespace velmo::test;

class VPHTTPClientTest : public NetTest {
protected:
    VPHTTPClientTest() : client(std::make_shared<VPHTTPClient>()) { client->setBasePath(server.baseURL()); }

    std::shared_ptr<VPHTTPClient> client;
};

TEST_F(VPHTTPClientTest, BaseParametersJoinEachRequestAndWinOnAClash) {
    client->setBaseParameters(Dictionary{{"token", Value("base")}, {"v", Value(2)}});
    const struct {
        const char* name;
        VPHTTPRequestMethod method;
        bool json;
        Value parameters;
        const char* target;
        const char* body;
        const char* contentType;
    } cases[] = {
        {"get query", VPHTTPRequestMethod::GET, false,
         Value(Dictionary{{"q", Value("x")}, {"token", Value("mine")}}), "/echo?q=x&token=base&v=2", "",
         "<absent>"},
        {"form", VPHTTPRequestMethod::POST, false, Value(), "/echo", "token=base&v=2",
         "application/x-www-form-urlencoded"},
        {"json dictionary", VPHTTPRequestMethod::PUT, true, Value(Dictionary{{"a", Value(1)}}), "/echo",
         R"({"a":1,"token":"base","v":2})", "application/json"},
        {"json array stays as given", VPHTTPRequestMethod::POST, true, Value(Array{Value(1)}), "/echo", "[1]",
         "application/json"},
        {"json nothing stays nothing", VPHTTPRequestMethod::POST, true, Value(), "/echo", "", "<absent>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        client->setSendParametersAsJSON(c.json);
        Outcome outcome;
        switch (c.method) {
        case VPHTTPRequestMethod::GET:
            client->GET("/echo", c.parameters, outcome.completion());
            break;
        case VPHTTPRequestMethod::POST:
            client->POST("/echo", c.parameters, outcome.completion());
            break;
        default:
            client->PUT("/echo", c.parameters, outcome.completion());
            break;
        }
        ASSERT_TRUE(outcome.wait());
        ASSERT_FALSE(outcome.error) << outcome.error->description();
        EXPECT_EQ(outcome.echo().get("target").str(), c.target);
        EXPECT_EQ(echoedBody(outcome), c.body);
        EXPECT_EQ(echoedHeader(outcome, "content-type"), c.contentType);
    }
}

TEST_F(VPHTTPClientTest, EmptyFormPostWithoutBaseParameters) {
    Outcome outcome;
    client->POST("/echo", Value(), outcome.completion());
    ASSERT_TRUE(outcome.wait());
    EXPECT_EQ(echoedBody(outcome), "");
    EXPECT_EQ(echoedHeader(outcome, "content-type"), "application/x-www-form-urlencoded");
}

TEST_F(VPHTTPClientTest, ClientHeadersWinOverPerRequestHeaders) {
    client->setValue("client", "X-Both");
    client->setValue("client", "X-Client");
    client->setValue("gone", "X-Removed");
    client->setValue(std::nullopt, "X-Removed");
    Outcome outcome;
    client->POST("/echo", Value(), Dictionary{{"X-Both", Value("request")}, {"X-Request", Value("request")}},
                 outcome.completion());
    ASSERT_TRUE(outcome.wait());
    EXPECT_EQ(echoedHeader(outcome, "x-both"), "client");
    EXPECT_EQ(echoedHeader(outcome, "x-client"), "client");
    EXPECT_EQ(echoedHeader(outcome, "x-request"), "request");
    EXPECT_EQ(echoedHeader(outcome, "x-removed"), "<absent>");
}

TEST_F(VPHTTPClientTest, FieldsChangeOnOneThreadWhileOthersQueueRequests) {
    client->setValue("stable", "X-Stable");
    client->setUserAgent("Velmo/1");
    client->setTimeoutInterval(42);
    client->setBasicAuthWithUsername("user", "pass");
    client->setBaseParameters(Dictionary{{"n", Value(-1)}});
    constexpr int kPerThread = 40;
    std::vector<Outcome> outcomes(2 * kPerThread);
    std::atomic<bool> queueing{true};
    std::thread writer([&] {
        for (int i = 0; queueing; ++i) {
            std::string value(1, 'v');
            value += std::to_string(i);
            client->setValue(value, "X-Changing");
            if (i % 2) client->setValue(std::nullopt, "X-Changing");
            client->setBaseParameters(Dictionary{{"n", Value(i)}});
        }
    });
    std::vector<std::thread> senders;
    for (int t = 0; t < 2; ++t) {
        senders.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                auto request = client->GET(
                    "/echo", Value(), outcomes[static_cast<std::size_t>(t * kPerThread + i)].completion());
                EXPECT_EQ(request->timeoutInterval(), 42u);
            }
        });
    }
    for (auto& sender : senders)
        sender.join();
    queueing = false;
    writer.join();
    ASSERT_TRUE(waitFor([&] {
        return std::all_of(outcomes.begin(), outcomes.end(), [](const Outcome& o) { return o.calls == 1; });
    }));
    for (const Outcome& outcome : outcomes) {
        ASSERT_FALSE(outcome.error) << outcome.error->description();
        EXPECT_TRUE(outcome.echo().get("target").str().starts_with("/echo?n="));
        EXPECT_EQ(echoedHeader(outcome, "x-stable"), "stable");
        EXPECT_EQ(echoedHeader(outcome, "user-agent"), "Velmo/1");
        EXPECT_EQ(echoedHeader(outcome, "authorization"), "Basic dXNlcjpwYXNz");
        const std::string changing = echoedHeader(outcome, "x-changing");
        EXPECT_TRUE(changing == "<absent>" || changing.starts_with("v")) << changing;
    }
}

TEST_F(VPHTTPClientTest, CancelByPathMatchesTheStoredPathExactly) {
    const struct {
        const char* cancelPath;
        bool cancelled;
    } cases[] = {{"/slow", false}, {"slow", true}, {"slo", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cancelPath);
        const int started = server.slowStarted();
        const int answered = server.slowAnswered();
        Outcome slow;
        Outcome other;
        auto request = client->GET("/slow?ms=300", Value(), slow.completion());
        client->GET("/text", Value(), other.completion());
        // Cancelled once the server has it, so that the answer is surely on its way.
        ASSERT_TRUE(waitFor([&] { return server.slowStarted() == started + 1; }));
        EXPECT_EQ(request->requestPath(), "slow");
        client->cancelRequestsWithPath(c.cancelPath);
        ASSERT_TRUE(waitFor([&] { return request->isFinished() && other.calls == 1; }));
        // Past the server's answer, a cancelled request still hears nothing.
        ASSERT_TRUE(waitFor([&] { return server.slowAnswered() == answered + 1; }));
        runMainLoopUntil([&] { return slow.calls > 0; }, std::chrono::milliseconds(200));
        EXPECT_EQ(slow.calls, c.cancelled ? 0 : 1);
        EXPECT_EQ(request->isCancelled(), c.cancelled);
    }
}

TEST_F(VPHTTPClientTest, CancelAllStopsRunningRequestsAndLetsWaitingOnesRun) {
    client->operationQueue().setMaxConcurrentOperationCount(2);
    std::vector<Outcome> outcomes(4);
    std::vector<std::shared_ptr<VPHTTPRequest>> requests;
    for (auto& outcome : outcomes)
        requests.push_back(client->GET("/slow?ms=300", Value(), outcome.completion()));
    ASSERT_TRUE(waitFor([&] { return requests[0]->isExecuting() && requests[1]->isExecuting(); }));
    client->cancelAllRequests();
    // The two that had not begun ignore the cancel and run when their turn comes.
    ASSERT_TRUE(waitFor([&] { return outcomes[2].calls == 1 && outcomes[3].calls == 1; }));
    EXPECT_EQ(outcomes[0].calls, 0);
    EXPECT_EQ(outcomes[1].calls, 0);
    EXPECT_EQ(client->operationQueue().operationCount(), 0u);
}

TEST_F(VPHTTPClientTest, CancelsAmidManyAnswersSilenceExactlyTheRequestsThatWereRunning) {
    constexpr int kRequests = 400;
    std::vector<Outcome> outcomes(kRequests);
    std::vector<std::shared_ptr<VPHTTPRequest>> requests;
    for (auto& outcome : outcomes)
        requests.push_back(client->GET("/text", Value(), outcome.completion()));
    // Every other request is cancelled at some point of its life: waiting, on the network, answered
    // with the callback queued, or done. Only a cancel that found it running takes.
    std::vector<bool> silenced(kRequests, false);
    for (int i = 0; i < kRequests; i += 2) {
        runMainLoopUntil([] { return false; }, std::chrono::microseconds(100 * (i % 5)));
        requests[static_cast<std::size_t>(i)]->cancel();
        silenced[static_cast<std::size_t>(i)] = requests[static_cast<std::size_t>(i)]->isCancelled();
    }
    ASSERT_TRUE(waitFor([&] { return client->operationQueue().operationCount() == 0; }));
    drainMainQueue();
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        EXPECT_EQ(outcomes[i].calls, silenced[i] ? 0 : 1) << i;
        EXPECT_TRUE(outcomes[i].onMainThread) << i;
        EXPECT_TRUE(requests[i]->isFinished()) << i;
    }
    EXPECT_GT(std::count(silenced.begin(), silenced.end(), true), 0) << "no cancel found a request running";
    EXPECT_EQ(VPHTTPRequest::taskCount(), 0u);
}

TEST_F(VPHTTPClientTest, ManyParallelRequestsEachCallBackOnce) {
    constexpr int kRequests = 300;
    std::vector<Outcome> outcomes(kRequests);
    for (int i = 0; i < kRequests; ++i) {
        client->GET("/echo", Value(Dictionary{{"i", Value(i)}}),
                    outcomes[static_cast<std::size_t>(i)].completion());
    }
    ASSERT_TRUE(waitFor([&] { return client->operationQueue().operationCount() == 0; }));
    drainMainQueue();
    for (int i = 0; i < kRequests; ++i) {
        const Outcome& outcome = outcomes[static_cast<std::size_t>(i)];
        ASSERT_EQ(outcome.calls, 1) << i;
        EXPECT_TRUE(outcome.onMainThread);
        EXPECT_EQ(outcome.echo().get("target").str(), "/echo?i=" + std::to_string(i));
    }
    // Quick answers may come back one by one on a busy machine; answers that take a while show
    // whether the queue runs requests side by side.
    std::vector<Outcome> slow(8);
    for (auto& outcome : slow)
        client->GET("/slow", Value(Dictionary{{"ms", Value(300)}}), outcome.completion());
    ASSERT_TRUE(waitFor([&] { return client->operationQueue().operationCount() == 0; }));
    drainMainQueue();
    EXPECT_GT(server.maxConcurrent(), 1) << "requests ran one after another";
    EXPECT_LE(server.maxConcurrent(), OperationQueue::kDefaultMaxConcurrentOperationCount);
    EXPECT_EQ(VPHTTPRequest::taskCount(), 0u);
}

TEST(VPHTTPClientShared, OneClientPerIdentifierWhicheverClassAsks) {
    static const VDClass otherClass("OtherClient", &VPHTTPClient::classObject(),
                                    [] { return std::shared_ptr<Object>(std::make_shared<VPHTTPClient>()); });
    const auto master = VPHTTPClient::sharedClient();
    EXPECT_EQ(VPHTTPClient::sharedClient(), master);
    EXPECT_EQ(VPHTTPClient::sharedClientWithIdentifier("master", otherClass, false), master);
    const auto uploads = VPHTTPClient::sharedClientWithIdentifier("uploads");
    EXPECT_NE(uploads, master);
    EXPECT_EQ(VPHTTPClient::sharedClientWithIdentifier("uploads"), uploads);

    // Asked for at once, the first client made is the one everybody gets.
    std::vector<std::shared_ptr<VPHTTPClient>> got(8);
    std::vector<std::thread> askers;
    for (auto& client : got)
        askers.emplace_back([&client] { client = VPHTTPClient::sharedClientWithIdentifier("contended"); });
    for (auto& asker : askers)
        asker.join();
    EXPECT_EQ(std::count(got.begin(), got.end(), VPHTTPClient::sharedClientWithIdentifier("contended")), 8);
}

namespace {
// A host's own client class, bound in place of the service's.
class HostClient : public VPHTTPClient {
public:
    static const VDClass& classObject() {
        static const VDClass cls("HostClient", &VPHTTPClient::classObject(),
                                 [] { return std::shared_ptr<Object>(std::make_shared<HostClient>()); });
        return cls;
    }
    const VDClass& objectClass() const override { return classObject(); }
};
} // namespace

TEST(VPHTTPClientShared, AnAPIClientReceiverGetsTheClassBoundInTheRegistryAndBindsItsInstance) {
    VVDI::shared().bindClass(&HostClient::classObject(), kVVAPIClientInterface);
    const auto client =
        VPHTTPClient::sharedClientWithIdentifier("api-test", VPHTTPClient::classObject(), true);
    EXPECT_TRUE(client->isMemberOf(HostClient::classObject()));
    EXPECT_EQ(VVDI::shared().instanceForProtocol(kVVAPIClientInterface), client);
    EXPECT_EQ(VPHTTPClient::sharedClientWithIdentifier("api-test"), client);
}
