#include <thread>

#include <gtest/gtest.h>

#include "TestModel.h"
#include "ValuePrinting.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/VPError.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelComponentMasterData.h"

using namespace velmo;
using velmo::test::VDModelTestModel;
using velmo::test::VDModelTestSubModel;

namespace {

class VDModelFixture : public ::testing::Test {
protected:
    void SetUp() override {
        test::registerTestModels();
        VDModel::setMapping(VDModelDecoder::sharedInstance());
    }

    static std::shared_ptr<VDModelTestModel> decode(std::string_view json) {
        auto model = VDModelDecoder::modelObjectFromDictionary(Json::parse(json).dictionary());
        return std::dynamic_pointer_cast<VDModelTestModel>(model);
    }
};

// Counts the notifications of one name posted for one object while alive.
class NotificationCounter {
public:
    NotificationCounter(std::string_view name, const Object* object)
        : token_(NotificationCenter::defaultCenter().addObserver(name, object, [this](const Notification& n) {
              ++count;
              last = n.userInfo;
          })) {}
    ~NotificationCounter() { NotificationCenter::defaultCenter().removeObserver(token_); }
    int count = 0;
    Dictionary last;

private:
    NotificationCenter::Token token_;
};

} // namespace

TEST_F(VDModelFixture, NewObjectGetsPrefixedLowerCaseIdentifier) {
    auto model = VDModelTestModel::create();
    ASSERT_TRUE(model->modelID());
    const std::string& id = *model->modelID();
    ASSERT_EQ(id.size(), std::string("testModel_").size() + 36);
    EXPECT_TRUE(id.starts_with("testModel_"));
    const std::string uuid = id.substr(std::string("testModel_").size());
    EXPECT_TRUE(std::none_of(uuid.begin(), uuid.end(),
                             [](char c) { return std::isupper(static_cast<unsigned char>(c)); }));
    EXPECT_EQ(std::count(uuid.begin(), uuid.end(), '-'), 4);
    EXPECT_NE(*VDModelTestModel::create()->modelID(), id);
    EXPECT_FALSE(model->variableID());
    EXPECT_EQ(VDModelTestSubModel::create()->beautyIDPrefix(), "sub");
}

TEST(VDModelClassPrefix, DerivedFromClassNameWithoutVDModel) {
    const struct {
        const char* className;
        const char* prefix;
    } cases[] = {
        {"VDModelColor", "color"},
        {"VDModelGradientStop", "gradientStop"},
        {"VPAnimationExportSettings", "vPAnimationExportSettings"},
        {"VDModelVDModelX", "x"},
        {"VDModel", ""},
        {"XVDModelY", "xY"},
    };
    for (const auto& c : cases) {
        const VDModelClass cls(c.className, nullptr, nullptr, {});
        EXPECT_EQ(cls.beautyIDPrefix(), c.prefix) << c.className;
    }
}

TEST_F(VDModelFixture, FieldNamesChainAndRemoval) {
    auto model = VDModelTestModel::create();
    const auto names = model->fieldNames();
    ASSERT_GE(names.size(), 3u);
    EXPECT_EQ(names[0], "modelID");
    EXPECT_EQ(names[1], "variableID");
    EXPECT_EQ(names[2], "md5");
    EXPECT_EQ(std::count(names.begin(), names.end(), "scratch"), 0) << "unlisted fields stay out";
    const auto subNames = VDModelTestSubModel::create()->fieldNames();
    EXPECT_EQ(std::count(subNames.begin(), subNames.end(), "variableID"), 0);
    EXPECT_EQ(subNames.size(), names.size() - 1);
}

