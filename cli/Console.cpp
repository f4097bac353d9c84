#include "Console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

#include "Commands.h"

namespace velmo::cli {

namespace {

Console::Verbosity gVerbosity = Console::Verbosity::Normal;
// The errno of the first write to standard output that failed; 0 while all went well.
int gOutputError = 0;

void writeError(std::string_view line) {
    // Standard error is the last place to report to: a failure there has nowhere to go.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

void Console::setVerbosity(Verbosity verbosity) {
    gVerbosity = verbosity;
}

Console::Verbosity Console::verbosity() {
    return gVerbosity;
}

void Console::out(std::string_view text) {
    if (gOutputError != 0 || text.empty()) return;
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) gOutputError = errno ? errno : EIO;
}

void Console::summary(std::string_view text) {
    if (!quiet()) out(fmt::format("{}\n", text));
}

void Console::error(std::string_view text) {
    writeError(fmt::format("velmo: {}\n", text));
}

void Console::note(std::string_view text) {
    if (!quiet()) writeError(text);
}

void Console::warning(std::string_view text) {
    if (!quiet()) writeError(fmt::format("velmo: warning: {}\n", text));
}

bool Console::flush() {
    errno = 0;
    if (std::fflush(stdout) != 0 && gOutputError == 0) gOutputError = errno ? errno : EIO;
    return gOutputError == 0;
}

int Console::finish(int exitCode) {
    if (flush()) return exitCode;
    error(fmt::format("cannot write the output: {}", std::strerror(gOutputError)));
    return exitCode == kExitOK ? kExitFailure : exitCode;
}

std::string errorText(const VPErrorPtr& error) {
    if (!error) return {};
    const Value& reason = error->userInfo().get(kNSLocalizedFailureReasonErrorKey);
    return reason.isString() ? fmt::format("{} ({})", error->localizedDescription(), reason.str())
                             : error->localizedDescription();
}

} // namespace velmo::cli
