#pragma once

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A collection of items. It adds nothing: it exists so that documents can name the class.
class VDModelCollectionView : public VDModelView {
    VD_MODEL_CLASS(VDModelCollectionView)
};

} // namespace velmo
