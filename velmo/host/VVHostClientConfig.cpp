#include "velmo/host/VVHostClientConfig.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include "velmo/foundation/Files.h"
#include "velmo/runtime/VelmoCommonVersion.h"

namespace velmo {

namespace {

// Resources of an installed program live in <prefix>/share/velmo, its binary in <prefix>/bin.
std::string resourcesBesideProgram() {
    std::error_code ec;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) return {};
    return (program.parent_path().parent_path() / "share" / "velmo").string();
}

// Temporary files hold the user's exports, so they live in a folder of the user's own: the
// session's runtime folder when there is one, else one named for the user in the system's.
std::string temporaryFolder() {
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime)
        return (std::filesystem::path(runtime) / "velmo").string();
    std::error_code ec;
    auto folder = std::filesystem::temp_directory_path(ec);
    if (ec) folder = "/tmp";
    return (folder / ("velmo-" + std::to_string(::getuid()))).string();
}

// A folder of this user's own, not a link that someone else could point anywhere.
bool isOwnFolder(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::getuid();
}

// Creates the folder, private, when it is missing. A name in a shared folder can be taken by
// someone else first; then a fresh private folder of a random name stands in.
std::string privateFolder(const std::string& path) {
    if (path.empty()) return path;
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    ::mkdir(path.c_str(), 0700);
    if (isOwnFolder(path)) return path;
    try {
        return Files::makeTemporaryDirectory("velmo").string();
    } catch (...) {
        return path; // no folder at all: its users fail as they would with any unusable folder
    }
}

} // namespace

VVHostClientConfig::VVHostClientConfig(Values values)
    : VDClass("VVHostClientConfig", nullptr, nullptr), values_(std::move(values)) {}

std::string VVHostClientConfig::tempDir() const {
    std::call_once(tempDirOnce_, [this] { tempDir_ = privateFolder(values_.tempDir); });
    return tempDir_;
}

VVHostClientConfig::Values VVHostClientConfig::defaults() {
    Values values;
    values.clientVersion = velmoCommonVersion();
    values.clientName = "velmo";
    values.clientID = "velmo-cli";
    values.tempDir = temporaryFolder();
    values.keyChainServiceName = "Velmo-Sketch-Plugin";
    values.bundle = resourcesBesideProgram();
    values.hostVersion = velmoCommonVersion();
    return values;
}

} // namespace velmo
