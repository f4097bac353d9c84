#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>
#include <set>

#include <optional>

#include <sys/stat.h>

#include "ArchiveTestSupport.h"
#include "velmo/archive/VPZipArchive.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kLink = 0120777;

/// Writes down what a run tells it, in order.
class RecordingDelegate : public VPZipArchiveDelegate {
public:
    std::vector<std::string> events;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
    std::set<Operation> declined;
    std::int64_t refuseIndex = -1;

    bool respondsTo(Operation operation) const override { return declined.count(operation) == 0; }
    void zipArchiveWillUnzipArchiveAtPath(const std::string&, const VPZipArchiveInfo& info) override {
        events.push_back("willArchive " + std::to_string(info.numberOfEntries));
    }
    void zipArchiveProgressEvent(std::uint64_t loaded, std::uint64_t total) override {
        progress.emplace_back(loaded, total);
    }
    bool zipArchiveShouldUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                          const VPZipFileInfo&) override {
        events.push_back("should " + std::to_string(index));
        return index != refuseIndex;
    }
    void zipArchiveWillUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                        const VPZipFileInfo&) override {
        events.push_back("will " + std::to_string(index));
    }
    void zipArchiveDidUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                       const VPZipFileInfo& info) override {
        events.push_back("did " + std::to_string(index) + " " + info.rawName);
    }
    void zipArchiveDidUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                       const std::string& path) override {
        events.push_back("didPath " + std::to_string(index) + " " + fs::path(path).filename().string());
    }
    void zipArchiveDidUnzipArchiveAtPath(const std::string&, const VPZipArchiveInfo&,
                                         const std::string&) override {
        events.push_back("didArchive");
    }
};

/// Tells the entries written from those that failed, as a command counting them would.
class CountingDelegate : public VPZipArchiveDelegate {
public:
    std::map<std::int64_t, VPErrorPtr> failed;
    std::vector<std::int64_t> written;

    void zipArchiveDidFailToUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                             const VPZipFileInfo&, const VPErrorPtr& error) override {
        EXPECT_EQ(failed.count(index), 0u) << "told once for an entry";
        failed[index] = error;
    }
    void zipArchiveDidUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                       const std::string&) override {
        if (failed.count(index) == 0) written.push_back(index);
    }
};

struct Outcome {
    bool ok = false;
    VPErrorPtr error;
};

Outcome unzip(const fs::path& archive, const fs::path& destination, bool overwrite = true,
              const std::string& password = "", int nested = 0, VPZipArchiveDelegate* delegate = nullptr,
              const VPZipUnzipLimits& limits = {}, bool preserve = true) {
    Outcome run;
    run.ok = VPZipArchive::unzipFileAtPath(archive.string(), destination.string(), preserve, overwrite,
                                           nested, password, &run.error, delegate, {}, {}, limits);
    return run;
}

std::int64_t codeOf(const VPErrorPtr& error) {
    return error ? error->code() : 0;
}

/// The description with the reason, as a user is shown it.
std::string messageOf(const VPErrorPtr& error) {
    const Value& reason = error->userInfo().get(kNSLocalizedFailureReasonErrorKey);
    return error->localizedDescription() + (reason.isString() ? " (" + reason.str() + ")" : "");
}

} // namespace

TEST(VPZipArchiveUnzip, EmptyArchiveSucceedsWithNoFiles) {
    TemporaryFolder tmp;
    fs::create_directories(tmp / "empty");
    ASSERT_TRUE(VPZipArchive::createZipFileAtPathWithContentsOfDirectory((tmp / "e.zip").string(),
                                                                         (tmp / "empty").string()));
    const auto size = fs::file_size(tmp / "e.zip");
    EXPECT_EQ(size, 22u);
    RecordingDelegate delegate;
    const Outcome run = unzip(tmp / "e.zip", tmp / "out", true, "", 0, &delegate);
    EXPECT_TRUE(run.ok);
    EXPECT_EQ(run.error, nullptr);
    EXPECT_TRUE(treeOf(tmp / "out").empty());
    EXPECT_EQ(delegate.events, (std::vector<std::string>{"willArchive 0", "didArchive"}));
    EXPECT_EQ(delegate.progress,
              (std::vector<std::pair<std::uint64_t, std::uint64_t>>{{0, size}, {size, size}}));
}

