#include "velmo/foundation/Files.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <random>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "velmo/foundation/Uuid.h"

namespace velmo {

namespace fs = std::filesystem;

std::optional<std::string> Files::read(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::string data;
    in.seekg(0, std::ios::end);
    const auto size = in.tellg();
    if (size > 0) {
        data.resize(static_cast<std::size_t>(size));
        in.seekg(0);
        in.read(data.data(), size);
        if (!in) return std::nullopt;
    }
    return data;
}

bool Files::writeAtomically(const fs::path& path, std::string_view data, int mode) {
    std::error_code ec;
    if (path.has_parent_path()) fs::create_directories(path.parent_path(), ec);
    // A unique name per writer, so two processes writing at once never share a temporary file.
    const fs::path temp = path.string() + ".tmp-" + Uuid::lowercaseString();
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) return false;
    bool ok = true;
    std::size_t done = 0;
    while (ok && done < data.size()) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0)
            ok = false;
        else
            done += static_cast<std::size_t>(n);
    }
    ok = ok && ::fsync(fd) == 0;
    ok = (::close(fd) == 0) && ok;
    if (ok) ok = ::rename(temp.c_str(), path.c_str()) == 0;
    if (!ok) ::unlink(temp.c_str());
    return ok;
}

fs::path Files::velmoHome() {
    if (const char* home = std::getenv("VELMO_HOME"); home && *home) return fs::path(home);
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) return fs::path(xdg) / "velmo";
    if (const char* user = std::getenv("HOME"); user && *user) return fs::path(user) / ".config" / "velmo";
    return fs::temp_directory_path() / "velmo";
}

fs::path Files::makeTemporaryDirectory(std::string_view prefix) {
    std::string pattern = (fs::temp_directory_path() / (std::string(prefix) + "-XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }
    return fs::path(pattern);
}

} // namespace velmo
