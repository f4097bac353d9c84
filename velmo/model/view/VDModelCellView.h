#pragma once

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A row of a table: a prototype that data fills, or a row as it stands in a static table.
class VDModelCellView : public VDModelView {
    VD_MODEL_CLASS(VDModelCellView)

    /// 55 high.
    void fillDefaultValues() override;
    /// A change inside a cell surfaces as an update of the cell itself, which then climbs on:
    /// the host redraws rows as a whole.
    void subviewDidUpdate() override;
};

} // namespace velmo
