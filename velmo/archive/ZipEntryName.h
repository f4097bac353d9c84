#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmo {

/// Entry names as archives store them, made into text and into relative paths that stay inside
/// the folder they are unpacked to.
class ZipEntryName {
public:
    /// The stored bytes as UTF-8 text. Names from DOS-like systems (host 0) that aren't flagged
    /// UTF-8 are code page 437; otherwise UTF-8 is tried first, then Windows-1252 as the best
    /// guess, and last the hexadecimal text of the bytes, so every name gives some text.
    static std::string decode(std::string_view raw, std::uint8_t hostSystem, bool flaggedUTF8);

    /// Resource-fork shadows a Mac archiver adds ("__MACOSX/..."); they are never unpacked.
    static bool isMacOSXMetadata(std::string_view name);
    /// A name whose last byte is "/" or "\\".
    static bool isDirectory(std::string_view name);

    /// "\\" read as "/", then "." and ".." resolved as if the name hung from the root, and the
    /// leading "/" dropped: "../../etc/x" becomes "etc/x", "/etc/x" becomes "etc/x". A trailing
    /// "/" stays. May be empty.
    static std::string sanitizedPath(std::string_view name);
};

} // namespace velmo
