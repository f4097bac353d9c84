#include "DocumentInput.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <unistd.h>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/document/VDModelApp.h"

namespace velmo::cli {

namespace {

// Why the top level is not a model, in a few words: the library's own log line quotes the whole
// value, which for a large document is megabytes.
std::string whyNotAModel(const Value& value) {
    if (!value.isDictionary()) return "it is not a JSON object";
    const Value& modelClass = value.dictionary().get("model_class");
    if (modelClass.isNil()) return "it has no \"model_class\"";
    if (!modelClass.isString()) return "its \"model_class\" is not a string";
    const std::string_view name = modelClass.stringView();
    std::size_t end = std::min<std::size_t>(name.size(), 80);
    // Not in the middle of a UTF-8 character: continuation bytes are 10xxxxxx.
    while (end < name.size() && end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return fmt::format("\"{}{}\"", name.substr(0, end), end < name.size() ? "..." : "");
}

} // namespace

std::string documentName(const std::string& file) {
    return file == kStandardStream ? "standard input" : file;
}

std::shared_ptr<VDModel> readDocument(const std::string& file, int& exitCode) {
    std::error_code error;
    const auto text =
        file == kStandardStream ? Files::readAll(STDIN_FILENO, error) : Files::read(file, error);
    if (!text) {
        Console::error(fmt::format("cannot read {}: {}", documentName(file), error.message()));
        exitCode = kExitUsage;
        return nullptr;
    }
    JsonParseError parseError("", 0);
    const Value value = Json::tryParse(*text, Json::ReadOptions{}, &parseError);
    if (value.isNil()) {
        Console::error(fmt::format("{}: malformed JSON at offset {}: {}", documentName(file),
                                   parseError.offset(), parseError.reason()));
        exitCode = kExitUsage;
        return nullptr;
    }
    std::shared_ptr<VDModel> model;
    try {
        model = value.isDictionary() ? VDModelApp::appWithDictionary(value.dictionary()) : nullptr;
    } catch (const std::exception& e) {
        // A document the model's own rules can't take in whole, such as a component's plain
        // master record, whose field list names a field it doesn't have.
        Console::error(fmt::format("{}: the document can't be decoded: {}", documentName(file), e.what()));
        exitCode = kExitFailure;
        return nullptr;
    }
    if (!model) {
        Console::error(fmt::format("{}: the top level is not a known model class ({})", documentName(file),
                                   whyNotAModel(value)));
        exitCode = kExitFailure;
    }
    return model;
}

bool writeOutputFile(const std::string& file, std::string_view text) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    // Renaming a file over a folder fails with a reason that names neither.
    if (fs::is_directory(status)) {
        Console::error(fmt::format("cannot write {}: Is a directory", file));
        return false;
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        errno = 0;
        std::FILE* out = std::fopen(file.c_str(), "wb");
        bool written = out && std::fwrite(text.data(), 1, text.size(), out) == text.size();
        int reason = written ? 0 : errno;
        if (out && std::fclose(out) != 0 && written) {
            written = false;
            reason = errno;
        }
        if (!written) {
            Console::error(fmt::format("cannot write {}: {}", file, std::strerror(reason ? reason : EIO)));
            return false;
        }
        return true;
    }
    // The library's atomic write makes missing folders (its settings folder may not exist yet);
    // an output path with a folder that isn't there is a typing error to report, not to build.
    const fs::path parent = fs::path(file).parent_path();
    if (!parent.empty() && !fs::is_directory(parent, error)) {
        Console::error(fmt::format("cannot write {}: {}", file,
                                   std::strerror(fs::exists(parent, error) ? ENOTDIR : ENOENT)));
        return false;
    }
    if (!Files::writeAtomically(file, text, 0644, error)) {
        Console::error(fmt::format("cannot write {}: {}", file, error.message()));
        return false;
    }
    return true;
}

} // namespace velmo::cli
