#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {
namespace {

using Views = std::vector<std::shared_ptr<VDModelView>>;

std::shared_ptr<VDModelView> leaf(int& serial) {
    auto v = VDModelView::create();
    v->setVariableID("v" + std::to_string(++serial));
    return v;
}

void setSubviews(VDModelView& parent, const Views& children) {
    Array list = Array::create(children.size());
    for (const auto& c : children)
        list.push_back(Value(c));
    parent.setSubviews(list);
}

Views subviewsOf(const VDModelView& parent) {
    Views out;
    for (const Value& v : parent.subviews())
        out.push_back(v.objectAs<VDModelView>());
    return out;
}

// The tree keeps its sibling lists in constant-time slots; random edits of two wide containers
// (drops, reorders, additions, moves between them, in the order a host makes them) must leave it
// answering exactly as the subview lists say.
TEST(VVHostTreeFollowsEdits, WideListsStayExactThroughRandomEdits) {
    VDModelDecoder::sharedInstance();
    int serial = 0;
    auto a = leaf(serial), b = leaf(serial), root = leaf(serial);
    Views start;
    for (int i = 0; i < 60; ++i)
        start.push_back(leaf(serial));
    setSubviews(*a, start);
    setSubviews(*root, {a, b});
    const auto tree = VVHostTree::attach(root);
    Views gone;

    std::mt19937 random(7);
    for (int step = 0; step < 300; ++step) {
        SCOPED_TRACE(step);
        const bool fromA = random() % 2 == 0;
        auto& from = fromA ? a : b;
        auto& to = fromA ? b : a;
        Views source = subviewsOf(*from);
        std::shuffle(source.begin(), source.end(), random);
        switch (random() % 3) {
        case 0: { // drop a few, add a few (one with a child of its own), new order
            const std::size_t drop = std::min<std::size_t>(source.size(), random() % 5);
            gone.insert(gone.end(), source.end() - static_cast<std::ptrdiff_t>(drop), source.end());
            source.resize(source.size() - drop);
            for (unsigned n = random() % 5; n > 0; --n)
                source.push_back(leaf(serial));
            auto parent = leaf(serial);
            setSubviews(*parent, {leaf(serial)});
            source.push_back(parent);
            setSubviews(*from, source);
            break;
        }
        case 1: { // move some across: added there first, then taken from here
            const std::size_t count = std::min<std::size_t>(source.size(), random() % 8);
            Views target = subviewsOf(*to);
            target.insert(target.end(), source.begin(), source.begin() + static_cast<std::ptrdiff_t>(count));
            setSubviews(*to, target);
            setSubviews(*from, Views(source.begin() + static_cast<std::ptrdiff_t>(count), source.end()));
            break;
        }
        default: // the same views in another order
            setSubviews(*from, source);
        }

        std::size_t expected = 3;
        for (const auto& container : {a, b}) {
            for (const auto& child : subviewsOf(*container)) {
                ASSERT_EQ(tree->modelViewOfSuperView(*child), container);
                ASSERT_EQ(tree->modelViewOfRootView(*child), root);
                ++expected;
                for (const auto& grandchild : subviewsOf(*child)) {
                    ASSERT_EQ(tree->modelViewOfSuperView(*grandchild), child);
                    ++expected;
                }
            }
        }
        ASSERT_EQ(tree->size(), expected) << "views that left are forgotten";
    }
    for (const auto& v : gone) {
        EXPECT_FALSE(tree->contains(*v));
        EXPECT_EQ(v->viewPath(), "");
    }
}

} // namespace
} // namespace velmo
