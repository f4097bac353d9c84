#include <atomic>

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

TEST_F(HTTPTransferTest, IdleGuardCutsOffOnlyTransfersInWhichNothingMoves) {
    const struct {
        const char* path;
        std::size_t bytes;
        std::int64_t code;
    } cases[] = {
        // Bytes every 150 ms for 3 s: far past the limit in all, never idle for it.
        {"/drip?bytes=2000&ms=3000", 2000, 0},
        {"/slow?ms=4000", 0, kNSURLErrorTimedOut},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        URLRequest request;
        request.url = server.url(c.path);
        request.timeoutInterval = 1;
        auto events = std::make_shared<Events>();
        HTTPTransfer transfer(request, events, {});
        transfer.start();
        ASSERT_TRUE(waitFor([&] { return events->ended.load(); }));
        EXPECT_EQ(events->code.load(), c.code);
        EXPECT_EQ(events->bytes.load(), c.bytes);
    }
}
