#include "velmo/model/view/VDModelView.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

#include "velmo/foundation/NotificationCenter.h"
#include "velmo/model/view/VDModelViewPathIndex.h"

namespace velmo {

const VDModelClass& VDModelView::classObject() {
    using C = VDModelView;
    static const VDModelClass cls(
        "VDModelView", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::x, &C::setX>("x"),
            field<&C::y, &C::setY>("y"),
            field<&C::width, &C::setWidth>("width"),
            field<&C::height, &C::setHeight>("height"),
            field<&C::color, &C::setColor>("color"),
            field<&C::borderColor, &C::setBorderColor>("borderColor"),
            field<&C::borderWidth, &C::setBorderWidth>("borderWidth"),
            field<&C::borderPosition, &C::setBorderPosition>("borderPosition"),
            field<&C::alpha, &C::setAlpha>("alpha"),
            field<&C::rotation, &C::setRotation>("rotation"),
            field<&C::scale, &C::setScale>("scale"),
            field<&C::hidden, &C::setHidden>("hidden"),
            field<&C::cornersRadius, &C::setCornersRadius>("cornersRadius"),
            field<&C::subviews, &C::setSubviews>("subviews"),
            field<&C::actions, &C::setActions>("actions"),
            field<&C::constraints, &C::setConstraints>("constraints"),
            field<&C::viewName, &C::setViewName>("viewName"),
            field<&C::userChangedViewName, &C::setUserChangedViewName>("userChangedViewName"),
            field<&C::defaultData, &C::setDefaultData>("defaultData"),
            field<&C::relatedDataField, &C::setRelatedDataField>("relatedDataField"),
            field<&C::userChangedVarId, &C::setUserChangedVarId>("userChangedVarId"),
            field<&C::locked, &C::setLocked>("locked"),
            field<&C::thumbLocalPath, &C::setThumbLocalPath>("thumbLocalPath"),
            field<&C::thumbURLString, &C::setThumbURLString>("thumbURLString"),
            field<&C::sketchData, &C::setSketchData>("sketchData"),
            field<&C::sketchId, &C::setSketchId>("sketchId"),
            field<&C::frameAsArray, &C::setFrameAsArray>("frameAsArray"),
            field<&C::breakpoints, &C::setBreakpoints>("breakpoints"),
            field<&C::maskToBounds, &C::setMaskToBounds>("maskToBounds"),
            field<&C::isAnchorTarget, &C::setIsAnchorTarget>("isAnchorTarget"),
            field<&C::isForm, &C::setIsForm>("isForm"),
            field<&C::hover, &C::setHover>("hover"),
            field<&C::enterAnimation, &C::setEnterAnimation>("enterAnimation"),
            field<&C::widgetSnippet, &C::setWidgetSnippet>("widgetSnippet"),
            field<&C::isFixedPosition, &C::setIsFixedPosition>("isFixedPosition"),
            field<&C::loadOnScroll, &C::setLoadOnScroll>("loadOnScroll"),
            field<&C::states, &C::setStates>("states"),
            field<&C::isGroup, &C::setIsGroup>("isGroup"),
            field<&C::exportSettings, &C::setExportSettings>("exportSettings"),
            field<&C::timelineType, &C::setTimelineType>("timelineType"),
            field<&C::videoURL, &C::setVideoURL>("videoURL"),
            field<&C::defaultStateName, &C::setDefaultStateName>("defaultStateName"),
            field<&C::padding, &C::setPadding>("padding"),
            field<&C::originalFrame, &C::setOriginalFrame>("originalFrame"),
            field<&C::specsInfo, &C::setSpecsInfo>("specsInfo"),
            field<&C::importedID, &C::setImportedID>("importedID"),
            field<&C::componentInstanceData, &C::setComponentInstanceData>("componentInstanceData"),
            field<&C::componentMasterData, &C::setComponentMasterData>("componentMasterData"),
            field<&C::backgroundBlur, &C::setBackgroundBlur>("backgroundBlur"),
            unlistedField<&C::rotationX, &C::setRotationX>("rotationX"),
            unlistedField<&C::rotationY, &C::setRotationY>("rotationY"),
            unlistedField<&C::selectableNotEditable, &C::setSelectableNotEditable>("selectableNotEditable"),
        },
        {.prefix = "View"});
    return cls;
}

