#include "velmo/model/core/VDModelClass.h"

#include <algorithm>

namespace velmo {

namespace {
std::string derivedPrefix(std::string_view className) {
    std::string name(className);
    static constexpr std::string_view kModel = "VDModel";
    for (std::size_t at = name.find(kModel); at != std::string::npos; at = name.find(kModel, at)) {
        name.erase(at, kModel.size());
    }
    if (!name.empty() && name[0] >= 'A' && name[0] <= 'Z') name[0] = static_cast<char>(name[0] - 'A' + 'a');
    return name;
}
} // namespace

VDModelClass::VDModelClass(std::string_view name, const VDModelClass* superclass, Factory factory,
                           std::vector<VDField> fields, Options options)
    : VDClass(name, superclass, factory), ownFields_(std::move(fields)),
      prefix_(options.prefix.empty() ? derivedPrefix(name) : std::string(options.prefix)) {
    if (superclass) {
        byName_ = superclass->byName_;
        for (const VDField* f : superclass->fieldList_) {
            const bool removed = std::find(options.removedFields.begin(), options.removedFields.end(),
                                           f->name) != options.removedFields.end();
            if (!removed) fieldList_.push_back(f);
        }
    }
    for (const VDField& f : ownFields_) {
        byName_[f.name] = &f;
        if (f.listed) fieldList_.push_back(&f);
    }
    // Listed names are read by name, as the platform reads them: a name that a subclass declares
    // again resolves to the subclass's field wherever the list holds it.
    for (const VDField*& f : fieldList_)
        f = byName_.at(f->name);
    fieldNames_.reserve(fieldList_.size());
    for (const VDField* f : fieldList_)
        fieldNames_.push_back(f->name);
}

const VDField* VDModelClass::fieldNamed(std::string_view name) const {
    const auto it = byName_.find(name);
    return it == byName_.end() ? nullptr : it->second;
}

} // namespace velmo
