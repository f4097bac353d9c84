#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "velmo/model/records/VDModelAnimationWeb.h"
#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelFrame.h"
#include "velmo/model/records/VDModelHover.h"
#include "velmo/model/records/VDModelSpecsInfo.h"
#include "velmo/model/records/VPAnimationExportSettings.h"
#include "velmo/model/view/VDModelComponentInstanceData.h"
#include "velmo/model/view/VDModelViewConstraints.h"
#include "velmo/model/view/VDModelViewPadding.h"
#include "velmo/model/view/VDModelViewRelatedUIElement.h"
#include "velmo/runtime/VDWeakMutableSet.h"

namespace velmo {

inline constexpr const char* kModelViewDeletedNotification = "kModelViewDeletedNotification";

/// The node of the document's view tree: geometry and appearance, an ordered list of subviews
/// (back to front), an ordered list of actions, named states and breakpoint variants. Screens,
/// labels, images and every other visual class derive from it.
///
/// Upward navigation goes only through `relatedUIElement`, which the host installs; a view
/// without one is detached. Actions refer to views by paths: absolute paths are the variable
/// names from below the root joined with ";", relative paths start with "this" and climb with
/// "parent".
class VDModelAction;
class VDModelActionScriptAnimation;
class VDModelViewPathIndex;
class VDModelViewState;

class VDModelView : public VDModel {
    VD_MODEL_CLASS(VDModelView)

    void fillDefaultValues() override;
    /// `fieldNames` without "constraints" when the constraints are empty.
    FieldList lightFields() const override;
    NameList stateAffectedFields() const override;
    /// `stateAffectedFields` plus "states" and "actions".
    NameList undoAffectedFields() const;
    /// "x", "y", "width", "height", "hidden", "constraints".
    static NameList breakpointAffectedFields();

    // ---- fields