TEST_F(VDModelFixture, RoundTripThroughJsonKeepsEveryKind) {
    auto model = VDModelTestModel::create();
    model->setTitle("Title ü");
    model->setRatio(0.1f);
    model->setPrecise(0.1);
    model->setCount(-7);
    model->setBig(1LL << 40);
    model->setEnabled(true);
    model->setWidth(12.5);
    auto child = VDModelTestModel::create();
    child->setTitle("child");
    model->setChild(child);
    model->setTags(Array{Value("a"), Value(2), Value::null()});
    model->setInfo(Dictionary{{"k", Value("v")}, {"nested", Value(Dictionary{{"x", Value(1)}})}});
    model->setExtra(Value(true));

    const std::string json = model->toJson();
    EXPECT_NE(json.find("\"ratio\": 0.1,"), std::string::npos) << "floats print in their own precision";
    auto back = decode(json);
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->isEqual(*model));
    EXPECT_EQ(Value(back->toDictionary()), Value(model->toDictionary()));
    EXPECT_EQ(back->ratio(), 0.1f);
    EXPECT_EQ(back->big(), 1LL << 40);
    EXPECT_EQ(back->child()->title(), "child");
    EXPECT_TRUE(back->tags()[2].isNull());
    EXPECT_NE(back->child().get(), child.get());
}

TEST_F(VDModelFixture, EncodingLeavesOutNilAndNullAndAddsClassAndVersion) {
    auto model = VDModelTestModel::create();
    const Dictionary d = model->toDictionary();
    EXPECT_EQ(d.get("model_class"), Value("VDModelTestModel"));
    EXPECT_EQ(d.get("model_version"), Value(0));
    EXPECT_FALSE(d.contains("title"));
    EXPECT_FALSE(d.contains("variableID"));
    EXPECT_FALSE(d.contains("child"));
    EXPECT_FALSE(d.contains("scratch"));
    EXPECT_TRUE(d.contains("tags")) << "an empty array is a value";
    model->setExtra(Value::null());
    EXPECT_FALSE(model->toDictionary().contains("extra"));
}

TEST_F(VDModelFixture, DecodingDropsWhatDoesNotFit) {
    const struct {
        const char* name;
        const char* json;
        std::function<void(VDModelTestModel&)> check;
    } cases[] = {
        {"unknown key is gone after encoding",
         R"({"model_class":"VDModelTestModel","modelID":"m_1","bogus":1})",
         [](VDModelTestModel& m) { EXPECT_FALSE(m.toDictionary().contains("bogus")); }},
        {"unknown nested class drops from the array, order kept",
         R"({"model_class":"VDModelTestModel","tags":[1,{"model_class":"Nope"},{"model_class":"VDModelTestModel","modelID":"c"},3]})",
         [](VDModelTestModel& m) {
             ASSERT_EQ(m.tags().size(), 3u);
             EXPECT_EQ(m.tags()[0], Value(1));
             EXPECT_TRUE(m.tags()[1].isModel());
             EXPECT_EQ(m.tags()[2], Value(3));
         }},
        {"model inside a plain dictionary decodes",
         R"({"model_class":"VDModelTestModel","info":{"m":{"model_class":"VDModelTestModel","modelID":"c"},"n":[null,1]}})",
         [](VDModelTestModel& m) {
             EXPECT_TRUE(m.info().get("m").isModel());
             EXPECT_TRUE(m.info().get("n").array()[0].isNull());
         }},
        {"wrong kinds keep the defaults",
         R"({"model_class":"VDModelTestModel","title":5,"ratio":[1],"tags":{},"child":{"a":1},"info":[1]})",
         [](VDModelTestModel& m) {
             EXPECT_FALSE(m.title());
             EXPECT_EQ(m.ratio(), 0.5f);
             EXPECT_TRUE(m.tags().empty());
             EXPECT_FALSE(m.tags().isNil());
             EXPECT_FALSE(m.child());
             EXPECT_TRUE(m.info().isNil());
         }},
        {"null keeps the default", R"({"model_class":"VDModelTestModel","ratio":null,"tags":null})",
         [](VDModelTestModel& m) {
             EXPECT_EQ(m.ratio(), 0.5f);
             EXPECT_FALSE(m.tags().isNil());
         }},
        {"numbers convert to the field's type",
         R"({"model_class":"VDModelTestModel","ratio":3,"count":2.9,"enabled":2,"precise":true,"big":-1})",
         [](VDModelTestModel& m) {
             EXPECT_EQ(m.ratio(), 3.0f);
             EXPECT_EQ(m.count(), 2);
             EXPECT_TRUE(m.enabled());
             EXPECT_EQ(m.precise(), 1.0);
             EXPECT_EQ(m.big(), -1);
         }},
        {"version 7 reads as 0", R"({"model_class":"VDModelTestModel","model_version":7,"count":4})",
         [](VDModelTestModel& m) { EXPECT_EQ(m.count(), 4); }},
        {"a non-model class nested in a field is dropped",
         R"({"model_class":"VDModelTestModel","child":{"model_class":"NSError"},"count":1})",
         [](VDModelTestModel& m) {
             EXPECT_FALSE(m.child());
             EXPECT_EQ(m.count(), 1);
         }},
    };
    // A class that isn't a model, entered under its name as the run-time would have it.
    VDModelDecoder::sharedInstance()->registerClass(VPError::classObject());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto model = decode(c.json);
        ASSERT_TRUE(model);
        c.check(*model);
    }
}

