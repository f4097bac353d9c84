#pragma once

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

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& content);
/// Every path below `root`, relative, sorted; links are listed, not followed.
std::vector<std::string> treeOf(const std::filesystem::path& root);

} // namespace velmo::test