void VDModelView::fillDefaultValues() {
    VDModel::fillDefaultValues();
    x_ = 0;
    y_ = 0;
    width_ = 100;
    height_ = 100;
    color_ = VDModelColor::clearColor();
    borderColor_ = VDModelColor::colorWithRed(0, 0, 0, 0);
    alpha_ = 1;
    rotation_ = 0;
    scale_ = 1;
    subviews_ = Array::create();
    actions_ = Array::create();
    viewName_ = "View";
}

VDModel::FieldList VDModelView::lightFields() const {
    if (!constraints_ || !constraints_->isEmpty()) return fields();
    FieldList list;
    list.reserve(fields().size());
    for (const VDField* f : fields()) {
        if (f->name != "constraints") list.push_back(f);
    }
    return list;
}

VDModel::NameList VDModelView::stateAffectedFields() const {
    NameList names = VDModel::stateAffectedFields();
    for (std::string_view n : {"x", "y", "width", "height", "alpha", "rotation", "rotationX", "rotationY",
                               "scale", "cornersRadius", "constraints"}) {
        names.push_back(n);
    }
    return names;
}

VDModel::NameList VDModelView::undoAffectedFields() const {
    NameList names = stateAffectedFields();
    names.push_back("states");
    names.push_back("actions");
    return names;
}

VDModel::NameList VDModelView::breakpointAffectedFields() {
    return {"x", "y", "width", "height", "hidden", "constraints"};
}

void VDModelView::setSubviews(Array v) {
    subviews_ = std::move(v);
    if (auto element = relatedUIElement()) element->modelViewDidSetSubviews(*this);
}

void VDModelView::setRelatedUIElement(const std::shared_ptr<VDModelViewRelatedUIElement>& element) {
    relatedUIElement_ = element;
    if (auto object = std::dynamic_pointer_cast<Object>(element)) allRelatedUIElements().addObject(object);
}

VDWeakMutableSet& VDModelView::allRelatedUIElements() {
    if (!allRelatedUIElements_) allRelatedUIElements_ = std::make_unique<VDWeakMutableSet>();
    return *allRelatedUIElements_;
}

void VDModelView::setHover(std::shared_ptr<VDModelHover> v) {
    hover_ = v ? modelCopy(v) : nullptr;
}

void VDModelView::fixAfterSketchExport() {
    fixBorderAfterSketchExport();
    if (componentInstanceData_) {
        componentInstanceData_->setOwner(std::static_pointer_cast<VDModelView>(sharedFromThis()));
        componentInstanceData_->fixAfterSketchExport();
    }
    for (const Value& v : subviews()) {
        if (const auto sub = v.objectAs<VDModelView>()) sub->fixAfterSketchExport();
    }
}

void VDModelView::fixBorderAfterSketchExport() {
    // Web boxes draw borders inside; the design tool also centres them or puts them outside.
    if (borderWidth_ <= 0 || borderPosition_ == "inside" || !constraints_ || constraints_->isEmpty()) {
        borderPosition_ = "inside";
        return;
    }
    const float grow = borderPosition_ == "center" ? borderWidth_ / 2 : borderWidth_;
    for (const auto& rule : {constraints_->width(), constraints_->height()}) {
        if (rule && rule->enabled()) rule->setConstant(rule->constant() + 2 * grow);
    }
    for (const auto& rule :
         {constraints_->top(), constraints_->left(), constraints_->right(), constraints_->bottom()}) {
        if (rule && rule->enabled()) rule->setConstant(rule->constant() - grow);
    }
    borderPosition_ = "inside";
}

void VDModelView::setEnterAnimation(std::shared_ptr<VDModelAnimationWeb> v) {
    enterAnimation_ = v ? modelCopy(v) : nullptr;
}

// ---------------------------------------------------------------- hierarchy

void VDModelView::removeSubview(const VDModelView& view) {
    Array kept = Array::create();
    for (const Value& v : subviews()) {
        if (!(v.isObject() && v.object()->isEqual(view))) kept.push_back(v);
    }
    setSubviews(kept);
}

void VDModelView::clearConstraints() {
    setConstraints(VDModelViewConstraints::create());
}

std::shared_ptr<VDModelView> VDModelView::parentView() const {
    auto element = relatedUIElement();
    return element ? element->modelViewOfSuperView(*this) : nullptr;
}

void VDModelView::subviewDidUpdate() {
    if (auto parent = parentView()) parent->subviewDidUpdate();
}

Dictionary VDModelView::hierarchyTree() const {
    Dictionary tree = Dictionary::create();
    for (const Value& v : subviews()) {
        const auto sub = v.objectAs<VDModelView>();
        if (!sub) continue;
        if (!sub->variableID()) {
            throw std::invalid_argument("hierarchyTree: a subview has no variable name");
        }
        tree.set(*sub->variableID(), Value(sub->hierarchyTree()));
    }
    return tree;
}

