#include "DocumentInput.h"

#include <cstdio>

#include <fmt/format.h>

#include "Commands.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"

namespace velmo::cli {

std::shared_ptr<VDModel> readDocument(const std::string& file, int& exitCode) {
    const auto text = Files::read(file);
    if (!text) {
        fmt::print(stderr, "velmo: cannot read {}\n", file);
        exitCode = kExitUsage;
        return nullptr;
    }
    JsonParseError error("", 0);
    const Value value = Json::tryParse(*text, Json::ReadOptions{}, &error);
    if (value.isNil()) {
        fmt::print(stderr, "velmo: {}: malformed JSON at offset {}: {}\n", file, error.offset(),
                   error.reason());
        exitCode = kExitUsage;
        return nullptr;
    }
    auto model = VDModelDecoder::modelObjectFromDictionary(value.dictionary());
    if (!model) {
        fmt::print(stderr, "velmo: {}: the top level is not a known model class\n", file);
        exitCode = kExitFailure;
    }
    return model;
}

} // namespace velmo::cli
