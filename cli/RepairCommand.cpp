// velmo repair FILE [-o OUT] [--json]: decode a document, run the repairs a host runs after
// decoding, write the repaired document and say what each repair changed.
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "DocumentInput.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelComponentInstanceData.h"
#include "velmo/model/view/VDModelComponentOverride.h"
#include "velmo/model/view/VDModelProp.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo::cli {

namespace {

/// What the repairs changed, in the order of the report.
struct RepairCounts {
    std::size_t statesMigrated = 0;
    std::size_t delimitersFixed = 0;
    std::size_t defaultStatesNamed = 0;
    std::size_t namesFixed = 0;
    std::size_t pathsRewritten = 0;
    std::size_t componentsFixed = 0;

    Dictionary toDictionary() const {
        return Dictionary{
            {"statesMigrated", Value(statesMigrated)},         {"delimitersFixed", Value(delimitersFixed)},
            {"defaultStatesNamed", Value(defaultStatesNamed)}, {"namesFixed", Value(namesFixed)},
            {"pathsRewritten", Value(pathsRewritten)},         {"componentsFixed", Value(componentsFixed)},
        };
    }
};

// ---------------------------------------------------------------- what the repairs can change

/// The values of one object that a repair may change. Which of them an object has depends on its
/// class; the others stay empty on both sides of the comparison.
struct Looked {
    /// Held so that an object a repair drops can't free its address for a new one meanwhile.
    std::shared_ptr<VDModel> model;
    /// A view's `variableID`, an action's `name`.
    std::optional<std::string> name;
    /// A view's `defaultStateName`.
    std::optional<std::string> defaultStateName;
    /// A listener's or a timeline's `target`, a reference's `viewModelPath`.
    std::optional<std::string> path;
    /// The keys of a state's change set.
    std::vector<std::string> keys;
    /// The paths and names of an instance record's props and overrides, nested ones included.
    std::string component;
    bool isDelimiterFixed = false;
};

void appendPathAndName(std::string& out, const std::optional<std::string>& path,
                       const std::optional<std::string>& name) {
    // A separator no name holds, and a mark that tells nil from the empty text.
    for (const auto* part : {&path, &name}) {
        out += *part ? '+' : '-';
        if (*part) out += **part;
        out += '\x1f';
    }
}

void appendOverrides(std::string& out, const Array& overrides) {
    for (const Value& v : overrides) {
        const auto override = v.objectAs<VDModelComponentOverride>();
        if (!override) continue;
        appendPathAndName(out, override->path(), override->name());
        if (override->value().isArray()) {
            out += '[';
            appendOverrides(out, override->value().array());
            out += ']';
        }
    }
}

std::string componentSignature(const VDModelComponentInstanceData& record) {
    std::string out;
    for (const Value& v : record.props()) {
        if (const auto prop = v.objectAs<VDModelProp>()) appendPathAndName(out, prop->path(), prop->name());
    }
    out += '|';
    appendOverrides(out, record.overrides());
    return out;
}

/// One look at every object of the document that a repair may change, keyed by the object.
using Snapshot = std::unordered_map<const VDModel*, Looked>;

Snapshot look(VDModelApp& app) {
    Snapshot seen;
    app.enumerateModelsWithBlock([&seen](const std::shared_ptr<VDModel>& model) {
        // A table's cells are reached twice, through its computed "subviews" and its "cells".
        auto [at, added] = seen.try_emplace(model.get());
        if (!added) return;
        Looked& l = at->second;
        l.model = model;
        if (const auto view = std::dynamic_pointer_cast<VDModelView>(model)) {
            l.name = view->variableID();
            l.defaultStateName = view->defaultStateName();
        } else if (const auto action = std::dynamic_pointer_cast<VDModelAction>(model)) {
            l.name = action->name();
        } else if (const auto listener = std::dynamic_pointer_cast<VDModelEventListener>(model)) {
            l.path = listener->target();
        } else if (const auto timeline = std::dynamic_pointer_cast<VDModelAnimationTimeline>(model)) {
            l.path = timeline->target();
        } else if (const auto reference = std::dynamic_pointer_cast<VDModelActionReference>(model)) {
            l.path = reference->viewModelPath();
        } else if (const auto state = std::dynamic_pointer_cast<VDModelViewState>(model)) {
            l.isDelimiterFixed = state->fixedLegacyDelimiter();
            for (const auto& entry : state->overrides())
                l.keys.push_back(entry.key.str());
        } else if (const auto record = std::dynamic_pointer_cast<VDModelComponentInstanceData>(model)) {
            l.component = componentSignature(*record);
        }
    });
    return seen;
}

/// Compares object by object: what is new after the repairs (an entry animation brought back) or
/// gone has nothing to compare with and doesn't count.
void compare(const Snapshot& before, const Snapshot& after, RepairCounts& counts) {
    for (const auto& [model, was] : before) {
        if (was.isDelimiterFixed) ++counts.delimitersFixed;
        const auto found = after.find(model);
        if (found == after.end()) continue;
        const Looked& now = found->second;
        if (now.name != was.name) ++counts.namesFixed;
        if (now.defaultStateName != was.defaultStateName) ++counts.defaultStatesNamed;
        if (now.path != was.path) ++counts.pathsRewritten;
        if (now.component != was.component) ++counts.componentsFixed;
        if (now.keys != was.keys) {
            // Each key of the change set that a rename moved; keys that stayed keep their place
            // or move behind, which is no rewrite.
            std::unordered_map<std::string_view, int> old;
            for (const auto& key : was.keys)
                ++old[key];
            for (const auto& key : now.keys) {
                auto it = old.find(key);
                if (it != old.end() && it->second > 0) {
                    --it->second;
                } else {
                    ++counts.pathsRewritten;
                }
            }
        }
    }
}

// ---------------------------------------------------------------- the repairs

/// The component views below a root, the root first when it is one. A view with a
/// `timelineType` is an animated component, placed in a screen or kept as a master in
/// `components`: only such views had the implicit first state of old documents and an entry
/// animation, so only they get the state upgrades. On any other view `updateBackwardCompatibility`
/// would make up an entry animation that nobody designed.
std::vector<std::shared_ptr<VDModelView>> componentViews(const std::shared_ptr<VDModelView>& root) {
    std::vector<std::shared_ptr<VDModelView>> views;
    if (root->timelineType()) views.push_back(root);
    for (const Value& v : root->nestedComponents()) {
        if (auto view = v.objectAs<VDModelView>()) views.push_back(std::move(view));
    }
    return views;
}

/// Runs the repairs as a host runs them once a document is decoded. Failures are thrown.
void repair(VDModelApp& app, RepairCounts& counts) {
    // First the upgrades of old documents, on each screen, then on each component: they only
    // touch the component's own states and actions. `migrateStateZero` ends with the entry
    // animation in place; the host calls `updateBackwardCompatibility` on every component view
    // all the same, which keeps the entry first and immediate on documents that had a first state.
    // `validateDefaultStateName` comes last, so that an "animation" timeline starts in its first
    // state whatever the two before did; where it moves the default, the entry brought back just
    // before still goes into the old one until the next run. Free views are no page's and are left
    // alone, as the passes below leave them.
    for (const Array& roots : {app.screens(), app.components()}) {
        for (const Value& v : roots) {
            const auto root = v.objectAs<VDModelView>();
            if (!root) continue;
            for (const auto& view : componentViews(root)) {
                if (view->migrateStateZero()) ++counts.statesMigrated;
                view->updateBackwardCompatibility();
                view->validateDefaultStateName();
            }
        }
    }
    // Then the passes over the whole document. Names first: the export repair works out the
    // paths and prop names of component instances from the variable names, once, and no rename
    // ever reaches them again, so they must be made from the final names. The border repair in the
    // same pass touches only constraints. Forms last: they depend on the tree and the submit
    // actions alone, which nothing here changes.
    app.enforceChildrenNamesDistinctFromParents();
    app.fixModelAfterSketchExport();
    app.markFormsAccordingToSubmitButtons();
}

// ---------------------------------------------------------------- the command

struct RepairOptions {
    std::string file;
    std::string output;
    bool json = false;
};

bool toStandardOutput(const RepairOptions& o) {
    return o.output.empty() || o.output == kStandardStream;
}

void report(const std::string& name, const RepairCounts& counts) {
    std::string text = fmt::format("{}: repaired\n", name);
    for (const auto& entry : counts.toDictionary())
        text += fmt::format("  {:<20}{}\n", entry.key.str(), entry.value.int64Value());
    Console::note(text);
}

int runRepair(const RepairOptions& o) {
    if (o.json && toStandardOutput(o)) {
        Console::error("--json needs -o OUT: standard output carries the repaired document");
        return kExitUsage;
    }
    int exitCode = kExitOK;
    const auto model = readDocument(o.file, exitCode);
    if (!model) return exitCode;
    const auto app = std::dynamic_pointer_cast<VDModelApp>(model);
    if (!app) {
        Console::error(fmt::format("{}: a {} is not a document: the repairs work on a VDModelApp",
                                   documentName(o.file), model->modelClass().name()));
        return kExitFailure;
    }

    RepairCounts counts;
    std::string json;
    try {
        // As a host has it: the views attached, so that a rename carries into the relative paths
        // of actions.
        const auto host = VVHostTree::attachDocument(app);
        const Snapshot before = look(*app);
        repair(*app, counts);
        compare(before, look(*app), counts);
        json = Json::write(Value(app->toDictionary()), true) + "\n";
    } catch (const JsonWriteError&) {
        Console::error(
            fmt::format("{}: the document holds a value that JSON can't hold", documentName(o.file)));
        return kExitFailure;
    } catch (const std::exception& e) {
        // A table whose shown header has no variable name, a component's master record, which
        // can't be encoded: the document stays as it was.
        Console::error(fmt::format("{}: the document can't be repaired: {}", documentName(o.file), e.what()));
        return kExitFailure;
    }

    // Beside the target and renamed into place: the input itself can be the output.
    if (toStandardOutput(o)) {
        Console::out(json);
    } else if (!writeOutputFile(o.output, json)) {
        return kExitFailure;
    }
    if (o.json) {
        Console::out(Json::write(Value(counts.toDictionary())) + "\n");
    } else {
        report(documentName(o.file), counts);
    }
    return kExitOK;
}

} // namespace

CommandRun addRepairCommand(CLI::App& app) {
    auto options = std::make_shared<RepairOptions>();
    auto* cmd = app.add_subcommand("repair", "Run a host's repairs on a decoded document and write it again");
    cmd->add_option("FILE", options->file, "Document JSON file, or - for standard input")->required();
    cmd->add_option("-o,--output", options->output,
                    "Write the repaired document to this file instead of standard output (replaced "
                    "whole, only on success; may be FILE itself)");
    cmd->add_flag("--json", options->json,
                  "Print what the repairs changed as one JSON object on standard output (needs -o)");
    return [options] { return runRepair(*options); };
}

} // namespace velmo::cli