    float x() const { return x_; }
    void setX(float v) { x_ = v; }
    float y() const { return y_; }
    void setY(float v) { y_ = v; }
    float width() const { return width_; }
    void setWidth(float v) { width_ = v; }
    float height() const { return height_; }
    void setHeight(float v) { height_ = v; }
    const std::shared_ptr<VDModelColor>& color() const { return color_; }
    void setColor(std::shared_ptr<VDModelColor> v) { color_ = std::move(v); }
    const std::shared_ptr<VDModelColor>& borderColor() const { return borderColor_; }
    void setBorderColor(std::shared_ptr<VDModelColor> v) { borderColor_ = std::move(v); }
    float borderWidth() const { return borderWidth_; }
    void setBorderWidth(float v) { borderWidth_ = v; }
    const std::optional<std::string>& borderPosition() const { return borderPosition_; }
    void setBorderPosition(std::optional<std::string> v) { borderPosition_ = std::move(v); }
    float alpha() const { return alpha_; }
    void setAlpha(float v) { alpha_ = v; }
    float rotation() const { return rotation_; }
    void setRotation(float v) { rotation_ = v; }
    float scale() const { return scale_; }
    void setScale(float v) { scale_ = v; }
    bool hidden() const { return hidden_ != 0; }
    void setHidden(bool v) { hidden_ = v ? 1 : 0; }
    float cornersRadius() const { return cornersRadius_; }
    void setCornersRadius(float v) { cornersRadius_ = v; }
    /// `VDModelView` values, back to front. Lists are replaced, not changed in place: set a new
    /// array, so the host hears of it.
    virtual Array subviews() const { return subviews_; }
    virtual void setSubviews(Array v);
    /// The view's `VDModelAction`s, stored as given.
    const Array& actions() const { return actions_; }
    void setActions(Array v) { actions_ = std::move(v); }
    const std::shared_ptr<VDModelViewConstraints>& constraints() const { return constraints_; }
    void setConstraints(std::shared_ptr<VDModelViewConstraints> v) { constraints_ = std::move(v); }
    const std::optional<std::string>& viewName() const { return viewName_; }
    void setViewName(std::optional<std::string> v) { viewName_ = std::move(v); }
    bool userChangedViewName() const { return userChangedViewName_ != 0; }
    void setUserChangedViewName(bool v) { userChangedViewName_ = v ? 1 : 0; }
    const Dictionary& defaultData() const { return defaultData_; }
    void setDefaultData(Dictionary v) { defaultData_ = std::move(v); }
    const std::optional<std::string>& relatedDataField() const { return relatedDataField_; }
    void setRelatedDataField(std::optional<std::string> v) { relatedDataField_ = std::move(v); }
    bool userChangedVarId() const { return userChangedVarId_ != 0; }
    void setUserChangedVarId(bool v) { userChangedVarId_ = v ? 1 : 0; }
    bool locked() const { return locked_ != 0; }
    void setLocked(bool v) { locked_ = v ? 1 : 0; }
    const std::optional<std::string>& thumbLocalPath() const { return thumbLocalPath_; }
    void setThumbLocalPath(std::optional<std::string> v) { thumbLocalPath_ = std::move(v); }
    const std::optional<std::string>& thumbURLString() const { return thumbURLString_; }
    void setThumbURLString(std::optional<std::string> v) { thumbURLString_ = std::move(v); }
    const Dictionary& sketchData() const { return sketchData_; }
    void setSketchData(Dictionary v) { sketchData_ = std::move(v); }
    const std::optional<std::string>& sketchId() const { return sketchId_; }
    void setSketchId(std::optional<std::string> v) { sketchId_ = std::move(v); }
    const Array& frameAsArray() const { return frameAsArray_; }
    void setFrameAsArray(Array v) { frameAsArray_ = std::move(v); }
    /// Breakpoint key to a dictionary of the `breakpointAffectedFields` and their values.
    const Dictionary& breakpoints() const { return breakpoints_; }
    void setBreakpoints(Dictionary v) { breakpoints_ = std::move(v); }
    bool maskToBounds() const { return maskToBounds_ != 0; }
    void setMaskToBounds(bool v) { maskToBounds_ = v ? 1 : 0; }
    bool isAnchorTarget() const { return isAnchorTarget_ != 0; }
    void setIsAnchorTarget(bool v) { isAnchorTarget_ = v ? 1 : 0; }
    bool isForm() const { return isForm_ != 0; }
    void setIsForm(bool v) { isForm_ = v ? 1 : 0; }
    /// Stored as a copy of what is set.
    const std::shared_ptr<VDModelHover>& hover() const { return hover_; }
    void setHover(std::shared_ptr<VDModelHover> v);
    /// An animation given in CSS text; stored as a copy of what is set.
    const std::shared_ptr<VDModelAnimationWeb>& enterAnimation() const { return enterAnimation_; }
    void setEnterAnimation(std::shared_ptr<VDModelAnimationWeb> v);
    const std::optional<std::string>& widgetSnippet() const { return widgetSnippet_; }
    void setWidgetSnippet(std::optional<std::string> v) { widgetSnippet_ = std::move(v); }
    bool isFixedPosition() const { return isFixedPosition_ != 0; }
    void setIsFixedPosition(bool v) { isFixedPosition_ = v ? 1 : 0; }
    bool loadOnScroll() const { return loadOnScroll_ != 0; }
    void setLoadOnScroll(bool v) { loadOnScroll_ = v ? 1 : 0; }
    /// The view's `VDModelViewState`s in order of creation; every set stores a new copy of the
    /// array, without elements that aren't states.
    const Array& states() const { return states_; }
    void setStates(Array v);
    const VDNumber& isGroup() const { return isGroup_; }
    void setIsGroup(VDNumber v) { isGroup_ = v; }
    const std::shared_ptr<VPAnimationExportSettings>& exportSettings() const { return exportSettings_; }
    void setExportSettings(std::shared_ptr<VPAnimationExportSettings> v) { exportSettings_ = std::move(v); }
    /// Its presence makes the view a nested component.
    const std::optional<std::string>& timelineType() const { return timelineType_; }
    void setTimelineType(std::optional<std::string> v) { timelineType_ = std::move(v); }
    const std::optional<std::string>& videoURL() const { return videoURL_; }
    void setVideoURL(std::optional<std::string> v) { videoURL_ = std::move(v); }
    const std::optional<std::string>& defaultStateName() const { return defaultStateName_; }
    void setDefaultStateName(std::optional<std::string> v) { defaultStateName_ = std::move(v); }
    const std::shared_ptr<VDModelViewPadding>& padding() const { return padding_; }
    void setPadding(std::shared_ptr<VDModelViewPadding> v) { padding_ = std::move(v); }
    const std::shared_ptr<VDModelFrame>& originalFrame() const { return originalFrame_; }
    void setOriginalFrame(std::shared_ptr<VDModelFrame> v) { originalFrame_ = std::move(v); }
    const std::shared_ptr<VDModelSpecsInfo>& specsInfo() const { return specsInfo_; }
    void setSpecsInfo(std::shared_ptr<VDModelSpecsInfo> v) { specsInfo_ = std::move(v); }
    const std::optional<std::string>& importedID() const { return importedID_; }
    void setImportedID(std::optional<std::string> v) { importedID_ = std::move(v); }
    /// Present when the view uses a component.
    const std::shared_ptr<VDModelComponentInstanceData>& componentInstanceData() const {
        return componentInstanceData_;
    }
    void setComponentInstanceData(std::shared_ptr<VDModelComponentInstanceData> v) {
        componentInstanceData_ = std::move(v);
    }
    /// Present on a component's master view.
    const std::shared_ptr<VDModelComponentMasterData>& componentMasterData() const {
        return componentMasterData_;
    }
    void setComponentMasterData(std::shared_ptr<VDModelComponentMasterData> v) {
        componentMasterData_ = std::move(v);
    }
    const Dictionary& backgroundBlur() const { return backgroundBlur_; }
    void setBackgroundBlur(Dictionary v) { backgroundBlur_ = std::move(v); }

