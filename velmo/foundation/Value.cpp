#include "velmo/foundation/Value.h"

#include <atomic>
#include <cctype>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>

#include <fmt/format.h>

#include "velmo/foundation/VDClass.h"

namespace velmo {
namespace detail {

// Reference counts are atomic: values cross queues, as the platform's objects do. A new block
// starts with the one count of whoever made it.
struct Rep {
    std::atomic<std::uint32_t> refs{1};

    void retain() noexcept { refs.fetch_add(1, std::memory_order_relaxed); }
    /// True when that was the last count, and the block is the caller's to free.
    bool release() noexcept { return refs.fetch_sub(1, std::memory_order_acq_rel) == 1; }
};

struct StringRep : Rep {
    std::size_t size = 0;
    char* chars() noexcept { return reinterpret_cast<char*>(this + 1); }

    static StringRep* make(std::string_view s) {
        void* memory = ::operator new(sizeof(StringRep) + s.size());
        auto* rep = new (memory) StringRep();
        rep->size = s.size();
        if (!s.empty()) std::memcpy(rep->chars(), s.data(), s.size());
        return rep;
    }
    static void destroy(StringRep* rep) noexcept {
        rep->~StringRep();
        ::operator delete(rep);
    }
};

struct BytesRep : Rep {
    std::string bytes;
};

struct ArrayRep : Rep {
    static constexpr const char* kName = "array";
    std::vector<Value> items;
};

struct ObjectRep : Rep {
    std::shared_ptr<Object> object;
};

// Entries in insertion order; past a handful of keys, an open-addressing index of entry
// positions keeps look-ups constant-time on large dictionaries.
struct DictRep : Rep {
    static constexpr const char* kName = "dictionary";
    static constexpr std::size_t kIndexThreshold = 12;

    std::vector<Dictionary::Entry> entries;
    std::vector<std::uint32_t> index; // 0 = empty slot, otherwise entry position + 1

    static std::size_t hashOf(std::string_view key) noexcept { return std::hash<std::string_view>{}(key); }

    std::ptrdiff_t position(std::string_view key) const noexcept {
        if (index.empty()) {
            for (std::size_t i = 0; i < entries.size(); ++i) {
                if (entries[i].key.stringView() == key) return static_cast<std::ptrdiff_t>(i);
            }
            return -1;
        }
        const std::size_t mask = index.size() - 1;
        for (std::size_t slot = hashOf(key) & mask;; slot = (slot + 1) & mask) {
            const std::uint32_t at = index[slot];
            if (at == 0) return -1;
            if (entries[at - 1].key.stringView() == key) return at - 1;
        }
    }

    void indexEntry(std::size_t pos) noexcept {
        const std::size_t mask = index.size() - 1;
        std::size_t slot = hashOf(entries[pos].key.stringView()) & mask;
        while (index[slot] != 0)
            slot = (slot + 1) & mask;
        index[slot] = static_cast<std::uint32_t>(pos + 1);
    }

    void rebuildIndex() {
        if (entries.size() <= kIndexThreshold) {
            index.clear();
            return;
        }
        std::size_t capacity = 32;
        while (capacity < entries.size() * 2)
            capacity <<= 1;
        index.assign(capacity, 0);
        for (std::size_t i = 0; i < entries.size(); ++i)
            indexEntry(i);
    }

    void assign(const Value& key, Value value) {
        const std::ptrdiff_t at = position(key.stringView());
        if (at >= 0) {
            entries[static_cast<std::size_t>(at)].value = std::move(value);
            return;
        }
        entries.push_back(Dictionary::Entry{key, std::move(value)});
        if (!index.empty() && entries.size() * 2 <= index.size()) {
            indexEntry(entries.size() - 1);
        } else if (entries.size() > kIndexThreshold) {
            rebuildIndex();
        }
    }

