#include <gtest/gtest.h>

#include <string>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelCellView.h"
#include "velmo/model/view/VDModelTableView.h"

using namespace velmo;

namespace {

std::shared_ptr<VDModelCellView> cell(const char* name) {
    auto c = VDModelCellView::create();
    c->setVariableID(name);
    return c;
}

// The variable names of a list of views, joined with ",".
std::string names(const Array& views) {
    std::string out;
    for (const Value& v : views) {
        if (!out.empty()) out += ",";
        out += v.objectAs<VDModelView>()->variableID().value_or("?");
    }
    return out;
}

// A table with header "h", cells "c1" and "c2", footer "f"; nothing switched on.
struct Table {
    std::shared_ptr<VDModelView> header = view("h"), footer = view("f");
    std::shared_ptr<VDModelCellView> c1 = cell("c1"), c2 = cell("c2");
    std::shared_ptr<VDModelTableView> table = VDModelTableView::create();
    Table() {
        table->setHeader(header);
        table->setFooter(footer);
        table->setCells(Array{Value(c1), Value(c2)});
    }
};

} // namespace

class VDModelTableViewTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelTableViewTest, SubviewsAreComputedFromHeaderCellsAndFooter) {
    const struct {
        bool isStatic, hasHeader, hasFooter;
        const char* subviews;
        const char* tree;
    } cases[] = {
        {true, true, false, "h,c2,c1", "h,c2,c1"}, {false, true, false, "h", "h,c2,c1"},
        {false, true, true, "h,f", "h,c2,c1,f"},   {true, false, true, "c2,c1,f", "c2,c1,f"},
        {false, false, false, "", "c2,c1"},
    };
    for (const auto& c : cases) {
        Table t;
        t.table->setIsStatic(c.isStatic);
        t.table->setHasHeader(c.hasHeader);
        t.table->setHasFooter(c.hasFooter);
        EXPECT_EQ(names(t.table->subviews()), c.subviews) << c.tree;
        EXPECT_EQ(names(t.table->subviewsForTreeView()), c.tree);
        EXPECT_EQ(names(t.table->subviewsPrototypes()), "c1,c2") << "prototypes in document order";
    }
}

TEST_F(VDModelTableViewTest, TheSubviewsKeyIsWrittenButChangesNothingOnReading) {
    Table t;
    t.table->setIsStatic(true);
    t.table->setSubviews(Array{Value(view("x"))});
    EXPECT_EQ(names(t.table->subviews()), "c2,c1") << "setting has no effect";

    Dictionary d = t.table->toDictionary();
    EXPECT_EQ(d.get("subviews").array().size(), 2u) << "the computed list is written";
    // A "subviews" that disagrees with "cells" is ignored.
    d.set("subviews", Json::parse(R"([{"model_class":"VDModelView","variableID":"x"}])"));
    const auto decoded =
        std::static_pointer_cast<VDModelTableView>(VDModelDecoder::modelObjectFromDictionary(d));
    EXPECT_EQ(names(decoded->subviews()), "c2,c1");
    EXPECT_EQ(Value(decoded->toDictionary()), Value(t.table->toDictionary()));
}

TEST_F(VDModelTableViewTest, RemovingASubview) {
    enum Target { Header, HeaderCopy, Footer, Cell };
    const struct {
        Target target;
        bool dataList, isStatic;
        bool hasHeader, hasFooter;
        const char* cells;
    } cases[] = {
        {Header, false, false, false, true, "c1,c2"},
        {Footer, true, false, true, false, "c1,c2"},
        {Cell, false, false, true, true, "c2"},
        {Cell, true, true, true, true, "c2"},
        // Bound to data and not static: the cells are prototypes, and stay.
        {Cell, true, false, true, true, "c1,c2"},
        // The header goes only as the same object; an equal copy is looked for among the cells.
        {HeaderCopy, false, false, true, true, "c1,c2"},
    };
    for (const auto& c : cases) {
        Table t;
        t.table->setHasHeader(true);
        t.table->setHasFooter(true);
        t.table->setIsStatic(c.isStatic);
        if (c.dataList) t.table->setDataList(VDModelDataList::create());
        const std::shared_ptr<VDModelView> target = c.target == Header       ? t.header
                                                    : c.target == HeaderCopy ? modelCopy(t.header)
                                                    : c.target == Footer     ? t.footer
                                                                             : t.c1;
        t.table->removeSubview(*target);
        SCOPED_TRACE(static_cast<int>(&c - cases));
        EXPECT_EQ(t.table->hasHeader(), c.hasHeader);
        EXPECT_EQ(t.table->header() != nullptr, c.hasHeader);
        EXPECT_EQ(t.table->hasFooter(), c.hasFooter);
        EXPECT_EQ(t.table->footer() != nullptr, c.hasFooter);
        EXPECT_EQ(names(t.table->cells()), c.cells);
    }
}

TEST_F(VDModelTableViewTest, VariableNamesComeFromCellsHeaderAndFooter) {
    Table t;
    t.table->setCells(Array{Value(t.c1), Value(VDModelCellView::create()), Value(t.c2)});
    EXPECT_EQ(t.table->allVariableIDs(), (Array{Value("c1"), Value("c2")})) << "unnamed cells take no place";
    t.table->setHasHeader(true);
    t.table->setHasFooter(true);
    EXPECT_EQ(t.table->allVariableIDs(), (Array{Value("c1"), Value("c2"), Value("h"), Value("f")}));
    EXPECT_EQ(t.table->uniqueNameForVariable(*VDModelView::create(), std::string("C1")), "c11");

    t.header->setVariableID(std::nullopt);
    EXPECT_THROW(t.table->allVariableIDs(), std::invalid_argument) << "a shown header must have a name";
    t.table->setHasHeader(false);
    EXPECT_EQ(t.table->allVariableIDs().size(), 3u) << "a hidden one doesn't count";
}
