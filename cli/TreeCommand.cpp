// velmo tree FILE [--json]: decode a document, attach the host's view tree, and print the views.
#include <cstdio>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
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
    fmt::print("{:{}}{} {} \"{}\" {} path=\"{}\"\n", "", depth * 2, view.modelClass().name(),
               view.variableID().value_or("-"), view.viewName().value_or(""), frameText(view), path);
    for (const std::string& line : summaryLines(view))
        fmt::print("{:{}}  {}\n", "", depth * 2, line);
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

} // namespace

void addTreeCommand(CLI::App& app, int& exitCode) {
    auto* cmd = app.add_subcommand("tree", "Print the view hierarchy of a document");
    auto file = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    cmd->add_option("FILE", *file, "Document JSON file")->required();
    cmd->add_flag("--json", *json, "Print the hierarchy as JSON");
    cmd->callback([&exitCode, file, json] {
        auto model = readDocument(*file, exitCode);
        if (!model) return;
        const auto host = VVHostTree::attachDocument(model);
        const auto roots = host->roots();
        if (roots.empty()) {
            fmt::print(stderr, "velmo: {}: the document holds no views\n", *file);
            exitCode = kExitFailure;
            return;
        }
        if (*json) {
            Array out = Array::create();
            for (const auto& root : roots)
                out.push_back(viewJson(*root));
            fmt::print("{}\n", Json::write(Value(out), true));
        } else {
            for (const auto& root : roots)
                printView(*root, 0);
        }
        exitCode = kExitOK;
    });
}

} // namespace velmo::cli
