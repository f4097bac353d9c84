#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

// Operations on binary data (bytes in a std::string).

/// MD5 of all the bytes, as 32 lower-case hexadecimal characters: the `md5` of fonts and the
/// names of uploaded assets.
std::string MD5OfData(std::string_view data);
/// AES-256-CBC with an all-zero initialisation vector and PKCS#7 padding. The key is the
/// argument's UTF-8 text cut or zero-filled to 32 bytes. Nothing on any failure.
std::optional<std::string> AES256EncryptWithKey(std::string_view data, std::string_view key);
std::optional<std::string> AES256DecryptWithKey(std::string_view data, std::string_view key);

} // namespace velmo
