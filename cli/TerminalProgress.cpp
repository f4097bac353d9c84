#include "TerminalProgress.h"

#include <cstdio>

#include <fmt/format.h>
#include <unistd.h>

#include "Console.h"

namespace velmo::cli {

TerminalProgress::TerminalProgress() : enabled_(::isatty(STDERR_FILENO) == 1 && !Console::quiet()) {}

TerminalProgress::~TerminalProgress() {
    // The line is cleared, so the messages that follow start on a line of their own.
    if (shown_) fmt::print(stderr, "\r{:<40}\r", "");
}

void TerminalProgress::update(const char* verb, std::uint64_t done, std::uint64_t total) {
    if (!enabled_) return;
    // Padded, so a shorter line covers a longer one.
    fmt::print(stderr, "\r{:<40}", fmt::format("{} {}/{}", verb, done, total));
    std::fflush(stderr);
    shown_ = true;
}

} // namespace velmo::cli
