#include "velmo/runtime/VelmoCommonVersion.h"

namespace velmo {

std::string velmoCommonVersion() {
    return VELMO_VERSION;
}

} // namespace velmo
