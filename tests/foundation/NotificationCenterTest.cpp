#include <gtest/gtest.h>

#include "velmo/foundation/NotificationCenter.h"
#include "velmo/foundation/VPError.h"

using namespace velmo;

TEST(NotificationCenter, FiltersByNameAndObject) {
    NotificationCenter center;
    auto a = VPError::make("d", 1);
    auto b = VPError::make("d", 2);
    int any = 0, named = 0, forA = 0, namedForA = 0;
    center.addObserver("", nullptr, [&](const Notification&) { ++any; });
    center.addObserver("n", nullptr, [&](const Notification&) { ++named; });
    center.addObserver("", a.get(), [&](const Notification&) { ++forA; });
    center.addObserver("n", a.get(), [&](const Notification&) { ++namedForA; });
    center.post("n", a);
    center.post("n", b);
    center.post("m", a);
    EXPECT_EQ(any, 3);
    EXPECT_EQ(named, 2);
    EXPECT_EQ(forA, 2);
    EXPECT_EQ(namedForA, 1);
}

TEST(NotificationCenter, ObserversMayRemoveThemselvesWhileDelivered) {
    NotificationCenter center;
    int calls = 0;
    NotificationCenter::Token token = 0;
    token = center.addObserver("n", nullptr, [&](const Notification& n) {
        ++calls;
        EXPECT_EQ(n.userInfo.get("k").int64Value(), 7);
        center.removeObserver(token);
        center.post("other");
    });
    center.post("n", nullptr, Dictionary{{"k", Value(7)}});
    center.post("n");
    EXPECT_EQ(calls, 1);
    {
        ScopedObserver scoped(center,
                              center.addObserver("s", nullptr, [&](const Notification&) { ++calls; }));
        center.post("s");
    }
    center.post("s");
    EXPECT_EQ(calls, 2);
}