TEST(VPZipArchiveUnzip, MacMetadataIsSkippedAndNotCountedAfterItsNameIsRead) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "m.zip",
                     {{.name = "__MACOSX/._a", .content = "fork"}, {.name = "a", .content = "A"}});
    RecordingDelegate delegate;
    std::vector<std::string> handled;
    VPErrorPtr error;
    const bool ok = VPZipArchive::unzipFileAtPath(
        (tmp / "m.zip").string(), (tmp / "out").string(), true, true, "", &error, &delegate,
        [&](const std::string& name, const VPZipFileInfo&, std::int64_t index, std::int64_t total) {
            handled.push_back(name + " " + std::to_string(index) + "/" + std::to_string(total));
        },
        {});
    EXPECT_TRUE(ok);
    EXPECT_EQ(treeOf(tmp / "out"), (std::vector<std::string>{"a"}));
    EXPECT_EQ(delegate.events, (std::vector<std::string>{"willArchive 2", "should 0", "will 0", "should 1",
                                                         "will 1", "did 1 a", "didPath 1 a", "didArchive"}));
    EXPECT_EQ(handled, (std::vector<std::string>{"a 1/2"}));
}

TEST(VPZipArchiveUnzip, DosNamesUseBackslashesAndCodePage437) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "dos.zip",
                     {{.name = "a\\b", .content = "ab", .hostSystem = 0, .mode = 0},
                      {.name = "caf\x82.txt", .content = "c", .hostSystem = 0, .mode = 0, .cp437Name = true},
                      {.name = "dir\\", .content = "", .hostSystem = 0, .mode = 0}});
    ASSERT_TRUE(unzip(tmp / "dos.zip", tmp / "out").ok);
    EXPECT_EQ(treeOf(tmp / "out"), (std::vector<std::string>{"a", "a/b", "caf\xC3\xA9.txt", "dir"}));
    EXPECT_EQ(readFile(tmp / "out/a/b"), "ab");
    EXPECT_TRUE(fs::is_directory(tmp / "out/dir"));
    // DOS archives carry no permissions: the owner can still read and write.
    EXPECT_EQ(fs::status(tmp / "out/a/b").permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(VPZipArchiveUnzip, TraversingNamesLandInsideTheDestination) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "t.zip", {{.name = "../../evil.txt", .content = "1"},
                                     {.name = "/abs.txt", .content = "2"},
                                     {.name = "a/../../b.txt", .content = "3"},
                                     {.name = "..", .content = "4"}});
    const fs::path destination = tmp / "x/dest";
    ASSERT_TRUE(unzip(tmp / "t.zip", destination).ok);
    EXPECT_EQ(treeOf(destination), (std::vector<std::string>{"3", "abs.txt", "b.txt", "evil.txt"}));
    EXPECT_EQ(treeOf(tmp / "x"),
              (std::vector<std::string>{"dest", "dest/3", "dest/abs.txt", "dest/b.txt", "dest/evil.txt"}));
    EXPECT_FALSE(fs::exists(tmp / "evil.txt"));
}

TEST(VPZipArchiveUnzip, SymbolicLinksKeepTheirTargets) {
    TemporaryFolder tmp;
    const std::vector<TestEntry> links = {{.name = "rel", .content = "target.txt", .mode = kLink},
                                          {.name = "abs", .content = "/etc/hostname", .mode = kLink},
                                          {.name = "sub/up", .content = "../../outside", .mode = kLink}};
    std::vector<TestEntry> entries = links;
    entries.push_back({.name = "target.txt", .content = "t"});
    // Links come from Unix hosts alone; an OS X entry of the link type is a file holding the target.
    entries.push_back({.name = "darwin", .content = "target.txt", .hostSystem = 19, .mode = kLink});
    writeTestArchive(tmp / "l.zip", entries);
    const Outcome run = unzip(tmp / "l.zip", tmp / "out");
    ASSERT_TRUE(run.ok);
    EXPECT_EQ(run.error, nullptr);
    for (const auto& link : links) {
        ASSERT_TRUE(fs::is_symlink(tmp / "out" / link.name)) << link.name;
        EXPECT_EQ(fs::read_symlink(tmp / "out" / link.name).string(), link.content);
    }
    EXPECT_EQ(readFile(tmp / "out/rel"), "t");
    EXPECT_FALSE(fs::is_symlink(tmp / "out/darwin"));
    EXPECT_EQ(readFile(tmp / "out/darwin"), "target.txt");
}