namespace {
void collectNestedComponents(const VDModelView& view, Array& out) {
    for (const Value& v : view.subviews()) {
        const auto sub = v.objectAs<VDModelView>();
        if (!sub) continue;
        if (sub->timelineType()) out.push_back(v);
        collectNestedComponents(*sub, out);
    }
}
} // namespace

Array VDModelView::nestedComponents() const {
    Array out = Array::create();
    collectNestedComponents(*this, out);
    return out;
}

// ---------------------------------------------------------------- paths

namespace {

constexpr char kDelimiter = ';';

// The platform's split: the empty text is one empty component.
std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (true) {
        const std::size_t at = text.find(kDelimiter, start);
        parts.emplace_back(
            text.substr(start, at == std::string_view::npos ? std::string_view::npos : at - start));
        if (at == std::string_view::npos) break;
        start = at + 1;
    }
    return parts;
}

std::string join(const std::vector<std::string>& parts, std::size_t from = 0) {
    std::string out;
    for (std::size_t i = from; i < parts.size(); ++i) {
        if (i > from) out += kDelimiter;
        out += parts[i];
    }
    return out;
}

// For relative paths an empty path has no components.
std::vector<std::string> pathComponents(const std::string& path) {
    return path.empty() ? std::vector<std::string>() : split(path);
}

} // namespace

std::string VDModelView::viewPath() const {
    const auto element = relatedUIElement();
    if (!element) return std::string();
    auto ancestor = element->modelViewOfSuperView(*this);
    if (!ancestor) return std::string();
    std::string path = variableID().value_or("");
    // Climb while the ancestor is named and has a parent of its own: the root stays out.
    while (ancestor && ancestor->variableID()) {
        auto further = element->modelViewOfSuperView(*ancestor);
        if (!further) break;
        path = *ancestor->variableID() + kDelimiter + path;
        ancestor = std::move(further);
    }
    return path;
}

std::string VDModelView::relativePathToModel(const VDModelView& other) const {
    const auto mine = pathComponents(viewPath());
    const auto theirs = pathComponents(other.viewPath());
    std::size_t common = 0;
    while (common < mine.size() && common < theirs.size() && mine[common] == theirs[common])
        ++common;
    std::vector<std::string> parts{"this"};
    for (std::size_t i = common; i < mine.size(); ++i)
        parts.emplace_back("parent");
    for (std::size_t i = common; i < theirs.size(); ++i)
        parts.push_back(theirs[i]);
    return join(parts);
}

std::shared_ptr<VDModelView> VDModelView::modelWithRelativePath(std::string_view path,
                                                                VDModelViewPathIndex* index) {
    return modelWithRelativePathComponents(split(path), 0, index);
}

std::shared_ptr<VDModelView>
VDModelView::modelWithRelativePathComponents(const std::vector<std::string>& components, std::size_t from,
                                             VDModelViewPathIndex* index) {
    auto self = std::static_pointer_cast<VDModelView>(sharedFromThis());
    if (from >= components.size() || components[from].empty()) return self;
    const std::string& head = components[from];
    if (head == "this") return modelWithRelativePathComponents(components, from + 1, index);
    if (head == "parent") {
        auto parent = parentView();
        return parent ? parent->modelWithRelativePathComponents(components, from + 1, index) : nullptr;
    }
    auto sub =
        index ? index->subviewNamed(*this, head) : VDModelViewPathIndex::searchSubviewNamed(*this, head);
    return sub ? sub->modelWithRelativePathComponents(components, from + 1, index) : nullptr;
}

std::string VDModelView::relativeToAbsolutePath(std::string_view relativePath) const {
    const auto mine = split(viewPath());
    const auto relative = split(relativePath);
    std::size_t parents = 0;
    std::size_t scan = 0;
    for (; scan < relative.size(); ++scan) {
        if (relative[scan] == "parent") {
            ++parents;
        } else if (relative[scan] != "this") {
            break;
        }
    }
    if (parents > mine.size()) throw std::out_of_range("relativeToAbsolutePath: more parents than levels");
    std::vector<std::string> parts(mine.begin(), mine.end() - static_cast<std::ptrdiff_t>(parents));
    parts.insert(parts.end(), relative.begin() + static_cast<std::ptrdiff_t>(scan), relative.end());
    return join(parts);
}

