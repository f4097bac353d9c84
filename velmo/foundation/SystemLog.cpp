#include "velmo/foundation/SystemLog.h"

#include <cerrno> // program_invocation_short_name
#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

#include <fmt/format.h>
#include <unistd.h>

namespace velmo {

namespace {

std::mutex& sinkMutex() {
    static std::mutex m;
    return m;
}

SystemLog::Sink& currentSink() {
    static SystemLog::Sink sink;
    return sink;
}

std::string processName() {
    return program_invocation_short_name ? program_invocation_short_name : "velmo";
}

std::string stampedLine(std::string_view message) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    return fmt::format("{}.{:03d} {}[{}:{}] {}", stamp, millis, processName(), getpid(), gettid(), message);
}

} // namespace

std::string SystemLog::cut(std::string_view message) {
    if (message.size() <= kMaxMessageLength) return std::string(message);
    std::size_t end = kMaxMessageLength;
    // Back to the start of a character: continuation bytes are 10xxxxxx.
    while (end > 0 && (static_cast<unsigned char>(message[end]) & 0xC0) == 0x80)
        --end;
    return fmt::format("{} [... cut, {} bytes in all]", message.substr(0, end), message.size());
}

void SystemLog::log(std::string_view whole) {
    const std::string message = cut(whole);
    Sink sink;
    {
        std::lock_guard lock(sinkMutex());
        sink = currentSink();
    }
    if (sink) {
        sink(message);
        return;
    }
    const std::string line = stampedLine(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

SystemLog::Sink SystemLog::setSink(Sink sink) {
    std::lock_guard lock(sinkMutex());
    Sink previous = std::move(currentSink());
    currentSink() = std::move(sink);
    return previous;
}

} // namespace velmo
