#include "velmo/runtime/VVUserData.h"

#include "velmo/runtime/VVDI.h"

namespace velmo {

std::shared_ptr<VVUserData> VVUserData::current() {
    return VVDI::shared().instanceFor<VVUserData>(kVVUserData);
}

} // namespace velmo
