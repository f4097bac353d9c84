#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "velmo/foundation/Value.h"
#include "velmo/model/core/VDNumber.h"

namespace velmo {

class VDModel;

/// How a field is stored; decides the conversions of by-name access.
enum class VDFieldKind : std::uint8_t {
    String,     ///< string or nil
    Float,      ///< single precision
    Double,     ///< double precision
    Int32,      ///< signed 32-bit
    Int64,      ///< signed 64-bit
    Flag,       ///< one byte, read as a truth value
    Number,     ///< a number object or nil
    Model,      ///< a model of a given class, or nil
    Array,      ///< an array or nil
    Dictionary, ///< a dictionary or nil
    Any,        ///< any plain value
};

/// One line of a class's field table: the field's name (which is also its JSON key), its storage
/// kind, and its accessors by name. The setter is the field's ordinary setter, so a setter with
/// side effects has them whichever road sets the field.
struct VDField {
    std::string_view name;
    VDFieldKind kind;
    /// False for fields reachable by name that stay out of `fieldNames` (never encoded or copied).
    bool listed;
    Value (*get)(const VDModel&);
    /// Throws `std::invalid_argument` for a value the field can't take.
    void (*set)(VDModel&, const Value&);

    /// Whether a value of the field can hold models: walks over the document skip the others.
    constexpr bool mayHoldModels() const {
        return kind == VDFieldKind::Model || kind == VDFieldKind::Array || kind == VDFieldKind::Dictionary ||
               kind == VDFieldKind::Any;
    }
};

namespace detail {

[[noreturn]] void throwFieldMismatch(std::string_view expected, const Value& got);

// Text given to a numeric field reads as the platform's strings read as numbers, so exporters that
// write numbers as strings lose nothing: leading white space is skipped, the longest numeric prefix
// is read and the rest ignored ("12abc" gives 12), and text without one reads as 0.

/// The decimal prefix as a double (the platform's `doubleValue` of a string); overflow gives
/// infinity, underflow 0.
double doubleFromText(std::string_view text) noexcept;
/// The integer prefix (`longLongValue`): a fraction or exponent ends it; out-of-range saturates.
std::int64_t integerFromText(std::string_view text) noexcept;
/// `boolValue` of a string: true on "Y", "y", "T", "t" or a digit 1-9 after blanks, an optional
/// sign and zeros ("true", "yes", "12"); false otherwise ("0", "0.5", "no", "abc").
bool flagFromText(std::string_view text) noexcept;
/// A number object for the text: an integer when the prefix is one, otherwise a double.
Value numberFromText(std::string_view text);

template <class T> struct VDFieldTraits;

template <> struct VDFieldTraits<std::optional<std::string>> {
    static constexpr VDFieldKind kind = VDFieldKind::String;
    static Value toValue(const std::optional<std::string>& v) { return v ? Value(*v) : Value(); }
    static std::optional<std::string> fromValue(const Value& v) {
        if (v.isNone()) return std::nullopt;
        if (!v.isString()) throwFieldMismatch("string", v);
        return v.str();
    }
};

// Scalars take any number (booleans included) or text and convert it, as the platform's setters by
// name do; nil can't be stored in a scalar.
template <class T, VDFieldKind K> struct VDScalarTraits {
    static constexpr VDFieldKind kind = K;
    static Value toValue(T v) { return Value(v); }
    static T fromValue(const Value& v) {
        if (v.isString()) return fromText(v.stringView());
        if (!v.isNumber()) throwFieldMismatch("number", v);
        if constexpr (std::is_same_v<T, bool>) {
            return v.boolValue();
        } else if constexpr (std::is_same_v<T, float>) {
            return v.floatValue();
        } else if constexpr (std::is_same_v<T, double>) {
            return v.doubleValue();
        } else {
            return static_cast<T>(v.int64Value());
        }
    }
    static T fromText(std::string_view text) noexcept {
        if constexpr (std::is_same_v<T, bool>) {
            return flagFromText(text);
        } else if constexpr (std::is_floating_point_v<T>) {
            return static_cast<T>(doubleFromText(text));
        } else {
            // A string's `intValue` saturates where a number's conversion would wrap.
            const std::int64_t n = integerFromText(text);
            if (n < std::numeric_limits<T>::min()) return std::numeric_limits<T>::min();
            if (n > std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
            return static_cast<T>(n);
        }
    }
};

template <> struct VDFieldTraits<float> : VDScalarTraits<float, VDFieldKind::Float> {};
template <> struct VDFieldTraits<double> : VDScalarTraits<double, VDFieldKind::Double> {};
template <> struct VDFieldTraits<std::int32_t> : VDScalarTraits<std::int32_t, VDFieldKind::Int32> {};
template <> struct VDFieldTraits<std::int64_t> : VDScalarTraits<std::int64_t, VDFieldKind::Int64> {};
// A one-byte flag is a number like any other in the dictionary form: 0 or 1, never true/false.
template <> struct VDFieldTraits<bool> : VDScalarTraits<bool, VDFieldKind::Flag> {
    static Value toValue(bool v) { return Value(v ? 1 : 0); }
};

// Text given to a number object becomes the number it reads as. The platform's setter would keep
// the string itself, but every reader of these fields asks it for a number, and a number keeps the
// field a number in the JSON it is written back to.
template <> struct VDFieldTraits<VDNumber> {
    static constexpr VDFieldKind kind = VDFieldKind::Number;
    static Value toValue(const VDNumber& v) { return v.value(); }
    static VDNumber fromValue(const Value& v) {
        return VDNumber::fromValue(v.isString() ? numberFromText(v.stringView()) : v);
    }
};

template <class M>
requires std::is_base_of_v<VDModel, M>
struct VDFieldTraits<std::shared_ptr<M>> {
    static constexpr VDFieldKind kind = VDFieldKind::Model;
    static Value toValue(const std::shared_ptr<M>& v) { return Value(v); }
    static std::shared_ptr<M> fromValue(const Value& v) {
        if (v.isNone()) return nullptr;
        auto model = std::dynamic_pointer_cast<M>(v.object());
        if (!model) throwFieldMismatch("model of the field's class", v);
        return model;
    }
};

template <> struct VDFieldTraits<Array> {
    static constexpr VDFieldKind kind = VDFieldKind::Array;
    static Value toValue(const Array& v) { return Value(v); }
    static Array fromValue(const Value& v) {
        if (v.isNone()) return Array();
        if (!v.isArray()) throwFieldMismatch("array", v);
        return v.array();
    }
};

template <> struct VDFieldTraits<Dictionary> {
    static constexpr VDFieldKind kind = VDFieldKind::Dictionary;
    static Value toValue(const Dictionary& v) { return Value(v); }
    static Dictionary fromValue(const Value& v) {
        if (v.isNone()) return Dictionary();
        if (!v.isDictionary()) throwFieldMismatch("dictionary", v);
        return v.dictionary();
    }
};

template <> struct VDFieldTraits<Value> {
    static constexpr VDFieldKind kind = VDFieldKind::Any;
    static Value toValue(const Value& v) { return v; }
    static Value fromValue(const Value& v) { return v.isNull() ? Value() : v; }
};

template <class M> struct VDGetter;
template <class C, class R> struct VDGetter<R (C::*)() const> {
    using Class = C;
    using Type = std::remove_cvref_t<R>;
};
template <class C, class R> struct VDGetter<R (C::*)() const noexcept> : VDGetter<R (C::*)() const> {};

template <class M> struct VDSetter;
template <class C, class A> struct VDSetter<void (C::*)(A)> {
    using Class = C;
    using Type = std::remove_cvref_t<A>;
};

template <auto Getter> Value getThunk(const VDModel& model) {
    using G = VDGetter<decltype(Getter)>;
    return VDFieldTraits<typename G::Type>::toValue((static_cast<const typename G::Class&>(model).*Getter)());
}

template <auto Setter> void setThunk(VDModel& model, const Value& value) {
    using S = VDSetter<decltype(Setter)>;
    (static_cast<typename S::Class&>(model).*Setter)(VDFieldTraits<typename S::Type>::fromValue(value));
}

} // namespace detail

/// A table line from a getter and a setter: `field<&VDModelColor::red, &VDModelColor::setRed>("red")`.
template <auto Getter, auto Setter> constexpr VDField field(std::string_view name) {
    using G = detail::VDGetter<decltype(Getter)>;
    using S = detail::VDSetter<decltype(Setter)>;
    static_assert(std::is_same_v<typename G::Type, typename S::Type>,
                  "getter and setter disagree on the type");
    return VDField{name, detail::VDFieldTraits<typename G::Type>::kind, true, &detail::getThunk<Getter>,
                   &detail::setThunk<Setter>};
}

/// A field reachable by name that stays out of `fieldNames`: never encoded, decoded or copied.
template <auto Getter, auto Setter> constexpr VDField unlistedField(std::string_view name) {
    VDField f = field<Getter, Setter>(name);
    f.listed = false;
    return f;
}

} // namespace velmo
