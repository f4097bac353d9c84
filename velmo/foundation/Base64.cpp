#include "velmo/foundation/Base64.h"

#include <openssl/evp.h>

namespace velmo {

std::string Base64::encode(std::string_view bytes) {
    std::string out(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int n =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    out.resize(static_cast<std::size_t>(n));
    return out;
}

std::optional<std::string> Base64::decode(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    for (char c : text) {
        if (c != ' ' && c != '\n' && c != '\r' && c != '\t') clean += c;
    }
    if (clean.size() % 4 != 0) return std::nullopt;
    if (clean.empty()) return std::string();
    std::string out(clean.size() / 4 * 3, '\0');
    const int n =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                        reinterpret_cast<const unsigned char*>(clean.data()), static_cast<int>(clean.size()));
    if (n < 0) return std::nullopt;
    // EVP_DecodeBlock counts the padding as zero bytes.
    std::size_t padding = 0;
    if (clean.back() == '=') ++padding;
    if (clean.size() >= 2 && clean[clean.size() - 2] == '=') ++padding;
    out.resize(static_cast<std::size_t>(n) - padding);
    return out;
}

} // namespace velmo
