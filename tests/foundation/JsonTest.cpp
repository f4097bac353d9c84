#include <gtest/gtest.h>

#include "velmo/foundation/Json.h"

using namespace velmo;

TEST(Json, RoundTripKeepsOrderAndKinds) {
    const std::string text = R"({"b":1,"a":[true,null,2.5,"x"],"c":{"z":-3}})";
    const Value v = Json::parse(text);
    EXPECT_EQ(Json::write(v), text);
}