std::string VDModelView::fixedRelativePath(const std::string& relativePath,
                                           const std::string& oldAbsolutePath,
                                           const VDModelView& movedView) const {
    std::string absolute;
    try {
        absolute = relativeToAbsolutePath(relativePath);
    } catch (const std::out_of_range&) {
        // A path that climbs above the root names nothing; a rename elsewhere leaves it be.
        return relativePath;
    }
    if (absolute == oldAbsolutePath) return relativePathToModel(movedView);
    const std::string prefix = oldAbsolutePath + kDelimiter;
    if (absolute.starts_with(prefix)) {
        return relativePathToModel(movedView) + absolute.substr(oldAbsolutePath.size());
    }
    return relativePath;
}

void VDModelView::setVariableID(std::optional<std::string> variableID) {
    const auto element = relatedUIElement();
    if (!element) {
        VDModel::setVariableID(std::move(variableID));
        return;
    }
    const std::string oldPath = viewPath();
    VDModel::setVariableID(std::move(variableID));
    if (auto root = element->modelViewOfRootView(*this))
        root->updateActionsRelativePathsRecursiveForModel(*this, oldPath);
}

Dictionary VDModelView::subviewsByPath() const {
    Dictionary map = Dictionary::create();
    fillSubviewsPathInMap(map, modelID().value_or("") + kDelimiter);
    return map;
}

void VDModelView::fillSubviewsPathInMap(Dictionary& map, const std::string& prefix) const {
    for (const Value& v : subviews()) {
        const auto sub = v.objectAs<VDModelView>();
        if (!sub) continue;
        const std::string key = prefix + sub->modelID().value_or("");
        map.set(key, v);
        sub->fillSubviewsPathInMap(map, key + kDelimiter);
    }
}

// ---------------------------------------------------------------- z-order and breakpoints

void VDModelView::changeZPositionBy(std::int32_t delta, VDModelView* container) {
    if (!container) return;
    const Array siblings = container->subviews();
    std::size_t index = siblings.size();
    for (std::size_t i = 0; i < siblings.size(); ++i) {
        // Membership is equality, as the platform's arrays test it, with identity first.
        const auto object = siblings[i].object();
        if (object && (object.get() == this || object->isEqual(*this))) {
            index = i;
            break;
        }
    }
    if (index == siblings.size()) return;
    const auto count = static_cast<std::int64_t>(siblings.size());
    Array reordered = siblings.copy();
    const Value moved = reordered[index];
    reordered.erase(index);
    std::int64_t target = static_cast<std::int64_t>(index) + delta;
    if (target >= count) target = count - 1;
    if (target < 0) target = 0;
    reordered.insert(static_cast<std::size_t>(target), moved);
    container->setSubviews(reordered);
    if (auto element = container->relatedUIElement();
        element && element->respondsToModelViewUpdatedSubviewsOrder()) {
        element->modelViewUpdatedSubviewsOrder(*this);
    }
}

Dictionary VDModelView::addBreakpoint(std::string_view key) {
    if (breakpoints_.isNil()) breakpoints_ = Dictionary::create();
    Dictionary entry = breakpoints_.get(key).dictionary();
    if (entry.isNil()) {
        entry = Dictionary::create();
        breakpoints_.set(key, Value(entry));
    }
    return entry;
}

void VDModelView::removeBreakpoint(std::string_view key, bool recursive) {
    if (breakpoints_.contains(key)) {
        if (breakpoints_.size() == 1) {
            breakpoints_ = Dictionary();
        } else {
            Dictionary kept = breakpoints_.copy();
            kept.remove(key);
            breakpoints_ = kept;
        }
    }
    if (!recursive) return;
    for (const Value& v : subviews()) {
        if (auto sub = v.objectAs<VDModelView>()) sub->removeBreakpoint(key, true);
    }
}

// ---------------------------------------------------------------- other

std::string VDModelView::description() const {
    return fmt::format("[{}] <{}> {}", static_cast<const void*>(this), modelClass().name(),
                       viewName().value_or("(null)"));
}

void VDModelView::clearOverridesRecursive() {
    clearOverrides();
    for (const Value& v : subviews()) {
        if (auto sub = v.objectAs<VDModelView>()) sub->clearOverridesRecursive();
    }
}

void VDModelView::postViewDeletedNotification() {
    NotificationCenter::defaultCenter().post(kModelViewDeletedNotification, shared_from_this());
}

void VDModelView::postUpdateNotification() {
    VDModel::postUpdateNotification();
    if (auto parent = parentView()) parent->subviewDidUpdate();
}

} // namespace velmo
