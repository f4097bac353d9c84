#include <memory>

#include <gtest/gtest.h>

#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VVClientConfig.h"
#include "velmo/runtime/VVDI.h"
#include "velmo/runtime/VVUserData.h"

namespace velmo {
namespace {

class Thing : public Object {
public:
    static const VDClass& classObject() {
        static const VDClass cls("Thing", nullptr,
                                 [] { return std::shared_ptr<Object>(std::make_shared<Thing>()); });
        return cls;
    }
    const VDClass& objectClass() const override { return classObject(); }
};

const VDClass kFirst("First", nullptr, nullptr);
const VDClass kSecond("Second", nullptr, nullptr);

TEST(VVDI, ClassAndInstanceBindingsAreIndependentAndTheLastBindingWins) {
    VVDI& di = VVDI::shared();
    di.bindClass(&kFirst, "VVDITest.Class");
    di.bindClass(&kSecond, "VVDITest.Class");
    di.bindClass(nullptr, "VVDITest.Class");
    di.bindClass(&kFirst, "");
    EXPECT_EQ(di.classForProtocol("VVDITest.Class"), &kSecond);
    EXPECT_EQ(di.instanceForProtocol("VVDITest.Class"), nullptr);

    const auto first = std::make_shared<Thing>();
    const auto second = std::make_shared<Thing>();
    di.bindInstance(first, "VVDITest.Instance");
    di.bindInstance(second, "VVDITest.Instance");
    di.bindInstance(nullptr, "VVDITest.Instance");
    EXPECT_EQ(di.instanceForProtocol("VVDITest.Instance"), second);
    EXPECT_EQ(di.instanceFor<Thing>("VVDITest.Instance"), second);
    EXPECT_EQ(di.classForProtocol("VVDITest.Instance"), nullptr);

    EXPECT_EQ(di.classForProtocol("VVDITest.Unbound"), nullptr);
    EXPECT_EQ(di.instanceForProtocol("VVDITest.Unbound"), nullptr);

    const auto classes = di.classBindings();
    const auto instances = di.instanceBindings();
    EXPECT_EQ(classes.at("VVDITest.Class").key(), "VVDITest.Class");
    EXPECT_EQ(classes.at("VVDITest.Class").object(), &kSecond);
    EXPECT_EQ(instances.at("VVDITest.Instance").object(), second);
    EXPECT_EQ(instances.count("VVDITest.Class"), 0u);
}

TEST(VVDI, HelpersAnswerEmptyForMissingOrForeignBindings) {
    // A class that doesn't implement the configuration interface counts as none.
    VVDI::shared().bindClass(&kFirst, kVVClientConfigInterface);
    EXPECT_FALSE(VVClientConfig::isBound());
    EXPECT_EQ(VVClientConfig::current().logsURL(), "");
    EXPECT_EQ(VVClientConfig::current().hostVersion(), "");

    VVDI::shared().bindInstance(std::make_shared<Thing>(), kVVUserData);
    EXPECT_EQ(VVUserData::current(), nullptr);
    EXPECT_EQ(VVDI::shared().instanceFor<Thing>(kVVUserData)->objectClass().name(), "Thing");
}

} // namespace
} // namespace velmo
