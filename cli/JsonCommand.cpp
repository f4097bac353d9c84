// velmo json FILE [--compact]: decode a document and print its JSON again.
#include <cstdio>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "DocumentInput.h"
#include "velmo/foundation/Json.h"

namespace velmo::cli {

void addJsonCommand(CLI::App& app, int& exitCode) {
    auto* cmd = app.add_subcommand("json", "Decode a document and print it as JSON again");
    auto file = std::make_shared<std::string>();
    auto compact = std::make_shared<bool>(false);
    cmd->add_option("FILE", *file, "Document JSON file")->required();
    cmd->add_flag("--compact", *compact, "Print compact JSON instead of pretty");
    cmd->callback([&exitCode, file, compact] {
        auto model = readDocument(*file, exitCode);
        if (!model) return;
        std::string json;
        try {
            json = *compact ? Json::write(Value(model->toDictionary())) : model->toJson();
        } catch (const JsonWriteError&) {
        }
        if (json.empty()) {
            fmt::print(stderr, "velmo: {}: the document holds a value that JSON can't hold\n", *file);
            exitCode = kExitFailure;
            return;
        }
        fmt::print("{}\n", json);
        exitCode = kExitOK;
    });
}

} // namespace velmo::cli
