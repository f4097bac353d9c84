#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "NetTestServer.h"
#include "velmo/net/HTTPTransfer.h"

using namespace velmo;
using namespace velmo::test;

namespace {

// What the transfer thread reported: the bytes, and the error code of a failure (0: none).
struct Events : HTTPTransferDelegate {
    void transferDidReceiveResponse(std::shared_ptr<HTTPURLResponse>) override {}
    bool transferDidReceiveData(std::string_view data) override {
        bytes += data.size();
        return true;
    }
    void transferDidSendBodyData(std::int64_t, std::int64_t) override {}
    void transferDidFinish() override { ended = true; }
    void transferDidFail(VPErrorPtr error) override {
        code = error->code();
        ended = true;
    }

    std::atomic<std::size_t> bytes{0};
    std::atomic<std::int64_t> code{0};
    std::atomic<bool> ended{false};
};

} // namespace

class HTTPTransferTest : public NetTest {};

// Between transfers the transfer thread sleeps: a new one must wake it, not wait out its sleep.
TEST_F(HTTPTransferTest, ATransferAfterAQuietSpellStartsAtOnce) {
    for (int i = 0; i < 5; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        URLRequest request;
        request.url = server.url("/text");
        auto events = std::make_shared<Events>();
        HTTPTransfer transfer(request, events, {});
        const auto started = std::chrono::steady_clock::now();
        transfer.start();
        ASSERT_TRUE(waitFor([&] { return events->ended.load(); }));
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(500)) << i;
        EXPECT_EQ(events->bytes.load(), 5u);
    }
}

TEST_F(HTTPTransferTest, IdleGuardCutsOffOnlyTransfersInWhichNothingMovesAndTheDeadlineAny) {
    using std::chrono::milliseconds;
    const struct {
        const char* path;
        milliseconds deadline;
        bool partial; // some bytes, not all
        std::int64_t code;
    } cases[] = {
        // Bytes every 150 ms for 3 s: far past the limit in all, never idle for it.
        {"/drip?bytes=2000&ms=3000", milliseconds(0), false, 0},
        {"/slow?ms=4000", milliseconds(0), false, kNSURLErrorTimedOut},
        // The same drip, cut off by a deadline however well it moves.
        {"/drip?bytes=2000&ms=3000", milliseconds(1000), true, kNSURLErrorTimedOut},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        URLRequest request;
        request.url = server.url(c.path);
        request.timeoutInterval = 1;
        auto events = std::make_shared<Events>();
        HTTPTransfer::Options options;
        options.deadline = c.deadline;
        HTTPTransfer transfer(request, events, options);
        transfer.start();
        ASSERT_TRUE(waitFor([&] { return events->ended.load(); }));
        EXPECT_EQ(events->code.load(), c.code);
        if (c.partial) {
            EXPECT_GT(events->bytes.load(), 0u);
            EXPECT_LT(events->bytes.load(), 2000u);
        } else {
            EXPECT_EQ(events->bytes.load(), c.code ? 0u : 2000u);
        }
    }
}
