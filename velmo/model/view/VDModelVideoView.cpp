#include "velmo/model/view/VDModelVideoView.h"

namespace velmo {

const VDModelClass& VDModelVideoView::classObject() {
    using C = VDModelVideoView;
    static const VDModelClass cls("VDModelVideoView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::videoName, &C::setVideoName>("videoName"),
                                      // The view's own field, listed a second time: the key is written once,
                                      // and set twice on reading, to the same value.
                                      field<&VDModelView::videoURL, &VDModelView::setVideoURL>("videoURL"),
                                      field<&C::noControls, &C::setNoControls>("noControls"),
                                      field<&C::autoplay, &C::setAutoplay>("autoplay"),
                                      field<&C::allowFullScreen, &C::setAllowFullScreen>("allowFullScreen"),
                                      field<&C::loop, &C::setLoop>("loop"),
                                      field<&C::cover, &C::setCover>("cover"),
                                      field<&C::playOnHover, &C::setPlayOnHover>("playOnHover"),
                                  },
                                  {.prefix = "video"});
    return cls;
}

void VDModelVideoView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("Video");
    setColor(VDModelColor::blackColor());
    videoName_ = "";
    allowFullScreen_ = 1;
}

} // namespace velmo