    // Outside `fieldNames`: neither encoded nor copied.

    /// Reached only through the override mechanism.
    float rotationX() const { return rotationX_; }
    void setRotationX(float v) { rotationX_ = v; }
    float rotationY() const { return rotationY_; }
    void setRotationY(float v) { rotationY_ = v; }
    bool selectableNotEditable() const { return selectableNotEditable_ != 0; }
    void setSelectableNotEditable(bool v) { selectableNotEditable_ = v ? 1 : 0; }
    std::shared_ptr<VDModelViewRelatedUIElement> relatedUIElement() const { return relatedUIElement_.lock(); }
    /// Also enters the element in `allRelatedUIElements`.
    void setRelatedUIElement(const std::shared_ptr<VDModelViewRelatedUIElement>& element);
    /// Every counterpart the view has had on the host's side, held weakly; made at first read.
    VDWeakMutableSet& allRelatedUIElements();
    /// The state the view is showing, set by the host; the library only keeps it.
    std::shared_ptr<VDModelViewState> relatedState() const { return relatedState_.lock(); }
    void setRelatedState(const std::shared_ptr<VDModelViewState>& state) { relatedState_ = state; }

    // ---- behaviour that kinds of view change

    virtual bool supportsHiding() const { return true; }
    virtual bool builderShouldGenerateSubviews() const { return true; }
    virtual bool resizableWidth() const { return true; }
    virtual bool resizableHeight() const { return true; }
    /// Views that stand for data-driven repeats; nil here.
    virtual Array subviewsPrototypes() const { return Array(); }
    /// The children a tree of the document shows; the `subviews` here.
    virtual Array subviewsForTreeView() const { return subviews(); }

    // ---- hierarchy

