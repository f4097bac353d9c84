#pragma once

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace velmo::test {

/// A temporary folder that goes when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

/// Builds archives entry by entry with the ZIP library directly, so tests can make what the
/// wrapper never writes: DOS names, symbolic links, stored entries to damage.
struct TestEntry {
    std::string name{};
    std::string content{};
    std::uint8_t hostSystem = 3;
    /// POSIX mode with its type bits; 0120777 makes a symbolic link whose content is the target.
    std::uint32_t mode = 0100644;
    bool store = false;
    /// The name's bytes are code page 437, not UTF-8.
    bool cp437Name = false;
    std::string password{};
    bool aes = true;
};

void writeTestArchive(const std::filesystem::path& path, const std::vector<TestEntry>& entries);

/// Names of the archive's entries, in order, as stored.
std::vector<std::string> entryNames(const std::filesystem::path& archive);
/// The stored record of one entry: compression and encryption methods, attributes.
struct StoredEntry {
    std::uint16_t compressionMethod = 0;
    std::uint16_t encryptionMethod = 0;
    std::uint8_t hostSystem = 0;
    std::uint32_t externalAttributes = 0;
    bool utf8Flagged = false;
};
StoredEntry storedEntry(const std::filesystem::path& archive, const std::string& name);

/// An entry's record in the central directory, read from the archive's bytes: what the ZIP
/// library doesn't report (the whole version-made-by field, the general-purpose flags).
struct CentralRecord {
    std::string name;
    std::uint16_t versionMadeBy = 0;
    std::uint16_t flags = 0;
};
std::vector<CentralRecord> centralDirectory(const std::filesystem::path& archive);

/// While it lives, no file this process writes can grow past `bytes`: writes beyond fail with
/// EFBIG, as on a full disk, rather than raising SIGXFSZ.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::uint64_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    std::uint64_t previous_;
    void (*previousHandler_)(int);
};

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& content);
/// Every path below `root`, relative, sorted; links are listed, not followed.
std::vector<std::string> treeOf(const std::filesystem::path& root);

} // namespace velmo::test
