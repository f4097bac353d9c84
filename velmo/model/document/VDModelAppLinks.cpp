#include "velmo/model/document/VDModelAppLinks.h"

namespace velmo {

const VDModelClass& VDModelAppLinks::classObject() {
    using C = VDModelAppLinks;
    // Reachable by name, never encoded: the links are the service's to hand out again.
    static const VDModelClass cls(
        "VDModelAppLinks", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            unlistedField<&C::lastShareLink, &C::setLastShareLink>("lastShareLink"),
            unlistedField<&C::lastShareLinkValid, &C::setLastShareLinkValid>("lastShareLinkValid"),
            unlistedField<&C::lastReleaseShortID, &C::setLastReleaseShortID>("lastReleaseShortID"),
            unlistedField<&C::specsLink, &C::setSpecsLink>("specsLink"),
            unlistedField<&C::lastCodeQuaymarkReleaseLink, &C::setLastCodeQuaymarkReleaseLink>(
                "lastCodeQuaymarkReleaseLink"),
            unlistedField<&C::lastCodeQuaymarkSlugLink, &C::setLastCodeQuaymarkSlugLink>(
                "lastCodeQuaymarkSlugLink"),
            unlistedField<&C::lastCodeExportID, &C::setLastCodeExportID>("lastCodeExportID"),
            unlistedField<&C::lastCodeExportLinkValid, &C::setLastCodeExportLinkValid>(
                "lastCodeExportLinkValid"),
        });
    return cls;
}

} // namespace velmo