    /// removeSubview: — a copy of `subviews` without every element equal to the view.
    virtual void removeSubview(const VDModelView& view);
    /// Installs a new blank constraint set.
    void clearConstraints();
    /// Passes itself on to the parent, up to the root; classes override it to react.
    virtual void subviewDidUpdate();
    /// The parent through `relatedUIElement`; nullptr when detached or a root.
    std::shared_ptr<VDModelView> parentView() const;
    /// Variable name to the subview's own tree; a leaf gives an empty dictionary. Every subview
    /// must have a variable name: a nil one throws `std::invalid_argument`.
    Dictionary hierarchyTree() const;
    /// Every descendant with a `timelineType`, depth first; the walk goes on below them.
    Array nestedComponents() const;

    // ---- paths

    /// The variable names from below the root down to this view, joined with ";"; empty when
    /// detached or a root.
    std::string viewPath() const;
    /// relativePathToModel: — "this", a "parent" for each level up, then the names down.
    std::string relativePathToModel(const VDModelView& other) const;
    /// modelWithRelativePath: — the view a relative path names from here, or nullptr. A pass
    /// that resolves many paths in one tree passes an index, so large parents aren't searched
    /// once per path.
    std::shared_ptr<VDModelView> modelWithRelativePath(std::string_view path,
                                                       VDModelViewPathIndex* index = nullptr);
    /// modelWithRelativePathComponents:
    std::shared_ptr<VDModelView> modelWithRelativePathComponents(const std::vector<std::string>& components,
                                                                 std::size_t from = 0,
                                                                 VDModelViewPathIndex* index = nullptr);
    /// relativeToAbsolutePath: — on a root the result starts with the delimiter (";header"), as
    /// the root's empty path is one empty component. More "parent"s than levels throws
    /// `std::out_of_range`.
    std::string relativeToAbsolutePath(std::string_view relativePath) const;
    /// fixedRelativePath:onAbsolutePathChangeFrom:forModel: — a path held here, rewritten for a
    /// view whose absolute path was `oldAbsolutePath`.
    std::string fixedRelativePath(const std::string& relativePath, const std::string& oldAbsolutePath,
                                  const VDModelView& movedView) const;
    /// A rename keeps every action's relative paths right when the view is attached.
    void setVariableID(std::optional<std::string> variableID) override;
    /// Paths made of `modelID`s (not variable names) to views; the view itself isn't in it.
    Dictionary subviewsByPath() const;
    /// fillSubviewsPathInMap:withPrefix:
    void fillSubviewsPathInMap(Dictionary& map, const std::string& prefix) const;

    // ---- z-order and breakpoints

    /// changeZPositionBy:container: — moves the view within the container's subviews, clamped
    /// to both ends, and tells the container's element.
    void changeZPositionBy(std::int32_t delta, VDModelView* container);
    /// addBreakpoint: — the entry of the key, created empty when missing; the same dictionary
    /// on every call.
    Dictionary addBreakpoint(std::string_view key);
    /// removeBreakpoint:recursive: — removing the last entry leaves `breakpoints` nil.
    virtual void removeBreakpoint(std::string_view key, bool recursive);

    // ---- actions: defined with the actions themselves, a layer above the view