TEST(VPZipArchiveUnzip, NothingIsWrittenThroughALinkThatLeavesTheDestination) {
    TemporaryFolder tmp;
    fs::create_directories(tmp / "outside");
    const std::pair<const char*, std::string> targets[] = {{"absolute", (tmp / "outside").string()},
                                                           {"relative", "../outside"}};
    for (const auto& [what, target] : targets) {
        writeTestArchive(tmp / "bad.zip", {{.name = "link", .content = target, .mode = kLink},
                                           {.name = "link/file", .content = "escaped"},
                                           {.name = "link/deeper/", .content = ""}});
        const Outcome run = unzip(tmp / "bad.zip", tmp / what);
        EXPECT_FALSE(run.ok) << what;
        EXPECT_EQ(codeOf(run.error), -6) << what;
        EXPECT_TRUE(treeOf(tmp / "outside").empty()) << what;
    }
}

TEST(VPZipArchiveUnzip, LinksInsideTheDestinationCanBeWrittenThrough) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "in.zip", {{.name = "real/", .content = ""},
                                      {.name = "link", .content = "real", .mode = kLink},
                                      {.name = "link/file", .content = "ok"},
                                      {.name = "real/deeper/file", .content = "deep"}});
    // Relative and absolute destinations alike, the relative one not existing yet.
    for (const fs::path& out : {tmp / "out", fs::relative(tmp / "relative/out")}) {
        ASSERT_TRUE(out.is_absolute() || !fs::exists(out));
        const Outcome run = unzip(tmp / "in.zip", out);
        ASSERT_TRUE(run.ok) << out << ": " << (run.error ? run.error->description() : "");
        EXPECT_EQ(readFile(out / "real/file"), "ok");
        EXPECT_EQ(readFile(out / "real/deeper/file"), "deep");
    }
}

TEST(VPZipArchiveUnzip, AnExistingLinkAtAFilesPathIsReplacedNeverFollowed) {
    TemporaryFolder tmp;
    writeFile(tmp / "outside/secret.txt", "original");
    writeTestArchive(tmp / "v.zip", {{.name = "victim", .content = "new"}});
    for (const bool overwrite : {false, true}) {
        const fs::path out = tmp / (overwrite ? "over" : "keep");
        fs::create_directories(out);
        fs::create_symlink(tmp / "outside/secret.txt", out / "victim");
        ASSERT_TRUE(unzip(tmp / "v.zip", out, overwrite).ok);
        EXPECT_EQ(readFile(tmp / "outside/secret.txt"), "original");
        EXPECT_EQ(fs::is_symlink(out / "victim"), !overwrite);
    }
    EXPECT_EQ(readFile(tmp / "over/victim"), "new");
}

