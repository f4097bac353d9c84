#pragma once

#include <string>

namespace velmo {

/// Delegate of `VPAsyncTask`. Every operation is optional: the defaults do nothing.
/// Calls come on the task's background thread.
class VPAsyncTaskProtocol {
public:
    virtual ~VPAsyncTaskProtocol() = default;
    /// A chunk of standard output, as one read returned it.
    virtual void onData(const std::string& data) { static_cast<void>(data); }
    /// A chunk of standard error.
    virtual void onError(const std::string& data) { static_cast<void>(data); }
    /// Both streams have ended and the process has exited.
    virtual void onEnd() {}

protected:
    VPAsyncTaskProtocol() = default;
    VPAsyncTaskProtocol(const VPAsyncTaskProtocol&) = default;
    VPAsyncTaskProtocol& operator=(const VPAsyncTaskProtocol&) = default;
};

} // namespace velmo
