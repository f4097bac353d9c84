#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"

using namespace velmo;

TEST(Json, RoundTripKeepsOrderAndKinds) {
    const std::string text = R"({"b":1,"a":[true,null,2.5,"x"],"c":{"z":-3},"big":18446744073709551615})";
    const Value v = Json::parse(text);
    EXPECT_EQ(Json::write(v), text);
    EXPECT_EQ(v.dictionary().get("a").array()[0].kind(), Value::Kind::Bool);
    EXPECT_EQ(v.dictionary().get("b").kind(), Value::Kind::Int);
    EXPECT_EQ(v.dictionary().get("big").kind(), Value::Kind::UInt);
}

TEST(Json, NumbersAreWrittenInTheirShortestForm) {
    const struct {
        Value value;
        const char* text;
    } cases[] = {
        {Value(0.1f), "0.1"},
        {Value(0.1), "0.1"},
        {Value(1.0f / 3.0f), "0.33333334"},
        {Value(1.0 / 3.0), "0.3333333333333333"},
        {Value(1e21), "1e+21"},
        {Value(-0.0), "-0"},
        {Value(250.0f / 255.0f), "0.98039216"},
        {Value(static_cast<long long>(INT64_MIN)), "-9223372036854775808"},
        {Value(true), "true"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Json::write(c.value), c.text);
        // Reading the text back gives the same number (floats compare in their own precision).
        const Value back = Json::parse(c.text, Json::ReadOptions{.allowFragments = true});
        if (c.value.kind() == Value::Kind::Float) {
            EXPECT_EQ(back.floatValue(), c.value.floatValue());
        } else {
            EXPECT_EQ(back, c.value);
        }
    }
}

TEST(Json, NumbersReadAsTheirExactValue) {
    const struct {
        const char* text;
        Value value;
    } cases[] = {
        // A zero stays zero whatever its exponent.
        {"[0e-23]", Value(0.0)},
        {"[-0.000e-308]", Value(-0.0)},
        {"[0.0e-400]", Value(0.0)},
        // Below the smallest double: zero, with its sign.
        {"[1e-400]", Value(0.0)},
        {"[-2.4703282292062327e-324]", Value(-0.0)},
        {"[4.9406564584124654e-324]", Value(4.9406564584124654e-324)},
        {"[1.7976931348623157e308]", Value(1.7976931348623157e308)},
        {"[0.1]", Value(0.1)},
        // Integers beyond 64 bits become doubles.
        {"[-9223372036854775809]", Value(-9223372036854775809.0)},
        {"[18446744073709551616]", Value(18446744073709551616.0)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const Value read = Json::parse(c.text).array()[0];
        EXPECT_EQ(read.kind(), Value::Kind::Double);
        EXPECT_EQ(read, c.value);
        EXPECT_EQ(std::signbit(read.doubleValue()), std::signbit(c.value.doubleValue()));
    }
}

TEST(Json, PrettyFormUsesTwoSpaces) {
    EXPECT_EQ(Json::write(Json::parse(R"({"a":[1]})"), true), "{\n  \"a\": [\n    1\n  ]\n}");
}

TEST(Json, BadInputIsAnErrorWithItsOffset) {
    const struct {
        const char* name;
        std::string text;
        std::size_t offset;
    } cases[] = {
        {"truncated object", R"({"a": [1, 2)", 11},
        {"trailing garbage", R"({"a":1} x)", 8},
        {"bytes behind a zero byte", std::string("{}\0{}", 5), 2},
        {"bare word", "nul", 3},
        {"empty text", "", 0},
        {"unterminated string", R"(["abc)", 5},
        {"invalid UTF-8", "[\"\xC3\x28\"]", 2},
        {"lone continuation byte", "[\"\x80\"]", 2},
        {"overlong encoding", "[\"\xC0\xAF\"]", 2},
        {"NaN is not JSON", "[NaN]", 1},
        {"comments are not JSON", "[1 /* x */]", 3},
        {"top-level fragment", "42", 0},
        {"past the largest double", "[1.7976931348623159e308]", 1},
        {"lone low surrogate", R"(["\udc00"])", 9},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        try {
            Json::parse(c.text);
            ADD_FAILURE() << "parsed";
        } catch (const JsonParseError& e) {
            EXPECT_EQ(e.offset(), c.offset) << e.what();
            EXPECT_FALSE(e.reason().empty());
        }
        EXPECT_TRUE(Json::tryParse(c.text).isNil());
    }
}

TEST(Json, NestingIsLimited) {
    const auto nested = [](int depth) {
        return std::string(static_cast<std::size_t>(depth), '[') +
               std::string(static_cast<std::size_t>(depth), ']');
    };
    EXPECT_NO_THROW(Json::parse(nested(512)));
    EXPECT_THROW(Json::parse(nested(513)), JsonParseError);
    // Far deeper than any stack would take: refused, not a crash.
    JsonParseError error("", 0);
    EXPECT_TRUE(Json::tryParse(nested(1'000'000), {}, &error).isNil());
    EXPECT_EQ(error.offset(), 512u);
    EXPECT_THROW(Json::parse(nested(3), Json::ReadOptions{.maxDepth = 2}), JsonParseError);
}

TEST(Json, FragmentsOnlyWhenAsked) {
    EXPECT_EQ(Json::parse("\"x\"", Json::ReadOptions{.allowFragments = true}), Value("x"));
    EXPECT_TRUE(Json::parse("null", Json::ReadOptions{.allowFragments = true}).isNull());
}

TEST(Json, EscapesAndUnicodeSurvive) {
    const std::string text = R"(["\u00e9\ud83d\ude00\n\"\\", "a\u0000b"])";
    const Value v = Json::parse(text);
    EXPECT_EQ(v.array()[0].stringView(), "\xC3\xA9\xF0\x9F\x98\x80\n\"\\");
    EXPECT_EQ(v.array()[1].stringView(), std::string_view("a\0b", 3));
    EXPECT_EQ(Json::parse(Json::write(v)), v);
}

TEST(Json, WritingRefusesWhatJsonCannotHold) {
    EXPECT_THROW(Json::write(Value(std::numeric_limits<double>::quiet_NaN())), JsonWriteError);
    EXPECT_THROW(Json::write(Value(Array{Value(std::numeric_limits<float>::infinity())})), JsonWriteError);
    EXPECT_THROW(Json::write(Value::bytes("x")), JsonWriteError);
    EXPECT_THROW(Json::write(Value(std::string("\xFF"))), JsonWriteError);
    EXPECT_FALSE(Json::isValidJSONObject(Value("fragment")));
    EXPECT_FALSE(Json::isValidJSONObject(Value(Array{Value::bytes("x")})));
    EXPECT_FALSE(Json::isValidJSONObject(Value(Array{Value(std::string("\xFF"))})))
        << "as the writer judges it";
    EXPECT_TRUE(Json::isValidJSONObject(Value(Dictionary{{"a", Value::null()}})));
}
