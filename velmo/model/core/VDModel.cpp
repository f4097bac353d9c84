#include "velmo/model/core/VDModel.h"

#include <atomic>
#include <fmt/format.h>

#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/foundation/Uuid.h"

namespace velmo {

const VDModelClass& VDModel::classObject() {
    static const VDModelClass cls("VDModel", nullptr,
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&VDModel::modelID, &VDModel::setModelID>("modelID"),
                                      field<&VDModel::variableID, &VDModel::setVariableID>("variableID"),
                                      field<&VDModel::md5, &VDModel::setMd5>("md5"),
                                  });
    return cls;
}

std::shared_ptr<VDModel> VDModel::makeWithDictionary(const VDClass& cls, const Dictionary& dictionary) {
    auto model = std::dynamic_pointer_cast<VDModel>(cls.create());
    if (model) model->initWithDictionary(dictionary);
    return model;
}

// ---------------------------------------------------------------- creation

void VDModel::fillDefaultValues() {
    if (needsModelID()) modelID_ = beautyIDPrefix() + "_" + Uuid::lowercaseString();
    userChangedModelID_ = 0;
    variableID_.reset();
}

void VDModel::initWithDictionary(const Dictionary& dictionary) {
    // Read and compared with 0, but nothing in decoding depends on a document's version.
    [[maybe_unused]] const float version = dictionary.get("model_version").floatValue();
    decodeFromDictionary(dictionary);
}

// ---------------------------------------------------------------- by-name access

VDModel::NameList VDModel::fieldNames() const {
    NameList names;
    for (const VDField* f : fields())
        names.push_back(f->name);
    return names;
}

VDModel::NameList VDModel::lightFieldNames() const {
    NameList names;
    for (const VDField* f : lightFields())
        names.push_back(f->name);
    return names;
}

namespace {
[[noreturn]] void throwUndefinedKey(const VDModel& model, std::string_view key) {
    throw std::invalid_argument(fmt::format("[<{}> valueForUndefinedKey:]: this class is not key value "
                                            "coding-compliant for the key {}.",
                                            model.modelClass().name(), key));
}
} // namespace

Value VDModel::valueForKey(std::string_view key) const {
    const VDField* f = modelClass().fieldNamed(key);
    if (!f) throwUndefinedKey(*this, key);
    return f->get(*this);
}

void VDModel::setValueForKey(const Value& value, std::string_view key) {
    const VDField* f = modelClass().fieldNamed(key);
    if (!f) throwUndefinedKey(*this, key);
    f->set(*this, value);
}

// ---------------------------------------------------------------- encoding

Dictionary VDModel::encodeFields(bool light) {
    // Encoding always shows the permanent state: overrides are taken away for the time of the
    // encode and put back after it.
    Dictionary snapshot;
    if (hasOverrides()) {
        snapshot = currentOverrides();
        clearOverrides();
    }
    const FieldList list = light ? lightFields() : fields();
    Dictionary result = Dictionary::create(list.size() + 2);
    result.set("model_version", Value(0));
    result.set("model_class", Value(modelClass().name()));
    for (const VDField* f : list) {
        Value value = f->get(*this);
        if (!value.isNone()) result.set(f->name, encodeItem(value));
    }
    if (!snapshot.isNil()) applyOverrides(snapshot);
    return result;
}

Dictionary VDModel::toDictionary() {
    return encodeFields(true);
}

Dictionary VDModel::toDictionaryWithAllFields() {
    return encodeFields(false);
}

Dictionary VDModel::toDictionaryWithFields(const NameList& names) {
    Dictionary result = Dictionary::create(names.size() + 2);
    result.set("model_version", Value(0));
    result.set("model_class", Value(modelClass().name()));
    for (std::string_view name : names) {
        Value value = valueForKey(name);
        if (!value.isNone()) result.set(name, encodeItem(value));
    }
    return result;
}

std::string VDModel::toJson() {
    try {
        return Json::write(Value(toDictionary()), true);
    } catch (const std::exception&) {
        // A value JSON can't hold, or a field that can't be read (a component's master record).
        return std::string();
    }
}