    void erase(std::string_view key) {
        const std::ptrdiff_t at = position(key);
        if (at < 0) return;
        entries.erase(entries.begin() + at);
        rebuildIndex();
    }
};

// ---------------------------------------------------------------- the containers' shared blocks

template <class R> SharedBlock<R>::SharedBlock(const SharedBlock& other) noexcept : rep_(other.rep_) {
    if (rep_) rep_->retain();
}

template <class R> bool SharedBlock<R>::isUniquelyReferenced() const noexcept {
    return rep_ && rep_->refs.load(std::memory_order_acquire) == 1;
}

template <class R> SharedBlock<R>::~SharedBlock() {
    if (rep_ && rep_->release()) delete rep_;
}

// Out of line, so that the check stays small enough to inline into every change.
[[noreturn, gnu::noinline, gnu::cold]] void throwNilChange(const char* kind) {
    throw std::logic_error(std::string("attempt to change a nil ") + kind);
}

template <class R> R& SharedBlock<R>::mutableRep() const {
    if (!rep_) [[unlikely]]
        throwNilChange(R::kName);
    return *rep_;
}

template class SharedBlock<ArrayRep>;
template class SharedBlock<DictRep>;

// Values sit in every container by the million: a tag and a payload in two words, and a
// container handle is one pointer.
static_assert(sizeof(Value) == 16);
static_assert(sizeof(Array) == sizeof(void*) && sizeof(Dictionary) == sizeof(void*));

} // namespace detail

namespace {

const Value& sharedNil() noexcept {
    static const Value nil;
    return nil;
}

template <class T> T* repAs(detail::Rep* rep) noexcept {
    return static_cast<T*>(rep);
}

} // namespace

// ---------------------------------------------------------------- Value: life cycle

detail::Rep* Value::rep() const noexcept {
    detail::Rep* rep;
    std::memcpy(&rep, &raw_[8], sizeof rep);
    return rep;
}

void Value::setRep(Tag tag, detail::Rep* rep) noexcept {
    setTag(tag);
    std::memcpy(&raw_[8], &rep, sizeof rep);
}

void Value::retain() const noexcept {
    rep()->retain();
}

void Value::releaseRep() noexcept {
    detail::Rep* r = rep();
    if (!r->release()) return;
    switch (tag_()) {
    case Tag::HeapString:
        detail::StringRep::destroy(repAs<detail::StringRep>(r));
        break;
    case Tag::Bytes:
        delete repAs<detail::BytesRep>(r);
        break;
    case Tag::Array:
        delete repAs<detail::ArrayRep>(r);
        break;
    case Tag::Dictionary:
        delete repAs<detail::DictRep>(r);
        break;
    case Tag::Model:
    case Tag::Object:
        delete repAs<detail::ObjectRep>(r);
        break;
    default:
        break;
    }
}

Value& Value::operator=(const Value& other) noexcept {
    if (this != &other) {
        Value copy(other);
        swap(copy);
    }
    return *this;
}

Value& Value::operator=(Value&& other) noexcept {
    if (this != &other) {
        release();
        std::memcpy(raw_, other.raw_, sizeof raw_);
        other.setTag(Tag::Nil);
    }
    return *this;
}

void Value::swap(Value& other) noexcept {
    unsigned char tmp[sizeof raw_];
    std::memcpy(tmp, raw_, sizeof raw_);
    std::memcpy(raw_, other.raw_, sizeof raw_);
    std::memcpy(other.raw_, tmp, sizeof raw_);
}

// ---------------------------------------------------------------- Value: construction

Value Value::null() noexcept {
    Value v;
    v.setTag(Tag::Null);
    return v;
}

Value::Value(bool b) noexcept {
    setTag(Tag::Bool);
    raw_[8] = b ? 1 : 0;
}

Value::Value(long long i) noexcept {
    setTag(Tag::Int);
    const std::int64_t v = i;
    std::memcpy(&raw_[8], &v, sizeof v);
}

Value::Value(unsigned long long u) noexcept {
    const std::uint64_t v = u;
    if (v <= static_cast<std::uint64_t>(INT64_MAX)) {
        setTag(Tag::Int);
        const auto s = static_cast<std::int64_t>(v);
        std::memcpy(&raw_[8], &s, sizeof s);
    } else {
        setTag(Tag::UInt);
        std::memcpy(&raw_[8], &v, sizeof v);
    }
}

Value::Value(float f) noexcept {
    setTag(Tag::Float);
    std::memcpy(&raw_[8], &f, sizeof f);
}

Value::Value(double d) noexcept {
    setTag(Tag::Double);
    std::memcpy(&raw_[8], &d, sizeof d);
}

Value::Value(std::string_view s) {
    if (s.size() <= kSmallCapacity) {
        setTag(Tag::SmallString);
        raw_[1] = static_cast<unsigned char>(s.size());
        if (!s.empty()) std::memcpy(&raw_[2], s.data(), s.size());
    } else {
        setRep(Tag::HeapString, detail::StringRep::make(s));
    }
}

Value Value::bytes(std::string_view data) {
    auto* rep = new detail::BytesRep();
    rep->bytes.assign(data);
    Value v;
    v.setRep(Tag::Bytes, rep);
    return v;
}

Value::Value(const Array& array) noexcept {
    if (array.rep_ == nullptr) {
        setTag(Tag::Nil);
        return;
    }
    array.rep_->retain();
    setRep(Tag::Array, array.rep_);
}

Value::Value(const Dictionary& dictionary) noexcept {
    if (dictionary.rep_ == nullptr) {
        setTag(Tag::Nil);
        return;
    }
    dictionary.rep_->retain();
    setRep(Tag::Dictionary, dictionary.rep_);
}

Value::Value(std::shared_ptr<Object> object) {
    if (!object) {
        setTag(Tag::Nil);
        return;
    }
    const bool model = object->isModelObject();
    auto* rep = new detail::ObjectRep();
    rep->object = std::move(object);
    setRep(model ? Tag::Model : Tag::Object, rep);
}

// ---------------------------------------------------------------- Value: reading

Value::Kind Value::kind() const noexcept {
    switch (tag_()) {
    case Tag::Nil:
        return Kind::Nil;
    case Tag::Null:
        return Kind::Null;
    case Tag::Bool:
        return Kind::Bool;
    case Tag::Int:
        return Kind::Int;
    case Tag::UInt:
        return Kind::UInt;
    case Tag::Float:
        return Kind::Float;
    case Tag::Double:
        return Kind::Double;
    case Tag::SmallString:
    case Tag::HeapString:
        return Kind::String;
    case Tag::Bytes:
        return Kind::Bytes;
    case Tag::Array:
        return Kind::Array;
    case Tag::Dictionary:
        return Kind::Dictionary;
    case Tag::Model:
        return Kind::Model;
    case Tag::Object:
        return Kind::Object;
    }
    return Kind::Nil;
}

bool Value::isNumber() const noexcept {
    return tag_() >= Tag::Bool && tag_() <= Tag::Double;
}

bool Value::isIntegral() const noexcept {
    return tag_() >= Tag::Bool && tag_() <= Tag::UInt;
}

namespace {
template <class T> T payload(const unsigned char* raw) noexcept {
    T v;
    std::memcpy(&v, raw + 8, sizeof v);
    return v;
}
} // namespace

bool Value::boolValue() const noexcept {
    switch (tag_()) {
    case Tag::Bool:
        return raw_[8] != 0;
    case Tag::Int:
        return payload<std::int64_t>(raw_) != 0;
    case Tag::UInt:
        return payload<std::uint64_t>(raw_) != 0;
    case Tag::Float:
        return payload<float>(raw_) != 0.0f;
    case Tag::Double:
        return payload<double>(raw_) != 0.0;
    default:
        return false;
    }
}

namespace {
// Out-of-range and non-finite doubles convert to the limits rather than into undefined behaviour.
template <class I> I saturate(double d) noexcept {
    if (std::isnan(d)) return 0;
    if (d <= static_cast<double>(std::numeric_limits<I>::min())) return std::numeric_limits<I>::min();
    if (d >= static_cast<double>(std::numeric_limits<I>::max())) return std::numeric_limits<I>::max();
    return static_cast<I>(d);
}
} // namespace

std::int64_t Value::int64Value() const noexcept {
    switch (tag_()) {
    case Tag::Bool:
        return raw_[8] != 0 ? 1 : 0;
    case Tag::Int:
        return payload<std::int64_t>(raw_);
    case Tag::UInt:
        return static_cast<std::int64_t>(payload<std::uint64_t>(raw_));
    case Tag::Float:
        return saturate<std::int64_t>(payload<float>(raw_));
    case Tag::Double:
        return saturate<std::int64_t>(payload<double>(raw_));
    default:
        return 0;
    }
}

std::uint64_t Value::uint64Value() const noexcept {
    switch (tag_()) {
    case Tag::UInt:
        return payload<std::uint64_t>(raw_);
    case Tag::Float:
        return saturate<std::uint64_t>(payload<float>(raw_));
    case Tag::Double:
        return saturate<std::uint64_t>(payload<double>(raw_));
    default:
        return static_cast<std::uint64_t>(int64Value());
    }
}

double Value::doubleValue() const noexcept {
    switch (tag_()) {
    case Tag::Bool:
        return raw_[8] != 0 ? 1.0 : 0.0;
    case Tag::Int:
        return static_cast<double>(payload<std::int64_t>(raw_));
    case Tag::UInt:
        return static_cast<double>(payload<std::uint64_t>(raw_));
    case Tag::Float:
        return payload<float>(raw_);
    case Tag::Double:
        return payload<double>(raw_);
    default:
        return 0.0;
    }
}

float Value::floatValue() const noexcept {
    if (tag_() == Tag::Float) return payload<float>(raw_);
    return static_cast<float>(doubleValue());
}

std::string_view Value::stringView() const noexcept {
    if (tag_() == Tag::SmallString) {
        return {reinterpret_cast<const char*>(&raw_[2]), raw_[1]};
    }
    if (tag_() == Tag::HeapString) {
        auto* r = repAs<detail::StringRep>(rep());
        return {r->chars(), r->size};
    }
    return {};
}

std::string_view Value::bytesView() const noexcept {
    if (tag_() != Tag::Bytes) return {};
    return repAs<detail::BytesRep>(rep())->bytes;
}

Array Value::array() const noexcept {
    if (tag_() != Tag::Array) return Array();
    auto* r = repAs<detail::ArrayRep>(rep());
    r->retain();
    return Array(r);
}

Dictionary Value::dictionary() const noexcept {
    if (tag_() != Tag::Dictionary) return Dictionary();
    auto* r = repAs<detail::DictRep>(rep());
    r->retain();
    return Dictionary(r);
}

std::shared_ptr<Object> Value::object() const noexcept {
    if (!isObject()) return nullptr;
    return repAs<detail::ObjectRep>(rep())->object;
}

const Object* Value::objectPointer() const noexcept {
    if (!isObject()) return nullptr;
    return repAs<detail::ObjectRep>(rep())->object.get();
}

// ---------------------------------------------------------------- Value: equality, copies, text

namespace {
bool numbersEqual(const Value& a, const Value& b) noexcept {
    const bool aInt = a.isIntegral();
    const bool bInt = b.isIntegral();
    if (aInt && bInt) {
        const bool aU = a.kind() == Value::Kind::UInt;
        const bool bU = b.kind() == Value::Kind::UInt;
        if (aU != bU) return false; // one is above the signed range, the other within it
        return aU ? a.uint64Value() == b.uint64Value() : a.int64Value() == b.int64Value();
    }
    return a.doubleValue() == b.doubleValue();
}
} // namespace

bool operator==(const Value& a, const Value& b) noexcept {
    if (a.isNumber() && b.isNumber()) return numbersEqual(a, b);
    if (a.isString() && b.isString()) return a.stringView() == b.stringView();
    if (a.kind() != b.kind()) {
        if (a.isObject() && b.isObject()) return a.object()->isEqual(*b.object());
        return false;
    }
    switch (a.kind()) {
    case Value::Kind::Nil:
    case Value::Kind::Null:
        return true;
    case Value::Kind::Bytes:
        return a.bytesView() == b.bytesView();
    case Value::Kind::Array:
        return a.array() == b.array();
    case Value::Kind::Dictionary:
        return a.dictionary() == b.dictionary();
    case Value::Kind::Model:
    case Value::Kind::Object: {
        auto x = a.object();
        auto y = b.object();
        return x == y || x->isEqual(*y);
    }
    default:
        return false;
    }
}

Value Value::deepCopy() const {
    if (isArray()) return Value(array().deepCopy());
    if (isDictionary()) return Value(dictionary().deepCopy());
    if (isBytes()) return Value::bytes(bytesView());
    return *this;
}

std::string_view Value::kindName(Kind kind) noexcept {
    switch (kind) {
    case Kind::Nil:
        return "nil";
    case Kind::Null:
        return "null";
    case Kind::Bool:
        return "boolean";
    case Kind::Int:
    case Kind::UInt:
        return "integer";
    case Kind::Float:
    case Kind::Double:
        return "number";
    case Kind::String:
        return "string";
    case Kind::Bytes:
        return "data";
    case Kind::Array:
        return "array";
    case Kind::Dictionary:
        return "dictionary";
    case Kind::Model:
        return "model";
    case Kind::Object:
        return "object";
    }
    return "value";
}

namespace {

// Strings print bare when they are made only of characters that need no quoting, as the
// platform's old-style property-list description does.
bool printsBare(std::string_view s) {
    if (s.empty()) return false;
    for (char c : s) {
        const auto u = static_cast<unsigned char>(c);
        if (!(std::isalnum(u) || c == '_' || c == '.' || c == '$' || c == '/' || c == ':')) return false;
    }
    return true;
}

std::string quoted(std::string_view s) {
    if (printsBare(s)) return std::string(s);
    std::string out = "\"";
    for (char c : s) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            out += c;
        }
    }
    out += '"';
    return out;
}

