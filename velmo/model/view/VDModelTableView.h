#pragma once

#include <cstdint>
#include <memory>

#include "velmo/model/records/VDModelDataList.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A list of rows, with an optional header and footer. Its rows are either shown as they stand
/// (`isStatic`) or generated from a data list, in which case its `cells` are prototypes only.
///
/// Its `subviews` are computed from the header, the cells and the footer: the list is still
/// written under "subviews", for the code generator, but reading it back changes nothing.
class VDModelTableView : public VDModelView {
    VD_MODEL_CLASS(VDModelTableView)

    /// 320 by 320, "Table", a light grey separator 15 in from the left.
    void fillDefaultValues() override;

    /// The `VDModelCellView` prototypes, in document order.
    const Array& cells() const { return cells_; }
    void setCells(Array v) { cells_ = std::move(v); }
    const std::shared_ptr<VDModelDataList>& dataList() const { return dataList_; }
    void setDataList(std::shared_ptr<VDModelDataList> v) { dataList_ = std::move(v); }
    const std::shared_ptr<VDModelView>& header() const { return header_; }
    void setHeader(std::shared_ptr<VDModelView> v) { header_ = std::move(v); }
    const std::shared_ptr<VDModelView>& footer() const { return footer_; }
    void setFooter(std::shared_ptr<VDModelView> v) { footer_ = std::move(v); }
    const std::shared_ptr<VDModelView>& sectionHeader() const { return sectionHeader_; }
    void setSectionHeader(std::shared_ptr<VDModelView> v) { sectionHeader_ = std::move(v); }
    bool hasHeader() const { return hasHeader_ != 0; }
    void setHasHeader(bool v) { hasHeader_ = v ? 1 : 0; }
    bool hasFooter() const { return hasFooter_ != 0; }
    void setHasFooter(bool v) { hasFooter_ = v ? 1 : 0; }
    bool hasSectionHeader() const { return hasSectionHeader_ != 0; }
    void setHasSectionHeader(bool v) { hasSectionHeader_ = v ? 1 : 0; }
    /// The cells are shown as they stand, not generated from data.
    bool isStatic() const { return isStatic_ != 0; }
    void setIsStatic(bool v) { isStatic_ = v ? 1 : 0; }
    bool hasSeperator() const { return hasSeperator_ != 0; }
    void setHasSeperator(bool v) { hasSeperator_ = v ? 1 : 0; }
    float seperatorOffset() const { return seperatorOffset_; }
    void setSeperatorOffset(float v) { seperatorOffset_ = v; }
    const std::shared_ptr<VDModelColor>& seperatorColor() const { return seperatorColor_; }
    void setSeperatorColor(std::shared_ptr<VDModelColor> v) { seperatorColor_ = std::move(v); }
    bool pagingEnabled() const { return pagingEnabled_ != 0; }
    void setPagingEnabled(bool v) { pagingEnabled_ = v ? 1 : 0; }

    // ---- hierarchy

    /// The header when `hasHeader`, the cells in reverse order when `isStatic`, the footer when
    /// `hasFooter`. Cells generated from data are no subviews: they are prototypes.
    Array subviews() const override;
    /// Has no effect: the list is computed. So the "subviews" of a decoded table are ignored.
    void setSubviews(Array v) override;
    /// As `subviews`, but with the cells, in reverse order, always there.
    Array subviewsForTreeView() const override;
    /// The cells, so that paths held inside data-driven rows follow renames.
    Array subviewsPrototypes() const override { return cells_; }
    /// The header or the footer (the same object) goes with its flag; a cell goes by equality,
    /// unless the table is bound to data and not static, which keeps its prototypes.
    void removeSubview(const VDModelView& view) override;
    /// The cells' variable names (unnamed cells take no place), then the header's when
    /// `hasHeader`, then the footer's when `hasFooter`. A header or footer shown without a name
    /// throws `std::invalid_argument`: names are filled in first.
    Array allVariableIDs() const override;

    bool builderShouldGenerateSubviews() const override { return false; }

private:
    Array cells_;
    std::shared_ptr<VDModelDataList> dataList_;
    std::shared_ptr<VDModelView> header_;
    std::shared_ptr<VDModelView> footer_;
    std::shared_ptr<VDModelView> sectionHeader_;
    std::uint8_t hasHeader_ = 0;
    std::uint8_t hasFooter_ = 0;
    std::uint8_t hasSectionHeader_ = 0;
    std::uint8_t isStatic_ = 0;
    std::uint8_t hasSeperator_ = 0;
    float seperatorOffset_ = 0;
    std::shared_ptr<VDModelColor> seperatorColor_;
    std::uint8_t pagingEnabled_ = 0;
};

} // namespace velmo
