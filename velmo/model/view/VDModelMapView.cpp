#include "velmo/model/view/VDModelMapView.h"

namespace velmo {

const VDModelClass& VDModelMapView::classObject() {
    using C = VDModelMapView;
    static const VDModelClass cls("VDModelMapView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::address, &C::setAddress>("address"),
                                  },
                                  {.prefix = "map"});
    return cls;
}

void VDModelMapView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("Map");
    address_ = "";
}

} // namespace velmo
