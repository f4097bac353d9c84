#pragma once

#include <optional>
#include <string>

namespace velmo::cli {

/// The environment variable that gives an archive's password.
inline constexpr const char* kPasswordEnvironment = "VELMO_ZIP_PASSWORD";

/// Where the password of `velmo zip` and `velmo unzip` comes from: `--password -` (a line of
/// standard input, or the terminal without echo when standard input is one), `--password TEXT`
/// (seen by anyone who lists processes); without --password, VELMO_ZIP_PASSWORD; else none.
class Password {
public:
    /// The help text that says so.
    static const char* help();

    /// The password ("" for none). `given` is whether --password was given and `option` its value;
    /// with `confirm`, a password typed at a terminal is asked twice. Nothing, after a message,
    /// when no password could be read.
    static std::optional<std::string> resolve(bool given, const std::string& option, bool confirm);

    /// A secret given as "-": a line of standard input, or asked at the terminal without echo
    /// when standard input is one. Nothing at the end of the input.
    static std::optional<std::string> readSecret(const char* prompt);
};

} // namespace velmo::cli