// Exporters write numbers as strings often enough: each numeric field reads the text's leading
// number, and text without one as 0 (false for a flag).
TEST_F(VDModelFixture, TextInNumericFieldsReadsAsItsLeadingNumber) {
    const struct {
        const char* text;
        float ratio;
        double precise;
        std::int32_t count;
        std::int64_t big;
        bool enabled;
        Value width;
    } cases[] = {
        {"12", 12.0f, 12.0, 12, 12, true, Value(12)},
        {" \t\n12abc", 12.0f, 12.0, 12, 12, true, Value(12)},
        {"abc", 0.0f, 0.0, 0, 0, false, Value(0)},
        {"", 0.0f, 0.0, 0, 0, false, Value(0)},
        {"-3.75e1x", -37.5f, -37.5, -3, -3, true, Value(-37.5)},
        {"+.5", 0.5f, 0.5, 0, 0, false, Value(0.5)},
        {"12e", 12.0f, 12.0, 12, 12, true, Value(12)},
        {"1e-999", 0.0f, 0.0, 1, 1, true, Value(0.0)},
        {"-0", 0.0f, 0.0, 0, 0, false, Value(0)},
        {"true", 0.0f, 0.0, 0, 0, true, Value(0)},
        {"no", 0.0f, 0.0, 0, 0, false, Value(0)},
        {"99999999999", 1e11f, 99999999999.0, INT32_MAX, 99999999999, true, Value(99999999999LL)},
        {"-99999999999999999999", -1e20f, -1e20, INT32_MIN, INT64_MIN, true, Value(-1e20)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        Dictionary dictionary{{"model_class", Value("VDModelTestModel")}};
        for (const char* key : {"ratio", "precise", "count", "big", "enabled", "width"})
            dictionary.set(key, Value(c.text));
        auto model = std::dynamic_pointer_cast<VDModelTestModel>(
            VDModelDecoder::modelObjectFromDictionary(dictionary));
        ASSERT_TRUE(model);
        EXPECT_EQ(model->ratio(), c.ratio);
        EXPECT_EQ(model->precise(), c.precise);
        EXPECT_EQ(model->count(), c.count);
        EXPECT_EQ(model->big(), c.big);
        EXPECT_EQ(model->enabled(), c.enabled);
        EXPECT_EQ(model->width().value(), c.width);
        EXPECT_EQ(model->width().value().kind(), c.width.kind()) << "integers stay integers";
        EXPECT_TRUE(model->toDictionary().get("width").isNumber()) << "written back as a number";
    }
    auto model = VDModelTestModel::create();
    model->setValueForKey(Value("2.5 pt"), "scratch");
    EXPECT_EQ(model->scratch(), 2.5f) << "setting by name reads text the same way";
}

TEST_F(VDModelFixture, DecodingUsesTheSettersInFieldOrder) {
    auto model = decode(R"({"model_class":"VDModelTestModel","title":"a"})");
    EXPECT_EQ(model->titleSets, 1);
}

TEST_F(VDModelFixture, GeneratedIdentifierIsOverwrittenByTheDictionary) {
    auto model = decode(R"({"model_class":"VDModelTestModel","modelID":"fixed_1"})");
    EXPECT_EQ(model->modelID(), "fixed_1");
    auto none = decode(R"({"model_class":"VDModelTestModel"})");
    EXPECT_TRUE(none->modelID()->starts_with("testModel_"));
}

TEST_F(VDModelFixture, TopLevelRoadRefusesWhatIsNotAModel) {
    std::vector<std::string> lines;
    auto previous = SystemLog::setSink([&](std::string_view line) { lines.emplace_back(line); });
    VDModelDecoder::sharedInstance()->registerClass(VPError::classObject());
    EXPECT_FALSE(VDModelDecoder::modelObjectFromDictionary(Dictionary::create()));
    EXPECT_FALSE(VDModelDecoder::modelObjectFromDictionary(Dictionary{{"model_class", Value("NSError")}}));
    EXPECT_FALSE(VDModelDecoder::modelObjectFromDictionary(Dictionary{{"model_class", Value(3)}}));
    SystemLog::setSink(previous);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(lines[0].starts_with("Wrong model class in dictionary: "));

    const Array mixed{Value(Dictionary{{"model_class", Value("VDModelTestModel")}}),
                      Value(Dictionary::create()), Value(Dictionary{{"model_class", Value("VDModel")}})};
    SystemLog::setSink([](std::string_view) {});
    const Array models = VDModelDecoder::modelArrayFromDictionaryArray(mixed);
    SystemLog::setSink(previous);
    ASSERT_EQ(models.size(), 2u);
    EXPECT_EQ(models[1].object()->objectClass().name(), "VDModel");
    EXPECT_TRUE(VDModelDecoder::modelArrayFromDictionaryArray(Array()).empty());
}

TEST_F(VDModelFixture, EqualityNeedsExactClassAndIdentifier) {
    auto a = decode(R"({"model_class":"VDModelTestModel","modelID":"same"})");
    auto b = decode(R"({"model_class":"VDModelTestModel","modelID":"same","count":9})");
    auto sub = VDModelTestSubModel::create();
    sub->setModelID("same");
    EXPECT_TRUE(a->isEqual(*b));
    EXPECT_FALSE(a->isEqual(*sub));
    EXPECT_FALSE(sub->isEqual(*a));
    a->setModelID(std::nullopt);
    EXPECT_FALSE(a->isEqual(*a)) << "a nil identifier is equal to nothing, itself included";
}

TEST_F(VDModelFixture, CopyIsDeepAndPermanent) {
    auto model = VDModelTestModel::create();
    model->setVariableID("name");
    model->setUserChangedModelID(true);
    model->setScratch(3);
    model->setChild(VDModelTestModel::create());
    model->setInfo(Dictionary{{"list", Value(Array{Value(1)})}});
    auto copy = modelCopy(model);
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->isEqual(*model));
    EXPECT_EQ(copy->variableID(), "name");
    EXPECT_FALSE(copy->userChangedModelID());
    EXPECT_EQ(copy->scratch(), 0.0f) << "fields outside fieldNames are not copied";
    EXPECT_NE(copy->child().get(), model->child().get());
    EXPECT_FALSE(copy->info().sameAs(model->info()));
    EXPECT_FALSE(copy->info().get("list").array().sameAs(model->info().get("list").array()));

    VDModel::setMapping(nullptr);
    EXPECT_FALSE(model->copy());
    VDModel::setMapping(VDModelDecoder::sharedInstance());
}

