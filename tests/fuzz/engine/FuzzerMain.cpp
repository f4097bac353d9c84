// The libFuzzer entry of one harness, chosen by VELMO_FUZZ_TARGET when the harness is built.
#include <cstdint>
#include <cstdlib>

#include "../FuzzTargets.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    velmo::fuzz::prepareFuzzProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A failed check is a finding as a crash is: the engine keeps the input that caused it.
    if (!velmo::fuzz::VELMO_FUZZ_TARGET(data, size)) std::abort();
    return 0;
}
