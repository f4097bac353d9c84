#include "velmo/foundation/Uuid.h"

#include <array>
#include <atomic>
#include <cstring>
#include <stdexcept>

#include <openssl/rand.h>
#include <pthread.h>
#include <uuid/uuid.h>

namespace velmo {

namespace {

// Every decoded model burns one UUID, so UUIDs must be cheap: random bytes come in batches from
// OpenSSL's generator (libuuid's own random form makes several system calls per UUID), and
// libuuid writes the text.
// A forked child must not hand out its parent's remaining bytes again.
std::atomic<unsigned> forkGeneration{0};

void randomUuid(uuid_t id) {
    static constexpr std::size_t kBatch = 256;
    static const bool watchingForks = [] {
        return pthread_atfork(nullptr, nullptr, [] { forkGeneration.fetch_add(1); }) == 0;
    }();
    (void)watchingForks;
    thread_local std::array<unsigned char, 16 * kBatch> pool;
    thread_local std::size_t used = kBatch;
    thread_local unsigned generation = 0;
    if (generation != forkGeneration.load(std::memory_order_relaxed)) {
        generation = forkGeneration.load(std::memory_order_relaxed);
        used = kBatch;
    }
    if (used == kBatch) {
        if (RAND_bytes(pool.data(), static_cast<int>(pool.size())) != 1) {
            uuid_generate_random(id); // the system's generator, should OpenSSL's fail
            return;
        }
        used = 0;
    }
    std::memcpy(id, pool.data() + 16 * used++, 16);
    id[6] = static_cast<unsigned char>((id[6] & 0x0F) | 0x40); // version 4
    id[8] = static_cast<unsigned char>((id[8] & 0x3F) | 0x80); // RFC 4122 variant
}

std::string make(bool upper) {
    uuid_t id;
    randomUuid(id);
    char text[37];
    if (upper) {
        uuid_unparse_upper(id, text);
    } else {
        uuid_unparse_lower(id, text);
    }
    return std::string(text, 36);
}

} // namespace

std::string Uuid::string() {
    return make(true);
}

std::string Uuid::lowercaseString() {
    return make(false);
}

} // namespace velmo