TEST(VPZipArchiveUnzip, NestedArchivesUnpackBesideThemselvesWhileTheLevelIsNotZero) {
    TemporaryFolder tmp;
    writeFile(tmp / "deep.txt", "inside");
    ASSERT_TRUE(
        VPZipArchive::createZipFileAtPath((tmp / "deep.zip").string(), {(tmp / "deep.txt").string()}));
    writeTestArchive(tmp / "middle.zip", {{.name = "deep.zip", .content = readFile(tmp / "deep.zip")},
                                          {.name = "mid.txt", .content = "mid"}});
    writeTestArchive(tmp / "outer.zip", {{.name = "sub/middle.ZIP", .content = readFile(tmp / "middle.zip")},
                                         {.name = "top.txt", .content = "top"}});
    struct Case {
        int level;
        std::vector<std::string> tree;
    };
    const std::vector<std::string> everything = {"sub", "sub/deep.txt", "sub/mid.txt", "top.txt"};
    const Case cases[] = {
        {0, {"sub", "sub/middle.ZIP", "top.txt"}},
        {1, {"sub", "sub/deep.zip", "sub/mid.txt", "top.txt"}},
        {2, everything},
        {-1, everything},
        {-7, everything},
    };
    for (const auto& c : cases) {
        const fs::path out = tmp / ("level" + std::to_string(c.level));
        ASSERT_TRUE(unzip(tmp / "outer.zip", out, true, "", c.level).ok) << c.level;
        EXPECT_EQ(treeOf(out), c.tree) << c.level;
    }
    EXPECT_EQ(readFile(tmp / "level-1/sub/deep.txt"), "inside");

    // Every depth has a bound: 40 archives one inside the other unpack 32 deep, not further.
    fs::path chain = tmp / "deep.zip";
    for (int i = 0; i < 40; ++i) {
        const fs::path next = tmp / ("chain" + std::to_string(i) + ".zip");
        writeTestArchive(next, {{.name = "c.zip", .content = readFile(chain), .store = true}});
        chain = next;
    }
    // Each holds "c.zip", which takes its holder's place and stays when it is not unpacked.
    ASSERT_TRUE(unzip(chain, tmp / "chain", true, "", -1).ok);
    EXPECT_EQ(treeOf(tmp / "chain"), (std::vector<std::string>{"c.zip"}));
    EXPECT_EQ(readFile(tmp / "chain/c.zip"), readFile(tmp / "chain6.zip"));
}

TEST(VPZipArchiveUnzip, AnEntryThatCannotBeWrittenFailsAloneAndTheRunGoesOn) {
    TemporaryFolder tmp;
    std::string deep;
    for (int i = 0; i < 25; ++i)
        deep += std::string(200, 'd') + "/";
    writeTestArchive(tmp / "long.zip", {{.name = "first.txt", .content = "1"},
                                        {.name = "dir/" + std::string(300, 'n') + ".txt", .content = "x"},
                                        {.name = deep + "file.txt", .content = "x"},
                                        {.name = "link", .content = std::string(5000, 't'), .mode = kLink},
                                        {.name = "last.txt", .content = "2"}});
    CountingDelegate delegate;
    const Outcome run = unzip(tmp / "long.zip", tmp / "out", true, "", 0, &delegate);
    ASSERT_TRUE(run.ok);
    EXPECT_EQ(treeOf(tmp / "out"), (std::vector<std::string>{"first.txt", "last.txt"}));
    EXPECT_EQ(delegate.written, (std::vector<std::int64_t>{0, 4}));
    ASSERT_EQ(delegate.failed.size(), 3u);
    for (const auto& [index, error] : delegate.failed) {
        ASSERT_NE(error, nullptr) << index;
        EXPECT_EQ(error->domain(), kNSPOSIXErrorDomain) << index;
        EXPECT_EQ(error->code(), ENAMETOOLONG) << index;
        EXPECT_EQ(messageOf(error).find("outside"), std::string::npos) << messageOf(error);
        EXPECT_LT(messageOf(error).size(), 1000u) << "long names are shortened in messages";
    }
    // As for any link that could not be made, the run reports it.
    EXPECT_EQ(run.error, delegate.failed[3]);
}

