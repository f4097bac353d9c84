#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>

#include <sys/stat.h>

#include "ArchiveTestSupport.h"
#include "velmo/archive/VPZipArchive.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

namespace {

constexpr std::uint16_t kStore = 0;
constexpr std::uint16_t kDeflate = 8;
constexpr std::uint16_t kTraditional = 1;
constexpr std::uint16_t kAes256 = 0x0103;

/// a.txt, sub/b.txt, sub/deeper/c.txt and an empty folder.
fs::path makeTree(const fs::path& root) {
    writeFile(root / "a.txt", "alpha");
    writeFile(root / "sub/b.txt", "bravo");
    writeFile(root / "sub/deeper/c.txt", "charlie");
    fs::create_directories(root / "empty");
    fs::permissions(root / "a.txt", static_cast<fs::perms>(0754));
    fs::last_write_time(root / "empty", fs::last_write_time(root / "empty") - std::chrono::hours(24 * 400));
    return root;
}

} // namespace

TEST(VPZipArchiveWrite, FilesGoInUnderTheirLastComponentAndAFailureDoesNotStopTheOthers) {
    TemporaryFolder tmp;
    makeTree(tmp / "tree");
    const std::vector<std::string> files = {(tmp / "tree/a.txt").string(), (tmp / "missing.txt").string(),
                                            (tmp / "tree/sub/b.txt").string()};
    VPErrorPtr error;
    std::vector<std::uint64_t> progress;
    EXPECT_FALSE(VPZipArchive::createZipFileAtPath((tmp / "f.zip").string(), files, -1, "", true,
                                                   [&](std::uint64_t done, std::uint64_t total) {
                                                       EXPECT_EQ(total, 3u);
                                                       progress.push_back(done);
                                                   },
                                                   &error));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), kNSPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);
    EXPECT_EQ(progress, (std::vector<std::uint64_t>{1, 2, 3}));
    EXPECT_EQ(entryNames(tmp / "f.zip"), (std::vector<std::string>{"a.txt", "b.txt"}));

    ASSERT_TRUE(VPZipArchive::unzipFileAtPath((tmp / "f.zip").string(), (tmp / "out").string()));
    EXPECT_EQ(readFile(tmp / "out/a.txt"), "alpha");
    EXPECT_EQ(fs::status(tmp / "out/a.txt").permissions(), static_cast<fs::perms>(0754));
}

// Released assets are flattened to their last path component, so two of them can share a name.
TEST(VPZipArchiveWrite, AFileOfANameAlreadyWrittenSucceedsAndTakesTheEarlierPlace) {
    TemporaryFolder tmp;
    writeFile(tmp / "one/logo.png", "first");
    writeFile(tmp / "two/logo.png", "second");
    writeFile(tmp / "two/other.txt", "other");
    fs::permissions(tmp / "two/logo.png", static_cast<fs::perms>(0740));
    const std::vector<std::string> files = {(tmp / "one/logo.png").string(), (tmp / "two/other.txt").string(),
                                            (tmp / "two/logo.png").string()};
    ASSERT_TRUE(VPZipArchive::createZipFileAtPath((tmp / "plain.zip").string(), files));
    std::uint64_t entries = 0;
    ASSERT_TRUE(
        VPZipArchive::createZipFileAtPath((tmp / "counted.zip").string(), files, -1, "pw", true, {}, nullptr,
                                          [&](std::uint64_t, std::uint64_t total) { entries = total; }));
    EXPECT_EQ(entries, 2u) << "entries are counted, not paths";
    for (const char* archive : {"plain", "counted"}) {
        const fs::path path = tmp / (std::string(archive) + ".zip");
        EXPECT_EQ(entryNames(path), (std::vector<std::string>{"other.txt", "logo.png"})) << archive;
        const fs::path out = tmp / archive;
        ASSERT_TRUE(VPZipArchive::unzipFileAtPath(path.string(), out.string(), true, "pw", nullptr));
        EXPECT_EQ(readFile(out / "logo.png"), "second") << archive;
        EXPECT_EQ(fs::status(out / "logo.png").permissions(), static_cast<fs::perms>(0740)) << archive;
    }

    // The same for every kind of entry written by an instance.
    VPZipArchive archive((tmp / "instance.zip").string());
    ASSERT_TRUE(archive.open());
    EXPECT_TRUE(archive.writeData("old", "data.bin", 0, "", true));
    EXPECT_TRUE(archive.writeFolderAtPath((tmp / "one").string(), "folder", ""));
    EXPECT_TRUE(archive.writeFileAtPath((tmp / "one/logo.png").string(), "data.bin", ""));
    EXPECT_TRUE(archive.writeFolderAtPath((tmp / "two").string(), "folder", ""));
    ASSERT_TRUE(archive.close());
    EXPECT_EQ(entryNames(tmp / "instance.zip"), (std::vector<std::string>{"data.bin", "folder/"}));
    EXPECT_EQ(storedEntry(tmp / "instance.zip", "data.bin").compressionMethod, kDeflate);
}

