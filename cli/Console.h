#pragma once

#include <string>
#include <string_view>

#include "velmo/foundation/VPError.h"

namespace velmo::cli {

/// What the command says and where: results on standard output, its own messages on standard
/// error as "velmo: ...". Every write to standard output is checked, so output that can't be
/// written fails the command instead of vanishing.
class Console {
public:
    enum class Verbosity {
        /// The error line and the results only.
        Quiet,
        /// Also warnings and summaries, progress on a terminal.
        Normal,
        /// Also the library's own log.
        Verbose,
    };

    static void setVerbosity(Verbosity verbosity);
    static Verbosity verbosity();
    static bool quiet() { return verbosity() == Verbosity::Quiet; }

    /// Writes a result to standard output. The first failure is kept for `finish`; after it,
    /// nothing more is written.
    static void out(std::string_view text);
    /// A summary of work done ("3 entries zipped"), on standard output unless quiet.
    static void summary(std::string_view text);
    /// "velmo: <text>" on standard error, whatever the verbosity.
    static void error(std::string_view text);
    /// A report on standard error as it is, unless quiet: for commands whose standard output
    /// carries a document.
    static void note(std::string_view text);
    /// "velmo: warning: <text>" on standard error, unless quiet.
    static void warning(std::string_view text);

    /// Flushes standard output; false when any of it could not be written (the reason is kept
    /// for `finish`).
    static bool flush();
    /// Flushes standard output and gives the exit code to end with: the command's own, or 1 with
    /// the reason when its output could not be written.
    static int finish(int exitCode);
};

/// An error of the library in one line: its description, with its reason when it has one.
std::string errorText(const VPErrorPtr& error);

} // namespace velmo::cli
