#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Value.h"

using namespace velmo;

TEST(Value, NilAndNullAreDifferentKinds) {
    EXPECT_TRUE(Value().isNil());
    EXPECT_TRUE(Value::null().isNull());
    EXPECT_NE(Value(), Value::null());
    EXPECT_TRUE(Value().isNone());
    EXPECT_TRUE(Value::null().isNone());
    EXPECT_TRUE(Value(Array()).isNil()) << "a nil container is no value";
}

TEST(Value, NumbersCompareByValueAcrossKinds) {
    const struct {
        Value a, b;
        bool equal;
    } cases[] = {
        {Value(1), Value(1.0), true},
        {Value(true), Value(1), true},
        {Value(false), Value(0.0), true},
        {Value(0.5f), Value(0.5), true},
        {Value(0.1f), Value(0.1), false}, // the widened float is not 0.1
        {Value(static_cast<unsigned long long>(UINT64_MAX)), Value(-1), false},
        {Value(static_cast<unsigned long long>(5)), Value(5), true},
        {Value("1"), Value(1), false},
        {Value(), Value(0), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.a == c.b, c.equal) << c.a.description() << " vs " << c.b.description();
}

TEST(Value, StringsShortAndLong) {
    for (std::size_t n : {0u, 1u, 13u, 14u, 15u, 100u}) {
        const std::string s(n, 'x');
        Value v(s);
        Value copy = v;
        EXPECT_EQ(copy.stringView(), s);
        EXPECT_EQ(copy, Value(s));
    }
    EXPECT_EQ(Value(3).stringView(), "") << "readers give empty answers for other kinds";
}

TEST(Value, ContainersShareUntilDeepCopied) {
    Array inner{Value(1)};
    Dictionary outer{{"list", Value(inner)}};
    Value shared(outer);
    Value alias = shared;
    alias.dictionary().get("list").array().push_back(Value(2));
    EXPECT_EQ(inner.size(), 2u) << "copies of a value share the container";

    Value deep = shared.deepCopy();
    deep.dictionary().get("list").array().push_back(Value(3));
    EXPECT_EQ(inner.size(), 2u);
    EXPECT_EQ(deep.dictionary().get("list").array().size(), 3u);
    EXPECT_FALSE(deep.dictionary().sameAs(outer));
}

TEST(Value, NilHandlesReadAsEmptyAndRefuseChanges) {
    Array nilArray;
    Dictionary nilDict;
    EXPECT_EQ(nilArray.size(), 0u);
    EXPECT_TRUE(nilArray[3].isNil());
    EXPECT_TRUE(nilDict.get("x").isNil());
    for (const Value& v : nilArray)
        ADD_FAILURE() << v.description();
    EXPECT_THROW(nilArray.push_back(Value(1)), std::logic_error);
    EXPECT_THROW(nilDict.set("x", Value(1)), std::logic_error);
    Array a = Array::create();
    EXPECT_THROW(a.push_back(Value()), std::invalid_argument) << "arrays never hold nil";
    EXPECT_THROW(a.insert(2, Value(1)), std::out_of_range);
}

TEST(Value, DictionaryKeepsInsertionOrderAndFindsInLargeOnes) {
    Dictionary d = Dictionary::create();
    constexpr int kCount = 5000;
    for (int i = kCount - 1; i >= 0; --i)
        d.set("key" + std::to_string(i), Value(i));
    ASSERT_EQ(d.size(), static_cast<std::size_t>(kCount));
    EXPECT_EQ(d.begin()->key.stringView(), "key4999");
    for (int i = 0; i < kCount; i += 97)
        EXPECT_EQ(d.get("key" + std::to_string(i)), Value(i));

    d.set("key10", Value("replaced"));
    EXPECT_EQ(d.size(), static_cast<std::size_t>(kCount)) << "replacing keeps one entry";
    EXPECT_EQ((d.begin() + (kCount - 1 - 10))->value, Value("replaced")) << "and its place";
    d.remove("key4999");
    EXPECT_FALSE(d.contains("key4999"));
    EXPECT_TRUE(d.contains("key0"));
    d.set("key0", Value());
    EXPECT_FALSE(d.contains("key0")) << "setting nil removes";
    EXPECT_EQ(d.size(), static_cast<std::size_t>(kCount - 2));
}

TEST(Value, DictionaryEqualityIgnoresOrder) {
    EXPECT_EQ(Value(Dictionary{{"a", Value(1)}, {"b", Value(2)}}),
              Value(Dictionary{{"b", Value(2.0)}, {"a", Value(1)}}));
    EXPECT_NE(Value(Dictionary{{"a", Value(1)}}), Value(Dictionary{{"a", Value(1)}, {"b", Value(2)}}));
    EXPECT_NE(Value(Array{Value(1), Value(2)}), Value(Array{Value(2), Value(1)}));
}

TEST(Value, SharedContainersSurviveConcurrentCopies) {
    Array shared{Value(std::string(50, 'x')), Value(Dictionary{{"k", Value(1)}})};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([shared] {
            for (int i = 0; i < 10000; ++i) {
                Value copy(shared);
                Value again = copy;
                (void)again.array()[0].stringView().size();
            }
        });
    }
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(shared.size(), 2u);
}

TEST(Value, DescriptionLooksLikeThePlatformsForm) {
    const Value v(Dictionary{{"name", Value("a b")}, {"n", Value(1)}, {"list", Value(Array{Value::null()})}});
    EXPECT_EQ(v.description(), "{\n    name = \"a b\";\n    n = 1;\n    list = (\n        <null>\n    );\n}");
}
