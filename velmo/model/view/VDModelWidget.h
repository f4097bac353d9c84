#pragma once

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A widget. It adds nothing: it exists so that documents can name the class.
class VDModelWidget : public VDModelView {
    VD_MODEL_CLASS(VDModelWidget)
};

} // namespace velmo
