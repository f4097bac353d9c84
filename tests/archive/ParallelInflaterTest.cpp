#include <gtest/gtest.h>

#include <random>

#include "ArchiveTestSupport.h"
#include "velmo/archive/ParallelInflater.h"
#include "velmo/archive/VPZipArchive.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

namespace {

std::string noise(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (auto& c : bytes)
        c = static_cast<char>(random() % 5 ? 'a' + random() % 3 : random());
    return bytes;
}

/// Everything entry `index` comes to, read `piece` bytes at a time, and how the reading ended.
std::pair<std::string, ZipResult> readAll(ParallelInflater& inflater, std::size_t index, std::size_t piece) {
    std::string bytes;
    std::vector<char> buffer(piece);
    for (;;) {
        std::size_t count = 0;
        const ZipResult result = inflater.read(index, buffer.data(), buffer.size(), count);
        if (result != ZipResult::Ok || count == 0) return {bytes, result};
        bytes.append(buffer.data(), count);
    }
}

} // namespace

// Read in order, each entry comes back whole, stored or deflated, encrypted either way, whether the
// workers may keep everything ahead of the reader or a single byte.
TEST(ParallelInflater, EachEntryComesBackInOrderWhateverTheRoomAhead) {
    TemporaryFolder tmp;
    const std::vector<TestEntry> entries = {
        {.name = "empty"},
        {.name = "folder/"},
        {.name = "text", .content = std::string(300000, 't')},
        {.name = "stored", .content = noise(70000, 1), .store = true},
        {.name = "big", .content = noise(1500000, 2)},
        {.name = "aes", .content = noise(90000, 3), .password = "pw"},
        {.name = "traditional", .content = noise(90000, 4), .password = "pw", .aes = false},
        {.name = "last", .content = "the end"},
    };
    writeTestArchive(tmp / "a.zip", entries);
    struct Case {
        unsigned threads;
        std::size_t room;
        std::size_t piece;
    };
    for (const Case& c : {Case{1, ReadAhead::kDefaultBufferLimit, 4096}, Case{2, 1, 100},
                          Case{3, 70000, 65536}, Case{16, 1, 1 << 20}}) {
        ParallelInflater inflater((tmp / "a.zip").string(), entries.size(), std::string("pw"), c.threads,
                                  c.room);
        ASSERT_FALSE(inflater.unstaffed());
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const auto [bytes, result] = readAll(inflater, i, c.piece);
            EXPECT_EQ(result, ZipResult::Ok) << c.threads << " threads, " << entries[i].name;
            EXPECT_TRUE(bytes == entries[i].content) << c.threads << " threads, " << entries[i].name;
        }
    }
}

// An entry fails alone, with the reason the library gives; entries the reader passes are given up;
// an archive that can't be opened leaves the inflater without workers.
TEST(ParallelInflater, FailuresSkipsAndArchivesThatDoNotOpen) {
    TemporaryFolder tmp;
    const std::string text(5000, 'b');
    writeTestArchive(tmp / "a.zip", {{.name = "first", .content = "1"},
                                     {.name = "damaged", .content = text, .store = true},
                                     {.name = "locked", .content = "secret", .password = "pw"},
                                     {.name = "skipped", .content = noise(400000, 5)},
                                     {.name = "last", .content = "last"}});
    std::string bytes = readFile(tmp / "a.zip");
    bytes[bytes.find(text) + 100] ^= 1;
    writeFile(tmp / "a.zip", bytes);

    ParallelInflater inflater((tmp / "a.zip").string(), 5, std::nullopt, 2, 1024);
    const auto damaged = readAll(inflater, 1, 512);
    EXPECT_EQ(damaged.first.size(), text.size()) << "the bytes come, the checksum fails at the end";
    EXPECT_EQ(damaged.second, ZipResult::CrcError);
    EXPECT_FALSE(inflater.lastMessage().empty());
    EXPECT_EQ(readAll(inflater, 2, 512).second, ZipResult::PasswordError);
    EXPECT_EQ(readAll(inflater, 4, 512), (std::pair<std::string, ZipResult>{"last", ZipResult::Ok}));
    std::size_t count = 0;
    char byte = 0;
    EXPECT_EQ(inflater.read(0, &byte, 1, count), ZipResult::ReadError) << "passed";

    EXPECT_TRUE(ParallelInflater((tmp / "missing.zip").string(), 3, std::nullopt, 2).unstaffed());
    ParallelInflater untouched((tmp / "a.zip").string(), 5, std::nullopt, 4, 1);
}

// The workers read the archive that was there when the run began, though an entry of the same name
// replaces it midway.
TEST(ParallelInflater, AnEntryCanReplaceTheArchiveItIsUnpackedFrom) {
    TemporaryFolder tmp;
    const std::string later = noise(2000000, 6);
    writeTestArchive(tmp / "self.zip", {{.name = "self.zip", .content = "not an archive"},
                                        {.name = "later.bin", .content = later},
                                        {.name = "last.txt", .content = "last"}});
    ASSERT_TRUE(VPZipArchive::unzipFileAtPath((tmp / "self.zip").string(), tmp.path().string()));
    EXPECT_EQ(readFile(tmp / "self.zip"), "not an archive");
    EXPECT_TRUE(readFile(tmp / "later.bin") == later);
    EXPECT_EQ(readFile(tmp / "last.txt"), "last");
}
