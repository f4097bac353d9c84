#include "velmo/host/VVHostClientConfig.h"

#include <filesystem>
#include <system_error>

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

std::string temporaryFolder() {
    std::error_code ec;
    auto folder = std::filesystem::temp_directory_path(ec);
    if (ec) folder = "/tmp";
    return (folder / "velmo").string();
}

} // namespace

VVHostClientConfig::VVHostClientConfig(Values values)
    : VDClass("VVHostClientConfig", nullptr, nullptr), values_(std::move(values)) {}

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