    /// The view's actions, stored as given: `VDModelAction`s of every kind.
    /// actionWithName: — the first action with that name, or nullptr.
    std::shared_ptr<VDModelAction> actionWithName(std::string_view name) const;
    /// enumerateActionsWithBlock: — the view and all below it that `fieldNames` leads to, in
    /// that order; for each view, each of its actions.
    void
    enumerateActionsWithBlock(const std::function<void(VDModelView& view, VDModelAction& action)>& block);
    /// This view or a descendant presents a screen with automatic animation.
    bool hasAutoAnimateAction() const;
    /// updateActionsRelativePathsRecursiveForModel:oldAbsolutePath: — on the root, after a view's
    /// absolute path changed: every action below rewrites its paths.
    void updateActionsRelativePathsRecursiveForModel(const VDModelView& movedView,
                                                     const std::string& oldAbsolutePath);
    /// The transitions of `actions` that start from a state, in order; a transition from the
    /// initial look is no member.
    Array animations() const;
    /// animationsFromState:toState: — the transitions between the two named states; a nil name
    /// matches nothing, so a transition from the initial look is never found here.
    Array animationsFromState(const VDModelViewState* from, const VDModelViewState* to) const;
    /// animationsFromState: — the transitions leaving the state; those from the initial look for
    /// a nil state or name.
    Array animationsFromState(const VDModelViewState* state) const;
    /// animationsToState: — the transitions from some state that end in this one.
    Array animationsToState(const VDModelViewState* state) const;
    /// addAnimationToState: — a transition to a state just added, from the state before it (the
    /// initial look when it is the only one). `states` must not be empty: `std::out_of_range`.
    void addAnimationToState(const VDModelViewState& state);
    /// addAnimationFromState:toState: — a step of a sequence of states: the transition starts
    /// when the one before it ends ("animationend").
    void addAnimationFromState(const VDModelViewState* from, const VDModelViewState* to);
    /// addAnimationFrom:to:event:listenerTarget: — the transition between the two states that the
    /// event on the view starts, made when there is none; other transitions from the same state
    /// lose that event, and actions left without listeners go. Nothing for one state to itself.
    std::shared_ptr<VDModelActionScriptAnimation> addAnimationFrom(const VDModelViewState* from,
                                                                   const VDModelViewState* to,
                                                                   const std::string& event,
                                                                   const VDModelView& listenerTarget);
    /// removeScriptAnimation: — `actions` without it. Posts nothing.
    void removeScriptAnimation(const VDModelActionScriptAnimation& transition);
    /// Recomputes every transition from a state.
    void updateAllAnimations();
    /// updateAllAnimationsForState: — recomputes the transitions that leave or reach the state;
    /// timing and curves stay.
    void updateAllAnimationsForState(const VDModelViewState* state);
    /// updateAnimations: — recomputes each transition whose named states exist; a name that
    /// points nowhere leaves the transition as it was.
    void updateAnimations(const Array& transitions);
    /// removeConflictingListenersOf:event:target: — in one state the owner answers one event on
    /// one view with one transition: the other transitions from the same origin state lose their
    /// listeners of that event and target.
    void removeConflictingListenersOf(const VDModelActionScriptAnimation& mine, const std::string& event,
                                      const std::string& target);
    /// removeDuplicateTimersAfterAdding: — timers stay on the action just given a timer only;
    /// an action left without listeners by it goes.
    void removeDuplicateTimersAfterAdding(const VDModelAction& mine);
    /// Every action, of whatever kind, with no listeners goes.
    void removeActionsWithoutListeners();

    /// A view with its ancestors from the top down.
    using FormCandidate = std::pair<std::shared_ptr<VDModelView>, std::vector<std::shared_ptr<VDModelView>>>;
    /// Marks as a form, for each view below, the largest container around it that holds at most
    /// one submit button. Every view with an `actions` list is a candidate, whether or not it
    /// holds a submit action: generated code keys on the flags as they come out of this.
    void markFormsAccordingToSubmitButtons();
    /// clearFormFlagsAndCollectSubmitButtons:viewHierarchy: — clears `isForm` on the subtree and
    /// collects each view that has an `actions` list, with its ancestors.
    void clearFormFlagsAndCollectSubmitButtons(std::vector<FormCandidate>& list,
                                               const std::vector<std::shared_ptr<VDModelView>>& hierarchy);
    /// More than one view of the subtree holds a submit action.
    bool hasMoreThanOneSubmitButton() const;
    /// hasMoreThanOneSubmitButton: — the same, counting on from the views in `found`.
    bool hasMoreThanOneSubmitButton(std::vector<const VDModelView*>& found) const;

    // ---- variable names: defined with the actions, whose names share the namespace

