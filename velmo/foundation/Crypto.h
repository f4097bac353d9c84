#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Digests and the one cipher the system uses, through OpenSSL's EVP interfaces.
/// Bytes travel as `std::string`.
class Crypto {
public:
    static std::string md5(std::string_view bytes);
    static std::string sha256(std::string_view bytes);
    /// `count` bytes from the system's cryptographic generator; throws std::runtime_error when it
    /// has none to give, as a secret must never be made of weak bytes.
    static std::string randomBytes(std::size_t count);
    /// Lower-case hexadecimal text of bytes.
    static std::string hex(std::string_view bytes);
    static std::string md5Hex(std::string_view bytes) { return hex(md5(bytes)); }
    /// MD5 of a file's bytes, read in chunks; nothing when the file can't be read.
    static std::optional<std::string> md5HexOfFile(const std::string& path);

    /// AES-256-CBC with PKCS#7 padding. `key` must be 32 bytes, `iv` 16; nothing on any failure.
    static std::optional<std::string> aes256CbcEncrypt(std::string_view plain, std::string_view key,
                                                       std::string_view iv);
    static std::optional<std::string> aes256CbcDecrypt(std::string_view cipher, std::string_view key,
                                                       std::string_view iv);
};

} // namespace velmo
