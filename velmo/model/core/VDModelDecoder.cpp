#include "velmo/model/core/VDModelDecoder.h"

#include <algorithm>

#include <fmt/format.h>

#include "velmo/foundation/SystemLog.h"
#include "velmo/model/core/VDModelRegistry.h"

namespace velmo {

VDModelDecoder::VDModelDecoder() {
    for (const VDClass* cls : registerModelClasses())
        registerClass(*cls);
}

const std::shared_ptr<VDModelDecoder>& VDModelDecoder::sharedInstance() {
    static const std::shared_ptr<VDModelDecoder> instance = [] {
        std::shared_ptr<VDModelDecoder> decoder(new VDModelDecoder());
        VDModel::setMapping(decoder);
        return decoder;
    }();
    return instance;
}

std::shared_ptr<VDModel> VDModelDecoder::modelObjectFromDictionary(const Dictionary& dictionary) {
    if (!VDModel::mapping()) VDModel::setMapping(sharedInstance());
    const std::shared_ptr<VDModelMapping> map = VDModel::mapping();
    const VDClass* cls =
        map ? map->classForModelClassName(dictionary.get("model_class").stringView()) : nullptr;
    if (cls && cls->isSubclassOf(VDModel::classObject()))
        return VDModel::makeWithDictionary(*cls, dictionary);
    SystemLog::log(fmt::format("Wrong model class in dictionary: {}", Value(dictionary).description()));
    return nullptr;
}

Array VDModelDecoder::modelArrayFromDictionaryArray(const Array& dictionaries) {
    Array result = Array::create(dictionaries.size());
    for (const Value& item : dictionaries) {
        if (auto model = modelObjectFromDictionary(item.dictionary())) result.push_back(Value(model));
    }
    return result;
}

const VDClass* VDModelDecoder::classForModelClassName(std::string_view name) const {
    std::lock_guard lock(mutex_);
    const auto it = classes_.find(name);
    return it == classes_.end() ? nullptr : it->second;
}

void VDModelDecoder::registerClass(const VDClass& cls) {
    std::lock_guard lock(mutex_);
    const auto [it, inserted] = classes_.emplace(cls.name(), &cls);
    if (inserted) {
        order_.push_back(&cls);
    } else if (it->second != &cls) {
        // A later entry of the same name replaces the earlier, as a host's class would.
        std::replace(order_.begin(), order_.end(), it->second, &cls);
        it->second = &cls;
    }
}

std::vector<const VDClass*> VDModelDecoder::registeredClasses() const {
    std::lock_guard lock(mutex_);
    return order_;
}

} // namespace velmo
