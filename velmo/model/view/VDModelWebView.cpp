#include "velmo/model/view/VDModelWebView.h"

namespace velmo {

const VDModelClass& VDModelWebView::classObject() {
    using C = VDModelWebView;
    static const VDModelClass cls("VDModelWebView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::url, &C::setUrl>("url"),
                                      field<&C::previewInEditor, &C::setPreviewInEditor>("previewInEditor"),
                                  },
                                  {.prefix = "webView"});
    return cls;
}

void VDModelWebView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("WebView");
    setColor(VDModelColor::whiteColor());
    url_ = "";
}

} // namespace velmo
