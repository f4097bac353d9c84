// velmo info FILE [--json]: what a document holds: its screens with their views, states and
// transitions, its free views and components, how many objects of each model class, and the
// identifiers that more than one object carries.
#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Commands.h"
#include "Console.h"
#include "DocumentInput.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelViewState.h"

namespace velmo::cli {

namespace {

struct ScreenCount {
    std::shared_ptr<VDModelView> screen;
    std::int64_t views = 0;
    std::int64_t states = 0;
    std::int64_t transitions = 0;
};

struct Census {
    std::vector<ScreenCount> screens;
    std::int64_t freeViews = 0;
    std::int64_t components = 0;
    /// By class name, sorted, so the output is the same for the same document.
    std::map<std::string, std::int64_t> classes;
    /// Sorted.
    std::vector<std::string> clashingIDs;
};

std::int64_t countViews(const Array& list) {
    return std::count_if(list.begin(), list.end(),
                         [](const Value& v) { return v.objectAs<VDModelView>() != nullptr; });
}

// One walk, as `enumerateModelsWithBlock` makes it, but the document's fields taken one by one so
// that each screen's tree is walked by itself and counted for that screen too. An object that
// two fields reach (a table's cells are also its subviews) counts once.
Census takeCensus(VDModelApp& app) {
    Census census;
    std::unordered_map<const VDModelClass*, std::int64_t> byClass;
    std::unordered_map<std::string, std::uint32_t> holders;
    std::unordered_set<const VDModel*> seen;
    ScreenCount* current = nullptr;
    const VDModel::ModelBlock visit = [&](const std::shared_ptr<VDModel>& model) {
        if (!seen.insert(model.get()).second) return;
        ++byClass[&model->modelClass()];
        if (const auto& id = model->modelID(); id && !id->empty()) {
            if (++holders[*id] == 2) census.clashingIDs.push_back(*id);
        }
        if (!current) return;
        if (model->isKindOf(VDModelView::classObject())) {
            ++current->views;
        } else if (model->isKindOf(VDModelViewState::classObject())) {
            ++current->states;
        } else if (model->isKindOf(VDModelActionScriptAnimation::classObject())) {
            ++current->transitions;
        }
    };

    visit(app.sharedFromThis());
    for (const VDField* f : app.fields()) {
        if (!f->mayHoldModels()) continue;
        const Value value = f->get(app);
        if (f->name != "screens" || !value.isArray()) {
            VDModel::enumerateModelsForItem(value, visit);
            continue;
        }
        // The list is complete before the walk, so that the pointers into it stay valid.
        const Array& screens = value.array();
        census.screens.reserve(screens.size());
        for (const Value& v : screens) {
            if (auto screen = v.objectAs<VDModelView>()) census.screens.push_back({std::move(screen)});
        }
        auto next = census.screens.begin();
        for (const Value& v : screens) {
            current = v.objectAs<VDModelView>() ? &*next++ : nullptr;
            VDModel::enumerateModelsForItem(v, visit);
        }
        current = nullptr;
    }
    for (const auto& [cls, count] : byClass)
        census.classes[std::string(cls->name())] += count;
    census.freeViews = countViews(app.views());
    census.components = countViews(app.components());
    std::sort(census.clashingIDs.begin(), census.clashingIDs.end());
    return census;
}

Value optionalText(const std::optional<std::string>& text) {
    return text ? Value(*text) : Value::null();
}

// The contract that scripts rely on: these keys, no more.
Value censusJson(const VDModelApp& app, const Census& census) {
    Array screens = Array::create(census.screens.size());
    for (const ScreenCount& s : census.screens) {
        screens.push_back(Value(Dictionary{
            {"name", optionalText(s.screen->viewName())},
            {"modelID", optionalText(s.screen->modelID())},
            {"width", Value(s.screen->width())},
            {"height", Value(s.screen->height())},
            {"views", Value(s.views)},
            {"states", Value(s.states)},
            {"transitions", Value(s.transitions)},
        }));
    }
    Dictionary classes = Dictionary::create(census.classes.size());
    for (const auto& [name, count] : census.classes)
        classes.set(name, Value(count));
    Array clashing = Array::create(census.clashingIDs.size());
    for (const std::string& id : census.clashingIDs)
        clashing.push_back(Value(id));
    return Value(Dictionary{
        {"name", optionalText(app.name())},
        {"screens", Value(screens)},
        {"freeViews", Value(census.freeViews)},
        {"components", Value(census.components)},
        {"classes", Value(classes)},
        {"clashingIDs", Value(clashing)},
    });
}

std::string counted(std::int64_t n, const char* one, const char* many) {
    return fmt::format("{} {}", n, n == 1 ? one : many);
}

std::string censusText(const VDModelApp& app, const Census& census) {
    std::int64_t objects = 0;
    for (const auto& [name, count] : census.classes)
        objects += count;
    std::string out = fmt::format(
        "{}: {}, {}, {}, {} in all\n", app.name() ? fmt::format("\"{}\"", *app.name()) : "(unnamed document)",
        counted(static_cast<std::int64_t>(census.screens.size()), "screen", "screens"),
        counted(census.freeViews, "free view", "free views"),
        counted(census.components, "component", "components"), counted(objects, "object", "objects"));
    if (!census.screens.empty()) out += "screens:\n";
    for (const ScreenCount& s : census.screens) {
        const VDModelView& screen = *s.screen;
        out += fmt::format("  {} \"{}\" {:g}x{:g} [{}]: {}, {}, {}\n", screen.variableID().value_or("-"),
                           screen.viewName().value_or(""), screen.width(), screen.height(),
                           screen.modelID().value_or("no identifier"), counted(s.views, "view", "views"),
                           counted(s.states, "state", "states"),
                           counted(s.transitions, "transition", "transitions"));
    }
    out += "classes:\n";
    std::size_t width = 0;
    for (const auto& [name, count] : census.classes)
        width = std::max(width, name.size());
    for (const auto& [name, count] : census.classes)
        out += fmt::format("  {:<{}}  {}\n", name, width, count);
    if (census.clashingIDs.empty()) {
        out += "no identifier is held by more than one object\n";
    } else {
        out += fmt::format("identifiers held by more than one object: {}\n",
                           fmt::join(census.clashingIDs, ", "));
    }
    return out;
}

struct InfoOptions {
    std::string file;
    bool json = false;
};

int runInfo(const InfoOptions& o) {
    int exitCode = kExitOK;
    const auto model = readDocument(o.file, exitCode);
    if (!model) return exitCode;
    // A lone view or record is a model, but has no screens, free views or components to count:
    // saying "0 screens" of it would mislead, and `velmo tree` shows a view.
    const auto app = std::dynamic_pointer_cast<VDModelApp>(model);
    if (!app) {
        Console::error(fmt::format(
            "{}: not a whole document: the top level is a {}, not a VDModelApp{}", documentName(o.file),
            model->modelClass().name(),
            model->isKindOf(VDModelView::classObject()) ? " ('velmo tree' shows a view's hierarchy)" : ""));
        return kExitFailure;
    }
    const Census census = takeCensus(*app);
    if (o.json) {
        Console::out(Json::write(censusJson(*app, census), true) + "\n");
    } else {
        Console::out(censusText(*app, census));
    }
    return kExitOK;
}

} // namespace

CommandRun addInfoCommand(CLI::App& app) {
    auto options = std::make_shared<InfoOptions>();
    auto* cmd = app.add_subcommand(
        "info",
        "Summarise a document: screens, free views, components, objects by class, clashing identifiers");
    cmd->add_option("FILE", options->file, "Document JSON file, or - for standard input")->required();
    cmd->add_flag("--json", options->json,
                  "Print the summary as JSON: name, screens, freeViews, components, classes, clashingIDs");
    return [options] { return runInfo(*options); };
}

} // namespace velmo::cli
