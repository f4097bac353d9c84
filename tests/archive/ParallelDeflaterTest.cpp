#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include <zlib.h>

#include "ArchiveTestSupport.h"
#include "velmo/archive/ParallelDeflater.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

namespace {

std::string inflateRaw(const std::string& compressed) {
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -MAX_WBITS), Z_OK);
    std::string out;
    char buffer[16384];
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
    stream.avail_in = static_cast<uInt>(compressed.size());
    int rc = Z_OK;
    do {
        stream.next_out = reinterpret_cast<Bytef*>(buffer);
        stream.avail_out = sizeof buffer;
        rc = inflate(&stream, Z_NO_FLUSH);
        out.append(buffer, sizeof buffer - stream.avail_out);
    } while (rc == Z_OK);
    EXPECT_EQ(rc, Z_STREAM_END);
    inflateEnd(&stream);
    return out;
}

/// `bytes` deflated in one go, raw, as archive entries are: memory level 8.
std::string deflateRaw(const std::string& bytes, int level) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(out.size() - stream.avail_out);
    deflateEnd(&stream);
    return out;
}

/// Everything input `index` comes to, read `piece` bytes at a time.
std::string readAll(ParallelDeflater& deflater, std::size_t index, std::size_t piece) {
    std::string compressed;
    std::vector<char> buffer(piece);
    for (std::int64_t n; (n = deflater.read(index, buffer.data(), buffer.size())) > 0;)
        compressed.append(buffer.data(), static_cast<std::size_t>(n));
    return compressed;
}

} // namespace

// Read in order, each input's bytes inflate back to it with its checksum and sizes, whether the
// workers may keep everything ahead of the reader or a single byte, which makes them take turns.
TEST(ParallelDeflater, EachInputComesBackInOrderWhateverTheRoomAhead) {
    TemporaryFolder tmp;
    std::mt19937 random(5);
    std::vector<std::string> contents = {"", "x", std::string(1 << 20, 'a'), {}, "the end"};
    for (int i = 0; i < 600000; ++i)
        contents[3] += static_cast<char>(random() % 7 ? random() % 16 : random());
    std::vector<ParallelDeflater::Input> inputs;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        const fs::path file = tmp / std::to_string(i);
        writeFile(file, contents[i] + "not read: past the size the entry was made with");
        inputs.push_back({file.string(), contents[i].size(), nullptr, static_cast<int>(1 + i * 2)});
    }
    inputs.push_back({"", 0, std::make_shared<const std::string>(contents[3]), 6});
    contents.push_back(contents[3]);

    struct Case {
        unsigned threads;
        std::size_t room;
        std::size_t piece;
    };
    for (const Case& c : {Case{1, ParallelDeflater::kDefaultBufferLimit, 8192}, Case{2, 1, 100},
                          Case{3, 70000, 65536}, Case{16, 1, 1 << 20}}) {
        ParallelDeflater deflater(inputs, c.threads, c.room);
        for (std::size_t i = 0; i < contents.size(); ++i) {
            const std::string compressed = readAll(deflater, i, c.piece);
            EXPECT_EQ(inflateRaw(compressed), contents[i]) << c.threads << " threads, input " << i;
            EXPECT_TRUE(compressed == deflateRaw(contents[i], inputs[i].level))
                << "the bytes of one deflate at memory level 8, input " << i;
            const auto result = deflater.result(i);
            EXPECT_EQ(result.size, contents[i].size());
            EXPECT_EQ(result.compressedSize, compressed.size());
            EXPECT_EQ(result.crc, crc32(0, reinterpret_cast<const Bytef*>(contents[i].data()),
                                        static_cast<uInt>(contents[i].size())));
        }
    }
}

// An input that fails fails alone; one the reader skips is given up; a deflater dropped with
// work left stops without waiting for it.
TEST(ParallelDeflater, FailuresSkipsAndAbandonedWork) {
    TemporaryFolder tmp;
    writeFile(tmp / "big", std::string(8 << 20, 'b'));
    writeFile(tmp / "small", "small");
    const std::vector<ParallelDeflater::Input> inputs = {
        {(tmp / "big").string(), 8u << 20, nullptr, 9}, {(tmp / "missing").string(), 10, nullptr, 6},
        {(tmp / "small").string(), 5, nullptr, 6},      {tmp.path().string(), 10, nullptr, 6},
        {(tmp / "big").string(), 8u << 20, nullptr, 1},
    };
    {
        ParallelDeflater deflater(inputs, 2, 1024);
        char byte;
        EXPECT_EQ(deflater.read(1, &byte, 1), -1) << "input 0 is given up unread";
        EXPECT_EQ(deflater.failure(1).error, ENOENT);
        EXPECT_TRUE(deflater.failure(1).opening);
        EXPECT_EQ(inflateRaw(readAll(deflater, 2, 3)), "small");
        EXPECT_EQ(deflater.read(3, &byte, 1), -1) << "a folder opens, and can't be read";
        EXPECT_EQ(deflater.failure(3).error, EISDIR);
        EXPECT_FALSE(deflater.failure(3).opening);
        EXPECT_EQ(deflater.read(0, &byte, 1), -1) << "passed";
        EXPECT_EQ(deflater.read(4, &byte, 1), 1);
    }
    ParallelDeflater untouched(inputs, 4, 1);
}
