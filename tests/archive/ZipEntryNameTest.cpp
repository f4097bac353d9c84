#include <gtest/gtest.h>

#include "velmo/archive/ZipEntryName.h"

using velmo::ZipEntryName;

TEST(ZipEntryName, DecodesByHostFlagAndFallbacks) {
    struct Case {
        const char* what;
        std::string raw;
        std::uint8_t host;
        bool flagged;
        std::string expected;
    };
    const Case cases[] = {
        {"DOS name in code page 437", "caf\x82.txt", 0, false, "caf\xC3\xA9.txt"},
        {"DOS host but flagged UTF-8", "caf\xC3\xA9", 0, true, "caf\xC3\xA9"},
        {"unflagged UTF-8 bytes from DOS read as 437", "\xC3\xA9", 0, false, "\xE2\x94\x9C\xE2\x8C\x90"},
        {"Unix host, UTF-8", "caf\xC3\xA9", 3, false, "caf\xC3\xA9"},
        {"Unix host, not UTF-8: Windows-1252 guess", "caf\xE9", 3, false, "caf\xC3\xA9"},
        {"bytes no guess can read: hexadecimal", "a\x81\x8D", 3, false, "61818d"},
        {"plain ASCII", "dir/file.txt", 19, false, "dir/file.txt"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ZipEntryName::decode(c.raw, c.host, c.flagged), c.expected) << c.what;
    }
}

TEST(ZipEntryName, SanitizedPathNeverClimbsOutOfTheDestination) {
    const std::pair<std::string, std::string> cases[] = {
        {"../../etc/x", "etc/x"},
        {"a\\b", "a/b"},
        {"..\\..\\win.ini", "win.ini"},
        {"/etc/passwd", "etc/passwd"},
        {"//server/share", "server/share"},
        {"a/../../b", "b"},
        {"./a/./b/", "a/b/"},
        {"dir/", "dir/"},
        {"..", ""},
        {"a/b/../..", ""},
        {"%2e%2e/x", "%2e%2e/x"},
        {"a//b", "a/b"},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(ZipEntryName::sanitizedPath(name), expected) << name;
    }
}