void describe(const Value& v, std::string& out, int depth) {
    const std::string pad(static_cast<std::size_t>(depth) * 4, ' ');
    const std::string inner(static_cast<std::size_t>(depth + 1) * 4, ' ');
    switch (v.kind()) {
    case Value::Kind::Nil:
        out += "(null)";
        break;
    case Value::Kind::Null:
        out += "<null>";
        break;
    case Value::Kind::Bool:
        out += v.boolValue() ? "1" : "0";
        break;
    case Value::Kind::Int:
        out += fmt::format("{}", v.int64Value());
        break;
    case Value::Kind::UInt:
        out += fmt::format("{}", v.uint64Value());
        break;
    case Value::Kind::Float:
        out += fmt::format("{}", v.floatValue());
        break;
    case Value::Kind::Double:
        out += fmt::format("{}", v.doubleValue());
        break;
    case Value::Kind::String:
        out += quoted(v.stringView());
        break;
    case Value::Kind::Bytes: {
        out += '{';
        out += fmt::format("length = {}", v.bytesView().size());
        out += '}';
        break;
    }
    case Value::Kind::Array: {
        out += "(\n";
        const Array a = v.array();
        for (std::size_t i = 0; i < a.size(); ++i) {
            out += inner;
            describe(a[i], out, depth + 1);
            out += i + 1 < a.size() ? ",\n" : "\n";
        }
        out += pad + ")";
        break;
    }
    case Value::Kind::Dictionary: {
        out += "{\n";
        for (const auto& e : v.dictionary()) {
            out += inner + quoted(e.key.stringView()) + " = ";
            describe(e.value, out, depth + 1);
            out += ";\n";
        }
        out += pad + "}";
        break;
    }
    case Value::Kind::Model:
    case Value::Kind::Object:
        out += v.object()->description();
        break;
    }
}

} // namespace

