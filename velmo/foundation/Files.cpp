#include "velmo/foundation/Files.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "velmo/foundation/Uuid.h"

namespace velmo {

namespace fs = std::filesystem;

std::optional<std::string> Files::read(const fs::path& path) {
    std::error_code error;
    return read(path, error);
}

std::optional<std::string> Files::read(const fs::path& path, std::error_code& error) {
    error.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = std::error_code(errno, std::generic_category());
        return std::nullopt;
    }
    struct stat info {};
    std::optional<std::string> data;
    if (::fstat(fd, &info) != 0) {
        error = std::error_code(errno, std::generic_category());
    } else if (S_ISDIR(info.st_mode)) {
        // A directory opens for reading, but holds no bytes to read.
        error = std::make_error_code(std::errc::is_a_directory);
    } else {
        data = readAll(fd, error);
    }
    ::close(fd);
    return data;
}

std::optional<std::string> Files::readAll(int fd, std::error_code& error) {
    error.clear();
    std::string data;
    // The size is only a hint: pipes, terminals and files the system makes up on the fly give
    // none, or a wrong one, so reading goes on to the end whatever it said.
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0)
        data.reserve(static_cast<std::size_t>(info.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n == 0) return data;
        if (n < 0) {
            if (errno == EINTR) continue;
            error = std::error_code(errno, std::generic_category());
            return std::nullopt;
        }
        data.append(buffer, static_cast<std::size_t>(n));
    }
}

bool Files::writeAtomically(const fs::path& path, std::string_view data, int mode) {
    std::error_code error;
    return writeAtomically(path, data, mode, error);
}

bool Files::writeAtomically(const fs::path& path, std::string_view data, int mode, std::error_code& error) {
    error.clear();
    std::error_code ec;
    if (path.has_parent_path()) fs::create_directories(path.parent_path(), ec);
    // A unique name per writer, so two processes writing at once never share a temporary file.
    const fs::path temp = path.string() + ".tmp-" + Uuid::lowercaseString();
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) {
        // The folder's own failure says more than the file's "No such file or directory".
        error = ec ? ec : std::error_code(errno, std::generic_category());
        return false;
    }
    const auto failed = [&error] {
        if (!error) error = std::error_code(errno, std::generic_category());
        return false;
    };
    bool ok = true;
    std::size_t done = 0;
    while (ok && done < data.size()) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n == 0) errno = EIO; // a write that takes nothing sets no errno
        if (n <= 0)
            ok = failed();
        else
            done += static_cast<std::size_t>(n);
    }
    if (ok && ::fsync(fd) != 0) ok = failed();
    if (::close(fd) != 0 && ok) ok = failed();
    if (ok && ::rename(temp.c_str(), path.c_str()) != 0) ok = failed();
    if (!ok) ::unlink(temp.c_str());
    return ok;
}

namespace {

/// "velmo" in the folder an XDG variable names, else in its default below the home folder.
fs::path xdgVelmoFolder(const char* variable, const fs::path& underHome) {
    if (const char* xdg = std::getenv(variable); xdg && *xdg) return fs::path(xdg) / "velmo";
    if (const char* user = std::getenv("HOME"); user && *user) return fs::path(user) / underHome / "velmo";
    return fs::temp_directory_path() / "velmo";
}

} // namespace

fs::path Files::velmoHome() {
    if (const char* home = std::getenv("VELMO_HOME"); home && *home) return fs::path(home);
    return xdgVelmoFolder("XDG_CONFIG_HOME", ".config");
}

fs::path Files::velmoDataHome() {
    return xdgVelmoFolder("XDG_DATA_HOME", fs::path(".local") / "share");
}

fs::path Files::makeTemporaryDirectory(std::string_view prefix) {
    std::string pattern = (fs::temp_directory_path() / (std::string(prefix) + "-XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }
    return fs::path(pattern);
}

} // namespace velmo
