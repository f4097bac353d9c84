#pragma once

#include <functional>
#include <string_view>

namespace velmo {

/// The system log: one line per message on standard error, stamped with the time, the process
/// and the thread, as the platform's log does. Tests and hosts can take the lines instead.
class SystemLog {
public:
    using Sink = std::function<void(std::string_view line)>;

    static void log(std::string_view message);

    /// Replaces where lines go; an empty sink restores standard error. Returns the previous sink.
    static Sink setSink(Sink sink);
};

} // namespace velmo
