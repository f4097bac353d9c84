#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "velmo/foundation/Value.h"

namespace velmo {

// Operations on dictionaries that the rest of the library calls by name. The receiver is the
// first argument.

/// `+dictionaryByExtending:WithDictionary:`: deep merge. A new dictionary with a's entries; for
/// each key of b, two dictionaries merge by this same rule, anything else from b replaces what a
/// held (arrays are replaced, a null replaces). a's nested dictionaries that b doesn't touch are
/// shared, not copied.
Dictionary dictionaryByExtending(const Dictionary& a, const Dictionary& b);
/// dictionaryByExtendingWithDictionary:
Dictionary dictionaryByExtendingWithDictionary(const Dictionary& receiver, const Dictionary& b);
/// The same merge, but any failure during it gives the unmerged receiver.
Dictionary _vp_deepMergeWith(const Dictionary& receiver, const Dictionary& b);
/// A copy without the key.
Dictionary dictionaryByRemovingKey(const Dictionary& receiver, std::string_view key);

/// Deep mutable form, with a diagnostic line in the system log for each visited value. The
/// containers here are all mutable, so the receiver's containers come back themselves.
Dictionary vp_toMutable(const Dictionary& receiver);
/// Deep form with fresh containers, with the same diagnostics.
Dictionary vp_toImmutable(const Dictionary& receiver);

/// Every key path, a level's keys before deeper paths, parents along with their children.
std::vector<std::string> allPaths(const Dictionary& receiver);
/// addPathsRecursive:prefix:
void addPathsRecursive(const Dictionary& receiver, std::vector<std::string>& paths,
                       const std::string& prefix);
/// Walks `jsonPathComponents` of the path through dictionaries and arrays; nil when it leads
/// nowhere. An empty path gives the receiver.
Value objectForPath(const Dictionary& receiver, std::string_view path);

/// setNonNil:forKey:
void setNonNil(Dictionary& receiver, const Value& value, std::string_view key);
/// Adds the other's entries but those holding the null object.
void _vp_addEntriesFromDictionaryIgnoreNull(Dictionary& receiver, const Dictionary& other);

/// A string as it is; a number as its text; binary data decoded as UTF-8; otherwise nil.
Value _vp_stringForKey(const Dictionary& receiver, std::string_view key);
/// A number as it is; a string read as a decimal number (nil when it doesn't read); otherwise nil.
Value _vp_numberForKey(const Dictionary& receiver, std::string_view key);
/// A number's truth; "true"/"false" in any case; another string read as a number; otherwise false.
bool _vp_boolForKey(const Dictionary& receiver, std::string_view key);
Dictionary _vp_dicForKey(const Dictionary& receiver, std::string_view key);
Array _vp_arrayForKey(const Dictionary& receiver, std::string_view key);
/// A dictionary parsed from JSON bytes; nil for anything else or a parse failure.
Dictionary _vp_dicFromData(std::string_view bytes);

} // namespace velmo
