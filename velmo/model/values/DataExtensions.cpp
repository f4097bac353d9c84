#include "velmo/model/values/DataExtensions.h"

#include "velmo/foundation/Crypto.h"

namespace velmo {

namespace {
std::string aesKey(std::string_view key) {
    std::string k(key.substr(0, 32));
    k.resize(32, '\0');
    return k;
}
const std::string kZeroIV(16, '\0');
} // namespace

std::string MD5OfData(std::string_view data) {
    return Crypto::md5Hex(data);
}

std::optional<std::string> AES256EncryptWithKey(std::string_view data, std::string_view key) {
    return Crypto::aes256CbcEncrypt(data, aesKey(key), kZeroIV);
}

std::optional<std::string> AES256DecryptWithKey(std::string_view data, std::string_view key) {
    return Crypto::aes256CbcDecrypt(data, aesKey(key), kZeroIV);
}

} // namespace velmo
