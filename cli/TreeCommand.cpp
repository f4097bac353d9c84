// velmo tree FILE [--json]: decode a document, attach the host's view tree, and print the views.
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "DocumentInput.h"
#include "ModelSummary.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostTree.h"

namespace velmo::cli {

namespace {

std::string frameText(const VDModelView& view) {
    return fmt::format("({:g}, {:g}, {:g}x{:g})", view.x(), view.y(), view.width(), view.height());
}

void printView(const VDModelView& view, int depth) {
    const std::string path = view.viewPath();
    Console::out(fmt::format("{:{}}{} {} \"{}\" {} path=\"{}\"\n", "", depth * 2, view.modelClass().name(),
                             view.variableID().value_or("-"), view.viewName().value_or(""), frameText(view),
                             path));
    for (const std::string& line : summaryLines(view))
        Console::out(fmt::format("{:{}}  {}\n", "", depth * 2, line));
    for (const Value& v : view.subviews()) {
        if (auto sub = v.objectAs<VDModelView>()) printView(*sub, depth + 1);
    }
}

Value viewJson(const VDModelView& view) {
    Array subviews = Array::create();
    for (const Value& v : view.subviews()) {
        if (auto sub = v.objectAs<VDModelView>()) subviews.push_back(viewJson(*sub));
    }
    return Value(Dictionary{
        {"class", Value(view.modelClass().name())},
        {"variableID", view.variableID() ? Value(*view.variableID()) : Value::null()},
        {"viewName", view.viewName() ? Value(*view.viewName()) : Value::null()},
        {"frame", Value(Array{Value(view.x()), Value(view.y()), Value(view.width()), Value(view.height())})},
        {"path", Value(view.viewPath())},
        {"states", Value(describeStates(view))},
        {"actions", Value(describeActions(view))},
        {"subviews", Value(subviews)},
    });
}

struct TreeOptions {
    std::string file;
    bool json = false;
};

int runTree(const TreeOptions& o) {
    int exitCode = kExitOK;
    auto model = readDocument(o.file, exitCode);
    if (!model) return exitCode;
    const auto host = VVHostTree::attachDocument(model);
    const auto roots = host->roots();
    if (roots.empty()) {
        Console::error(fmt::format("{}: the document holds no views", documentName(o.file)));
        return kExitFailure;
    }
    if (o.json) {
        Array out = Array::create();
        for (const auto& root : roots)
            out.push_back(viewJson(*root));
        Console::out(Json::write(Value(out), true) + "\n");
    } else {
        for (const auto& root : roots)
            printView(*root, 0);
    }
    return kExitOK;
}

} // namespace

CommandRun addTreeCommand(CLI::App& app) {
    auto options = std::make_shared<TreeOptions>();
    auto* cmd = app.add_subcommand("tree", "Print the view hierarchy of a document");
    cmd->add_option("FILE", options->file, "Document JSON file, or - for standard input")->required();
    cmd->add_flag("--json", options->json, "Print the hierarchy as JSON");
    return [options] { return runTree(*options); };
}

} // namespace velmo::cli
