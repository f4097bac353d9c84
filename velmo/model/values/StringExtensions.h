#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/foundation/Value.h"

namespace velmo {

struct PlatformColor;

// Operations on strings that the rest of the library calls by name. The receiver is the first
// argument.

/// `+uuidString`: a new random UUID in canonical (upper-case) text.
std::string uuidString();
/// The one normal form of variable names: "My big button" gives "myBigButton", "2 Cols" gives
/// "a2Cols", "@#!" gives the empty string.
std::string toLegalVarName(std::string_view receiver);
/// Strings and integers of a path such as "a.b[2].c"; a backslash takes the next character
/// literally. An index that isn't a number ends the path there.
Array jsonPathComponents(std::string_view receiver);
/// stringByRemovingCharsInString:
std::string stringByRemovingCharsInString(std::string_view receiver, std::string_view chars);
std::string stringWithFirstCharCapitalized(std::string_view receiver);
/// `capitalizedString`: the first letter of each word upper-case, the others lower-case; words
/// are separated by spaces, tabs and line ends ("open menu" gives "Open Menu").
std::string capitalizedString(std::string_view receiver);
/// `lowercaseString`: every letter lower-case; how names are compared where case doesn't count.
std::string lowercaseString(std::string_view receiver);
/// Leading and trailing white space and line ends removed.
std::string stringByTrimmingBlanks(std::string_view receiver);
bool isValidEmail(std::string_view receiver);
/// The string in the lossless ASCII form, non-ASCII characters as backslash-u escapes.
std::string convertUnicode(std::string_view receiver);
/// SHA-256 of the ASCII bytes as base64; a string that isn't ASCII gives the digest of nothing.
std::string vnSha256(std::string_view receiver);
/// MD5 of the UTF-8 bytes up to the first zero byte, as 32 lower-case hexadecimal characters.
std::string MD5(std::string_view receiver);
/// The empty string gives the clear colour; otherwise hexadecimal digits read from index 1
/// (the first character skipped, whatever it is) as 0xRRGGBB, alpha 1.
PlatformColor _vp_colorFromHexString(std::string_view receiver);

// Helpers shared by the value operations.

/// White space and line ends, Unicode's included, trimmed from both ends.
std::string_view trimBlanks(std::string_view text);
std::string toLowerAscii(std::string_view text);
std::string toUpperAscii(std::string_view text);
bool isValidUtf8(std::string_view text);
/// A path after `oldPath` was renamed to `newPath`: for `oldPath` itself or a path below it
/// (behind a ";"), `newPath` with the rest; nothing for any other path ("this;ab" isn't below
/// "this;a").
std::optional<std::string> pathMovedFrom(std::string_view path, std::string_view oldPath,
                                         std::string_view newPath);

} // namespace velmo
