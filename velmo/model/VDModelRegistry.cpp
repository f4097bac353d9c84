#include "velmo/model/VDModelRegistry.h"

#include "velmo/model/VDModel.h"

namespace velmo {

std::vector<const VDClass*> registerModelClasses() {
    return {
        &VDModel::classObject(),
    };
}

} // namespace velmo