Value VDModel::encodeItem(const Value& item) {
    switch (item.kind()) {
    case Value::Kind::Model:
        return Value(item.objectAs<VDModel>()->toDictionary());
    case Value::Kind::Array: {
        const Array source = item.array();
        Array out = Array::create(source.size());
        for (const Value& v : source)
            out.push_back(encodeItem(v));
        return Value(out);
    }
    case Value::Kind::Dictionary: {
        const Dictionary source = item.dictionary();
        Dictionary out = Dictionary::create(source.size());
        for (const auto& e : source)
            out.setEntry(e.key, encodeItem(e.value));
        return Value(out);
    }
    default:
        return item;
    }
}

// ---------------------------------------------------------------- decoding

void VDModel::decodeFromDictionary(const Dictionary& dictionary) {
    for (const VDField* f : fields()) {
        const Value* raw = dictionary.find(f->name);
        if (!raw) continue;
        // A value the field can't take, or a nested class that can't be made, is dropped
        // without a word: the field keeps its default and decoding goes on.
        try {
            const Value value = decodeItem(*raw);
            if (value.isNone()) continue;
            f->set(*this, value);
        } catch (const std::exception&) {
        }
    }
}

Value VDModel::decodeItem(const Value& item) {
    switch (item.kind()) {
    case Value::Kind::Dictionary: {
        const Dictionary source = item.dictionary();
        if (!source.get("model_class").isNone()) return Value(decodeModelFromDictionary(source));
        Dictionary out = Dictionary::create(source.size());
        for (const auto& e : source) {
            Value decoded = decodeItem(e.value);
            if (!decoded.isNil()) out.setEntry(e.key, std::move(decoded));
        }
        return Value(out);
    }
    case Value::Kind::Array: {
        const Array source = item.array();
        Array out = Array::create(source.size());
        for (const Value& v : source) {
            Value decoded = decodeItem(v);
            if (!decoded.isNil()) out.push_back(std::move(decoded));
        }
        return Value(out);
    }
    default:
        return item;
    }
}

std::shared_ptr<VDModel> VDModel::decodeModelFromDictionary(const Dictionary& dictionary) {
    const std::shared_ptr<VDModelMapping> map = mapping();
    if (!map) return nullptr;
    const VDClass* cls = map->classForModelClassName(dictionary.get("model_class").stringView());
    if (!cls) return nullptr;
    if (!cls->isModelClass()) {
        // Creating a non-model object with a dictionary fails, as it does on the platform.
        throw std::invalid_argument(fmt::format("{} can't be made from a dictionary", cls->name()));
    }
    return makeWithDictionary(*cls, dictionary);
}

bool VDModel::isArrayOfModelObjects(const Value& value) {
    return value.isArray() && !value.array().empty() && value.array().first().isModel();
}

bool VDModel::isDictionaryOfModelObjects(const Value& value) {
    return value.isDictionary() && !value.dictionary().empty() && value.dictionary().begin()->value.isModel();
}

bool VDModel::isArrayOfEncodedModelObjects(const Value& value) {
    if (!value.isArray() || value.array().empty()) return false;
    const Value& first = value.array().first();
    return first.isDictionary() && first.dictionary().contains("model_class");
}

bool VDModel::isDictionaryOfEncodedModelObjects(const Value& value) {
    if (!value.isDictionary() || value.dictionary().empty()) return false;
    if (!value.dictionary().begin()->value.isDictionary()) return false;
    throw std::invalid_argument("-[NSDictionary objectAtIndexedSubscript:]: unrecognized selector");
}

// ---------------------------------------------------------------- comparison and copying

bool VDModel::isEqual(const Object& other) const {
    if (!other.isMemberOf(objectClass())) return false;
    const auto& model = static_cast<const VDModel&>(other);
    return modelID_.has_value() && model.modelID_.has_value() && *modelID_ == *model.modelID_;
}

std::shared_ptr<VDModel> VDModel::copy() {
    if (!mapping()) return nullptr;
    return makeWithDictionary(modelClass(), toDictionaryWithAllFields());
}

