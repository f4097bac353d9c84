#include <gtest/gtest.h>

#include "TestModel.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/PlatformColor.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/VPError.h"
#include "velmo/host/VVHost.h"
#include "velmo/model/values/ArrayExtensions.h"
#include "velmo/model/values/DataExtensions.h"
#include "velmo/model/values/DateExtensions.h"
#include "velmo/model/values/DictionaryExtensions.h"
#include "velmo/model/values/ImageExtensions.h"
#include "velmo/model/values/StringExtensions.h"

using namespace velmo;

namespace {
Value json(std::string_view text) {
    return Json::parse(text, Json::ReadOptions{.allowFragments = true});
}
} // namespace

TEST(DictionaryExtensions, DeepMerge) {
    const struct {
        const char *a, *b, *merged;
    } cases[] = {
        {R"({"a":{"x":1}})", R"({"a":{"y":2},"b":null})", R"({"a":{"x":1,"y":2},"b":null})"},
        {R"({"a":1})", R"({"a":{"y":2}})", R"({"a":{"y":2}})"},
        {R"({"a":{"y":2}})", R"({"a":1})", R"({"a":1})"},
        {R"({"a":[1,2]})", R"({"a":[3]})", R"({"a":[3]})"},
        {R"({})", R"({"a":{"b":{"c":1}}})", R"({"a":{"b":{"c":1}}})"},
    };
    for (const auto& c : cases) {
        const Dictionary a = json(c.a).dictionary();
        const Dictionary merged = dictionaryByExtendingWithDictionary(a, json(c.b).dictionary());
        EXPECT_EQ(Value(merged), json(c.merged)) << c.a << " + " << c.b;
        EXPECT_EQ(Value(a), json(c.a)) << "the receiver is left alone";
    }
    const Dictionary a = json(R"({"keep":{"x":1},"a":{}})").dictionary();
    const Dictionary merged = _vp_deepMergeWith(a, json(R"({"a":{"y":1}})").dictionary());
    EXPECT_TRUE(merged.get("keep").dictionary().sameAs(a.get("keep").dictionary()))
        << "untouched parts are shared";
}

TEST(DictionaryExtensions, PathsAndLookups) {
    const Dictionary d = json(R"({"a":{"b":{"c":1},"l":[10,{"z":"deep"}]},"x":2,"dot.key":3})").dictionary();
    EXPECT_EQ(allPaths(d), (std::vector<std::string>{"a", "x", "dot.key", "a.b", "a.l", "a.b.c"}));
    const struct {
        const char* path;
        Value expected;
    } lookups[] = {
        {"a.b.c", Value(1)}, {"a.l[0]", Value(10)},  {"a.l[1].z", Value("deep")},
        {"a.l[2]", Value()}, {"x.y", Value()},       {"dot\\.key", Value(3)},
        {"a[0]", Value()},   {"missing.b", Value()}, {"a.l.1.z", Value("deep")},
        {"a.l.z", Value()},
    };
    for (const auto& l : lookups)
        EXPECT_EQ(objectForPath(d, l.path), l.expected) << l.path;
    EXPECT_EQ(objectForPath(d, ""), Value(d));
}

