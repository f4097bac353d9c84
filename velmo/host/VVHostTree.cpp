#include "velmo/host/VVHostTree.h"

#include <limits>

#include <boost/unordered/unordered_flat_map.hpp>

#include "velmo/foundation/VDClass.h"
#include "velmo/model/document/VDModelApp.h"

namespace velmo {

namespace {
constexpr std::uint32_t kNoNode = std::numeric_limits<std::uint32_t>::max();
} // namespace

// Nodes live in one vector and name each other by position, and a flat hash table finds a
// view's node: a look-up touches two places in memory, whatever the size of the tree, which
// keeps a walk over a wide tree linear in practice and not only on paper. A view is in its
// parent's `children` exactly when its `parent` names that node, and `slot` is its place there,
// so joining and leaving a list take constant time; lists keep no order.
struct VVHostTree::Index {
    struct Node {
        std::weak_ptr<VDModelView> view;
        const VDModelView* key = nullptr; ///< nullptr: a free node
        NodeId parent = kNoNode;
        std::uint32_t slot = 0;
        /// The pass of `syncChildren` that last found the view in its parent's list.
        std::uint64_t seen = 0;
        std::vector<NodeId> children;
    };

    std::vector<Node> nodes;
    std::vector<NodeId> freeNodes;
    boost::unordered_flat_map<const VDModelView*, NodeId> byView;
    std::uint64_t pass = 0;

    NodeId find(const VDModelView* view) const {
        const auto it = byView.find(view);
        return it == byView.end() ? kNoNode : it->second;
    }

    NodeId add(const std::shared_ptr<VDModelView>& view) {
        NodeId id;
        if (!freeNodes.empty()) {
            id = freeNodes.back();
            freeNodes.pop_back();
        } else {
            id = static_cast<NodeId>(nodes.size());
            nodes.emplace_back();
        }
        nodes[id].view = view;
        nodes[id].key = view.get();
        byView.emplace(view.get(), id);
        return id;
    }

    void link(NodeId id, NodeId parent) {
        auto& siblings = nodes[parent].children;
        nodes[id].parent = parent;
        nodes[id].slot = static_cast<std::uint32_t>(siblings.size());
        siblings.push_back(id);
    }

    void unlink(NodeId id) {
        Node& node = nodes[id];
        if (node.parent == kNoNode) return;
        auto& siblings = nodes[node.parent].children;
        const NodeId last = siblings.back();
        siblings[node.slot] = last;
        nodes[last].slot = node.slot;
        siblings.pop_back();
        node.parent = kNoNode;
    }

