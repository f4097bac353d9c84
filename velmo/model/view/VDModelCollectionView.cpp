#include "velmo/model/view/VDModelCollectionView.h"

namespace velmo {

const VDModelClass& VDModelCollectionView::classObject() {
    static const VDModelClass cls("VDModelCollectionView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {});
    return cls;
}

} // namespace velmo
