#include "velmo/foundation/Utf8.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

namespace velmo {

namespace {

struct NullSink {
    void Put(char) {}
};

} // namespace

bool Utf8::isValid(std::string_view bytes) {
    rapidjson::MemoryStream in(bytes.data(), bytes.size());
    NullSink sink;
    while (in.Tell() < bytes.size()) {
        if (!rapidjson::UTF8<>::Validate(in, sink)) return false;
    }
    return true;
}

} // namespace velmo