std::string Value::description() const {
    std::string out;
    describe(*this, out, 0);
    return out;
}

// ---------------------------------------------------------------- Array

namespace {
// Arrays never hold nil, as the platform's arrays can't: a missing value is dropped or is null.
const Value& notNil(const Value& value) {
    if (value.isNil()) throw std::invalid_argument("attempt to insert nil object into an array");
    return value;
}
} // namespace

Array::Array(std::initializer_list<Value> values) : SharedBlock(new detail::ArrayRep()) {
    rep_->items.reserve(values.size());
    for (const Value& v : values) {
        try {
            rep_->items.push_back(notNil(v));
        } catch (...) {
            delete rep_;
            throw;
        }
    }
}

Array Array::create(std::size_t reserve) {
    Array a(new detail::ArrayRep());
    a.rep_->items.reserve(reserve);
    return a;
}

Array Array::fromVector(std::vector<Value> values) {
    Array a(new detail::ArrayRep());
    a.rep_->items = std::move(values);
    return a;
}

std::size_t Array::size() const noexcept {
    return rep_ ? rep_->items.size() : 0;
}

const Value* Array::begin() const noexcept {
    return rep_ ? rep_->items.data() : nullptr;
}

const Value* Array::end() const noexcept {
    return rep_ ? rep_->items.data() + rep_->items.size() : nullptr;
}

