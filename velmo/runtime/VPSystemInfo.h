#pragma once

#include <filesystem>
#include <string>

namespace velmo {

/// What records say about the machine they come from.
class VPSystemInfo {
public:
    /// The system's version: "VERSION_ID" of the os-release file, or "BUILD_ID" on systems that
    /// have no version (rolling releases); empty when neither is there or the file can't be read.
    static std::string systemVersion(const std::filesystem::path& osRelease = "/etc/os-release");

    /// A stable identifier of the machine for this application: a SHA-256, in hex, of the machine id
    /// with the application's name, so the raw id never leaves the machine and other applications'
    /// identifiers can't be matched with ours. Empty when the machine has no id.
    static std::string machineIdentifier(const std::filesystem::path& machineId = "/etc/machine-id");
};

} // namespace velmo
