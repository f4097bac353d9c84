#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/foundation/DateFormatter.h"
#include "velmo/foundation/Object.h"
#include "velmo/foundation/Value.h"
#include "velmo/model/core/VDModelClass.h"

namespace velmo {

class VDModel;

inline constexpr const char* kModelUpdatedNotification = "kModelUpdatedNotification";
inline constexpr const char* kModelStateUpdatedNotification = "kModelStateUpdatedNotification";

/// "type" values of "kModelUpdatedNotification".
inline constexpr std::uint32_t kModelUpdateTypeScreenRemoved = 1;
inline constexpr std::uint32_t kModelUpdateTypeScreenAdded = 2;
inline constexpr std::uint32_t kModelUpdateTypeUpdate = 5;
inline constexpr std::uint32_t kModelUpdateTypeListenerAdded = 7;

/// Answers which class a "model_class" name stands for. `VDModelDecoder` is the one the library
/// installs.
class VDModelMapping {
public:
    virtual ~VDModelMapping() = default;
    virtual const VDClass* classForModelClassName(std::string_view name) const = 0;
};

/// Declares the metaclass accessors and the factories of a model class, and keeps its
/// constructor for the factories, which fill the defaults after construction.
#define VD_MODEL_CLASS(Name)                                                                                 \
    VD_MODEL_CLASS_FACTORIES(Name)                                                                           \
protected:                                                                                                   \
    Name() = default;                                                                                        \
    friend class ::velmo::VDModel;                                                                           \
                                                                                                             \
public:

#define VD_MODEL_CLASS_FACTORIES(Name)                                                                       \
public:                                                                                                      \
    static const ::velmo::VDModelClass& classObject();                                                       \
    const ::velmo::VDClass& objectClass() const override {                                                   \
        return classObject();                                                                                \
    }                                                                                                        \
    /** A new object with its defaults (the platform's `init`). */                                           \
    static std::shared_ptr<Name> create() {                                                                  \
        return ::velmo::VDModel::make<Name>();                                                               \
    }                                                                                                        \
    /** `initWithDictionary:`: defaults, then the dictionary's fields. */                                    \
    static std::shared_ptr<Name> createWithDictionary(const ::velmo::Dictionary& dictionary) {               \
        return ::velmo::VDModel::makeWithDictionary<Name>(dictionary);                                       \
    }

/// The root of every document object: screens, views, states, actions, value records, fonts.
/// One identity scheme, one dictionary and JSON form, one copying rule, one way of overriding
/// fields for a while, and one notification vocabulary. Everything a class adds is declared in its
/// field table; encoding, decoding, copying and traversal run off that table by name.
///
/// Models are held by `std::shared_ptr` and belong to the thread that uses them (the main thread
/// but for encodes on a background queue); they have no locks.
class VDModel : public Object {
    VD_MODEL_CLASS_FACTORIES(VDModel)

    using FieldList = VDModelClass::FieldList;
    using NameList = std::vector<std::string_view>;

    ~VDModel() override = default;

    bool isModelObject() const override { return true; }
    const VDModelClass& modelClass() const { return static_cast<const VDModelClass&>(objectClass()); }

    /// A new object of class `T` with its defaults.
    template <class T> static std::shared_ptr<T> make();
    /// A new object of class `T` from a dictionary: defaults, then `initWithDictionary`.
    template <class T> static std::shared_ptr<T> makeWithDictionary(const Dictionary& dictionary);
    /// The same for a class known only by its metaclass; nullptr when it isn't a model class.
    static std::shared_ptr<VDModel> makeWithDictionary(const VDClass& cls, const Dictionary& dictionary);

    // ---- creation and identity

    /// Sets every field to its default. Overrides call the superclass's first, but for the few
    /// records that skip it on purpose. The base version generates `modelID` when `needsModelID`
    /// says so, then clears `userChangedModelID` and `variableID`.
    virtual void fillDefaultValues();
    /// The second half of `initWithDictionary:`, after the defaults: reads "model_version" without
    /// effect, then `decodeFromDictionary`. Only the view state and the document extend it.
    virtual void initWithDictionary(const Dictionary& dictionary);
    virtual bool needsModelID() const { return true; }
    /// `+beautyIDPrefix` of the object's class.
    const std::string& beautyIDPrefix() const { return modelClass().beautyIDPrefix(); }

    const std::optional<std::string>& modelID() const { return modelID_; }
    void setModelID(std::optional<std::string> modelID) { modelID_ = std::move(modelID); }
    const std::optional<std::string>& variableID() const { return variableID_; }
    virtual void setVariableID(std::optional<std::string> variableID) { variableID_ = std::move(variableID); }
    const std::optional<std::string>& md5() const { return md5_; }
    void setMd5(std::optional<std::string> md5) { md5_ = std::move(md5); }
    /// Set by the host when a person edited the identifier; never encoded.
    bool userChangedModelID() const { return userChangedModelID_ != 0; }
    void setUserChangedModelID(bool changed) { userChangedModelID_ = changed ? 1 : 0; }
    /// The permanent values saved while overrides are in force; never encoded.
    const Dictionary& originalStateOverrides() const { return originalStateOverrides_; }
    void setOriginalStateOverrides(const Dictionary& overrides) {
        originalStateOverrides_ = overrides.copy();
    }

    // ---- field lists

    /// The table lines of `fieldNames`, in order. Overridable, though the table usually says it all.
    virtual const FieldList& fields() const { return modelClass().fields(); }
    /// The lines that `toDictionary` encodes; a class may leave out fields that are empty.
    virtual FieldList lightFields() const { return fields(); }
    NameList fieldNames() const;
    NameList lightFieldNames() const;
    /// The fields that view states may override; empty here.
    virtual NameList stateAffectedFields() const { return {}; }