    void remove(NodeId id) {
        byView.erase(nodes[id].key);
        nodes[id] = Node();
        freeNodes.push_back(id);
    }
};

const VDClass& VVHostTree::classObject() {
    static const VDClass cls("VVHostTree", nullptr, nullptr);
    return cls;
}

VVHostTree::VVHostTree() : index_(std::make_unique<Index>()) {}

std::shared_ptr<VVHostTree> VVHostTree::attach(const std::shared_ptr<VDModelView>& root,
                                               const std::shared_ptr<VDModel>& owner) {
    std::shared_ptr<VVHostTree> tree(new VVHostTree());
    tree->owner_ = owner;
    if (root) tree->addRoot(root);
    return tree;
}

std::shared_ptr<VVHostTree> VVHostTree::attachDocument(const std::shared_ptr<VDModel>& document) {
    std::shared_ptr<VVHostTree> tree(new VVHostTree());
    tree->owner_ = document;
    if (!document) return tree;
    if (auto view = std::dynamic_pointer_cast<VDModelView>(document)) {
        tree->addRoot(view);
        return tree;
    }
    // A document's roots: its screens, its free views and its components' masters.
    if (const auto app = std::dynamic_pointer_cast<VDModelApp>(document)) {
        for (const Array& roots : {app->screens(), app->views(), app->components()}) {
            for (const Value& root : roots) {
                if (auto view = root.objectAs<VDModelView>()) tree->addRoot(view);
            }
        }
    }
    return tree;
}

VVHostTree::~VVHostTree() {
    detach();
}

void VVHostTree::detach() {
    for (const auto& node : index_->nodes) {
        if (auto view = node.view.lock(); view && view->relatedUIElement().get() == this) {
            view->setRelatedUIElement(nullptr);
        }
    }
    index_ = std::make_unique<Index>();
    roots_.clear();
}

std::size_t VVHostTree::size() const {
    return index_->byView.size();
}

bool VVHostTree::contains(const VDModelView& view) const {
    return index_->find(&view) != kNoNode;
}

void VVHostTree::addRoot(const std::shared_ptr<VDModelView>& root) {
    roots_.push_back(root);
    install(root, kNoNode);
}

void VVHostTree::install(const std::shared_ptr<VDModelView>& view, NodeId parent) {
    Index& index = *index_;
    NodeId id = index.find(view.get());
    if (id == kNoNode) {
        id = index.add(view);
        if (parent != kNoNode) index.link(id, parent);
    } else if (index.nodes[id].parent != parent) {
        // A view that moves in from elsewhere in the tree leaves its old parent's list first.
        index.unlink(id);
        if (parent != kNoNode) index.link(id, parent);
    }
    view->setRelatedUIElement(std::static_pointer_cast<VVHostTree>(shared_from_this()));
    syncChildren(view, id, true);
}

void VVHostTree::syncChildren(const std::shared_ptr<VDModelView>& view, NodeId id, bool walkKnown) {
    Index& index = *index_;
    const std::uint64_t pass = ++index.pass;
    const Array subviews = view->subviews();
    index.byView.reserve(index.byView.size() + subviews.size());
    for (const Value& v : subviews) {
        auto sub = v.objectAs<VDModelView>();
        if (!sub) continue;
        NodeId child = index.find(sub.get());
        if (walkKnown || child == kNoNode || index.nodes[child].parent != id) {
            install(sub, id);
            child = index.find(sub.get());
        }
        index.nodes[child].seen = pass;
    }
    // What the list no longer holds leaves the tree; forgetting a child moves the last one into
    // its slot, which is looked at next.
    for (std::size_t i = 0; i < index.nodes[id].children.size();) {
        const NodeId child = index.nodes[id].children[i];
        if (index.nodes[child].seen == pass) {
            ++i;
        } else {
            forget(child);
        }
    }
}

void VVHostTree::forget(NodeId id) {
    Index& index = *index_;
    index.unlink(id);
    if (auto v = index.nodes[id].view.lock(); v && v->relatedUIElement().get() == this)
        v->setRelatedUIElement(nullptr);
    const std::vector<NodeId> children = std::move(index.nodes[id].children);
    index.remove(id);
    // Every child listed is still this view's: one that moved away left the list.
    for (const NodeId child : children) {
        index.nodes[child].parent = kNoNode;
        forget(child);
    }
}

std::shared_ptr<VDModelView> VVHostTree::modelViewOfSuperView(const VDModelView& view) {
    const NodeId id = index_->find(&view);
    if (id == kNoNode) return nullptr;
    const NodeId parent = index_->nodes[id].parent;
    return parent == kNoNode ? nullptr : index_->nodes[parent].view.lock();
}

std::shared_ptr<VDModelView> VVHostTree::modelViewOfRootView(const VDModelView& view) {
    NodeId id = index_->find(&view);
    if (id == kNoNode) return nullptr;
    while (index_->nodes[id].parent != kNoNode)
        id = index_->nodes[id].parent;
    return index_->nodes[id].view.lock();
}

std::shared_ptr<VDModel> VVHostTree::ownerAppModelViewOfView(const VDModelView& view) {
    return contains(view) ? owner_.lock() : nullptr;
}

void VVHostTree::modelViewUpdatedSubviewsOrder(VDModelView& movedView) {
    if (onSubviewsOrderChanged) onSubviewsOrderChanged(movedView);
}

void VVHostTree::modelViewDidSetSubviews(VDModelView& view) {
    const NodeId id = index_->find(&view);
    if (id == kNoNode) return;
    if (const auto self = index_->nodes[id].view.lock()) syncChildren(self, id, false);
}

std::vector<std::shared_ptr<VDModelView>> VVHostTree::roots() const {
    std::vector<std::shared_ptr<VDModelView>> out;
    for (const auto& r : roots_) {
        if (auto root = r.lock()) out.push_back(root);
    }
    return out;
}

} // namespace velmo
