#pragma once

#include <string>

namespace velmo::test {

/// What a shell command line gave: its exit code (-1 when it didn't exit) and what it printed to
/// the pipe (the streams its own redirections send there).
struct ShellResult {
    int exitCode = -1;
    std::string output;
};

/// Runs `line` with /bin/sh and waits for it.
ShellResult runShell(const std::string& line);

} // namespace velmo::test
