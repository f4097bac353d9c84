#include "Folders.h"

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace velmo::cli {

std::string unwritableReason(std::filesystem::path folder, bool mayBeMade) {
    if (folder.empty()) folder = ".";
    struct stat st {};
    while (::stat(folder.c_str(), &st) != 0) {
        if (!mayBeMade || errno != ENOENT || folder == folder.parent_path() || !folder.has_parent_path())
            return std::strerror(errno);
        folder = folder.parent_path();
    }
    if (!S_ISDIR(st.st_mode)) return std::strerror(ENOTDIR);
    if (::access(folder.c_str(), W_OK | X_OK) != 0) return std::strerror(errno);
    return {};
}

} // namespace velmo::cli
