#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace velmo {

/// The system log: one line per message on standard error, stamped with the time, the process
/// and the thread, as the platform's log does. Tests and hosts can take the lines instead: a host
/// that shows the log only on request sets a sink that drops them, and restores this one.
class SystemLog {
public:
    using Sink = std::function<void(std::string_view line)>;

    /// The longest message logged whole. Messages may quote a whole value (a document of megabytes
    /// that isn't a model), and the log is for people: the rest is cut, with a mark saying so.
    static constexpr std::size_t kMaxMessageLength = 1024;

    /// Logs the message, cut to `kMaxMessageLength` bytes as `cut` does.
    static void log(std::string_view message);

    /// The message as logged: whole up to `kMaxMessageLength` bytes; a longer one keeps its first
    /// bytes, not splitting a UTF-8 character, and ends with " [... cut, N bytes in all]".
    static std::string cut(std::string_view message);

    /// Replaces where lines go; an empty sink restores standard error. Returns the previous sink.
    static Sink setSink(Sink sink);
};

} // namespace velmo