TEST(VPZipArchiveUnzip, AnEntryThatFailsTheRunNamesItselfAndLeavesNoFile) {
    TemporaryFolder tmp;
    std::string noise(200000, '\0');
    std::mt19937 random(7);
    for (auto& c : noise)
        c = static_cast<char>(random());
    const auto archiveWith = [&](const std::string& file, const TestEntry& bad, auto damage) {
        writeTestArchive(tmp / file, {{.name = "good.txt", .content = "good"}, bad, {.name = "after.txt"}});
        std::string bytes = readFile(tmp / file);
        // The entry's local header ends with its name, which first appears there.
        damage(bytes, bytes.find("bad.txt") - 30);
        writeFile(tmp / file, bytes);
    };
    const std::string text(200, 'b');
    archiveWith("crc.zip", {.name = "bad.txt", .content = text, .store = true},
                [&](std::string& b, std::size_t) { b[b.find(text) + 100] ^= 1; });
    // The deflated data opens with a block of the reserved type.
    archiveWith("inflate.zip", {.name = "bad.txt", .content = text}, [&](std::string& b, std::size_t header) {
        const auto u16 = [&](std::size_t at) {
            return static_cast<unsigned char>(b[at]) | static_cast<unsigned char>(b[at + 1]) << 8;
        };
        b[header + 30 + u16(header + 26) + u16(header + 28)] = '\x07';
    });
    archiveWith("big.zip", {.name = "bad.txt", .content = noise, .store = true},
                [](std::string&, std::size_t) {});

    struct Case {
        std::string archive;
        std::int64_t outCode;
        std::int64_t told;
    };
    const Case cases[] = {
        {"crc.zip", -3, -3},
        // A read failure is no error of the run's own; the delegate still hears which entry it was.
        {"inflate.zip", 0, -4},
        {"big.zip", -5, -5},
    };
    for (const auto& c : cases) {
        const fs::path out = tmp / ("out-" + c.archive);
        writeFile(out / "bad.txt", "old");
        CountingDelegate delegate;
        Outcome run;
        {
            std::optional<FileSizeLimit> limit;
            if (c.archive == "big.zip") limit.emplace(64 * 1024);
            run = unzip(tmp / c.archive, out, true, "", 0, &delegate);
        }
        EXPECT_FALSE(run.ok) << c.archive;
        EXPECT_EQ(codeOf(run.error), c.outCode) << c.archive;
        EXPECT_EQ(treeOf(out), (std::vector<std::string>{"bad.txt", "good.txt"})) << c.archive;
        EXPECT_EQ(readFile(out / "bad.txt"), "old") << c.archive;
        ASSERT_EQ(delegate.failed.count(1), 1u) << c.archive;
        const VPErrorPtr& told = delegate.failed[1];
        EXPECT_EQ(codeOf(told), c.told) << c.archive;
        EXPECT_NE(messageOf(told).find("bad.txt"), std::string::npos) << messageOf(told);
        if (run.error) {
            EXPECT_EQ(run.error, told) << c.archive;
        }
    }
}

TEST(VPZipArchiveUnzip, OverwriteOffKeepsExistingFilesAndSucceeds) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "o.zip", {{.name = "a.txt", .content = "new"}, {.name = "b.txt", .content = "b"}});
    for (const bool overwrite : {false, true}) {
        const fs::path out = tmp / (overwrite ? "over" : "keep");
        writeFile(out / "a.txt", "old");
        const Outcome run = unzip(tmp / "o.zip", out, overwrite);
        EXPECT_TRUE(run.ok);
        EXPECT_EQ(run.error, nullptr);
        EXPECT_EQ(readFile(out / "a.txt"), overwrite ? "new" : "old");
        EXPECT_EQ(readFile(out / "b.txt"), "b");
    }
}

TEST(VPZipArchiveUnzip, PasswordsForAesAndTraditionalEncryption) {
    TemporaryFolder tmp;
    for (const bool aes : {true, false}) {
        const fs::path archive = tmp / (aes ? "aes.zip" : "trad.zip");
        writeTestArchive(archive,
                         {{.name = "plain.txt", .content = "p"},
                          {.name = "s.txt", .content = "secret text", .password = "pw", .aes = aes}});
        const std::string what = aes ? "AES" : "traditional";
        EXPECT_TRUE(VPZipArchive::isFilePasswordProtectedAtPath(archive.string())) << what;

        struct Case {
            std::string password;
            bool valid;
        };
        for (const Case& c : {Case{"pw", true}, Case{"wrong", false}, Case{"", false}}) {
            VPErrorPtr error = VPZipArchive::errorWithCode(VPZipArchiveErrorCode::InvalidArguments);
            EXPECT_EQ(VPZipArchive::isPasswordValidForArchiveAtPath(archive.string(), c.password, &error),
                      c.valid)
                << what << " '" << c.password << "'";
            EXPECT_EQ(error, nullptr) << what;
            const fs::path out = tmp / (what + "-" + c.password);
            const Outcome run = unzip(archive, out, true, c.password);
            EXPECT_EQ(run.ok, c.valid) << what << " '" << c.password << "'";
            if (c.valid) {
                EXPECT_EQ(readFile(out / "s.txt"), "secret text");
            } else {
                EXPECT_EQ(codeOf(run.error), -2);
                EXPECT_EQ(run.error->localizedDescription(), "failed to open file in zip file");
            }
        }
    }
    writeTestArchive(tmp / "open.zip", {{.name = "a", .content = "a"}});
    EXPECT_FALSE(VPZipArchive::isFilePasswordProtectedAtPath((tmp / "open.zip").string()));
    EXPECT_TRUE(VPZipArchive::isPasswordValidForArchiveAtPath((tmp / "open.zip").string(), "any"));

    // Damage is no wrong password: an empty entry whose recorded checksum isn't 0 fails on its
    // first read, under the right password.
    writeTestArchive(tmp / "damaged.zip", {{.name = "e", .store = true, .password = "pw", .aes = false}});
    std::string bytes = readFile(tmp / "damaged.zip");
    bytes[bytes.find("PK\1\2") + 16] = 1;
    writeFile(tmp / "damaged.zip", bytes);
    VPErrorPtr error;
    EXPECT_FALSE(VPZipArchive::isPasswordValidForArchiveAtPath((tmp / "damaged.zip").string(), "pw", &error));
    EXPECT_EQ(codeOf(error), -4);
}

