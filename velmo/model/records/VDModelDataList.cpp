#include "velmo/model/records/VDModelDataList.h"

#include <array>

namespace velmo {

namespace {
// One table, read both ways.
constexpr std::array<std::string_view, 4> kTypeNames = {"Empty List", "CSV", "JSON", "RSS"};
} // namespace

const VDModelClass& VDModelDataList::classObject() {
    using C = VDModelDataList;
    static const VDModelClass cls("VDModelDataList", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::type, &C::setType>("type"),
                                      field<&C::fileNameOrUrl, &C::setFileNameOrUrl>("fileNameOrUrl"),
                                      field<&C::jsonPathToList, &C::setJsonPathToList>("jsonPathToList"),
                                  });
    return cls;
}

std::string VDModelDataList::nameForType(std::int32_t type) {
    if (type < 0 || type >= static_cast<std::int32_t>(kTypeNames.size())) return std::string();
    return std::string(kTypeNames[static_cast<std::size_t>(type)]);
}

std::int32_t VDModelDataList::typeForName(std::string_view name) {
    for (std::size_t i = 0; i < kTypeNames.size(); ++i) {
        if (kTypeNames[i] == name) return static_cast<std::int32_t>(i);
    }
    return 0;
}

} // namespace velmo
