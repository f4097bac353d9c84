#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "velmo/foundation/Object.h"

namespace velmo {

class Array;
class Dictionary;

namespace detail {
struct Rep;
struct StringRep;
struct BytesRep;
struct ArrayRep;
struct DictRep;
struct ObjectRep;

/// A counted reference to a container's shared block: copies share the block, the last one to go
/// frees it. A default-constructed handle is nil. The blocks are complete only in Value.cpp,
/// which holds the instantiations for arrays and dictionaries.
template <class Rep> class SharedBlock {
public:
    SharedBlock() noexcept = default;
    SharedBlock(const SharedBlock& other) noexcept;
    SharedBlock(SharedBlock&& other) noexcept : rep_(other.rep_) { other.rep_ = nullptr; }
    SharedBlock& operator=(SharedBlock other) noexcept {
        std::swap(rep_, other.rep_);
        return *this;
    }
    ~SharedBlock();

    bool isNil() const noexcept { return rep_ == nullptr; }
    /// True when both handles name the same block.
    bool sameAs(const SharedBlock& other) const noexcept { return rep_ == other.rep_; }
    /// True when this handle is the block's only one, so a change in place is seen by no other
    /// holder: a copy made only to be replaced can be skipped.
    bool isUniquelyReferenced() const noexcept;

protected:
    /// Takes over one count of the block.
    explicit SharedBlock(Rep* rep) noexcept : rep_(rep) {}
    /// The block to change; a nil handle throws `std::logic_error`.
    Rep& mutableRep() const;

    Rep* rep_ = nullptr;
};

extern template class SharedBlock<ArrayRep>;
extern template class SharedBlock<DictRep>;
} // namespace detail

/// The plain value of the system: what a dictionary form or JSON text holds, plus references to
/// objects where objects are stored in containers.
///
/// nil (absent) and the null object are different kinds: dictionaries never hold nil, JSON's null
/// is the null object. Numbers keep their kind (booleans stay booleans, integers stay integers,
/// single-precision floats stay floats) and compare equal by value across kinds, as the platform's
/// numbers do. Arrays and dictionaries have reference semantics: copying a `Value` shares the
/// container, `deepCopy()` makes new ones. Strings are immutable; short ones live inline.
class Value {
public:
    enum class Kind : std::uint8_t {
        Nil,
        Null,
        Bool,
        Int,    ///< signed 64-bit
        UInt,   ///< unsigned 64-bit above the signed range
        Float,  ///< single precision, written in its own shortest form
        Double, ///< double precision
        String,
        Bytes,
        Array,
        Dictionary,
        Model,  ///< reference to a document model
        Object, ///< reference to any other object
    };

    Value() noexcept { setTag(Tag::Nil); }
    Value(const Value& other) noexcept {
        __builtin_memcpy(raw_, other.raw_, sizeof raw_);
        if (holdsRep()) retain();
    }
    Value(Value&& other) noexcept {
        __builtin_memcpy(raw_, other.raw_, sizeof raw_);
        other.setTag(Tag::Nil);
    }
    Value& operator=(const Value& other) noexcept;
    Value& operator=(Value&& other) noexcept;
    ~Value() {
        if (holdsRep()) releaseRep();
    }

    static Value null() noexcept;

    Value(bool b) noexcept;
    Value(int i) noexcept : Value(static_cast<long long>(i)) {}
    Value(long i) noexcept : Value(static_cast<long long>(i)) {}
    Value(long long i) noexcept;
    Value(unsigned u) noexcept : Value(static_cast<unsigned long long>(u)) {}
    Value(unsigned long u) noexcept : Value(static_cast<unsigned long long>(u)) {}
    Value(unsigned long long u) noexcept;
    Value(float f) noexcept;
    Value(double d) noexcept;

    Value(const char* s) : Value(std::string_view(s ? s : "")) {}
    Value(std::string_view s);
    Value(const std::string& s) : Value(std::string_view(s)) {}
    /// Pointers other than C strings would silently become booleans.
    template <class T> Value(T*) = delete;

    /// Binary data (the platform's data type), kept apart from strings.
    static Value bytes(std::string_view data);

    /// A nil handle gives a nil value.
    Value(const Array& array) noexcept;
    Value(const Dictionary& dictionary) noexcept;

    /// An object reference; a model is tagged `Kind::Model`. nullptr gives nil.
    Value(std::shared_ptr<Object> object);
    template <class T>
    requires std::derived_from<T, Object> Value(std::shared_ptr<T> object)
        : Value(std::static_pointer_cast<Object>(std::move(object))) {}

    // ---- kind tests

    Kind kind() const noexcept;
    bool isNil() const noexcept { return tag_() == Tag::Nil; }
    bool isNull() const noexcept { return tag_() == Tag::Null; }
    /// nil or the null object: no value, as the model layer reads both.
    bool isNone() const noexcept { return tag_() == Tag::Nil || tag_() == Tag::Null; }
    bool isBool() const noexcept { return tag_() == Tag::Bool; }
    /// Any number, booleans included (the platform's numbers include them).
    bool isNumber() const noexcept;
    /// Int, UInt or Bool.
    bool isIntegral() const noexcept;
    bool isString() const noexcept { return tag_() == Tag::SmallString || tag_() == Tag::HeapString; }
    bool isBytes() const noexcept { return tag_() == Tag::Bytes; }
    bool isArray() const noexcept { return tag_() == Tag::Array; }
    bool isDictionary() const noexcept { return tag_() == Tag::Dictionary; }
    bool isModel() const noexcept { return tag_() == Tag::Model; }
    /// Any object reference, models included.
    bool isObject() const noexcept { return tag_() == Tag::Model || tag_() == Tag::Object; }

