#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

#include "velmo/foundation/URLRequest.h"
#include "velmo/foundation/VPError.h"

namespace velmo {

/// Hears the events of one transfer, all on the transfer thread, in this order: the response,
/// the body in pieces, then either the end or a failure. Upload progress comes between them.
/// Handlers must be quick: every transfer of the process shares that thread.
class HTTPTransferDelegate {
public:
    virtual ~HTTPTransferDelegate() = default;
    virtual void transferDidReceiveResponse(std::shared_ptr<HTTPURLResponse> response) = 0;
    /// Answer false to hold the transfer back: it stops reading from the network and hands the
    /// same bytes again after `HTTPTransfer::resume`.
    virtual bool transferDidReceiveData(std::string_view data) = 0;
    virtual void transferDidSendBodyData(std::int64_t totalBytesWritten, std::int64_t totalBytesExpected) = 0;
    virtual void transferDidFinish() = 0;
    /// An error in the URL error domain, with the failing URL.
    virtual void transferDidFail(VPErrorPtr error) = 0;
    /// Follows the events of one pass of the transfer thread over this transfer (a small answer
    /// comes whole in one pass): a delegate that hands events on to another thread can hand them
    /// on together, with one wakeup of that thread.
    virtual void transferDidDeliverEvents() {}
};

/// One HTTP exchange on the process's transfer thread, which drives every transfer of the
/// process through one libcurl multi handle: connections to a host are kept alive and shared,
/// and no thread waits on any one transfer. This is the process's only way onto the network:
/// the request operation, the log sender and the blocking request all come through here.
///
/// Only http and https are spoken, on redirects too (a redirect to file:// fails), and up to 16
/// redirects are followed. Failures are errors of the URL error domain, from one translation of
/// libcurl's results. Time: the request's `timeoutInterval` (none when 0) counts time in which not
/// one byte moves either way, so a transfer that keeps moving, however slowly, is never cut off
/// by it; a deadline (`Options::deadline`, `setDeadline`) bounds the whole transfer. Either fails
/// as timed out.
class HTTPTransfer {
public:
    struct Options {
        /// Report body bytes sent (costs a call per progress tick).
        bool reportsUploadProgress = false;
        /// Read in large pieces, for big bodies saved to files.
        bool largeReads = false;
        /// The whole transfer ends this long after `start`, moving or not, and fails as timed
        /// out; 0: no such limit. For posts nobody waits for, which must not hold a connection
        /// for long.
        std::chrono::milliseconds deadline{0};
    };

    /// The transfer keeps the delegate until it has ended or been cancelled.
    HTTPTransfer(URLRequest request, std::shared_ptr<HTTPTransferDelegate> delegate, Options options);
    ~HTTPTransfer();
    HTTPTransfer(const HTTPTransfer&) = delete;
    HTTPTransfer& operator=(const HTTPTransfer&) = delete;

    /// Hands the transfer to the transfer thread. Once only.
    void start();
    /// Ends the transfer from any thread. No event starts after the transfer thread has taken
    /// the cancel; one already under way may still arrive.
    void cancel();
    /// Reads on after the delegate held the transfer back.
    void resume();
    /// Moves the end of the whole transfer to `deadline`, in place of `Options::deadline`, from
    /// any thread, before or after `start`. A deadline already past ends it at once.
    void setDeadline(std::chrono::steady_clock::time_point deadline);

    struct Impl;

private:
    std::shared_ptr<Impl> impl_;
};

} // namespace velmo