TEST(VPZipArchiveUnzip, DamagedAndMissingArchivesFailWithTheirCodes) {
    TemporaryFolder tmp;
    std::string content(200, 'x');
    for (std::size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<char>('a' + i % 26);
    writeTestArchive(tmp / "good.zip", {{.name = "data.txt", .content = content, .store = true}});
    std::string bytes = readFile(tmp / "good.zip");

    std::string corrupted = bytes;
    const auto at = corrupted.find(content);
    ASSERT_NE(at, std::string::npos);
    corrupted[at + 100] ^= 0x01;
    writeFile(tmp / "crc.zip", corrupted);
    writeFile(tmp / "truncated.zip", bytes.substr(0, bytes.size() / 2));

    struct Case {
        std::string archive;
        std::string destination;
        std::int64_t code;
        std::string description;
        bool opens;
    };
    const Case cases[] = {
        {"crc.zip", "out", -3, "crc check failed for file", true},
        {"truncated.zip", "out", -1, "failed to open zip file", false},
        {"missing.zip", "out", -1, "failed to open zip file", false},
        {"good.zip", "", -6, "received invalid argument(s)", false},
        {"good.zip", "crc.zip", -6, "received invalid argument(s)", true},
        {"missing.zip", "crc.zip", -1, "failed to open zip file", false},
        {"", "out", -6, "received invalid argument(s)", false},
    };
    for (const auto& c : cases) {
        std::string completedPath = "unset";
        bool completedOk = true;
        VPErrorPtr completedError;
        VPErrorPtr error;
        const std::string archive = c.archive.empty() ? "" : (tmp / c.archive).string();
        const std::string destination = c.destination.empty() ? "" : (tmp / c.destination).string();
        const bool ok =
            VPZipArchive::unzipFileAtPath(archive, destination, true, true, "", &error, nullptr, {},
                                          [&](const std::string& path, bool succeeded, const VPErrorPtr& e) {
                                              completedPath = path;
                                              completedOk = succeeded;
                                              completedError = e;
                                          });
        EXPECT_FALSE(ok) << c.archive;
        ASSERT_NE(error, nullptr) << c.archive;
        EXPECT_EQ(error->domain(), kVPZipArchiveErrorDomain);
        EXPECT_EQ(error->code(), c.code) << c.archive;
        EXPECT_EQ(error->localizedDescription(), c.description) << c.archive;
        EXPECT_FALSE(completedOk);
        EXPECT_EQ(completedError, error);
        EXPECT_EQ(completedPath, c.opens ? archive : "") << c.archive;
    }
    VPErrorPtr error;
    EXPECT_EQ(VPZipArchive::payloadSizeForArchiveAtPath((tmp / "truncated.zip").string(), &error), 0u);
    EXPECT_EQ(codeOf(error), -1);
    EXPECT_EQ(VPZipArchive::payloadSizeForArchiveAtPath((tmp / "good.zip").string(), &error), 200u);
    EXPECT_EQ(error, nullptr);
}

TEST(VPZipArchiveUnzip, DelegateCanCancelAndUnansweredOperationsAreNotCalled) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "d.zip", {{.name = "a", .content = "a"}, {.name = "b", .content = "b"}});
    const auto size = fs::file_size(tmp / "d.zip");

    RecordingDelegate refusing;
    refusing.refuseIndex = 1;
    const Outcome cancelled = unzip(tmp / "d.zip", tmp / "cancelled", true, "", 0, &refusing);
    EXPECT_FALSE(cancelled.ok);
    EXPECT_EQ(cancelled.error, nullptr);
    EXPECT_EQ(treeOf(tmp / "cancelled"), (std::vector<std::string>{"a"}));
    ASSERT_FALSE(refusing.progress.empty());
    EXPECT_NE(refusing.progress.back(), std::make_pair(std::uint64_t(size), std::uint64_t(size)));

    RecordingDelegate quiet;
    quiet.refuseIndex = 0;
    quiet.declined = {VPZipArchiveDelegate::Operation::ShouldUnzipFile,
                      VPZipArchiveDelegate::Operation::DidUnzipFileToPath,
                      VPZipArchiveDelegate::Operation::ProgressEvent};
    ASSERT_TRUE(unzip(tmp / "d.zip", tmp / "quiet", true, "", 0, &quiet).ok);
    EXPECT_EQ(quiet.events, (std::vector<std::string>{"willArchive 2", "will 0", "did 0 a", "will 1",
                                                      "did 1 b", "didArchive"}));
    EXPECT_TRUE(quiet.progress.empty());
}

