#include <vector>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"

using namespace velmo;

namespace {

template <class T> std::shared_ptr<T> decodeAs(std::string_view json) {
    return std::dynamic_pointer_cast<T>(
        VDModelDecoder::modelObjectFromDictionary(Json::parse(json).dictionary()));
}

// A keyframe of the tests: its times and a tag that names its state ("new" for the one put).
struct Key {
    float delay;
    float duration;
    const char* tag;
};

Dictionary stateTagged(const char* tag) {
    return Dictionary{{"tag", Value(tag)}};
}

std::shared_ptr<VDModelAnimationTimeline> timelineWith(const std::vector<Key>& keys) {
    auto timeline = VDModelAnimationTimeline::create();
    Array animations = Array::create();
    for (const Key& k : keys) {
        auto a = VDModelAnimation::create();
        a->setDelay(k.delay);
        a->setDuration(k.duration);
        a->setState(stateTagged(k.tag));
        animations.push_back(Value(a));
    }
    timeline->setAnimations(animations);
    return timeline;
}

} // namespace

TEST(VDModelAnimationTimeline, KeyframePutAtATimeUpdatesSplitsOrFills) {
    const struct {
        const char* what;
        std::vector<Key> before;
        float time;
        std::vector<Key> after;
        int updatesPosted;
    } cases[] = {
        {"empty timeline", {}, 0.5f, {{0, 0.5f, "new"}}, 0},
        {"empty timeline, beyond the limit", {}, 12, {{2, 10, "new"}}, 0},
        {"at 0 with nothing before does nothing", {}, 0, {}, 0},
        {"at the end of a keyframe updates it", {{0, 0.5f, "a"}}, 0.5f, {{0, 0.5f, "new"}}, 1},
        {"inside a keyframe splits it", {{0, 0.5f, "a"}}, 0.2f, {{0, 0.2f, "new"}, {0.2f, 0.3f, "a"}}, 0},
        {"after the last keyframe", {{0, 0.5f, "a"}}, 0.8f, {{0, 0.5f, "a"}, {0.5f, 0.3f, "new"}}, 0},
        {"far after leaves a gap", {{0, 0.5f, "a"}}, 20, {{0, 0.5f, "a"}, {10, 10, "new"}}, 0},
        {"before the first keyframe", {{0.5f, 0.5f, "a"}}, 0.3f, {{0, 0.3f, "new"}, {0.5f, 0.5f, "a"}}, 0},
        {"between keyframes",
         {{0, 0.2f, "a"}, {0.5f, 0.5f, "b"}},
         0.4f,
         {{0, 0.2f, "a"}, {0.2f, 0.2f, "new"}, {0.5f, 0.5f, "b"}},
         0},
        {"exactly at a keyframe's start fills after the one before",
         {{0, 0.2f, "a"}, {0.5f, 0.5f, "b"}},
         0.5f,
         {{0, 0.2f, "a"}, {0.2f, 0.3f, "new"}, {0.5f, 0.5f, "b"}},
         0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto timeline = timelineWith(c.before);
        const std::vector<Value> original = timeline->animations().items();
        int posted = 0;
        ScopedObserver observer(
            NotificationCenter::defaultCenter(),
            NotificationCenter::defaultCenter().addObserver(kModelUpdatedNotification, nullptr,
                                                            [&](const Notification&) { ++posted; }));

        timeline->addOrUpdateAnimationWithTime(c.time, stateTagged("new"));

        const Array& after = timeline->animations();
        ASSERT_EQ(after.size(), c.after.size());
        for (std::size_t i = 0; i < after.size(); ++i) {
            const auto a = after[i].objectAs<VDModelAnimation>();
            EXPECT_FLOAT_EQ(a->delay(), c.after[i].delay) << i;
            EXPECT_FLOAT_EQ(a->duration(), c.after[i].duration) << i;
            EXPECT_EQ(a->state(), stateTagged(c.after[i].tag)) << i;
        }
        // Keyframes are never replaced: a split one keeps its object and identifier.
        for (const Value& kept : original) {
            EXPECT_NE(std::find(after.begin(), after.end(), kept), after.end());
        }
        EXPECT_EQ(posted, c.updatesPosted);
    }
}

TEST(VDModelAnimationTimeline, StateAtATimeAndRedundantKeyframes) {
    auto timeline = timelineWith({{0, 0.5f, "a"}});
    EXPECT_TRUE(timeline->modelStateForTime(0).isNil());
    EXPECT_EQ(timeline->modelStateForTime(0.6f), stateTagged("a"));

    const Dictionary original = stateTagged("original");
    EXPECT_TRUE(timeline->isRedundantAnimationWithTime(0.6f, stateTagged("a"), original));
    EXPECT_FALSE(timeline->isRedundantAnimationWithTime(0.6f, original, original));
    EXPECT_TRUE(timeline->isRedundantAnimationWithTime(0, original, original))
        << "nothing before: the original";
    EXPECT_FALSE(timeline->isRedundantAnimationWithTime(0, Dictionary(), Dictionary()));
}

TEST(VDModelAnimationTimeline, SortIsStableAndReplacesTheList) {
    auto timeline = timelineWith({{0.5f, 1, "late"}, {0, 1, "first"}, {0.5f, 1, "later"}});
    const Array before = timeline->animations();
    timeline->sortAnimations();
    ASSERT_FALSE(timeline->animations().sameAs(before));
    std::vector<Value> tags;
    for (const Value& v : timeline->animations())
        tags.push_back(v.objectAs<VDModelAnimation>()->state().get("tag"));
    EXPECT_EQ(tags, (std::vector<Value>{"first", "late", "later"}));
    EXPECT_EQ(before[0].objectAs<VDModelAnimation>()->state(), stateTagged("late"))
        << "the old list is untouched";
}

TEST(VDModelAnimationTimeline, TargetRepairsDotsAndFollowsRenames) {
    auto decoded =
        decodeAs<VDModelAnimationTimeline>(R"({"model_class":"VDModelAnimationTimeline","target":"this.a.b",
            "animations":[{"model_class":"VDModelAnimation","delay":1},{"delay":2}]})");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->target(), "this;a;b");
    EXPECT_EQ(decoded->animations().size(), 1u) << "what isn't a keyframe is dropped";
    EXPECT_EQ(VDModelAnimationTimeline::create()->target(), "");

    const struct {
        const char* target;
        const char* oldPath;
        const char* newPath;
        const char* expected;
    } cases[] = {
        {"this;a", "this;a", "this;x", "this;x"},
        {"this;a;b", "this;a", "this;x.y", "this;x;y;b"},
        {"this;ab", "this;a", "this;x", "this;ab"},
        {"this", "this;a", "this;x", "this"},
    };
    for (const auto& c : cases) {
        auto timeline = VDModelAnimationTimeline::create();
        timeline->setTarget(c.target);
        timeline->refactorPath(c.oldPath, c.newPath);
        EXPECT_EQ(timeline->target(), c.expected) << c.target << " " << c.oldPath;
    }
}

