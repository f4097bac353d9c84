#include <cmath>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/VPError.h"
#include "velmo/model/core/VDBaseObject.h"

using namespace velmo;

namespace {

// A configuration object of the tests: a title, a list, a nested object.
class TestConfigItem : public VDBaseObject {
public:
    static const VDClass& classObject() {
        static const VDClass cls("TestConfigItem", &VDBaseObject::classObject(), [] {
            return std::static_pointer_cast<Object>(std::make_shared<TestConfigItem>());
        });
        return cls;
    }
    const VDClass& objectClass() const override { return classObject(); }

    Dictionary jsonMap() const override {
        Dictionary map = Dictionary::create();
        map.set("title", title);
        map.set("items", Value(items));
        map.set("flag", Value(flag));
        map.set("child", Value(child));
        map.set("plain", Value(plain));
        return map;
    }
    void initWithSerializableObject(const Value& object) override {
        VDBaseObject::initWithSerializableObject(object);
        const Dictionary d = object.dictionary();
        title = d.get("title");
        flag = d.get("flag").boolValue();
    }
    std::shared_ptr<VDBaseObject> copy() const override {
        auto made = std::static_pointer_cast<TestConfigItem>(VDBaseObject::copy());
        made->title = title;
        made->flag = flag;
        return made;
    }

    Value title;
    Array items = Array::create();
    bool flag = false;
    std::shared_ptr<TestConfigItem> child;
    Dictionary plain;
};

} // namespace

TEST(VDModelObjectSerializer, EmptiesAreLeftOutButFalseAndZeroStay) {
    auto item = std::make_shared<TestConfigItem>();
    item->title = Value("");
    EXPECT_EQ(item->serialize(), Json::parse(R"({"title":"","flag":false})"));

    item->child = std::make_shared<TestConfigItem>();
    item->plain = Dictionary{{"list", Value(Array::create())}};
    const Value out = item->serialize();
    EXPECT_EQ(out.dictionary().get("child"), Json::parse(R"({"flag":false})"));
    EXPECT_EQ(out.dictionary().get("plain"), Json::parse(R"({"list":[]})"))
        << "a dictionary that is already JSON comes back whole, empty array and all";
}

TEST(VDModelObjectSerializer, ValuesThatCannotBeSerialisedAreDropped) {
    auto item = std::make_shared<TestConfigItem>();
    const Value mixed(Array{Value(item), Value(VPError::make("d", 1)), Value(1)});
    EXPECT_EQ(VDModelObjectSerializer::objectToSerializableObject(mixed),
              Json::parse(R"([{"flag":false},1])"));
    EXPECT_TRUE(VDModelObjectSerializer::objectToSerializableObject(Value()).isNull());
    EXPECT_TRUE(VDModelObjectSerializer::objectToSerializableObject(Value(VPError::make("d", 1))).isNil());
    EXPECT_TRUE(VDModelObjectSerializer::objectToSerializableObject(Value(std::nan(""))).isNil());
    const Value dict(Dictionary{{"ok", Value(1)}, {"bad", Value::bytes("x")}});
    EXPECT_EQ(VDModelObjectSerializer::objectToSerializableObject(dict), Json::parse(R"({"ok":1})"));
}

TEST(VDBaseObject, MakingObjectsFromValues) {
    EXPECT_FALSE(VDBaseObject::modelFromValue<TestConfigItem>(Value("x")));
    auto made = VDBaseObject::modelFromValue<TestConfigItem>(Json::parse(R"({"title":"t","flag":1})"));
    ASSERT_TRUE(made);
    EXPECT_EQ(made->title, Value("t"));
    EXPECT_TRUE(made->flag);

    const Dictionary objects = VDBaseObject::objectsDictionaryFromDictionary(
        TestConfigItem::classObject(), Json::parse(R"({"a":{"title":"A"},"b":3,"c":{}})").dictionary());
    EXPECT_EQ(objects.keys(), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(VDBaseObject::objectsArrayFromArray(TestConfigItem::classObject(),
                                                  Json::parse(R"([{"title":1},2])").array())
                  .size(),
              2u)
        << "no test of the element's kind first";
    EXPECT_TRUE(VDBaseObject::objectsArrayFromArray(TestConfigItem::classObject(), Array()).empty());

    auto copy = std::dynamic_pointer_cast<TestConfigItem>(made->copy());
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->title, Value("t"));
    EXPECT_NE(copy.get(), made.get());
    EXPECT_EQ(made->description(), "{\n    title = t;\n    flag = 1;\n}");
}
