// A document's JSON through the class registry: whatever decodes must encode, and its encoding
// must decode to a model that encodes the same. The first decoding may repair and fill in; after
// it only names derived by setters may move, once.
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "FuzzTargets.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"

namespace velmo::fuzz {

namespace {

bool fail(std::string_view why, std::string_view detail = {}) {
    std::cerr << "model: " << why;
    if (!detail.empty()) std::cerr << "\n  " << detail.substr(0, 600);
    std::cerr << '\n';
    return false;
}

// The encoding without the names that setters derive from other fields ("Image: a.png" from an
// image's name, a label's from its text): decoding sets them again from fields that come later,
// so an encoding can change them once.
Value withoutDerivedNames(const Value& value) {
    if (value.isArray()) {
        Array out = Array::create(value.array().size());
        for (const Value& item : value.array())
            out.push_back(withoutDerivedNames(item));
        return Value(out);
    }
    if (!value.isDictionary()) return value;
    Dictionary out = Dictionary::create(value.dictionary().size());
    for (const auto& entry : value.dictionary()) {
        if (entry.key.stringView() != "viewName") out.setEntry(entry.key, withoutDerivedNames(entry.value));
    }
    return Value(out);
}

// Where two encodings first differ, as a path of keys and indexes.
std::string firstDifference(const Value& a, const Value& b, const std::string& path) {
    if (a.isDictionary() && b.isDictionary()) {
        for (const auto& entry : a.dictionary()) {
            const std::string key = path + "/" + std::string(entry.key.stringView());
            const Value* other = b.dictionary().find(entry.key.stringView());
            if (!other) return key + " only in the first";
            if (!(entry.value == *other)) return firstDifference(entry.value, *other, key);
        }
        for (const auto& entry : b.dictionary()) {
            if (!a.dictionary().contains(entry.key.stringView()))
                return path + "/" + std::string(entry.key.stringView()) + " only in the second";
        }
    } else if (a.isArray() && b.isArray() && a.array().size() == b.array().size()) {
        for (std::size_t i = 0; i < a.array().size(); ++i) {
            if (!(a.array()[i] == b.array()[i]))
                return firstDifference(a.array()[i], b.array()[i], path + "/" + std::to_string(i));
        }
    }
    return path + ": " + a.description().substr(0, 200) + " against " + b.description().substr(0, 200);
}

// A model's encoding and its JSON.
struct Encoding {
    Dictionary dictionary;
    std::string json;
};

// Decodes JSON text as the command does.
std::shared_ptr<VDModel> decodeText(std::string_view text) {
    const Value value = Json::tryParse(text);
    return value.isDictionary() ? VDModelDecoder::modelObjectFromDictionary(value.dictionary()) : nullptr;
}

} // namespace

bool fuzzModel(const std::uint8_t* data, std::size_t size) {
    std::shared_ptr<VDModel> model;
    Encoding first;
    try {
        model = decodeText(std::string_view(reinterpret_cast<const char*>(data), size));
        if (!model) return true;
        first = {model->toDictionary(), model->toJson()};
    } catch (const std::invalid_argument&) {
        // The model's own rules refuse some shapes outright (a component's plain master record,
        // a dictionary of encoded models): the caller hears of it, as the command does.
        return true;
    }
    if (first.json.empty()) {
        // Only a value that JSON can't hold may keep the encoding from being written.
        if (Json::isValidJSONObject(Value(first.dictionary)))
            return fail("no JSON for an encoding JSON can hold");
        return true;
    }

    // What the model wrote, it reads: twice, since the first reading may still move names that
    // setters derive from other fields, and after that nothing changes.
    const std::string& className = model->modelClass().name();
    Encoding rounds[2];
    const std::string* text = &first.json;
    for (Encoding& round : rounds) {
        try {
            const std::shared_ptr<VDModel> again = decodeText(*text);
            if (!again) return fail("the written JSON decodes to nothing", *text);
            if (again->modelClass().name() != className)
                return fail("decoded again as another class", again->modelClass().name());
            round = {again->toDictionary(), again->toJson()};
        } catch (const std::exception& e) {
            return fail(std::string("the written JSON doesn't decode: ") + e.what(), *text);
        }
        text = &round.json;
    }
    const Value once = withoutDerivedNames(Value(first.dictionary));
    const Value twice = withoutDerivedNames(Value(rounds[0].dictionary));
    if (!(once == twice))
        return fail("decoded again, it encodes differently", firstDifference(once, twice, ""));
    if (!(Value(rounds[1].dictionary) == Value(rounds[0].dictionary)))
        return fail("decoded a third time, it encodes differently",
                    firstDifference(Value(rounds[0].dictionary), Value(rounds[1].dictionary), ""));
    if (rounds[1].json != rounds[0].json)
        return fail("decoded a third time, its JSON is written differently", rounds[0].json);
    return true;
}

} // namespace velmo::fuzz