TEST(VPZipArchiveUnzip, AttributesComeFromTheEntriesWhenPreserved) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "a.zip", {{.name = "tool", .content = "#!", .mode = 0104755},
                                     {.name = "readonly", .content = "r", .mode = 0100444},
                                     {.name = "dir/", .content = "", .mode = 040755},
                                     {.name = "dir/x", .content = "x"}});
    std::tm tm{};
    tm.tm_year = 120, tm.tm_mon = 5, tm.tm_mday = 15, tm.tm_hour = 10, tm.tm_min = 20, tm.tm_sec = 30,
    tm.tm_isdst = -1;
    const std::time_t entryTime = std::mktime(&tm);
    const auto mtime = [](const fs::path& p) {
        struct stat st;
        ::lstat(p.c_str(), &st);
        return st.st_mtime;
    };
    const auto mode = [](const fs::path& p) {
        struct stat st;
        ::lstat(p.c_str(), &st);
        return st.st_mode & 07777;
    };

    ASSERT_TRUE(unzip(tmp / "a.zip", tmp / "kept").ok);
    EXPECT_EQ(mode(tmp / "kept/tool"), 0755u) << "set-id bits are dropped";
    EXPECT_EQ(mode(tmp / "kept/readonly"), 0644u);
    EXPECT_EQ(mtime(tmp / "kept/tool"), entryTime);
    EXPECT_EQ(mtime(tmp / "kept/dir"), entryTime);

    ASSERT_TRUE(unzip(tmp / "a.zip", tmp / "plain", true, "", 0, nullptr, {}, false).ok);
    EXPECT_NE(mtime(tmp / "plain/tool"), entryTime);
    EXPECT_EQ(mode(tmp / "plain/tool") & 0111, 0u);
}

TEST(VPZipArchiveUnzip, SizeLimitsStopTheRunBeforeAnythingIsWritten) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "big.zip", {{.name = "one", .content = std::string(1000, 'a')},
                                       {.name = "two", .content = std::string(1000, 'b')}});
    struct Case {
        VPZipUnzipLimits limits;
        bool ok;
    };
    const Case cases[] = {
        {{.maxEntrySize = 999}, false},
        {{.maxTotalSize = 1999}, false},
        {{.maxEntrySize = 1000, .maxTotalSize = 2000}, true},
    };
    int n = 0;
    for (const auto& c : cases) {
        const fs::path out = tmp / std::to_string(n++);
        const Outcome run = unzip(tmp / "big.zip", out, true, "", 0, nullptr, c.limits);
        EXPECT_EQ(run.ok, c.ok) << n;
        if (!c.ok) {
            EXPECT_EQ(codeOf(run.error), -7);
            EXPECT_FALSE(fs::exists(out));
        }
    }
}

