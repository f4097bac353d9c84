#pragma once

#include <memory>

namespace velmo {

class VDModel;
class VDModelView;

/// The host-side counterpart of a view, and the only way up the tree: the model keeps no
/// pointer to a parent. The host installs one on each view it shows; a view without one behaves
/// as detached (no parent, empty path).
class VDModelViewRelatedUIElement {
public:
    virtual ~VDModelViewRelatedUIElement() = default;

    /// modelViewOfSuperView: — the parent of the view; nullptr for a root.
    virtual std::shared_ptr<VDModelView> modelViewOfSuperView(const VDModelView& view) = 0;
    /// modelViewOfRootView: — the root of the view's tree.
    virtual std::shared_ptr<VDModelView> modelViewOfRootView(const VDModelView& view) = 0;
    /// ownerAppModelViewOfView: — the document that owns the view.
    virtual std::shared_ptr<VDModel> ownerAppModelViewOfView(const VDModelView& view) = 0;

    /// Whether the element answers `modelViewUpdatedSubviewsOrder`, which is optional.
    virtual bool respondsToModelViewUpdatedSubviewsOrder() const { return false; }
    /// modelViewUpdatedSubviewsOrder: — told after a change of z-order, with the moved view.
    virtual void modelViewUpdatedSubviewsOrder(VDModelView& movedView) { (void)movedView; }

    /// Told after a view's `subviews` were set. Without key-value observing on this platform the
    /// host hears of new subview lists from the setter, as observable properties raise their own
    /// changes.
    virtual void modelViewDidSetSubviews(VDModelView& view) { (void)view; }
};

} // namespace velmo