std::shared_ptr<VDModel> VDModel::copyWithPermenantState() {
    // Without the saved values the object looks un-overridden, so the copy's encode takes the
    // values in force now as they stand.
    Dictionary saved = originalStateOverrides_;
    originalStateOverrides_ = Dictionary();
    std::shared_ptr<VDModel> result;
    try {
        result = copy();
    } catch (...) {
        originalStateOverrides_ = saved;
        throw;
    }
    originalStateOverrides_ = saved;
    return result;
}

// ---------------------------------------------------------------- overrides

Dictionary VDModel::currentOverrides() {
    Dictionary result = Dictionary::create();
    for (std::string_view name : stateAffectedFields()) {
        Value value = valueForKey(name);
        if (value.isNil()) continue;
        // Two states must never share a mutable model.
        if (value.isModel()) value = Value(value.objectAs<VDModel>()->copy());
        result.set(name, value);
    }
    return result;
}

void VDModel::prepareForOverrides() {
    if (originalStateOverrides_.isNil()) originalStateOverrides_ = currentOverrides();
}

void VDModel::applyOverrides(const Dictionary& overrides) {
    prepareForOverrides();
    for (const auto& e : overrides) {
        Value value = e.value;
        if (value.isModel()) value = Value(value.objectAs<VDModel>()->copy());
        setValueForKey(value, e.key.stringView());
    }
    // Encodes on background queues pass through here twice per object; they stay quiet.
    if (isMainThread()) postStateUpdatedNotification();
}

void VDModel::clearOverrides() {
    if (originalStateOverrides_.isNil()) return;
    applyOverrides(originalStateOverrides_);
    originalStateOverrides_ = Dictionary();
}

// ---------------------------------------------------------------- notifications

void VDModel::postUpdateNotification() {
    postUpdateNotificationType(kModelUpdateTypeUpdate);
}

void VDModel::postUpdateNotificationType(std::uint32_t type) {
    postUpdateNotificationType(type, Dictionary());
}

void VDModel::postUpdateNotificationType(std::uint32_t type, const Dictionary& userInfo) {
    Dictionary info = Dictionary::create(userInfo.size() + 1);
    info.set("type", Value(type));
    for (const auto& e : userInfo)
        info.setEntry(e.key, e.value);
    NotificationCenter::defaultCenter().post(kModelUpdatedNotification, shared_from_this(), info);
}

void VDModel::postStateUpdatedNotification() {
    NotificationCenter::defaultCenter().post(kModelStateUpdatedNotification, shared_from_this());
}

// ---------------------------------------------------------------- traversal

void VDModel::enumerateModelsWithBlock(const ModelBlock& block) {
    enumerateModelsForItem(Value(sharedFromThis()), block);
}

void VDModel::enumerateModelsForItem(const Value& item, const ModelBlock& block) {
    switch (item.kind()) {
    case Value::Kind::Model: {
        // The kind guarantees a model: no cast to find out, on a walk that visits every object.
        const auto model = std::static_pointer_cast<VDModel>(item.object());
        block(model);
        for (const VDField* f : model->fields()) {
            if (f->mayHoldModels()) enumerateModelsForItem(f->get(*model), block);
        }
        break;
    }
    case Value::Kind::Dictionary:
        for (const auto& e : item.dictionary())
            enumerateModelsForItem(e.value, block);
        break;
    case Value::Kind::Array:
        for (const Value& v : item.array())
            enumerateModelsForItem(v, block);
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------- class-level state

namespace {
std::atomic<std::shared_ptr<VDModelMapping>>& mappingSlot() {
    static std::atomic<std::shared_ptr<VDModelMapping>> slot;
    return slot;
}
} // namespace

std::shared_ptr<VDModelMapping> VDModel::mapping() {
    return mappingSlot().load();
}

void VDModel::setMapping(std::shared_ptr<VDModelMapping> mapping) {
    mappingSlot().store(std::move(mapping));
}

const DateFormatter& VDModel::dateFormatter() {
    static const DateFormatter formatter;
    return formatter;
}

} // namespace velmo
