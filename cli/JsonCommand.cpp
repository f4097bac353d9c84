// velmo json FILE [--compact] [-o OUT]: decode a document and print its JSON again.
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "DocumentInput.h"
#include "velmo/foundation/Json.h"

namespace velmo::cli {

namespace {

struct JsonOptions {
    std::string file;
    bool compact = false;
    std::string output;
};

int runJson(const JsonOptions& o) {
    int exitCode = kExitOK;
    auto model = readDocument(o.file, exitCode);
    if (!model) return exitCode;
    std::string json;
    try {
        // The same encoding for a whole document and for any other model: a document's own
        // `toJson` is always compact, and the command is pretty unless asked otherwise.
        json = Json::write(Value(model->toDictionary()), !o.compact);
    } catch (const JsonWriteError&) {
        Console::error(
            fmt::format("{}: the document holds a value that JSON can't hold", documentName(o.file)));
        return kExitFailure;
    } catch (const std::exception& e) {
        // A component's master record, whose field list names a field it doesn't have.
        Console::error(fmt::format("{}: the document can't be encoded: {}", documentName(o.file), e.what()));
        return kExitFailure;
    }
    json += '\n';
    if (o.output.empty() || o.output == kStandardStream) {
        Console::out(json);
        return kExitOK;
    }
    // Beside the target and renamed into place: a failed write leaves the old file as it was.
    if (!writeOutputFile(o.output, json)) return kExitFailure;
    return kExitOK;
}

} // namespace

CommandRun addJsonCommand(CLI::App& app) {
    auto options = std::make_shared<JsonOptions>();
    auto* cmd = app.add_subcommand("json", "Decode a document and print it as JSON again");
    cmd->add_option("FILE", options->file, "Document JSON file, or - for standard input")->required();
    cmd->add_flag("--compact", options->compact, "Print compact JSON instead of pretty");
    cmd->add_option(
        "-o,--output", options->output,
        "Write the JSON to this file instead of standard output (replaced whole, only on success)");
    return [options] { return runJson(*options); };
}

} // namespace velmo::cli
