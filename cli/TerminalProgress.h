#pragma once

#include <cstdint>

namespace velmo::cli {

/// "Zipping 12/40" on one line of a terminal; nothing when standard error is not a terminal or
/// the command is quiet.
class TerminalProgress {
public:
    TerminalProgress();
    ~TerminalProgress();
    TerminalProgress(const TerminalProgress&) = delete;
    TerminalProgress& operator=(const TerminalProgress&) = delete;

    void update(const char* verb, std::uint64_t done, std::uint64_t total);

private:
    bool enabled_;
    bool shown_ = false;
};

} // namespace velmo::cli