TEST(VDModelAnimation, DefaultsAndIdentifiers) {
    auto a = VDModelAnimation::create();
    EXPECT_EQ(a->delay(), 0.0f);
    EXPECT_EQ(a->duration(), 0.2f);
    EXPECT_FLOAT_EQ(a->end(), 0.2f);
    EXPECT_EQ(a->curve(), "ease-in-out");
    EXPECT_EQ(a->cubicBezier(), ".42;0;.58;1");
    EXPECT_TRUE(a->state().isNil());
    ASSERT_TRUE(a->modelID());
    EXPECT_TRUE(a->modelID()->starts_with("animation_"));
    EXPECT_TRUE(VDModelAnimationTimeline::create()->modelID()->starts_with("animationTimeline_"));
}

TEST(VDModelAnimation, CurveTableWorksBothWays) {
    const struct {
        const char* curve;
        const char* cubicBezier;
    } named[] = {
        {"ease-in", ".42;0;1;1"},
        {"ease-in-out", ".42;0;.58;1"},
        {"ease-out", "0;0;.58;1"},
        {"linear", "0;0;1;1"},
    };
    auto a = VDModelAnimation::create();
    for (const auto& n : named) {
        a->setCurve(n.curve);
        EXPECT_EQ(a->cubicBezier(), n.cubicBezier) << n.curve;
    }
    a->setCurve("custom");
    EXPECT_EQ(a->cubicBezier(), "0;0;1;1") << "another name keeps the last curve's values";

    const struct {
        const char* cubicBezier;
        const char* curve;
    } read[] = {
        {".42;0;.58;1", "ease-in-out"}, {"0.42;0;1;1", "ease-in"}, {"0.0;0;1.000;1", "linear"},
        {".1;.2;.3;.4", "custom"},      {"0;0;1", "custom"},
    };
    for (const auto& r : read) {
        a->setCubicBezier(r.cubicBezier);
        a->updateCurveFromCubic();
        EXPECT_EQ(a->curve(), r.curve) << r.cubicBezier;
        EXPECT_EQ(a->cubicBezier(), r.cubicBezier) << "the values are kept as written";
    }
}

TEST(VDModelAnimation, StoredCubicBezierWinsOverTheCurvesValues) {
    auto stored = decodeAs<VDModelAnimation>(
        R"({"model_class":"VDModelAnimation","cubicBezier":".1;.2;.3;.4","curve":"linear"})");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->curve(), "linear");
    EXPECT_EQ(stored->cubicBezier(), ".1;.2;.3;.4");

    auto named = decodeAs<VDModelAnimation>(R"({"model_class":"VDModelAnimation","curve":"ease-out"})");
    EXPECT_EQ(named->cubicBezier(), "0;0;.58;1");
}