// Version made by 0x13xx (OS X) on every entry, the UTF-8 flag (bit 11) on every name that needs
// it: the ZIP library decides the low byte, and leaves the flag off plain ASCII names.
TEST(VPZipArchiveWrite, EntriesAreMadeByOSXAndNamesFlaggedUtf8) {
    TemporaryFolder tmp;
    writeFile(tmp / "caf\xC3\xA9.txt", "file");
    VPZipArchive archive((tmp / "h.zip").string());
    ASSERT_TRUE(archive.open());
    ASSERT_TRUE(archive.writeFile((tmp / "caf\xC3\xA9.txt").string(), ""));
    ASSERT_TRUE(archive.writeData("data", "plain.txt", ""));
    ASSERT_TRUE(archive.writeData("data", "\xC3\xBC/secret", -1, "pw", true));
    ASSERT_TRUE(archive.writeData("data", "legacy", -1, "pw", false));
    ASSERT_TRUE(archive.writeFolderAtPath(tmp.path().string(), "\xE6\x96\x87", ""));
    ASSERT_TRUE(archive.close());
    const auto records = centralDirectory(tmp / "h.zip");
    ASSERT_EQ(records.size(), 5u);
    for (const auto& record : records) {
        const bool ascii = std::all_of(record.name.begin(), record.name.end(),
                                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        EXPECT_EQ(record.versionMadeBy >> 8, 19) << record.name;
        EXPECT_EQ((record.flags & 0x800) != 0, !ascii) << record.name;
        EXPECT_EQ(storedEntry(tmp / "h.zip", record.name).hostSystem, 19) << record.name;
    }
    EXPECT_EQ(storedEntry(tmp / "h.zip", "caf\xC3\xA9.txt").externalAttributes >> 16, 0100644u);
    EXPECT_EQ(storedEntry(tmp / "h.zip", "\xE6\x96\x87/").externalAttributes >> 28, 04u);
}

TEST(VPZipArchiveWrite, AnArchiveThatCannotBeWrittenLeavesNothingBehind) {
    TemporaryFolder tmp;
    std::string noise(200000, '\0');
    std::mt19937 random(11);
    for (auto& c : noise)
        c = static_cast<char>(random());
    writeFile(tmp / "in/noise.bin", noise);
    writeFile(tmp / "out/old.zip", "the archive that was there");
    VPErrorPtr error;
    {
        const FileSizeLimit limit(64 * 1024);
        EXPECT_FALSE(VPZipArchive::createZipFileAtPath(
            (tmp / "out/old.zip").string(), {(tmp / "in/noise.bin").string()}, -1, "", true, {}, &error));
        EXPECT_FALSE(VPZipArchive::createZipFileAtPath((tmp / "out/new.zip").string(),
                                                       {(tmp / "in/noise.bin").string()}));
    }
    EXPECT_EQ(error ? error->code() : 0, -5);
    EXPECT_EQ(treeOf(tmp / "out"), (std::vector<std::string>{"old.zip"}));
    EXPECT_EQ(readFile(tmp / "out/old.zip"), "the archive that was there");
}

TEST(VPZipArchiveWrite, DirectoriesWithAndWithoutTheirParent) {
    TemporaryFolder tmp;
    makeTree(tmp / "tree");
    fs::create_directories(tmp / "bare");
    struct Case {
        std::string directory;
        bool keepParent;
        std::vector<std::string> names;
    };
    const Case cases[] = {
        {"tree", false, {"a.txt", "empty/", "sub/b.txt", "sub/deeper/c.txt"}},
        {"tree", true, {"tree/a.txt", "tree/empty/", "tree/sub/b.txt", "tree/sub/deeper/c.txt"}},
        {"bare", true, {"bare/"}},
        {"bare", false, {}},
    };
    for (const auto& c : cases) {
        const fs::path archive = tmp / (c.directory + (c.keepParent ? "-kept.zip" : ".zip"));
        std::vector<std::uint64_t> paths;
        std::vector<std::uint64_t> written;
        EXPECT_TRUE(VPZipArchive::createZipFileAtPathWithContentsOfDirectory(
            archive.string(), (tmp / c.directory).string() + "/", c.keepParent, -1, "", true,
            [&](std::uint64_t done, std::uint64_t total) {
                EXPECT_FALSE(fs::exists(archive))
                    << "told as each path is added, before the archive is written";
                EXPECT_EQ(done, paths.size() + 1);
                paths.push_back(total);
            },
            nullptr,
            [&](std::uint64_t done, std::uint64_t total) {
                EXPECT_EQ(total, c.names.size());
                EXPECT_GT(done, written.empty() ? 0 : written.back());
                written.push_back(done);
            }));
        EXPECT_EQ(entryNames(archive), c.names) << archive;
        // Every path is counted, folders that hold something too; entries are counted apart.
        const std::size_t pathCount = c.directory == "tree" ? 6 : c.keepParent;
        EXPECT_EQ(paths, std::vector<std::uint64_t>(pathCount, pathCount)) << archive;
        if (!c.names.empty()) {
            EXPECT_EQ(written.back(), c.names.size()) << archive;
        }
    }
    ASSERT_TRUE(VPZipArchive::unzipFileAtPath((tmp / "tree-kept.zip").string(), (tmp / "out").string()));
    EXPECT_EQ(treeOf(tmp / "out/tree"), treeOf(tmp / "tree"));
    EXPECT_EQ(readFile(tmp / "out/tree/sub/deeper/c.txt"), "charlie");
}

TEST(VPZipArchiveWrite, AFileGoneBeforeCloseIsLeftOutAndTheRestWritten) {
    TemporaryFolder tmp;
    makeTree(tmp / "tree");
    VPZipArchive archive((tmp / "gone.zip").string());
    ASSERT_TRUE(archive.open());
    ASSERT_TRUE(archive.writeFile((tmp / "tree/a.txt").string(), ""));
    ASSERT_TRUE(archive.writeFile((tmp / "tree/sub/b.txt").string(), ""));
    ASSERT_TRUE(archive.writeData("data", "data.bin", ""));
    fs::remove(tmp / "tree/a.txt");
    EXPECT_FALSE(archive.close());
    ASSERT_NE(archive.lastError(), nullptr);
    EXPECT_EQ(archive.lastError()->code(), ENOENT);
    EXPECT_EQ(entryNames(tmp / "gone.zip"), (std::vector<std::string>{"b.txt", "data.bin"}));
    ASSERT_TRUE(VPZipArchive::unzipFileAtPath((tmp / "gone.zip").string(), (tmp / "out").string()));
    EXPECT_EQ(readFile(tmp / "out/b.txt"), "bravo");
}

TEST(VPZipArchiveWrite, AnExceptionFromTheCompressionHandlerReachesTheCallerAndLeavesNoArchive) {
    TemporaryFolder tmp;
    makeTree(tmp / "tree");
    EXPECT_THROW(VPZipArchive::createZipFileAtPathWithContentsOfDirectory(
                     (tmp / "t.zip").string(), (tmp / "tree").string(), false, -1, "", true, {}, nullptr,
                     [](std::uint64_t, std::uint64_t) { throw std::runtime_error("stop"); }),
                 std::runtime_error);
    EXPECT_FALSE(fs::exists(tmp / "t.zip"));
}

TEST(VPZipArchiveWrite, AnArchiveInsideTheDirectoryIsNotZippedIntoItself) {
    TemporaryFolder tmp;
    makeTree(tmp / "tree");
    writeFile(tmp / "tree/self.zip", "stale archive");
    ASSERT_TRUE(VPZipArchive::createZipFileAtPathWithContentsOfDirectory((tmp / "tree/self.zip").string(),
                                                                         (tmp / "tree").string()));
    const auto names = entryNames(tmp / "tree/self.zip");
    EXPECT_EQ(std::count(names.begin(), names.end(), "self.zip"), 0);
    EXPECT_EQ(names.size(), 4u);
}

TEST(VPZipArchiveWrite, PasswordsUseAesByDefaultAndTheTraditionalCipherWithoutIt) {
    TemporaryFolder tmp;
    makeTree(tmp / "tree");
    struct Case {
        bool aes;
        std::uint16_t method;
    };
    for (const Case& c : {Case{true, kAes256}, Case{false, kTraditional}}) {
        const fs::path archive = tmp / (c.aes ? "aes.zip" : "trad.zip");
        ASSERT_TRUE(VPZipArchive::createZipFileAtPathWithContentsOfDirectory(
            archive.string(), (tmp / "tree").string(), false, -1, "pässword", c.aes, {}));
        EXPECT_EQ(storedEntry(archive, "sub/b.txt").encryptionMethod, c.method);
        EXPECT_TRUE(VPZipArchive::isFilePasswordProtectedAtPath(archive.string()));
        EXPECT_TRUE(VPZipArchive::isPasswordValidForArchiveAtPath(archive.string(), "pässword"));
        EXPECT_FALSE(VPZipArchive::isPasswordValidForArchiveAtPath(archive.string(), "password"));
        const fs::path out = tmp / (c.aes ? "aes" : "trad");
        ASSERT_TRUE(VPZipArchive::unzipFileAtPath(archive.string(), out.string(), true, "pässword", nullptr));
        EXPECT_EQ(readFile(out / "sub/deeper/c.txt"), "charlie");
        const auto age = fs::last_write_time(tmp / "tree/empty") - fs::last_write_time(out / "empty");
        EXPECT_LT(std::chrono::abs(age), std::chrono::seconds(2)) << "folders keep their dates";

        VPZipArchive data((tmp / "data.zip").string());
        ASSERT_TRUE(data.open());
        ASSERT_TRUE(data.writeData("payload", "data.bin", -1, "pw", c.aes));
        ASSERT_TRUE(data.close());
        ASSERT_TRUE(
            VPZipArchive::unzipFileAtPath((tmp / "data.zip").string(), out.string(), true, "pw", nullptr));
        EXPECT_EQ(readFile(out / "data.bin"), "payload");
    }
    ASSERT_TRUE(VPZipArchive::createZipFileAtPath((tmp / "default.zip").string(),
                                                  {(tmp / "tree/a.txt").string()}, "pw"));
    EXPECT_EQ(storedEntry(tmp / "default.zip", "a.txt").encryptionMethod, kAes256);
}

TEST(VPZipArchiveWrite, CompressionLevelsAndUtf8Names) {
    TemporaryFolder tmp;
    const std::string text(100000, 'z');
    VPZipArchive archive((tmp / "levels.zip").string());
    ASSERT_TRUE(archive.open());
    EXPECT_TRUE(archive.writeData(text, "stored", 0, "", true));
    EXPECT_TRUE(archive.writeData(text, "default", -1, "", true));
    EXPECT_TRUE(archive.writeData(text, "best", 9, "", true));
    EXPECT_TRUE(archive.writeData("é", "caf\xC3\xA9/\xC3\xBC.txt", ""));
    EXPECT_FALSE(archive.writeData(text, "bad", 10, "", true));
    ASSERT_NE(archive.lastError(), nullptr);
    EXPECT_EQ(archive.lastError()->code(), -6);
    ASSERT_TRUE(archive.close());

    const fs::path path = tmp / "levels.zip";
    EXPECT_EQ(storedEntry(path, "stored").compressionMethod, kStore);
    EXPECT_EQ(storedEntry(path, "default").compressionMethod, kDeflate);
    EXPECT_EQ(storedEntry(path, "best").compressionMethod, kDeflate);
    EXPECT_TRUE(storedEntry(path, "caf\xC3\xA9/\xC3\xBC.txt").utf8Flagged);
    EXPECT_EQ(VPZipArchive::payloadSizeForArchiveAtPath(path.string()), 3 * text.size() + 2);
    ASSERT_TRUE(VPZipArchive::unzipFileAtPath(path.string(), (tmp / "out").string()));
    EXPECT_EQ(readFile(tmp / "out/caf\xC3\xA9/\xC3\xBC.txt"), "é");
    EXPECT_EQ(readFile(tmp / "out/best"), text);
}

TEST(VPZipArchiveWrite, InstanceNeedsAPathAndAnOpenArchive) {
    EXPECT_THROW(VPZipArchive(""), std::invalid_argument);
    TemporaryFolder tmp;
    writeFile(tmp / "f.txt", "f");
    {
        VPZipArchive archive((tmp / "i.zip").string());
        EXPECT_FALSE(archive.writeFile((tmp / "f.txt").string(), ""));
        EXPECT_EQ(archive.lastError()->code(), -6);
        EXPECT_FALSE(archive.close());
        ASSERT_TRUE(archive.open());
        EXPECT_TRUE(archive.writeFile((tmp / "f.txt").string(), ""));
        EXPECT_TRUE(archive.writeFileAtPath((tmp / "f.txt").string(), "renamed.txt", ""));
        EXPECT_TRUE(archive.writeFolderAtPath(tmp.path().string(), "folder", ""));
        EXPECT_FALSE(archive.writeFile(tmp.path().string(), "")) << "a folder is not a file";
        // Left open: the archive is written when the instance goes.
    }
    EXPECT_EQ(entryNames(tmp / "i.zip"), (std::vector<std::string>{"f.txt", "renamed.txt", "folder/"}));
    EXPECT_FALSE(VPZipArchive((tmp / "no/such/dir/x.zip").string()).open());
}

TEST(VPZipArchiveWrite, MoreEntriesThanTheClassicFormatHoldsUseZip64) {
    TemporaryFolder tmp;
    constexpr std::uint64_t kEntries = 65537;
    VPZipArchive archive((tmp / "many.zip").string());
    ASSERT_TRUE(archive.open());
    for (std::uint64_t i = 0; i < kEntries; ++i)
        ASSERT_TRUE(archive.writeData("x", std::to_string(i), 0, "", true));
    ASSERT_TRUE(archive.close());
    VPErrorPtr error;
    EXPECT_EQ(VPZipArchive::payloadSizeForArchiveAtPath((tmp / "many.zip").string(), &error), kEntries);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(entryNames(tmp / "many.zip").back(), std::to_string(kEntries - 1));
}
