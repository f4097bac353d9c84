#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "velmo/model/core/VDModel.h"

namespace velmo {

class VDModelEventListener;

/// What a view does when something happens: open or close a screen, select a tab, start other
/// actions, submit a form, play a transition. It starts on a touch-screen gesture (`trigger`)
/// or on the web-style events of its `listeners`. Actions sit in the `actions` of their view,
/// and every change here replaces a list rather than changing it in place.
class VDModelAction : public VDModel {
    VD_MODEL_CLASS(VDModelAction)

    void fillDefaultValues() override;

    /// +prettyName
    static std::string_view prettyName() { return "Action"; }
    /// `+prettyName` of the object's own class.
    virtual std::string_view prettyNameOfClass() const { return prettyName(); }

    /// The gesture: 0 never, 1 appears, 2 appeared, 3 disappear, 4 tap, 5 double tap, 6 long tap,
    /// 7 pinch, 8 rotate, 9-12 swipes left, right, up and down.
    std::int32_t trigger() const { return trigger_; }
    void setTrigger(std::int32_t v) { trigger_ = v; }
    float delayFromTrigger() const { return delayFromTrigger_; }
    void setDelayFromTrigger(float v) { delayFromTrigger_ = v; }
    /// "untitled" until named; unique through the document's identifier registry.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }
    /// `VDModelEventListener` values, or nil.
    const Array& listeners() const { return listeners_; }
    void setListeners(Array v) { listeners_ = std::move(v); }
    /// The owner's state in which the action applies.
    const std::optional<std::string>& originStateName() const { return originStateName_; }
    void setOriginStateName(std::optional<std::string> v) { originStateName_ = std::move(v); }

    /// shortTitleForTrigger: — "Never", "Tap", "Swipe-Left", ...; nothing for other values.
    static std::optional<std::string> shortTitleForTrigger(std::int32_t trigger);
    /// The title of the action's own trigger.
    std::optional<std::string> shortTitleForTrigger() const { return shortTitleForTrigger(trigger_); }
    /// The line that stands for the action in a list.
    virtual std::optional<std::string> layerTitle() const;
    /// The screens the action leads to; nil when it leads nowhere.
    virtual Array linkedScreenIDs() const { return Array(); }

    /// addListenerWithTarget:event: — the new listener, or nullptr when an equal one is there.
    std::shared_ptr<VDModelEventListener> addListenerWithTarget(const std::optional<std::string>& target,
                                                                const std::string& event);
    /// addListenerWithTimer: — always a new "timer" listener: timers never equal each other.
    std::shared_ptr<VDModelEventListener> addListenerWithTimer(double milliseconds);
    /// listenerWithEvent: — the first listener with the event.
    std::shared_ptr<VDModelEventListener> listenerWithEvent(std::string_view event) const;
    /// removeListenersWhere — a new list without the listeners the test picks; nothing changes
    /// when it picks none.
    void removeListenersWhere(const std::function<bool(const VDModelEventListener&)>& test);

    /// refactorPath:to: — the listeners' targets follow a renamed path.
    virtual void refactorPath(std::string_view oldPath, std::string_view newPath);
    using PathBlock = std::function<std::string(const std::string& relativePath)>;
    /// updateRelativePathsWithBlock: — each relative path to another view that the action keeps
    /// is replaced by the callback's answer when that differs; true when any did. The listeners'
    /// targets are not among them. Nothing here.
    virtual bool updateRelativePathsWithBlock(const PathBlock& block);

    /// True for a screen presentation that animates the change automatically.
    virtual bool hasAutoAnimate() const { return false; }
    /// A state of the owner was renamed: the names the action keeps follow.
    virtual void refactorStateNameFrom(const std::string& oldName, const std::string& newName);

private:
    /// A new list with the listener at its end replaces the old one.
    void appendListener(const std::shared_ptr<VDModelEventListener>& listener);

    std::int32_t trigger_ = 0;
    float delayFromTrigger_ = 0;
    std::optional<std::string> name_;
    Array listeners_;
    std::optional<std::string> originStateName_;
};

} // namespace velmo
