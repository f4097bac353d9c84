#include "ModelSummary.h"

#include <fmt/format.h>

#include "velmo/model/interaction/VDModelActionCallAction.h"
#include "velmo/model/interaction/VDModelActionDismissScreen.h"
#include "velmo/model/interaction/VDModelActionPresentScreen.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelActionSelectTab.h"
#include "velmo/model/interaction/VDModelAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelSubmitAction.h"
#include "velmo/model/interaction/VDModelViewState.h"

namespace velmo::cli {

namespace {

Value text(const std::optional<std::string>& s) {
    return s ? Value(*s) : Value::null();
}

// "click(this;btn)", "timer(500ms)"; the trigger's title when the action has no listeners.
Array eventsOf(const VDModelAction& action) {
    Array events = Array::create();
    for (const Value& v : action.listeners()) {
        const auto l = v.objectAs<VDModelEventListener>();
        if (!l) continue;
        const std::string event = l->event().value_or("?");
        if (event == "timer") {
            events.push_back(Value(fmt::format("timer({:g}ms)", l->timerMS())));
        } else {
            events.push_back(Value(fmt::format("{}({})", event, l->target().value_or(""))));
        }
    }
    if (events.empty()) events.push_back(Value("trigger " + action.shortTitleForTrigger().value_or("?")));
    return events;
}

// Where the action leads: a screen, a state, the paths it reaches, or nothing.
std::string targetOf(const VDModelAction& action) {
    if (const auto* open = dynamic_cast<const VDModelActionPresentScreen*>(&action)) {
        if (open->customURL()) return "url " + *open->customURL();
        return "screen " + open->screenId().value_or("-");
    }
    if (dynamic_cast<const VDModelActionDismissScreen*>(&action)) return "close screen";
    if (const auto* tab = dynamic_cast<const VDModelActionSelectTab*>(&action))
        return fmt::format("tab {}", tab->tabIndex());
    if (const auto* call = dynamic_cast<const VDModelActionCallAction*>(&action)) {
        std::string out;
        for (const Value& v : call->actionRefs()) {
            const auto ref = v.objectAs<VDModelActionReference>();
            if (!ref) continue;
            if (!out.empty()) out += ", ";
            out += fmt::format("{}:{}", ref->viewModelPath().value_or(""), ref->actionName().value_or(""));
        }
        return "calls " + (out.empty() ? std::string("-") : out);
    }
    if (const auto* submit = dynamic_cast<const VDModelSubmitAction*>(&action)) {
        return fmt::format("submit -> screen {} / {}", submit->successScreenID().value_or("-"),
                           submit->failureScreenID().value_or("-"));
    }
    if (const auto* move = dynamic_cast<const VDModelActionScriptAnimation*>(&action)) {
        return fmt::format("state {} -> {}", move->originStateName().value_or("(initial)"),
                           move->targetStateName().value_or("-"));
    }
    return "-";
}

} // namespace

Array describeStates(const VDModelView& view) {
    Array out = Array::create();
    for (const Value& v : view.states()) {
        const auto state = v.objectAs<VDModelViewState>();
        if (!state) continue;
        out.push_back(
            Value(Dictionary{{"name", text(state->name())},
                             {"paths", Value(static_cast<std::int64_t>(state->overrides().size()))}}));
    }
    return out;
}

Array describeActions(const VDModelView& view) {
    Array out = Array::create();
    for (const Value& v : view.actions()) {
        const auto action = v.objectAs<VDModelAction>();
        if (!action) continue;
        Dictionary d{{"kind", Value(action->modelClass().name())},
                     {"name", text(action->name())},
                     {"events", Value(eventsOf(*action))},
                     {"target", Value(targetOf(*action))}};
        if (const auto move = std::dynamic_pointer_cast<VDModelActionScriptAnimation>(action)) {
            std::int64_t keyframes = 0;
            for (const Value& t : move->timelines()) {
                if (const auto timeline = t.objectAs<VDModelAnimationTimeline>())
                    keyframes += static_cast<std::int64_t>(timeline->animations().size());
            }
            d.set("timelines", Value(static_cast<std::int64_t>(move->timelines().size())));
            d.set("keyframes", Value(keyframes));
            d.set("duration", Value(move->totalAnimationTime()));
        }
        out.push_back(Value(d));
    }
    return out;
}

std::vector<std::string> summaryLines(const VDModelView& view) {
    std::vector<std::string> lines;
    for (const Value& s : describeStates(view)) {
        const auto paths = s.dictionary().get("paths").int64Value();
        lines.push_back(fmt::format("state \"{}\" ({} {})", s.dictionary().get("name").stringView(), paths,
                                    paths == 1 ? "path" : "paths"));
    }
    for (const Value& a : describeActions(view)) {
        const Dictionary d = a.dictionary();
        std::string events;
        for (const Value& e : d.get("events").array())
            events += (events.empty() ? "" : ", ") + e.str();
        std::string line = fmt::format("action {} \"{}\" on {} -> {}", d.get("kind").stringView(),
                                       d.get("name").stringView(), events, d.get("target").stringView());
        if (d.contains("timelines")) {
            line +=
                fmt::format(" ({} timelines, {} keyframes, duration {:g})", d.get("timelines").int64Value(),
                            d.get("keyframes").int64Value(), d.get("duration").floatValue());
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace velmo::cli
