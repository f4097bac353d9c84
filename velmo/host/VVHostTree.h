#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "velmo/foundation/Object.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/model/view/VDModelViewRelatedUIElement.h"

namespace velmo {

/// The stand-alone host's side of a view tree: one object that answers for every view of a
/// document or of a free tree, which the library leaves to the host. Attached to its roots, it
/// installs itself on every view below them, keeps a parent index so that a look-up never walks
/// the tree, and follows the tree as subview lists are set. Attaching, and following a new list,
/// cost time in proportion to the views concerned, however many siblings a view has.
///
/// The views hold it weakly: whoever attaches it keeps it alive, and the views are detached
/// when it goes.
class VVHostTree : public Object, public VDModelViewRelatedUIElement {
public:
    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// A free tree: the view is the root.
    static std::shared_ptr<VVHostTree> attach(const std::shared_ptr<VDModelView>& root,
                                              const std::shared_ptr<VDModel>& owner = nullptr);
    /// A document (`VDModelApp`): its screens, free views and components are the roots, and the
    /// document owns them; a view given as a document is a free tree of its own.
    static std::shared_ptr<VVHostTree> attachDocument(const std::shared_ptr<VDModel>& document);

    ~VVHostTree() override;

    /// Takes itself off every view it installed itself on.
    void detach();

    std::shared_ptr<VDModelView> modelViewOfSuperView(const VDModelView& view) override;
    std::shared_ptr<VDModelView> modelViewOfRootView(const VDModelView& view) override;
    std::shared_ptr<VDModel> ownerAppModelViewOfView(const VDModelView& view) override;
    bool respondsToModelViewUpdatedSubviewsOrder() const override { return true; }
    void modelViewUpdatedSubviewsOrder(VDModelView& movedView) override;
    void modelViewDidSetSubviews(VDModelView& view) override;

    /// Called after a change of z-order, with the moved view; for a host's display.
    std::function<void(VDModelView& movedView)> onSubviewsOrderChanged;

    std::vector<std::shared_ptr<VDModelView>> roots() const;
    /// How many views the tree answers for.
    std::size_t size() const;
    bool contains(const VDModelView& view) const;

private:
    VVHostTree();
    /// The parent index: one node per view, in one flat table.
    struct Index;
    using NodeId = std::uint32_t;

    void addRoot(const std::shared_ptr<VDModelView>& root);
    /// Enters the view under the parent (leaving an earlier parent) and walks its whole subtree.
    void install(const std::shared_ptr<VDModelView>& view, NodeId parent);
    /// Makes the index's children of the view those of its subview list. `walkKnown` walks the
    /// subtrees of subviews already entered here too; otherwise only new and moved-in ones.
    void syncChildren(const std::shared_ptr<VDModelView>& view, NodeId id, bool walkKnown);
    void forget(NodeId id);

    std::unique_ptr<Index> index_;
    std::vector<std::weak_ptr<VDModelView>> roots_;
    std::weak_ptr<VDModel> owner_;
};

} // namespace velmo