TEST_F(VDModelFixture, OverridesNeverReachTheEncodedForm) {
    auto model = VDModelTestModel::create();
    model->setTitle("permanent");
    model->setRatio(1.0f);
    const Dictionary before = model->toDictionary();

    model->applyOverrides(Dictionary{{"title", Value("temporary")}});
    EXPECT_TRUE(model->hasOverrides());
    EXPECT_EQ(model->title(), "temporary");
    EXPECT_EQ(Value(model->toDictionary()), Value(before));
    EXPECT_EQ(model->title(), "temporary") << "the override is back after encoding";

    auto copy = modelCopy(model);
    EXPECT_EQ(copy->title(), "permanent");
    EXPECT_FALSE(copy->hasOverrides());
    auto adopted = std::static_pointer_cast<VDModelTestModel>(model->copyWithPermenantState());
    EXPECT_EQ(adopted->title(), "temporary");
    EXPECT_TRUE(model->hasOverrides()) << "the saved values come back after the copy";

    model->clearOverrides();
    EXPECT_FALSE(model->hasOverrides());
    EXPECT_EQ(model->title(), "permanent");

    // Keys outside stateAffectedFields are set but not saved, so they don't come back.
    model->applyOverrides(Dictionary{{"count", Value(5)}});
    model->clearOverrides();
    EXPECT_EQ(model->count(), 5);
}

