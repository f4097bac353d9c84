#include "velmo/foundation/Crypto.h"

#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace velmo {

namespace {

struct MdCtxDeleter {
    void operator()(EVP_MD_CTX* ctx) const { EVP_MD_CTX_free(ctx); }
};
using MdCtx = std::unique_ptr<EVP_MD_CTX, MdCtxDeleter>;

struct CipherCtxDeleter {
    void operator()(EVP_CIPHER_CTX* ctx) const { EVP_CIPHER_CTX_free(ctx); }
};

std::string digest(const EVP_MD* md, std::string_view bytes) {
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), out, &length, md, nullptr) != 1) return {};
    return std::string(reinterpret_cast<const char*>(out), length);
}

std::optional<std::string> aes(std::string_view input, std::string_view key, std::string_view iv,
                               bool encrypt) {
    if (key.size() != 32 || iv.size() != 16) return std::nullopt;
    std::unique_ptr<EVP_CIPHER_CTX, CipherCtxDeleter> ctx(EVP_CIPHER_CTX_new());
    if (!ctx) return std::nullopt;
    const auto* k = reinterpret_cast<const unsigned char*>(key.data());
    const auto* v = reinterpret_cast<const unsigned char*>(iv.data());
    if (EVP_CipherInit_ex(ctx.get(), EVP_aes_256_cbc(), nullptr, k, v, encrypt ? 1 : 0) != 1)
        return std::nullopt;
    std::string out(input.size() + 32, '\0');
    int written = 0;
    int last = 0;
    auto* o = reinterpret_cast<unsigned char*>(out.data());
    if (EVP_CipherUpdate(ctx.get(), o, &written, reinterpret_cast<const unsigned char*>(input.data()),
                         static_cast<int>(input.size())) != 1) {
        return std::nullopt;
    }
    if (EVP_CipherFinal_ex(ctx.get(), o + written, &last) != 1) return std::nullopt;
    out.resize(static_cast<std::size_t>(written + last));
    return out;
}

} // namespace

std::string Crypto::md5(std::string_view bytes) {
    return digest(EVP_md5(), bytes);
}

std::string Crypto::randomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (count > 0 && RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1)
        throw std::runtime_error("the system's random generator gave no bytes");
    return bytes;
}

std::string Crypto::sha256(std::string_view bytes) {
    return digest(EVP_sha256(), bytes);
}

std::string Crypto::hex(std::string_view bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(bytes.size() * 2);
    for (unsigned char c : bytes) {
        out += digits[c >> 4];
        out += digits[c & 0xF];
    }
    return out;
}

std::optional<std::string> Crypto::md5HexOfFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    MdCtx ctx(EVP_MD_CTX_new());
    if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_md5(), nullptr) != 1) return std::nullopt;
    std::vector<char> buffer(1 << 16);
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto got = in.gcount();
        if (got > 0 && EVP_DigestUpdate(ctx.get(), buffer.data(), static_cast<std::size_t>(got)) != 1) {
            return std::nullopt;
        }
    }
    if (in.bad()) return std::nullopt;
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(ctx.get(), out, &length) != 1) return std::nullopt;
    return hex(std::string_view(reinterpret_cast<const char*>(out), length));
}

std::optional<std::string> Crypto::aes256CbcEncrypt(std::string_view plain, std::string_view key,
                                                    std::string_view iv) {
    return aes(plain, key, iv, true);
}

std::optional<std::string> Crypto::aes256CbcDecrypt(std::string_view cipher, std::string_view key,
                                                    std::string_view iv) {
    return aes(cipher, key, iv, false);
}

} // namespace velmo