TEST(DictionaryExtensions, TypedReaders) {
    const Dictionary d = json(R"({"s":"text","n":12,"f":1.5,"t":"TRUE","no":"yes","two":"2","zero":"0",
        "bad":"12abc","neg":" -3.5 ","d":{"k":1},"a":[1],"nul":null})")
                             .dictionary();
    EXPECT_EQ(_vp_stringForKey(d, "s"), Value("text"));
    EXPECT_EQ(_vp_stringForKey(d, "n"), Value("12"));
    EXPECT_EQ(_vp_stringForKey(d, "f"), Value("1.5"));
    EXPECT_TRUE(_vp_stringForKey(d, "d").isNil());
    Dictionary withData = Dictionary::create();
    withData.set("bytes", Value::bytes("utf8 \xC3\xA9"));
    withData.set("junk", Value::bytes("\xFF\xFE"));
    EXPECT_EQ(_vp_stringForKey(withData, "bytes"), Value("utf8 \xC3\xA9"));
    EXPECT_TRUE(_vp_stringForKey(withData, "junk").isNil());

    EXPECT_EQ(_vp_numberForKey(d, "two"), Value(2));
    EXPECT_EQ(_vp_numberForKey(d, "neg"), Value(-3.5));
    EXPECT_TRUE(_vp_numberForKey(d, "bad").isNil());
    EXPECT_TRUE(_vp_numberForKey(d, "a").isNil());

    const struct {
        const char* key;
        bool expected;
    } bools[] = {{"t", true}, {"no", false}, {"two", true},  {"zero", false},
                 {"n", true}, {"d", false},  {"nul", false}, {"missing", false}};
    for (const auto& b : bools)
        EXPECT_EQ(_vp_boolForKey(d, b.key), b.expected) << b.key;

    EXPECT_FALSE(_vp_dicForKey(d, "d").isNil());
    EXPECT_TRUE(_vp_dicForKey(d, "a").isNil());
    EXPECT_FALSE(_vp_arrayForKey(d, "a").isNil());
    EXPECT_FALSE(_vp_dicFromData(R"({"a":1})").isNil());
    EXPECT_TRUE(_vp_dicFromData("[1]").isNil());
    EXPECT_TRUE(_vp_dicFromData("{").isNil());
}

TEST(DictionaryExtensions, SettersThatSkipNothingness) {
    Dictionary d{{"keep", Value(1)}};
    setNonNil(d, Value(), "keep");
    setNonNil(d, Value(2), "new");
    EXPECT_EQ(d.get("keep"), Value(1));
    EXPECT_EQ(d.get("new"), Value(2));
    _vp_addEntriesFromDictionaryIgnoreNull(d, json(R"({"keep":null,"x":3})").dictionary());
    EXPECT_EQ(d.get("keep"), Value(1));
    EXPECT_EQ(d.get("x"), Value(3));
    EXPECT_FALSE(dictionaryByRemovingKey(d, "x").contains("x"));
    EXPECT_TRUE(d.contains("x"));
}

TEST(DictionaryExtensions, MutableFormsLogEachValue) {
    std::vector<std::string> lines;
    auto previous = SystemLog::setSink([&](std::string_view line) { lines.emplace_back(line); });
    Dictionary d{{"n", Value(1)}, {"o", Value(VPError::make("d", 1))}};
    const Dictionary same = vp_toMutable(d);
    SystemLog::setSink(previous);
    EXPECT_TRUE(same.sameAs(d));
    EXPECT_EQ(lines, (std::vector<std::string>{"valid: NSMutableDictionary", "valid: NSNumber",
                                               "invalid: NSError", "/////////////////////////"}));
}

TEST(ArrayExtensions, CopiesWithEdgeIndexes) {
    const Array a{Value(1), Value(2), Value(3)};
    EXPECT_TRUE(arrayByRemovingObjectAtIndex(a, 3).sameAs(a));
    EXPECT_EQ(Value(arrayByRemovingObjectAtIndex(a, 0)), json("[2,3]"));
    EXPECT_EQ(Value(arrayByRemovingObject(Array{Value(1), Value(2), Value(1.0)}, Value(1))), json("[2]"));
    EXPECT_EQ(Value(arrayByInsertingObject(Array{Value(1), Value(2)}, Value(9), 100)), json("[1,2,9]"));
    EXPECT_EQ(Value(arrayByInsertingObject(a, Value(9), 0)), json("[9,1,2,3]"));
    EXPECT_TRUE(arrayByReplacingObjectAtIndex(a, 5, Value(0)).sameAs(a));
    EXPECT_EQ(Value(arrayByReplacingObjectAtIndex(a, 1, Value(0))), json("[1,0,3]"));
    EXPECT_EQ(Value(arrayByReplacingObjectAtIndexWithIndex(a, 0, 2)), json("[3,2,1]"));
    EXPECT_TRUE(arrayByReplacingObjectAtIndexWithIndex(a, 0, 3).sameAs(a));
    EXPECT_EQ(Value(reversedArray(a)), json("[3,2,1]"));
    EXPECT_EQ(Value(a), json("[1,2,3]")) << "the receiver is never changed";
}