const Value& Array::operator[](std::size_t index) const noexcept {
    if (!rep_ || index >= rep_->items.size()) return sharedNil();
    return rep_->items[index];
}

void Array::push_back(Value value) {
    notNil(value);
    mutableRep().items.push_back(std::move(value));
}

void Array::insert(std::size_t index, Value value) {
    auto& items = mutableRep().items;
    if (index > items.size()) throw std::out_of_range("array index beyond bounds");
    notNil(value);
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), std::move(value));
}

void Array::set(std::size_t index, Value value) {
    auto& items = mutableRep().items;
    if (index >= items.size()) throw std::out_of_range("array index beyond bounds");
    notNil(value);
    items[index] = std::move(value);
}

void Array::erase(std::size_t index) {
    auto& items = mutableRep().items;
    if (index >= items.size()) throw std::out_of_range("array index beyond bounds");
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
}

void Array::clear() {
    mutableRep().items.clear();
}

void Array::reserve(std::size_t n) {
    mutableRep().items.reserve(n);
}

const std::vector<Value>& Array::items() const {
    static const std::vector<Value> none;
    return rep_ ? rep_->items : none;
}

Array Array::copy() const {
    if (!rep_) return Array();
    return fromVector(rep_->items);
}

Array Array::deepCopy() const {
    if (!rep_) return Array();
    Array a = create(rep_->items.size());
    for (const Value& v : rep_->items)
        a.rep_->items.push_back(v.deepCopy());
    return a;
}

