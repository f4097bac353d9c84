#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/foundation/SystemLog.h"

using namespace velmo;

TEST(SystemLog, LongMessagesAreCutWithAMarkAndNeverMidCharacter) {
    const std::string shortMessage(SystemLog::kMaxMessageLength, 'a');
    EXPECT_EQ(SystemLog::cut(shortMessage), shortMessage);
    // "é" is two bytes; the limit falls between them.
    const std::string accented = std::string(SystemLog::kMaxMessageLength - 1, 'a') + "\xC3\xA9" + "tail";
    EXPECT_EQ(SystemLog::cut(accented),
              std::string(SystemLog::kMaxMessageLength - 1, 'a') + " [... cut, 1029 bytes in all]");

    std::vector<std::string> lines;
    const auto previous = SystemLog::setSink([&](std::string_view line) { lines.emplace_back(line); });
    SystemLog::log(std::string(4'000'000, 'x'));
    SystemLog::setSink(previous);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].ends_with(" [... cut, 4000000 bytes in all]")) << "sinks get the cut line too";
    EXPECT_LT(lines[0].size(), SystemLog::kMaxMessageLength + 40);
}
