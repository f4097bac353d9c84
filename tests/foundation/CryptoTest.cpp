#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "velmo/foundation/Base64.h"
#include "velmo/foundation/Crypto.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Uuid.h"

using namespace velmo;

TEST(Crypto, DigestsMatchKnownVectors) {
    EXPECT_EQ(Crypto::md5Hex(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(Crypto::md5Hex("The quick brown fox jumps over the lazy dog"),
              "9e107d9d372bb6826bd81d3542a419d6");
    EXPECT_EQ(Crypto::hex(Crypto::sha256("abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Crypto, Md5OfAFileMatchesMd5OfItsBytes) {
    const auto dir = Files::makeTemporaryDirectory();
    std::string bytes(200'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 31);
    ASSERT_TRUE(Files::writeAtomically(dir / "f.bin", bytes));
    EXPECT_EQ(Crypto::md5HexOfFile(dir / "f.bin"), Crypto::md5Hex(bytes));
    EXPECT_FALSE(Crypto::md5HexOfFile(dir / "missing"));
    std::filesystem::remove_all(dir);
}

TEST(Crypto, AesCbcMatchesTheStandardVectorAndRoundTrips) {
    // NIST SP 800-38A F.2.5, first block.
    const auto bytes = [](std::string_view hex) {
        std::string out;
        for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
            out += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
        return out;
    };
    const std::string key = bytes("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
    const std::string iv = bytes("000102030405060708090a0b0c0d0e0f");
    const std::string plain = bytes("6bc1bee22e409f96e93d7e117393172a");
    const auto cipher = Crypto::aes256CbcEncrypt(plain, key, iv);
    ASSERT_TRUE(cipher);
    EXPECT_EQ(Crypto::hex(cipher->substr(0, 16)), "f58c4c04d6e5f1ba779eabfb5f7bfbd6");
    EXPECT_EQ(Crypto::aes256CbcDecrypt(*cipher, key, iv), plain);
    EXPECT_FALSE(Crypto::aes256CbcDecrypt("short", key, iv)) << "bad padding fails";
    EXPECT_FALSE(Crypto::aes256CbcEncrypt(plain, "short key", iv));
}

TEST(Base64, RoundTripsAndRejectsGarbage) {
    const struct {
        std::string plain, encoded;
    } cases[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {std::string("\0\xFF", 2), "AP8="}};
    for (const auto& c : cases) {
        EXPECT_EQ(Base64::encode(c.plain), c.encoded);
        EXPECT_EQ(Base64::decode(c.encoded), c.plain);
    }
    EXPECT_EQ(Base64::decode("Zm9v\nYmFy"), "foobar");
    EXPECT_FALSE(Base64::decode("Zm9"));
    EXPECT_FALSE(Base64::decode("Zm9*"));
}

TEST(Uuid, CanonicalTextInBothCases) {
    const std::string upper = Uuid::string();
    ASSERT_EQ(upper.size(), 36u);
    EXPECT_EQ(upper[14], '4') << "random UUIDs are version 4";
    EXPECT_EQ(upper.find_first_of("abcdef"), std::string::npos);
    EXPECT_EQ(Uuid::lowercaseString().find_first_of("ABCDEF"), std::string::npos);
    EXPECT_NE(Uuid::string(), Uuid::string());
}

TEST(Uuid, ForkedChildDoesNotRepeatItsParent) {
    (void)Uuid::string(); // fill this thread's batch before forking
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const std::string id = Uuid::string();
        (void)!::write(fds[1], id.data(), id.size());
        ::_exit(0);
    }
    ::close(fds[1]);
    char buffer[36];
    ASSERT_EQ(::read(fds[0], buffer, sizeof buffer), 36);
    ::close(fds[0]);
    ::waitpid(child, nullptr, 0);
    EXPECT_NE(std::string(buffer, 36), Uuid::string());
}
