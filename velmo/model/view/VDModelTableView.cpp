#include "velmo/model/view/VDModelTableView.h"

#include <stdexcept>
#include <string>

namespace velmo {

const VDModelClass& VDModelTableView::classObject() {
    using C = VDModelTableView;
    static const VDModelClass cls(
        "VDModelTableView", &VDModelView::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::cells, &C::setCells>("cells"),
            field<&C::dataList, &C::setDataList>("dataList"),
            field<&C::header, &C::setHeader>("header"),
            field<&C::footer, &C::setFooter>("footer"),
            field<&C::sectionHeader, &C::setSectionHeader>("sectionHeader"),
            field<&C::hasHeader, &C::setHasHeader>("hasHeader"),
            field<&C::hasFooter, &C::setHasFooter>("hasFooter"),
            field<&C::hasSectionHeader, &C::setHasSectionHeader>("hasSectionHeader"),
            field<&C::isStatic, &C::setIsStatic>("isStatic"),
            field<&C::hasSeperator, &C::setHasSeperator>("hasSeperator"),
            field<&C::seperatorOffset, &C::setSeperatorOffset>("seperatorOffset"),
            field<&C::seperatorColor, &C::setSeperatorColor>("seperatorColor"),
            field<&C::pagingEnabled, &C::setPagingEnabled>("pagingEnabled"),
        },
        {.prefix = "Table"});
    return cls;
}

void VDModelTableView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setWidth(320);
    setHeight(320);
    setViewName("Table");
    cells_ = Array::create();
    hasSeperator_ = 1;
    seperatorOffset_ = 15;
    seperatorColor_ = VDModelColor::tableSeperatorDefaultColor();
}

namespace {

void appendReversed(Array& out, const Array& items) {
    for (std::size_t i = items.size(); i-- > 0;)
        out.push_back(items[i]);
}

// A header or footer that is switched on but missing has no place in a list.
void appendIfShown(Array& out, bool shown, const std::shared_ptr<VDModelView>& view) {
    if (shown && view) out.push_back(Value(view));
}

} // namespace

Array VDModelTableView::subviews() const {
    Array list = Array::create(cells_.size() + 2);
    appendIfShown(list, hasHeader(), header_);
    if (isStatic()) appendReversed(list, cells_);
    appendIfShown(list, hasFooter(), footer_);
    return list;
}

void VDModelTableView::setSubviews(Array) {}

Array VDModelTableView::subviewsForTreeView() const {
    Array list = Array::create(cells_.size() + 2);
    appendIfShown(list, hasHeader(), header_);
    appendReversed(list, cells_);
    appendIfShown(list, hasFooter(), footer_);
    return list;
}

void VDModelTableView::removeSubview(const VDModelView& view) {
    if (header_.get() == &view) {
        header_ = nullptr;
        hasHeader_ = 0;
    } else if (footer_.get() == &view) {
        footer_ = nullptr;
        hasFooter_ = 0;
    } else if (!dataList_ || isStatic()) {
        Array kept = Array::create(cells_.size());
        for (const Value& v : cells_) {
            if (!(v.isObject() && v.object()->isEqual(view))) kept.push_back(v);
        }
        cells_ = kept;
    } else {
        return;
    }
    // The computed list changed: the host follows subview lists as they are set.
    if (auto element = relatedUIElement()) element->modelViewDidSetSubviews(*this);
}

Array VDModelTableView::allVariableIDs() const {
    Array names = Array::create(cells_.size() + 2);
    for (const Value& v : cells_) {
        const auto cell = v.objectAs<VDModelView>();
        if (cell && cell->variableID()) names.push_back(Value(*cell->variableID()));
    }
    const auto append = [&names](bool shown, const std::shared_ptr<VDModelView>& view, const char* what) {
        if (!shown) return;
        if (!view || !view->variableID()) {
            throw std::invalid_argument(std::string("allVariableIDs: the table's ") + what +
                                        " has no variable name");
        }
        names.push_back(Value(*view->variableID()));
    };
    append(hasHeader(), header_, "header");
    append(hasFooter(), footer_, "footer");
    return names;
}

} // namespace velmo
