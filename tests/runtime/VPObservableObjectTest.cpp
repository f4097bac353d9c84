#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/runtime/VDPropertyRegistry.h"
#include "velmo/runtime/VPObservableObject.h"

namespace velmo {
namespace {

// A view model with a marked title, an unmarked note and a scalar count.
class Card : public VPObservableObject {
public:
    static const VDClass& classObject() {
        static const VDClass* cls = [] {
            static const VDClass c("Card", &VPObservableObject::classObject(), nullptr);
            VDPropertyRegistry::registerClass(c,
                                              {observableProp("title", "NSString", &Card::title),
                                               VDPropertyRegistry::property("note", "NSString", &Card::note),
                                               VDPropertyRegistry::property("count", "", &Card::count)});
            return &c;
        }();
        return *cls;
    }
    const VDClass& objectClass() const override { return classObject(); }

    std::string title() const { return title_; }
    void setTitle(std::string title) {
        title_ = std::move(title);
        didChangeValueForKey("title");
    }
    std::string note() const { return note_; }
    void setNote(std::string note) {
        note_ = std::move(note);
        didChangeValueForKey("note");
    }
    int count() const { return 3; }

private:
    std::string title_ = "first";
    std::string note_ = "a note";
};

// Inherits the marked title and adds marked items.
class ListCard : public Card {
public:
    static const VDClass& classObject() {
        static const VDClass* cls = [] {
            static const VDClass c("ListCard", &Card::classObject(), nullptr);
            VDPropertyRegistry::registerClass(c,
                                              {observableProp("items", "NSMutableArray", &ListCard::items)});
            return &c;
        }();
        return *cls;
    }
    const VDClass& objectClass() const override { return classObject(); }

    Array items() const { return items_; }
    void setItems(Array items) {
        items_ = std::move(items);
        didChangeValueForKey("items");
    }

private:
    Array items_ = Array::create();
};

// No marked property at all.
class Bare : public VPObservableObject {
public:
    static const VDClass& classObject() {
        static const VDClass cls("Bare", &VPObservableObject::classObject(), nullptr);
        return cls;
    }
    const VDClass& objectClass() const override { return classObject(); }
    void touch() { didChangeValueForKey("anything"); }
};

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

TEST(VDPropertyRegistry, MarkedPropertiesKeepTheirTypeAndAreFoundByTheWholeMarker) {
    EXPECT_EQ(VDPropertyRegistry::classProps(Card::classObject()),
              (Dictionary{{"title", Value("NSString<VPObservableProp>")}, {"note", Value("NSString")}}));
    // A prefix of the marker isn't the marker.
    EXPECT_TRUE(VDPropertyRegistry::classPropsConformingTo(Card::classObject(), "VPObservable").empty());
}

TEST(VPObservableObject, MarkedPropertiesIncludeThoseOfSuperclasses) {
    EXPECT_EQ(VDPropertyRegistry::classPropsConformingTo(ListCard::classObject(), kVPObservableProp),
              (std::vector<std::string>{"items"})); // each class answers for its own
    EXPECT_EQ(sorted(VPObservableObject::getObservablePropsKeys(ListCard::classObject())),
              (std::vector<std::string>{"items", "title"}));
    EXPECT_TRUE(VPObservableObject::getObservablePropsKeys(Bare::classObject()).empty());
    EXPECT_EQ(VPObservableObject::observablePropsKeys().get("ListCard").array().size(), 2u);
}

TEST(VPObservableObject, EverySetReachesSubscribersInOrderThenOnChange) {
    const auto card = std::make_shared<ListCard>();
    std::vector<std::string> calls;
    card->subscribe("title", [&](const Value& v) {
        EXPECT_EQ(v.object(), card);
        calls.push_back("first");
    });
    card->subscribe("title", [&](const Value& v) {
        EXPECT_EQ(v.object(), card);
        calls.push_back("second");
    });
    card->subscribe("items", [&](const Value&) { calls.push_back("items"); });
    card->setOnChange([&] { calls.push_back("onChange"); });

    card->setTitle("first"); // the same value still counts
    card->setItems(_vp_observable(Array{Value(1)}));
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second", "onChange", "items", "onChange"}));
}

TEST(VPObservableObject, UnmarkedOrUnknownPropertiesAreIgnored) {
    const auto card = std::make_shared<Card>();
    int calls = 0;
    card->subscribe("note", [&](const Value&) { ++calls; });
    card->subscribe("missing", [&](const Value&) { ++calls; });
    card->subscribe("", [&](const Value&) { ++calls; });
    card->setNote("changed");
    EXPECT_EQ(calls, 0);

    const auto bare = std::make_shared<Bare>();
    bare->setOnChange([&] { ++calls; });
    bare->touch();
    EXPECT_EQ(calls, 0);
}

TEST(VPObservableObject, InitialDeliveryPassesTheValueAndLaterOnesTheObject) {
    const auto card = std::make_shared<Card>();
    std::vector<Value> received;
    const auto record = [&](const Value& v) { received.push_back(v); };
    card->subscribe("title", record, kVPObservableOptionInitial);
    card->setTitle("second");
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0], Value("first"));
    EXPECT_EQ(received[1].object(), card);

    // Nothing at once without the initial bit or with an empty callback; an unmarked property gets
    // the one initial delivery and never another, an unknown one not even that.
    received.clear();
    card->subscribe("title", record, 1);
    card->subscribe("title", nullptr, kVPObservableOptionInitial);
    card->subscribe("note", record, kVPObservableOptionInitial);
    card->subscribe("missing", record, kVPObservableOptionInitial);
    card->setNote("changed");
    EXPECT_EQ(received, (std::vector<Value>{Value("a note")}));
}

TEST(VPObservableObject, FailureOfTheInitialDeliveryIsDroppedAndTheSubscriptionStands) {
    const auto card = std::make_shared<Card>();
    int calls = 0;
    card->subscribe(
        "title",
        [&](const Value&) {
            if (++calls == 1) throw std::runtime_error("first delivery fails");
        },
        kVPObservableOptionInitial);
    card->setTitle("x");
    EXPECT_EQ(calls, 2);
}

TEST(VPObservableObject, CallbacksMaySubscribeAndSetDuringDelivery) {
    const auto card = std::make_shared<ListCard>();
    int nested = 0;
    card->subscribe("title", [&, weak = std::weak_ptr<ListCard>(card)](const Value&) {
        const auto self = weak.lock();
        self->subscribe("items", [&](const Value&) { ++nested; });
        self->setItems(Array::create());
    });
    card->setTitle("go");
    EXPECT_EQ(nested, 1);
}

} // namespace
} // namespace velmo