TEST(ArrayExtensions, FilterToClassTakesSubclasses) {
    test::registerTestModels();
    const Array mixed{Value(test::VDModelTestModel::create()), Value(1),
                      Value(test::VDModelTestSubModel::create()), Value(VPError::make("d", 1))};
    EXPECT_EQ(arrayByFilteringToClass(mixed, test::VDModelTestModel::classObject()).size(), 2u);
    EXPECT_EQ(arrayByFilteringToClass(mixed, test::VDModelTestSubModel::classObject()).size(), 1u);
    EXPECT_EQ(arrayByFilteringToClass(mixed, VDModel::classObject()).size(), 2u);
}

TEST(StringExtensions, LegalVariableNames) {
    const struct {
        const char *in, *out;
    } cases[] = {
        {"My big button", "myBigButton"},
        {"Rectangle 12", "rectangle12"},
        {"2 Cols", "a2Cols"},
        {"@#!", ""},
        {"MyButton", "myButton"},
        {"1", "a1"},
        {"", ""},
        {"  lead", "lead"},
        {"ALL CAPS here", "allCapsHere"},
        {"_private", "private"},
        {"-9 lives", "a9Lives"},
        {"caf\xC3\xA9 bar", "cafBar"},
        {"tab\tsep word", "tabSepWord"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(toLegalVarName(c.in), c.out) << '"' << c.in << '"';
}

TEST(StringExtensions, JsonPathComponents) {
    const struct {
        const char* path;
        const char* components;
    } cases[] = {
        {"a.b[2].c", R"(["a","b",2,"c"])"},
        {"a\\.b.c", R"(["a.b","c"])"},
        {"a..b", R"(["a","b"])"},
        {"a[1][2]", R"(["a",1,2])"},
        {"a]b", R"(["ab"])"},
        {".a", R"(["a"])"},
        {"", "[]"},
        {"\\.a", R"([".a"])"},
        {"a[x]", R"(["a"])"},
        {"a\\", R"(["a"])"},
        {"[-1]", R"(["-1"])"},
        {"a.[3]", R"(["a",3])"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Value(jsonPathComponents(c.path)), json(c.components)) << c.path;
}

TEST(StringExtensions, SmallOperations) {
    EXPECT_EQ(stringByRemovingCharsInString("h\xC3\xA9llo-world", "-\xC3\xA9"), "hlloworld");
    EXPECT_EQ(stringWithFirstCharCapitalized("hello World"), "Hello World");
    EXPECT_EQ(stringWithFirstCharCapitalized(""), "");
    EXPECT_EQ(stringWithFirstCharCapitalized("\xC3\xA9t\xC3\xA9"), "\xC3\x89t\xC3\xA9");
    EXPECT_EQ(stringByTrimmingBlanks(" \t\n x y \xC2\xA0\r\n"), "x y");
    EXPECT_EQ(stringByTrimmingBlanks("   "), "");
    EXPECT_TRUE(isValidEmail("a.b+c@example.co"));
    EXPECT_FALSE(isValidEmail("a@b"));
    EXPECT_FALSE(isValidEmail("a@b.c"));
    EXPECT_FALSE(isValidEmail(" a@b.com"));
    EXPECT_EQ(convertUnicode("caf\xC3\xA9 \\ \xF0\x9F\x98\x80"), "caf\\u00e9 \\\\ \\ud83d\\ude00");
    EXPECT_EQ(MD5(std::string_view("abc\0def", 7)), MD5("abc"));
    EXPECT_EQ(MD5("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(vnSha256("abc"), "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
    EXPECT_EQ(vnSha256("\xC3\xA9"), vnSha256(""));
    EXPECT_EQ(uuidString().size(), 36u);
}

TEST(StringExtensions, ColourFromHexSkipsTheFirstCharacter) {
    const struct {
        const char* text;
        double r, g, b;
    } cases[] = {
        {"#FF0000", 1, 0, 0},
        {"FF0000", 15 / 255.0, 0, 0},
        {"#00ff80", 0, 1, 128 / 255.0},
        {"#zz", 0, 0, 0},
        {"\xC3\xA9"
         "FF0000",
         1, 0, 0},
    };
    for (const auto& c : cases) {
        const PlatformColor color = _vp_colorFromHexString(c.text);
        EXPECT_EQ(color, PlatformColor::rgb(c.r, c.g, c.b, 1)) << c.text;
    }
    EXPECT_EQ(_vp_colorFromHexString(""), PlatformColor::clear());
}

TEST(DataExtensions, AesWithAPaddedKeyRoundTrips) {
    const auto cipher = AES256EncryptWithKey("secret text", "short key");
    ASSERT_TRUE(cipher);
    EXPECT_EQ(cipher->size(), 16u);
    EXPECT_EQ(AES256DecryptWithKey(*cipher, "short key"), "secret text");
    EXPECT_EQ(AES256DecryptWithKey(*cipher, std::string("short key") + std::string(23, '\0')), "secret text")
        << "the key is zero-filled to 32 bytes";
    EXPECT_NE(AES256DecryptWithKey(*cipher, "other key"), std::optional<std::string>("secret text"));
    EXPECT_EQ(MD5OfData(std::string(1, '\0')), "93b885adfe0da089cdf634904fd59f71");
}

TEST(DateExtensions, CalendarDaysIgnoreTheTimeOfDay) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const auto day = [](const char* text) { return *VDModel::dateFormatter().dateFromString(text); };
    EXPECT_EQ(daysBetweenDate(day("2024-01-01T23:59:00"), day("2024-01-02T00:01:00")), 1);
    EXPECT_EQ(daysBetweenDate(day("2024-03-01T00:00:00"), day("2024-02-28T23:00:00")), -2);
    EXPECT_EQ(daysBetweenDate(day("2024-01-01T01:00:00"), day("2024-01-01T22:00:00")), 0);
    const Date now = day("2024-01-01T00:00:00");
    EXPECT_TRUE(isEarlierThan(now, now));
    EXPECT_TRUE(isLaterThan(now, now));
    EXPECT_FALSE(isLaterThan(now, now + std::chrono::seconds(1)));
}

TEST(ArrayExtensions, UniqueMergeByIdMovesReplacedItemsToTheEnd) {
    const Array receiver = json(R"([{"id":1,"v":"a"},{"id":2,"v":"b"},{"v":"no id"},3])").array();
    const Array merged = vp_arrayByAddingUniqueObjectsFromArray(
        receiver, json(R"([{"id":1,"v":"A"},"skipped",{"id":9,"v":"new"},{"v":"also no id"}])").array());
    EXPECT_EQ(Value(merged), json(R"([{"id":2,"v":"b"},{"v":"no id"},3,{"id":1,"v":"A"},{"id":9,"v":"new"},
                                      {"v":"also no id"}])"));
    EXPECT_EQ(receiver.size(), 4u);
}

TEST(ImageExtensions, ClientFolderFirstThenTheLibrarysAndOnlyFoundImagesAreCached) {
    namespace fs = std::filesystem;
    const fs::path client = Files::makeTemporaryDirectory("velmo-bundle");
    const fs::path library = Files::makeTemporaryDirectory("velmo-resources");
    ASSERT_TRUE(Files::writeAtomically(client / "logo.png", "client logo"));
    ASSERT_TRUE(Files::writeAtomically(library / "logo.png", "library logo"));
    ASSERT_TRUE(Files::writeAtomically(library / "star.svg", "<svg/>"));
    ::setenv("VELMO_BUNDLE", client.c_str(), 1);
    ::setenv("VELMO_RESOURCES", library.c_str(), 1);
    VVHost::bind();

    auto logo = _vv_imageFromName("logo");
    ASSERT_TRUE(logo);
    EXPECT_EQ(logo->data(), "client logo");
    EXPECT_EQ(_vv_imageFromName("star")->file(), library / "star.svg");
    fs::remove(client / "logo.png");
    EXPECT_EQ(_vv_imageFromName("logo"), logo) << "found images are cached";
    EXPECT_FALSE(_vv_imageFromName("later"));
    ASSERT_TRUE(Files::writeAtomically(client / "later.jpg", "x"));
    EXPECT_TRUE(_vv_imageFromName("later")) << "a miss is not cached";
    EXPECT_FALSE(_vv_imageFromName("../etc/passwd"));

    ::unsetenv("VELMO_BUNDLE");
    ::unsetenv("VELMO_RESOURCES");
    fs::remove_all(client);
    fs::remove_all(library);
}
