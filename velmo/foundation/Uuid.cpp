#include "velmo/foundation/Uuid.h"

#include <uuid/uuid.h>

namespace velmo {

namespace {
std::string make(bool upper) {
    uuid_t id;
    uuid_generate_random(id);
    char text[37];
    if (upper) {
        uuid_unparse_upper(id, text);
    } else {
        uuid_unparse_lower(id, text);
    }
    return std::string(text, 36);
}
} // namespace

std::string Uuid::string() { return make(true); }

std::string Uuid::lowercaseString() { return make(false); }

} // namespace velmo