TEST(VPZipArchiveUnzip, InnerArchivesShareTheRunsLimits) {
    TemporaryFolder tmp;
    writeFile(tmp / "inner.txt", std::string(1000, 'i'));
    ASSERT_TRUE(
        VPZipArchive::createZipFileAtPath((tmp / "inner.zip").string(), {(tmp / "inner.txt").string()}));
    const std::string inner = readFile(tmp / "inner.zip");
    writeTestArchive(tmp / "outer.zip", {{.name = "one/inner.zip", .content = inner, .store = true},
                                         {.name = "two/inner.zip", .content = inner, .store = true}});
    // Both inner archives are written, then what each holds: all of it counts toward the total.
    const std::uint64_t everything = 2 * inner.size() + 2000;
    struct Case {
        std::uint64_t maxTotal;
        bool ok;
        std::vector<std::string> tree;
    };
    const Case cases[] = {
        {everything, true, {"one", "one/inner.txt", "two", "two/inner.txt"}},
        // The second inner archive declares more than is left: refused before it writes anything.
        {everything - 1, false, {"one", "one/inner.txt", "two", "two/inner.zip"}},
    };
    for (const auto& c : cases) {
        const fs::path out = tmp / std::to_string(c.maxTotal);
        const Outcome run = unzip(tmp / "outer.zip", out, true, "", 1, nullptr, {.maxTotalSize = c.maxTotal});
        EXPECT_EQ(run.ok, c.ok) << c.maxTotal;
        EXPECT_EQ(codeOf(run.error), c.ok ? 0 : -7) << c.maxTotal;
        EXPECT_EQ(treeOf(out), c.tree) << c.maxTotal;
    }
}

TEST(VPZipArchiveUnzip, EveryShortFormUnpacksWithItsDefaults) {
    TemporaryFolder tmp;
    writeTestArchive(tmp / "f.zip", {{.name = "x", .content = "new", .mode = 0100750}});
    const std::string archive = (tmp / "f.zip").string();
    RecordingDelegate delegate;
    VPErrorPtr error;
    bool completed = false;
    const VPZipArchive::CompletionHandler completion = [&](const std::string&, bool ok, const VPErrorPtr&) {
        completed = ok;
    };
    using Form = std::function<bool(const std::string& destination)>;
    const std::vector<std::pair<const char*, Form>> forms = {
        {"path", [&](const std::string& d) { return VPZipArchive::unzipFileAtPath(archive, d); }},
        {"overwrite",
         [&](const std::string& d) { return VPZipArchive::unzipFileAtPath(archive, d, true, "", &error); }},
        {"delegate",
         [&](const std::string& d) { return VPZipArchive::unzipFileAtPath(archive, d, &delegate); }},
        {"overwrite delegate",
         [&](const std::string& d) {
             return VPZipArchive::unzipFileAtPath(archive, d, true, "", &error, &delegate);
         }},
        {"overwrite handlers",
         [&](const std::string& d) {
             return VPZipArchive::unzipFileAtPath(archive, d, true, "", {}, completion) && completed;
         }},
        {"handlers",
         [&](const std::string& d) {
             return VPZipArchive::unzipFileAtPath(archive, d, {}, completion) && completed;
         }},
        {"preserve",
         [&](const std::string& d) {
             return VPZipArchive::unzipFileAtPath(archive, d, true, true, "", &error, &delegate);
         }},
        {"preserve handlers",
         [&](const std::string& d) {
             return VPZipArchive::unzipFileAtPath(archive, d, true, true, "", &error, &delegate, {},
                                                  completion) &&
                    completed;
         }},
    };
    for (const auto& [what, form] : forms) {
        completed = false;
        const fs::path out = tmp / what;
        writeFile(out / "x", "old");
        EXPECT_TRUE(form(out.string())) << what;
        EXPECT_EQ(readFile(out / "x"), "new") << what;
        EXPECT_EQ(fs::status(out / "x").permissions(), static_cast<fs::perms>(0750)) << what;
    }
}