bool operator==(const Array& a, const Array& b) noexcept {
    if (a.rep_ == b.rep_) return true;
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!(a[i] == b[i])) return false;
    }
    return true;
}

// ---------------------------------------------------------------- Dictionary

Dictionary::Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries)
    : SharedBlock(new detail::DictRep()) {
    rep_->entries.reserve(entries.size());
    for (const auto& [key, value] : entries)
        set(key, value);
}

Dictionary Dictionary::create(std::size_t reserve) {
    Dictionary d(new detail::DictRep());
    d.rep_->entries.reserve(reserve);
    return d;
}

std::size_t Dictionary::size() const noexcept {
    return rep_ ? rep_->entries.size() : 0;
}

const Dictionary::Entry* Dictionary::begin() const noexcept {
    return rep_ ? rep_->entries.data() : nullptr;
}

const Dictionary::Entry* Dictionary::end() const noexcept {
    return rep_ ? rep_->entries.data() + rep_->entries.size() : nullptr;
}

const Value* Dictionary::find(std::string_view key) const noexcept {
    if (!rep_) return nullptr;
    const std::ptrdiff_t at = rep_->position(key);
    return at < 0 ? nullptr : &rep_->entries[static_cast<std::size_t>(at)].value;
}

const Value& Dictionary::get(std::string_view key) const noexcept {
    const Value* v = find(key);
    return v ? *v : sharedNil();
}

void Dictionary::set(std::string_view key, Value value) {
    auto& rep = mutableRep();
    if (value.isNil()) {
        rep.erase(key);
        return;
    }
    rep.assign(Value(key), std::move(value));
}

void Dictionary::setEntry(const Value& key, Value value) {
    if (!key.isString()) throw std::invalid_argument("dictionary keys are strings");
    auto& rep = mutableRep();
    if (value.isNil()) {
        rep.erase(key.stringView());
        return;
    }
    rep.assign(key, std::move(value));
}

void Dictionary::remove(std::string_view key) {
    mutableRep().erase(key);
}

void Dictionary::clear() {
    auto& rep = mutableRep();
    rep.entries.clear();
    rep.index.clear();
}

std::vector<std::string> Dictionary::keys() const {
    std::vector<std::string> out;
    out.reserve(size());
    for (const auto& e : *this)
        out.push_back(e.key.str());
    return out;
}

Dictionary Dictionary::copy() const {
    if (!rep_) return Dictionary();
    Dictionary d(new detail::DictRep());
    d.rep_->entries = rep_->entries;
    d.rep_->rebuildIndex();
    return d;
}

Dictionary Dictionary::deepCopy() const {
    if (!rep_) return Dictionary();
    Dictionary d(new detail::DictRep());
    d.rep_->entries.reserve(rep_->entries.size());
    for (const auto& e : rep_->entries)
        d.rep_->entries.push_back(Entry{e.key, e.value.deepCopy()});
    d.rep_->rebuildIndex();
    return d;
}

bool operator==(const Dictionary& a, const Dictionary& b) noexcept {
    if (a.rep_ == b.rep_) return true;
    if (a.size() != b.size()) return false;
    for (const auto& e : a) {
        const Value* other = b.find(e.key.stringView());
        if (!other || !(e.value == *other)) return false;
    }
    return true;
}

} // namespace velmo