TEST_F(VDModelFixture, OverridesCopyModelValuesAndKeepFieldsThatWereNil) {
    auto model = VDModelTestModel::create();
    auto child = VDModelTestModel::create();
    model->applyOverrides(Dictionary{{"child", Value(child)}});
    ASSERT_TRUE(model->child());
    EXPECT_NE(model->child().get(), child.get()) << "two states must never share a model";
    model->clearOverrides();
    EXPECT_TRUE(model->child()) << "a field nil at preparation keeps the value last set";
}

TEST_F(VDModelFixture, StateNotificationsOnTheMainThreadOnly) {
    auto model = VDModelTestModel::create();
    NotificationCounter counter(kModelStateUpdatedNotification, model.get());
    model->clearOverrides();
    EXPECT_EQ(counter.count, 0) << "clearing without overrides posts nothing";

    model->applyOverrides(Dictionary{{"title", Value("t")}});
    EXPECT_EQ(counter.count, 1);
    model->toDictionary();
    EXPECT_EQ(counter.count, 3) << "an encode clears and restores: two more";

    std::thread([&] { model->toDictionary(); }).join();
    EXPECT_EQ(counter.count, 3) << "encodes off the main thread are quiet";
}

TEST_F(VDModelFixture, UpdateNotificationsCarryTheirType) {
    auto model = VDModelTestModel::create();
    NotificationCounter counter(kModelUpdatedNotification, model.get());
    model->postUpdateNotification();
    EXPECT_EQ(counter.last.get("type"), Value(5));
    model->postUpdateNotificationType(2, Dictionary{{"type", Value(9)}, {"screenIndex", Value(1)}});
    EXPECT_EQ(counter.last.get("type"), Value(9)) << "the caller's type wins";
    EXPECT_EQ(counter.last.get("screenIndex"), Value(1));
    EXPECT_EQ(counter.count, 2);
}

TEST_F(VDModelFixture, TraversalIsPreOrderOverFullFields) {
    auto root = decode(R"({"model_class":"VDModelTestModel","modelID":"root",
        "child":{"model_class":"VDModelTestModel","modelID":"c1",
                 "tags":[{"model_class":"VDModelTestModel","modelID":"c1a"}]},
        "tags":[{"model_class":"VDModelTestModel","modelID":"t1"}],
        "info":{"x":{"model_class":"VDModelTestModel","modelID":"i1"}}})");
    std::vector<std::string> order;
    root->enumerateModelsWithBlock(
        [&](const std::shared_ptr<VDModel>& m) { order.push_back(*m->modelID()); });
    EXPECT_EQ(order, (std::vector<std::string>{"root", "c1", "c1a", "t1", "i1"}));
}

TEST_F(VDModelFixture, ByNameAccess) {
    auto model = VDModelTestModel::create();
    model->setValueForKey(Value(2.5), "scratch");
    EXPECT_EQ(model->valueForKey("scratch"), Value(2.5f));
    EXPECT_THROW(model->valueForKey("nope"), std::invalid_argument);
    EXPECT_THROW(model->setValueForKey(Value(), "ratio"), std::invalid_argument) << "nil can't be a float";
    EXPECT_THROW(model->toDictionaryWithFields({"title", "nope"}), std::invalid_argument);
    model->applyOverrides(Dictionary{{"title", Value("now")}});
    EXPECT_EQ(model->toDictionaryWithFields({"title"}).get("title"), Value("now"))
        << "the chosen-fields form shows overrides";
}

