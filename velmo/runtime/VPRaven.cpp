#include "velmo/runtime/VPRaven.h"

namespace velmo {

std::shared_ptr<Object> VPRaven::velmoRaven() {
    return nullptr;
}

} // namespace velmo
