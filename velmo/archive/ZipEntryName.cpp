#include "velmo/archive/ZipEntryName.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include <iconv.h>

#include "velmo/foundation/Crypto.h"

namespace velmo {

namespace {

constexpr std::uint8_t kHostDOS = 0;

/// The bytes converted from `charset` to UTF-8; nothing when a byte has no meaning there.
std::optional<std::string> toUTF8(std::string_view raw, const char* charset) {
    iconv_t cd = iconv_open("UTF-8", charset);
    if (cd == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
    // No single-byte character needs more than 4 bytes of UTF-8, and UTF-8 maps to itself.
    std::string out(raw.size() * 4, '\0');
    char* in = const_cast<char*>(raw.data());
    std::size_t inLeft = raw.size();
    char* outPtr = out.data();
    std::size_t outLeft = out.size();
    const std::size_t done = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (done == static_cast<std::size_t>(-1) || inLeft != 0) return std::nullopt;
    out.resize(out.size() - outLeft);
    return out;
}

} // namespace

std::string ZipEntryName::decode(std::string_view raw, std::uint8_t hostSystem, bool flaggedUTF8) {
    if (hostSystem == kHostDOS && !flaggedUTF8) {
        if (auto text = toUTF8(raw, "CP437")) return *text;
    }
    if (auto text = toUTF8(raw, "UTF-8")) return *text;
    if (auto text = toUTF8(raw, "WINDOWS-1252")) return *text;
    return Crypto::hex(raw);
}

bool ZipEntryName::isMacOSXMetadata(std::string_view name) {
    return name.starts_with("__MACOSX/");
}

bool ZipEntryName::isDirectory(std::string_view name) {
    return !name.empty() && (name.back() == '/' || name.back() == '\\');
}

std::string ZipEntryName::sanitizedPath(std::string_view name) {
    std::string path(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    // Under a root, ".." can't climb higher than the root itself.
    std::string normal = std::filesystem::path("/" + path).lexically_normal().string();
    const auto first = normal.find_first_not_of('/');
    return first == std::string::npos ? std::string() : normal.substr(first);
}

} // namespace velmo
