#include "velmo/host/VVHostTree.h"

#include <algorithm>
#include <unordered_set>

#include "velmo/foundation/VDClass.h"

namespace velmo {

const VDClass& VVHostTree::classObject() {
    static const VDClass cls("VVHostTree", nullptr, nullptr);
    return cls;
}

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
    // A document's screens are its roots; read by name, as any model's fields can be.
    if (document->modelClass().fieldNamed("screens")) {
        for (const Value& screen : document->valueForKey("screens").array()) {
            if (auto view = screen.objectAs<VDModelView>()) tree->addRoot(view);
        }
    }
    return tree;
}

VVHostTree::~VVHostTree() {
    detach();
}

void VVHostTree::detach() {
    for (auto& [key, entry] : entries_) {
        if (auto view = entry.view.lock(); view && view->relatedUIElement().get() == this) {
            view->setRelatedUIElement(nullptr);
        }
    }
    entries_.clear();
    roots_.clear();
}

void VVHostTree::addRoot(const std::shared_ptr<VDModelView>& root) {
    roots_.push_back(root);
    install(root, nullptr);
}

void VVHostTree::install(const std::shared_ptr<VDModelView>& view,
                         const std::shared_ptr<VDModelView>& parent) {
    // A view that moves in from elsewhere in the tree leaves its old parent's list first.
    if (auto old = entries_.find(view.get()); old != entries_.end()) {
        if (auto oldParent = old->second.parent.lock(); oldParent && oldParent != parent) {
            auto& siblings = entries_[oldParent.get()].children;
            std::erase(siblings, view.get());
        }
    }
    Entry& entry = entries_[view.get()];
    entry.view = view;
    entry.parent = parent;
    entry.children.clear();
    if (parent) {
        auto& siblings = entries_[parent.get()].children;
        if (std::find(siblings.begin(), siblings.end(), view.get()) == siblings.end())
            siblings.push_back(view.get());
    }
    view->setRelatedUIElement(std::static_pointer_cast<VVHostTree>(shared_from_this()));
    for (const Value& v : view->subviews()) {
        if (auto sub = v.objectAs<VDModelView>()) install(sub, view);
    }
}

void VVHostTree::forget(const VDModelView* view) {
    const auto it = entries_.find(view);
    if (it == entries_.end()) return;
    const std::vector<const VDModelView*> children = it->second.children;
    if (auto v = it->second.view.lock(); v && v->relatedUIElement().get() == this)
        v->setRelatedUIElement(nullptr);
    entries_.erase(it);
    for (const VDModelView* child : children) {
        const auto c = entries_.find(child);
        // A child that moved under another parent stays.
        if (c != entries_.end() && c->second.parent.lock().get() == view) forget(child);
    }
}

std::shared_ptr<VDModelView> VVHostTree::modelViewOfSuperView(const VDModelView& view) {
    const auto it = entries_.find(&view);
    return it == entries_.end() ? nullptr : it->second.parent.lock();
}

std::shared_ptr<VDModelView> VVHostTree::modelViewOfRootView(const VDModelView& view) {
    const auto it = entries_.find(&view);
    if (it == entries_.end()) return nullptr;
    std::shared_ptr<VDModelView> current = it->second.view.lock();
    while (current) {
        auto parent = modelViewOfSuperView(*current);
        if (!parent) break;
        current = std::move(parent);
    }
    return current;
}

std::shared_ptr<VDModel> VVHostTree::ownerAppModelViewOfView(const VDModelView& view) {
    return contains(view) ? owner_.lock() : nullptr;
}

void VVHostTree::modelViewUpdatedSubviewsOrder(VDModelView& movedView) {
    if (onSubviewsOrderChanged) onSubviewsOrderChanged(movedView);
}

void VVHostTree::modelViewDidSetSubviews(VDModelView& view) {
    const auto it = entries_.find(&view);
    if (it == entries_.end()) return;
    const auto parent = it->second.view.lock();
    if (!parent) return;
    std::unordered_set<const VDModelView*> now;
    std::vector<std::shared_ptr<VDModelView>> added;
    for (const Value& v : view.subviews()) {
        auto sub = v.objectAs<VDModelView>();
        if (!sub) continue;
        now.insert(sub.get());
        const auto known = entries_.find(sub.get());
        if (known == entries_.end() || known->second.parent.lock() != parent) added.push_back(sub);
    }
    const std::vector<const VDModelView*> before = entries_[&view].children;
    for (const VDModelView* child : before) {
        if (now.count(child) == 0) {
            auto c = entries_.find(child);
            if (c != entries_.end() && c->second.parent.lock() == parent) forget(child);
            std::erase(entries_[&view].children, child);
        }
    }
    for (const auto& sub : added)
        install(sub, parent);
    // Keep the index's order that of the list, for walks that follow it.
    auto& children = entries_[&view].children;
    children.clear();
    for (const Value& v : view.subviews()) {
        if (auto sub = v.objectAs<VDModelView>()) children.push_back(sub.get());
    }
}

std::vector<std::shared_ptr<VDModelView>> VVHostTree::roots() const {
    std::vector<std::shared_ptr<VDModelView>> out;
    for (const auto& r : roots_) {
        if (auto root = r.lock()) out.push_back(root);
    }
    return out;
}

} // namespace velmo
