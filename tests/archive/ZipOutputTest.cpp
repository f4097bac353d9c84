#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "ArchiveTestSupport.h"
#include "velmo/archive/VPZipArchive.h"
#include "velmo/archive/ZipOutput.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

namespace {

/// What goes into an archive: a file of the tree (or its copy under another name), a folder, or
/// bytes, at a compression level.
struct Item {
    enum Kind { File, Folder, Data } kind;
    std::string name;
    std::string source{};
    int level = -1;
};

/// Text that deflates well, mixed with noise that doesn't, `size` bytes.
std::string sample(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes;
    bytes.reserve(size);
    while (bytes.size() < size) {
        if (random() % 4 == 0) {
            for (int i = 0; i < 64; ++i)
                bytes += static_cast<char>(random());
        } else {
            bytes += "layer frame state transition ";
        }
    }
    bytes.resize(size);
    return bytes;
}

/// Writes the archive on `threads` workers.
void write(const fs::path& archive, const fs::path& tree, const std::vector<Item>& items, unsigned threads,
           const std::string& password = "", bool aes = true) {
    ZipOutput output(threads);
    ASSERT_EQ(output.open(archive.string()), ZipResult::Ok);
    for (const Item& item : items) {
        ZipOutput::EntryOptions options{item.level, password, aes, 0, 0100644};
        ZipResult result = ZipResult::Ok;
        switch (item.kind) {
        case Item::File:
            result = output.addFile(item.name, (tree / item.source).string(), options);
            break;
        case Item::Folder:
            options.mode = 040755;
            result = output.addDirectory(item.name, options);
            break;
        case Item::Data:
            result = output.addData(item.name, item.source, options);
            break;
        }
        ASSERT_EQ(result, ZipResult::Ok) << item.name << ": " << output.lastMessage();
    }
    ASSERT_EQ(output.close(), ZipResult::Ok) << output.lastMessage();
}

fs::path makeTree(const fs::path& root) {
    writeFile(root / "a.txt", "alpha");
    writeFile(root / "empty", "");
    writeFile(root / "sub/text.txt", sample(300000, 1));
    writeFile(root / "big.bin", sample(3000000, 2));
    for (int i = 0; i < 40; ++i)
        writeFile(root / ("many/" + std::to_string(i)), sample(20000 + 997 * i, 10 + i));
    return root;
}

} // namespace

// The archive is the same, entry for entry and byte for byte, for any number of workers and entries.
TEST(ZipOutputParallel, WritesTheSameArchiveOnAnyNumberOfWorkers) {
    TemporaryFolder tmp;
    const fs::path tree = makeTree(tmp / "tree");
    std::vector<Item> many;
    for (int i = 0; i < 40; ++i)
        many.push_back({Item::File, "many/" + std::to_string(i), "many/" + std::to_string(i), i % 10});
    struct Case {
        std::string name;
        unsigned threads;
        std::vector<Item> items;
    };
    const std::vector<Case> cases = {
        {"nothing", 2, {}},
        {"one file", 2, {{Item::File, "a.txt", "a.txt"}}},
        {"more workers than entries",
         8,
         {{Item::File, "a.txt", "a.txt"}, {Item::File, "t", "sub/text.txt", 9}}},
        {"empty file, folders, stored, levels, a big file",
         3,
         {{Item::File, "empty", "empty"},
          {Item::Folder, "folder"},
          {Item::File, "stored.txt", "sub/text.txt", 0},
          {Item::File, "fast.txt", "sub/text.txt", 1},
          {Item::File, "big.bin", "big.bin"},
          {Item::Folder, "other/"},
          {Item::File, "best.txt", "sub/text.txt", 9}}},
        {"a name written twice",
         2,
         {{Item::File, "x", "a.txt"}, {Item::File, "y", "empty"}, {Item::File, "x", "sub/text.txt"}}},
        {"many entries at every level", 2, many},
    };
    for (const auto& c : cases) {
        const fs::path serial = tmp / (c.name + " serial.zip");
        const fs::path parallel = tmp / (c.name + " parallel.zip");
        write(serial, tree, c.items, 1);
        write(parallel, tree, c.items, c.threads);
        // Compared whole, not printed: the difference is binary.
        EXPECT_TRUE(readFile(parallel) == readFile(serial)) << c.name;
        if (!c.items.empty()) {
            ASSERT_TRUE(VPZipArchive::unzipFileAtPath(parallel.string(), (tmp / c.name).string())) << c.name;
        }
    }
    EXPECT_EQ(readFile(tmp / "many entries at every level/many/39"), readFile(tree / "many/39"));
    EXPECT_EQ(readFile(tmp / "a name written twice/x"), readFile(tree / "sub/text.txt"));
}

