// JSON text: whatever reads must be written, and what is written must read back equal and
// write again as it was, compact or pretty.
#include <iostream>
#include <string>
#include <string_view>

#include "FuzzTargets.h"
#include "velmo/foundation/Json.h"

namespace velmo::fuzz {

namespace {

bool fail(std::string_view why, const std::string& text) {
    std::cerr << "json: " << why << "\n  written: " << text.substr(0, 400) << '\n';
    return false;
}

// Written text that reads back equal and, written again, is settled: its own writing. The one
// change a second writing may make is the sign of a zero: -0.0 is written "-0", which reads
// back as the integer 0.
bool roundTrips(const Value& value, bool pretty, const Json::ReadOptions& options) {
    const std::string text = Json::write(value, pretty);
    JsonParseError error("", 0);
    const Value again = Json::tryParse(text, options, &error);
    if (again.isNil()) return fail(std::string("written text doesn't read: ") + error.what(), text);
    if (!(again == value)) return fail("written text reads back as another value", text);
    const std::string second = Json::write(again, pretty);
    if (second != text && Json::write(Json::parse(second, options), pretty) != second)
        return fail("written text doesn't settle", text);
    return true;
}

} // namespace

bool fuzzJson(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // Fragments read as whole documents do, so one pass covers both.
    Json::ReadOptions fragments;
    fragments.allowFragments = true;
    const Value value = Json::tryParse(text, fragments);
    if (value.isNil()) {
        if (!Json::tryParse(text).isNil()) return fail("reads as a document but not as a fragment", {});
        return true;
    }
    const bool container = value.isArray() || value.isDictionary();
    if (Json::tryParse(text).isNil() == container)
        return fail(container ? "a document that reads only as a fragment" : "a fragment read as a document",
                    {});
    // What the reader made, the writer can hold.
    if (container && !Json::isValidJSONObject(value)) return fail("a read value that JSON can't hold", {});
    return roundTrips(value, false, fragments) && roundTrips(value, true, fragments);
}

} // namespace velmo::fuzz
