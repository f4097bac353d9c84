#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "velmo/runtime/VPAsyncTaskProtocol.h"

namespace velmo {

namespace detail {
struct VPAsyncTaskState;
} // namespace detail

/// Runs a program with pipes on its standard output and error and reports what it writes.
///
/// Output is reported chunk by chunk, as each read returns it: nothing splits it into lines or
/// joins partial characters, and a chunk that isn't valid UTF-8 (a multi-byte character cut by a
/// read boundary included) is dropped with no report. The delegate hears each chunk first, then the
/// callback. `onEnd` comes once both streams have ended and the process has exited; its status
/// isn't read. Reports come on a background thread of the run, which lives until `onEnd`. A report
/// that throws is logged as the catch-all guard logs, and the run goes on to its end.
///
/// The program gets an empty standard input. There is no cancel. One task may run several processes,
/// whose reports then mix. Destroying the task stops nothing: runs keep its delegate and callbacks
/// and report to them to the end.
class VPAsyncTask {
public:
    using TextCallback = std::function<void(const std::string&)>;
    using EndCallback = std::function<void()>;

    VPAsyncTask();
    ~VPAsyncTask();
    VPAsyncTask(const VPAsyncTask&) = delete;
    VPAsyncTask& operator=(const VPAsyncTask&) = delete;

    std::shared_ptr<VPAsyncTaskProtocol> delegate() const;
    /// Held weakly.
    void setDelegate(const std::shared_ptr<VPAsyncTaskProtocol>& delegate);

    TextCallback onData() const;
    void setOnData(TextCallback onData);
    TextCallback onError() const;
    void setOnError(TextCallback onError);
    EndCallback onEnd() const;
    void setOnEnd(EndCallback onEnd);

    /// Starts the program at `path` (not searched in PATH) with `arguments` and returns at once.
    /// Throws `std::system_error` when the program can't be launched.
    /// execute:arguments:
    void execute(const std::string& path, const std::vector<std::string>& arguments);

private:
    std::shared_ptr<detail::VPAsyncTaskState> state_;
};

} // namespace velmo