    /// By-name access over the field table. An unknown name throws `std::invalid_argument`, as
    /// by-name access on the platform raises; so does a value the field can't take.
    Value valueForKey(std::string_view key) const;
    /// `setValue:forKey:`
    void setValueForKey(const Value& value, std::string_view key);

    // ---- encoding

    /// The light fields of the permanent state, with "model_class" and "model_version".
    virtual Dictionary toDictionary();
    /// The same with every field of `fieldNames`.
    Dictionary toDictionaryWithAllFields();
    /// The given fields as they stand now, overrides included; an unknown name throws.
    Dictionary toDictionaryWithFields(const NameList& names);
    /// `toDictionary` as pretty-printed JSON. Empty text when the JSON writer fails (a value
    /// JSON can't hold, such as a non-finite number).
    virtual std::string toJson();
    /// Models become their `toDictionary`, containers are rebuilt with encoded elements.
    static Value encodeItem(const Value& item);

    // ---- decoding

    /// Sets each field of `fieldNames`, in order, from the dictionary. A value that a field can't
    /// take is dropped and the field keeps its default.
    void decodeFromDictionary(const Dictionary& dictionary);
    /// Dictionaries with "model_class" become models, containers are rebuilt with decoded
    /// elements (nil results dropped), anything else comes back as it is.
    static Value decodeItem(const Value& item);
    /// A new model of the class that "model_class" names, through `+mapping`; nullptr when the
    /// name resolves to nothing or no mapping is installed. A class that isn't a model throws.
    static std::shared_ptr<VDModel> decodeModelFromDictionary(const Dictionary& dictionary);

    static bool isArrayOfModelObjects(const Value& value);
    static bool isDictionaryOfModelObjects(const Value& value);
    static bool isArrayOfEncodedModelObjects(const Value& value);
    /// Past its first checks this test indexes a dictionary like an array, which fails: it
    /// throws `std::invalid_argument` there, as the original raises. Nothing in the library calls it.
    static bool isDictionaryOfEncodedModelObjects(const Value& value);

    // ---- comparison and copying

    /// Exactly the same class and equal, non-nil `modelID`s.
    bool isEqual(const Object& other) const override;
    /// A decode of `toDictionaryWithAllFields` into a new object of the same class: deep, with the
    /// permanent state only; nullptr when no mapping is installed.
    virtual std::shared_ptr<VDModel> copy();
    /// A copy that takes the values in force now, overrides included, as its permanent state.
    std::shared_ptr<VDModel> copyWithPermenantState();

    // ---- overrides

    Dictionary currentOverrides();
    void prepareForOverrides();
    void applyOverrides(const Dictionary& overrides);
    void clearOverrides();
    bool hasOverrides() const { return !originalStateOverrides_.isNil(); }

    // ---- notifications

    virtual void postUpdateNotification();
    /// postUpdateNotificationType:
    virtual void postUpdateNotificationType(std::uint32_t type);
    /// postUpdateNotificationType:userInfo:
    virtual void postUpdateNotificationType(std::uint32_t type, const Dictionary& userInfo);
    virtual void postStateUpdatedNotification();

    // ---- traversal

    using ModelBlock = std::function<void(const std::shared_ptr<VDModel>&)>;
    /// Pre-order, depth first, over every model reachable through `fieldNames`, this one first.
    void enumerateModelsWithBlock(const ModelBlock& block);
    /// enumerateModelsForItem:block:
    static void enumerateModelsForItem(const Value& item, const ModelBlock& block);

    // ---- class-level state

    /// The process-wide mapping from "model_class" names to classes; nil until the decoder
    /// installs itself.
    static std::shared_ptr<VDModelMapping> mapping();
    static void setMapping(std::shared_ptr<VDModelMapping> mapping);
    /// The one shared formatter for the service's dates ("yyyy-MM-dd'T'HH:mm:ss", UTC).
    static const DateFormatter& dateFormatter();

    std::shared_ptr<VDModel> sharedFromThis() {
        return std::static_pointer_cast<VDModel>(shared_from_this());
    }

protected:
    VDModel() = default;

private:
    /// The light or the full list, chosen after the overrides are taken away: the light list
    /// may depend on values that an override changes.
    Dictionary encodeFields(bool light);

    std::optional<std::string> modelID_;
    std::optional<std::string> variableID_;
    std::optional<std::string> md5_;
    std::uint8_t userChangedModelID_ = 0;
    Dictionary originalStateOverrides_;
};

namespace detail {
// Lets the factories reach a class's protected constructor while allocating object and count
// together.
template <class T> struct VDModelAllocation final : T { VDModelAllocation() = default; };
} // namespace detail

template <class T> std::shared_ptr<T> VDModel::make() {
    std::shared_ptr<T> model = std::make_shared<detail::VDModelAllocation<T>>();
    model->fillDefaultValues();
    return model;
}

template <class T> std::shared_ptr<T> VDModel::makeWithDictionary(const Dictionary& dictionary) {
    std::shared_ptr<T> model = make<T>();
    model->initWithDictionary(dictionary);
    return model;
}

/// A typed `copy`: the copy of a model is always of the model's own class.
template <class T> std::shared_ptr<T> modelCopy(const std::shared_ptr<T>& model) {
    return model ? std::static_pointer_cast<T>(model->copy()) : nullptr;
}

} // namespace velmo