TEST_F(VDModelFixture, ShapeTestsLookAtOneElement) {
    const Value model(VDModelTestModel::create());
    const Value encoded(Dictionary{{"model_class", Value("X")}});
    EXPECT_TRUE(VDModel::isArrayOfModelObjects(Value(Array{model, Value(1)})));
    EXPECT_FALSE(VDModel::isArrayOfModelObjects(Value(Array{Value(1), model})));
    EXPECT_FALSE(VDModel::isArrayOfModelObjects(Value(Array::create())));
    EXPECT_TRUE(VDModel::isDictionaryOfModelObjects(Value(Dictionary{{"a", model}})));
    EXPECT_TRUE(VDModel::isArrayOfEncodedModelObjects(Value(Array{encoded})));
    EXPECT_FALSE(VDModel::isArrayOfEncodedModelObjects(Value(Array{Value(Dictionary{{"a", Value(1)}})})));
    EXPECT_FALSE(VDModel::isDictionaryOfEncodedModelObjects(Value(Dictionary{{"a", Value(1)}})));
    EXPECT_THROW(VDModel::isDictionaryOfEncodedModelObjects(Value(Dictionary{{"a", encoded}})),
                 std::invalid_argument);
}

TEST_F(VDModelFixture, ToJsonGivesNothingForValuesJsonCannotHold) {
    auto model = VDModelTestModel::create();
    model->setPrecise(std::numeric_limits<double>::infinity());
    EXPECT_EQ(model->toJson(), "");
}

TEST_F(VDModelFixture, DateFormatterReadsTheServiceForm) {
    const auto date = VDModel::dateFormatter().dateFromString("2024-02-29T23:59:58");
    ASSERT_TRUE(date);
    EXPECT_EQ(VDModel::dateFormatter().stringFromDate(*date), "2024-02-29T23:59:58");
    EXPECT_FALSE(VDModel::dateFormatter().dateFromString("2024-02-29T23:59:58Z"));
    EXPECT_FALSE(VDModel::dateFormatter().dateFromString("2023-02-29T00:00:00"));
}

// Every class the registry knows survives create, encode, decode and copy unchanged.
TEST_F(VDModelFixture, EveryRegisteredClassRoundTrips) {
    int models = 0;
    for (const VDClass* cls : VDModelDecoder::sharedInstance()->registeredClasses()) {
        if (!cls->isModelClass()) continue;
        SCOPED_TRACE(cls->name());
        auto created = std::dynamic_pointer_cast<VDModel>(cls->create());
        ASSERT_TRUE(created);
        EXPECT_EQ(&created->objectClass(), cls);
        if (cls == &VDModelComponentMasterData::classObject()) {
            // Its list names "overrides", which only the instance record has.
            EXPECT_THROW(created->toDictionaryWithAllFields(), std::invalid_argument);
            continue;
        }
        const Dictionary encoded = created->toDictionaryWithAllFields();
        const std::string json = Json::write(Value(encoded));
        auto decoded = VDModelDecoder::modelObjectFromDictionary(Json::parse(json).dictionary());
        ASSERT_TRUE(decoded);
        EXPECT_EQ(&decoded->objectClass(), cls);
        EXPECT_EQ(Value(decoded->toDictionaryWithAllFields()), Value(encoded));
        auto copy = decoded->copy();
        ASSERT_TRUE(copy);
        EXPECT_EQ(Value(copy->toDictionaryWithAllFields()), Value(encoded));
        // Identity survives; equality is the class's own business (a listener without a target
        // equals nothing).
        EXPECT_EQ(copy->modelID(), created->modelID());
        ++models;
    }
    EXPECT_GE(models, 3);
}

TEST_F(VDModelFixture, ANullClassNameIsAPlainDictionary) {
    auto model = decode(R"({"model_class":"VDModelTestModel","info":{"d":{"model_class":null,"k":1}}})");
    EXPECT_EQ(model->info().get("d"), Json::parse(R"({"model_class":null,"k":1})"));
}
