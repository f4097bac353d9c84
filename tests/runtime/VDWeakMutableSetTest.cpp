#include <functional>
#include <memory>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VDWeakMutableSet.h"

namespace velmo {
namespace {

// Equal by name, as value-like objects are.
class Named : public Object {
public:
    explicit Named(std::string name) : name_(std::move(name)) {}
    static const VDClass& classObject() {
        static const VDClass cls("Named", nullptr, nullptr);
        return cls;
    }
    const VDClass& objectClass() const override { return classObject(); }
    bool isEqual(const Object& other) const override {
        const auto* named = dynamic_cast<const Named*>(&other);
        return named && named->name_ == name_;
    }
    std::size_t hash() const override { return std::hash<std::string>{}(name_); }
    const std::string& name() const { return name_; }

private:
    std::string name_;
};

std::set<std::string> members(VDWeakMutableSet& set) {
    std::set<std::string> names;
    set.enumerateValidObjects(
        [&](const std::shared_ptr<Object>& o) { names.insert(static_cast<Named&>(*o).name()); });
    return names;
}

TEST(VDWeakMutableSet, MembersThatGoAreSkippedAndTheirItemsDropped) {
    VDWeakMutableSet set;
    auto a = std::make_shared<Named>("a");
    auto b = std::make_shared<Named>("b");
    set.addObject(a);
    set.addObject(b);
    set.addObject(nullptr);
    b.reset();
    EXPECT_EQ(members(set), (std::set<std::string>{"a"}));
    EXPECT_EQ(set.allValidObjects().size(), 1u);

    // A new member equal to one that went isn't held back by its dead item.
    auto again = std::make_shared<Named>("b");
    set.addObject(again);
    EXPECT_EQ(members(set), (std::set<std::string>{"a", "b"}));
}

TEST(VDWeakMutableSet, MembersCompareByEquality) {
    VDWeakMutableSet set;
    const auto a = std::make_shared<Named>("a");
    const auto twin = std::make_shared<Named>("a");
    set.addObject(a);
    set.addObject(twin);
    EXPECT_EQ(set.allValidObjects().size(), 1u);

    set.removeObject(nullptr);
    set.removeObject(std::make_shared<Named>("other"));
    EXPECT_EQ(set.allValidObjects().size(), 1u);
    set.removeObject(twin); // an equal object removes the member
    EXPECT_TRUE(set.allValidObjects().empty());
}

TEST(VDWeakMutableSet, ItemsKeepTheirHashAfterTheMemberGoes) {
    auto a = std::make_shared<Named>("a");
    const VDWeakMutableSetItem item(a);
    const VDWeakMutableSetItem same(a);
    EXPECT_TRUE(item.isEqual(same));
    const std::size_t hash = a->hash();
    a.reset();
    EXPECT_EQ(item.hash(), hash);
    EXPECT_EQ(item.nonretainedObjectValue(), nullptr);
    EXPECT_FALSE(item.isEqual(same));
    EXPECT_FALSE(item.isEqual(item));
}

} // namespace
} // namespace velmo