    /// The subviews' variable names (views without one take no place); a table answers from
    /// its cells.
    virtual Array allVariableIDs() const;
    /// The names of the view's actions.
    Array allActionNames() const;
    /// isLegalVariableOrActionName: — asked of a parent: no subview or action has the name,
    /// compared without case.
    bool isLegalVariableOrActionName(std::string_view name) const;
    /// uniqueNameForVariable:suggestedName: — asked of the parent, for a view: the legal form of
    /// the suggestion when it is free, else that (or the class's prefix) numbered from 1.
    std::string uniqueNameForVariable(const VDModelView& view,
                                      const std::optional<std::string>& suggestion) const;
    /// uniqueNameForVariable:suggestedName:forbiddenNamesLower: — the same, also avoiding the
    /// given lower-case names.
    std::string uniqueNameForVariable(const VDModelView& view, const std::optional<std::string>& suggestion,
                                      const std::vector<std::string>& forbiddenNamesLower) const;
    /// The legal form of `viewName` becomes the variable name when the parent has it free; a
    /// clash keeps the old one.
    virtual void updateVarIdFromName();
    /// Names every subview below that has none, unique within its parent.
    void fillMissingVarNamesForSubViewsRecursive();
    /// Names every view below that has none, the new names unique within the whole subtree.
    void fillVarNamesUniquePerContainer();
    /// fillMissingVarNamesForSubView:takenNamesLower:
    void fillMissingVarNamesForSubView(VDModelView& view, std::vector<std::string>& takenNamesLower);
    /// On a root: no view below shares a name with an ancestor, with an earlier sibling of one,
    /// or with a sibling; renamed views carry the rename into their ancestors' states and actions.
    void enforceChildrenNamesDistinctFromParents();
    /// enforceUniqueVarNameWithHierarchy:forbiddenVarIds:
    void enforceUniqueVarNameWithHierarchy(const std::vector<std::shared_ptr<VDModelView>>& hierarchy,
                                           const std::vector<std::string>& forbiddenVarIds);
    /// selfEnforceUniqueVarNameWithHierarchy:forbiddenVarIds:
    void selfEnforceUniqueVarNameWithHierarchy(const std::vector<std::shared_ptr<VDModelView>>& hierarchy,
                                               const std::vector<std::string>& forbiddenVarIds);
    /// renameVarNameWithHierarchy:forbiddenVarIds:
    void renameVarNameWithHierarchy(const std::vector<std::shared_ptr<VDModelView>>& hierarchy,
                                    const std::vector<std::string>& forbiddenVarIds);
    /// refactorVar:to:hierarchy: — on an ancestor: paths in its states and actions to a
    /// descendant renamed from `oldName` to `newName`, reached through `hierarchy`, follow.
    void refactorVar(const std::string& oldName, const std::string& newName,
                     const std::vector<std::shared_ptr<VDModelView>>& hierarchy);

    // ---- repairs of old documents and fresh exports: defined with the states and transitions

    /// Gives an old timeline component's implicit first state a name ("initial"), makes it the
    /// default and ties the transitions from and to no state to it. True when it did; a failure
    /// is logged, and what was done stays.
    bool migrateStateZero();
    /// The transition from no state that enters the default state at once, on a timer, first of
    /// the actions; made when missing. A failure is logged, and what was done stays.
    void updateBackwardCompatibility();
    /// The first transition from no state.
    std::shared_ptr<VDModelActionScriptAnimation> backwardCompatibilityAnimation() const;
    /// A default state that is gone becomes the first state; an animation timeline always
    /// starts in its first state.
    void validateDefaultStateName();
    /// After an export, over the subtree: borders inside, and components told their owner.
    void fixAfterSketchExport();
    /// Makes the border an inside border by growing the box's constraints; the frame stays.
    void fixBorderAfterSketchExport();

    // ---- states: defined with the states themselves, a layer above the view