    // ---- reading; every reader gives the empty answer for a value of another kind

    bool boolValue() const noexcept;
    std::int64_t int64Value() const noexcept;
    std::uint64_t uint64Value() const noexcept;
    std::int32_t int32Value() const noexcept { return static_cast<std::int32_t>(int64Value()); }
    double doubleValue() const noexcept;
    float floatValue() const noexcept;

    /// The string's bytes; empty for anything that isn't a string.
    std::string_view stringView() const noexcept;
    std::string str() const { return std::string(stringView()); }
    /// The bytes of binary data; empty for anything else.
    std::string_view bytesView() const noexcept;

    /// The container itself (shared); a nil handle for other kinds.
    Array array() const noexcept;
    Dictionary dictionary() const noexcept;

    std::shared_ptr<Object> object() const noexcept;
    /// The object without taking a reference, for look-ups that only read while the value
    /// holds it; nullptr for other kinds.
    const Object* objectPointer() const noexcept;
    template <class T> std::shared_ptr<T> objectAs() const noexcept {
        return std::dynamic_pointer_cast<T>(object());
    }

    // ---- whole-value operations

    /// Deep equality: numbers by value across kinds, containers element by element (dictionaries
    /// regardless of order), objects by `isEqual`.
    friend bool operator==(const Value& a, const Value& b) noexcept;

    /// New containers all the way down; strings, numbers and objects are shared.
    Value deepCopy() const;

    /// The platform's default text form of a value (the form its logs print).
    std::string description() const;

    /// Name of the kind, for messages.
    static std::string_view kindName(Kind kind) noexcept;

    void swap(Value& other) noexcept;

private:
    enum class Tag : std::uint8_t {
        Nil,
        Null,
        Bool,
        Int,
        UInt,
        Float,
        Double,
        SmallString,
        HeapString,
        Bytes,
        Array,
        Dictionary,
        Model,
        Object,
    };
    static constexpr std::size_t kSmallCapacity = 14;

    void setTag(Tag tag) noexcept { raw_[0] = static_cast<unsigned char>(tag); }
    Tag tag_() const noexcept { return static_cast<Tag>(raw_[0]); }
    bool holdsRep() const noexcept { return tag_() >= Tag::HeapString; }
    detail::Rep* rep() const noexcept;
    void setRep(Tag tag, detail::Rep* rep) noexcept;
    void retain() const noexcept;
    void releaseRep() noexcept;
    void release() noexcept {
        if (holdsRep()) releaseRep();
    }

    friend class Array;
    friend class Dictionary;
    friend struct detail::DictRep;

    // Byte 0: tag. Small strings: byte 1 is the length, bytes 2..15 the characters.
    // Everything else: the 8-byte payload at offset 8.
    alignas(8) unsigned char raw_[16];
};

/// An ordered list of values with reference semantics. A default-constructed handle is nil:
/// it reads as empty, and changing it throws `std::logic_error`. Elements are never nil:
/// inserting nil throws `std::invalid_argument`.
class Array : public detail::SharedBlock<detail::ArrayRep> {
public:
    Array() noexcept = default;
    Array(std::initializer_list<Value> values);

    /// A new, empty container.
    static Array create(std::size_t reserve = 0);
    static Array fromVector(std::vector<Value> values);

    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }

    const Value* begin() const noexcept;
    const Value* end() const noexcept;
    /// The element; a shared nil for an index at or past the end.
    const Value& operator[](std::size_t index) const noexcept;
    const Value& first() const noexcept { return (*this)[0]; }
    const Value& last() const noexcept { return empty() ? (*this)[0] : (*this)[size() - 1]; }

    void push_back(Value value);
    void insert(std::size_t index, Value value);
    void set(std::size_t index, Value value);
    void erase(std::size_t index);
    void clear();
    void reserve(std::size_t n);
    /// The elements as a vector, for algorithms.
    const std::vector<Value>& items() const;

    /// A new container with the same elements (a shallow copy); nil stays nil.
    Array copy() const;
    Array deepCopy() const;
    friend bool operator==(const Array& a, const Array& b) noexcept;

private:
    friend class Value;
    explicit Array(detail::ArrayRep* rep) noexcept : SharedBlock(rep) {}
};

/// A dictionary with string keys and reference semantics. Keys keep their insertion order (JSON
/// key order as read), so output is deterministic; look-ups stay fast on large dictionaries.
/// A default-constructed handle is nil: it reads as empty, and changing it throws.
class Dictionary : public detail::SharedBlock<detail::DictRep> {
public:
    struct Entry {
        Value key; ///< always a string
        Value value;
    };

    Dictionary() noexcept = default;
    Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries);

    /// A new, empty container.
    static Dictionary create(std::size_t reserve = 0);

    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }

    const Entry* begin() const noexcept;
    const Entry* end() const noexcept;

    /// The value under the key, or a shared nil.
    const Value& get(std::string_view key) const noexcept;
    const Value* find(std::string_view key) const noexcept;
    bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

    /// Sets or replaces; a replaced key keeps its place. Setting nil removes the key.
    void set(std::string_view key, Value value);
    /// The same with a key that is already a string value (no new key string is made).
    void setEntry(const Value& key, Value value);
    void remove(std::string_view key);
    void clear();

    std::vector<std::string> keys() const;

    Dictionary copy() const;
    Dictionary deepCopy() const;
    friend bool operator==(const Dictionary& a, const Dictionary& b) noexcept;

private:
    friend class Value;
    explicit Dictionary(detail::DictRep* rep) noexcept : SharedBlock(rep) {}
};

inline void swap(Value& a, Value& b) noexcept {
    a.swap(b);
}

} // namespace velmo