// Encryption stays with the library, which draws new salts each time: the entries' methods and
// what they decrypt to are compared.
TEST(ZipOutputParallel, EncryptedEntriesReadAsTheLibraryWritesThem) {
    TemporaryFolder tmp;
    const fs::path tree = makeTree(tmp / "tree");
    const std::vector<Item> items = {{Item::File, "a.txt", "a.txt"},
                                     {Item::File, "empty", "empty"},
                                     {Item::Folder, "folder"},
                                     {Item::Data, "data.txt", sample(100000, 3)},
                                     {Item::File, "stored.txt", "sub/text.txt", 0},
                                     {Item::File, "big.bin", "big.bin", 9}};
    for (const bool aes : {true, false}) {
        const std::string kind = aes ? "aes" : "traditional";
        const fs::path serial = tmp / (kind + "-serial.zip");
        const fs::path parallel = tmp / (kind + "-parallel.zip");
        write(serial, tree, items, 1, "pässword", aes);
        write(parallel, tree, items, 2, "pässword", aes);
        const auto names = entryNames(serial);
        ASSERT_EQ(entryNames(parallel), names) << kind;
        for (const auto& name : names) {
            const StoredEntry expected = storedEntry(serial, name);
            const StoredEntry actual = storedEntry(parallel, name);
            EXPECT_EQ(actual.encryptionMethod, expected.encryptionMethod) << kind << " " << name;
            EXPECT_EQ(actual.compressionMethod, expected.compressionMethod) << kind << " " << name;
        }
        EXPECT_FALSE(VPZipArchive::isPasswordValidForArchiveAtPath(parallel.string(), "password")) << kind;
        EXPECT_TRUE(VPZipArchive::isPasswordValidForArchiveAtPath(parallel.string(), "pässword")) << kind;
        for (const auto& archive : {serial, parallel}) {
            ASSERT_TRUE(VPZipArchive::unzipFileAtPath(archive.string(), (tmp / archive.stem()).string(), true,
                                                      "pässword", nullptr))
                << archive;
        }
        const fs::path out = tmp / parallel.stem();
        EXPECT_EQ(treeOf(out), treeOf(tmp / serial.stem())) << kind;
        EXPECT_EQ(readFile(out / "big.bin"), readFile(tree / "big.bin")) << kind;
        EXPECT_EQ(readFile(out / "data.txt"), sample(100000, 3)) << kind;
    }
}

// A file that fails while the workers are ahead of the writing, or a progress handler that
// throws, leaves the archive that was there as it was, and nothing else.
TEST(ZipOutputParallel, AFailureMidwayLeavesNothingBehind) {
    enum class Fault { FileTurnsIntoAFolder, HandlerThrows };
    struct Case {
        Fault fault;
        unsigned threads;
    };
    for (const Case& c : {Case{Fault::FileTurnsIntoAFolder, 1}, Case{Fault::FileTurnsIntoAFolder, 2},
                          Case{Fault::HandlerThrows, 1}, Case{Fault::HandlerThrows, 3}}) {
        const std::string label =
            std::string(c.fault == Fault::HandlerThrows ? "throws" : "folder") + std::to_string(c.threads);
        TemporaryFolder tmp;
        const fs::path tree = makeTree(tmp / "tree");
        writeFile(tmp / "out/old.zip", "the archive that was there");
        ZipOutput output(c.threads);
        ASSERT_EQ(output.open((tmp / "out/old.zip").string()), ZipResult::Ok);
        for (int i = 0; i < 40; ++i) {
            ASSERT_EQ(output.addFile(std::to_string(i), (tree / "many" / std::to_string(i)).string(), {}),
                      ZipResult::Ok);
        }
        if (c.fault == Fault::FileTurnsIntoAFolder) {
            // It still opens, so it is not left out as a missing file is: reading it fails.
            fs::remove(tree / "many/20");
            fs::create_directory(tree / "many/20");
            EXPECT_NE(output.close(), ZipResult::Ok) << label;
        } else {
            EXPECT_THROW(output.close([](std::uint64_t written, std::uint64_t) {
                if (written == 5) throw std::runtime_error("stop");
            }),
                         std::runtime_error)
                << label;
        }
        EXPECT_FALSE(output.isOpen()) << label;
        EXPECT_EQ(treeOf(tmp / "out"), (std::vector<std::string>{"old.zip"})) << label;
        EXPECT_EQ(readFile(tmp / "out/old.zip"), "the archive that was there") << label;
    }
}
