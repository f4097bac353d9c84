#include "Password.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include "Console.h"

namespace velmo::cli {

namespace {

// The terminal's settings while echo is off, so an interrupt can give them back.
termios gSavedTerminal;
volatile std::sig_atomic_t gEchoOff = 0;

void restoreTerminalAndExit(int signal) {
    if (gEchoOff) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &gSavedTerminal);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// One line of standard input without its line end; nothing at the end of the input.
std::optional<std::string> readLine() {
    char* buffer = nullptr;
    std::size_t capacity = 0;
    const ssize_t length = ::getline(&buffer, &capacity, stdin);
    std::optional<std::string> line;
    if (length >= 0) line.emplace(buffer, static_cast<std::size_t>(length));
    std::free(buffer);
    if (line && !line->empty() && line->back() == '\n') line->pop_back();
    if (line && !line->empty() && line->back() == '\r') line->pop_back();
    return line;
}

/// Asks at the terminal, with the typed characters not shown.
std::optional<std::string> ask(const char* prompt) {
    std::fputs(prompt, stderr);
    std::fflush(stderr);
    if (::tcgetattr(STDIN_FILENO, &gSavedTerminal) != 0) return readLine();
    termios hidden = gSavedTerminal;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    hidden.c_lflag |= ECHONL; // the line end still shows, so what follows starts a line
    const auto previousInt = std::signal(SIGINT, restoreTerminalAndExit);
    const auto previousTerm = std::signal(SIGTERM, restoreTerminalAndExit);
    gEchoOff = ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
    auto line = readLine();
    if (gEchoOff) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &gSavedTerminal);
    gEchoOff = 0;
    std::signal(SIGINT, previousInt);
    std::signal(SIGTERM, previousTerm);
    return line;
}

std::optional<std::string> readPassword(bool confirm) {
    if (::isatty(STDIN_FILENO) != 1) {
        auto line = readLine();
        if (!line) {
            Console::error("--password -: standard input holds no password");
            return std::nullopt;
        }
        return line;
    }
    auto password = ask("Password: ");
    if (password && confirm && !password->empty()) {
        const auto again = ask("Password again: ");
        if (again != password) {
            Console::error("the passwords don't match");
            return std::nullopt;
        }
    }
    if (!password) Console::error("--password -: no password was typed");
    return password;
}

} // namespace

const char* Password::help() {
    return "The password: with --password -, a line of standard input, or asked at the terminal\n"
           "without echo when standard input is one; with --password TEXT, that text (seen by anyone\n"
           "who lists processes); without --password, the environment variable VELMO_ZIP_PASSWORD;\n"
           "else none.";
}

std::optional<std::string> Password::readSecret(const char* prompt) {
    return ::isatty(STDIN_FILENO) == 1 ? ask(prompt) : readLine();
}

std::optional<std::string> Password::resolve(bool given, const std::string& option, bool confirm) {
    if (!given) {
        // Set but empty is the way to clear it for one run: no password.
        const char* environment = std::getenv(kPasswordEnvironment);
        return std::string(environment ? environment : "");
    }
    std::optional<std::string> password = option == "-" ? readPassword(confirm) : std::optional(option);
    // An empty password means none: one asked for on purpose would silently protect nothing.
    if (password && password->empty()) {
        Console::error("the password is empty");
        return std::nullopt;
    }
    return password;
}

} // namespace velmo::cli
