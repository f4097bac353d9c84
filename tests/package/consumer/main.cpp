// A user's program: a document's JSON in, its model decoded, its JSON out; and an archive's
// error, through the archive's public header alone.
#include <cstdint>
#include <cstdio>
#include <memory>

#include "velmo/archive/VPZipArchive.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelView.h"

int main() {
    const char* text = R"({"model_class":"VDModelView","modelID":"View_1","variableID":"screen","width":"320",
                           "subviews":[{"model_class":"VDModelView","modelID":"View_2","variableID":"button"}]})";
    const auto model =
        velmo::VDModelDecoder::modelObjectFromDictionary(velmo::Json::parse(text).dictionary());
    const auto view = std::dynamic_pointer_cast<velmo::VDModelView>(model);
    if (!view || view->subviews().size() != 1) {
        std::fputs("the document did not decode\n", stderr);
        return 1;
    }
    velmo::VPErrorPtr error;
    velmo::VPZipArchive::payloadSizeForArchiveAtPath("", &error);
    if (!error ||
        error->code() != static_cast<std::int64_t>(velmo::VPZipArchiveErrorCode::FailedOpenZipFile)) {
        std::fputs("a missing archive was not told as one\n", stderr);
        return 1;
    }
    const velmo::Dictionary encoded = view->toDictionary();
    std::printf("%s %s %g %zu\n", view->modelClass().name().c_str(), view->variableID()->c_str(),
                encoded.get("width").doubleValue(), encoded.get("subviews").array().size());
    return 0;
}