    /// applyModelState: — writes the state's values into the permanent fields of the subtree
    /// (models copied first, so tree and state never share one). Saves nothing, posts nothing.
    void applyModelState(const VDModelViewState& state);
    /// reverseStateWithOriginalModel: — makes the subtree equal to the original's; the view's own
    /// fields stay.
    void reverseStateWithOriginalModel(VDModelView& original);
    /// generateUniqueStateName: — `base` (nil reads as "keyframe") with the first number from 1
    /// that no state's name has.
    std::string generateUniqueStateName(const std::optional<std::string>& base) const;
    /// addStateWithSuggestedName: — a new, empty state with a unique name, added by `addState`.
    std::shared_ptr<VDModelViewState> addStateWithSuggestedName(const std::optional<std::string>& name);
    /// Appends the state, then posts the update (which climbs to the root), then
    /// "kTimelineStateAdded", in that order.
    void addState(const std::shared_ptr<VDModelViewState>& state);
    /// stateNamed: — the first state of the name; nothing for an empty name.
    std::shared_ptr<VDModelViewState> stateNamed(std::string_view name) const;
    /// `stateNamed` of `defaultStateName`.
    std::shared_ptr<VDModelViewState> defaultState() const;
    /// refactorStateNameFrom:to: — renames the state and every reference to it held by the
    /// view's actions and `defaultStateName`. Posts nothing.
    void refactorStateNameFrom(const std::string& oldName, const std::string& newName);

    // ---- other

    /// "[%p] <%@> %@": address, class name, `viewName`.
    std::string description() const override;
    /// clearOverrides on the view, then on each subview, depth first.
    void clearOverridesRecursive();
    void postViewDeletedNotification();
    /// Posts as the base class does, then climbs through `subviewDidUpdate`.
    void postUpdateNotification() override;

private:
    /// A new `actions` list with the action at its end.
    void appendAction(const std::shared_ptr<VDModelAction>& action);

    float x_ = 0, y_ = 0, width_ = 0, height_ = 0;
    std::shared_ptr<VDModelColor> color_;
    std::shared_ptr<VDModelColor> borderColor_;
    float borderWidth_ = 0;
    std::optional<std::string> borderPosition_;
    float alpha_ = 0, rotation_ = 0, scale_ = 0;
    std::uint8_t hidden_ = 0;
    float cornersRadius_ = 0;
    Array subviews_;
    Array actions_;
    std::shared_ptr<VDModelViewConstraints> constraints_;
    std::optional<std::string> viewName_;
    std::uint8_t userChangedViewName_ = 0;
    Dictionary defaultData_;
    std::optional<std::string> relatedDataField_;
    std::uint8_t userChangedVarId_ = 0;
    std::uint8_t locked_ = 0;
    std::optional<std::string> thumbLocalPath_;
    std::optional<std::string> thumbURLString_;
    Dictionary sketchData_;
    std::optional<std::string> sketchId_;
    Array frameAsArray_;
    Dictionary breakpoints_;
    std::uint8_t maskToBounds_ = 0;
    std::uint8_t isAnchorTarget_ = 0;
    std::uint8_t isForm_ = 0;
    std::shared_ptr<VDModelHover> hover_;
    std::shared_ptr<VDModelAnimationWeb> enterAnimation_;
    std::optional<std::string> widgetSnippet_;
    std::uint8_t isFixedPosition_ = 0;
    std::uint8_t loadOnScroll_ = 0;
    Array states_;
    VDNumber isGroup_;
    std::shared_ptr<VPAnimationExportSettings> exportSettings_;
    std::optional<std::string> timelineType_;
    std::optional<std::string> videoURL_;
    std::optional<std::string> defaultStateName_;
    std::shared_ptr<VDModelViewPadding> padding_;
    std::shared_ptr<VDModelFrame> originalFrame_;
    std::shared_ptr<VDModelSpecsInfo> specsInfo_;
    std::optional<std::string> importedID_;
    std::shared_ptr<VDModelComponentInstanceData> componentInstanceData_;
    std::shared_ptr<VDModelComponentMasterData> componentMasterData_;
    Dictionary backgroundBlur_;

    float rotationX_ = 0, rotationY_ = 0;
    std::uint8_t selectableNotEditable_ = 0;
    std::weak_ptr<VDModelViewRelatedUIElement> relatedUIElement_;
    std::unique_ptr<VDWeakMutableSet> allRelatedUIElements_;
    std::weak_ptr<VDModelViewState> relatedState_;
};

} // namespace velmo
