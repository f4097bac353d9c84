#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>

namespace velmo::fuzz {

// Each harness takes one input, runs it through the library and checks what came out. It returns
// false, after saying why on standard error, when a check fails; crashes, leaks and sanitizer
// reports are the engine's to catch. Errors the library gives for bad input are fine.

/// Text through the JSON reader; what reads is written and must read back the same.
bool fuzzJson(const std::uint8_t* data, std::size_t size);
/// JSON text through the class registry's decoding, then encoded and decoded again: the two
/// models must encode alike.
bool fuzzModel(const std::uint8_t* data, std::size_t size);
/// Bytes as a ZIP file, unpacked into a fresh folder: nothing may land outside it.
bool fuzzArchive(const std::uint8_t* data, std::size_t size);
/// Parameter dictionaries built from the bytes, through the HTTP request's query, form,
/// multipart and JSON encodings: each must say what it was given, in a well-formed body.
bool fuzzForm(const std::uint8_t* data, std::size_t size);

/// Once per process, before the first input: a settings folder of the run's own and a quiet log.
void prepareFuzzProcess();
/// A folder of the process's own for the harnesses' files, made at the first call and removed
/// when the process ends.
const std::filesystem::path& fuzzWorkFolder();

struct FuzzTarget {
    std::string_view name;
    bool (*run)(const std::uint8_t* data, std::size_t size);
};

/// The harnesses by name; each has its seeds in corpus/<name> and its found failures in
/// regressions/<name>.
inline constexpr FuzzTarget kFuzzTargets[] = {
    {"json", fuzzJson},
    {"model", fuzzModel},
    {"archive", fuzzArchive},
    {"form", fuzzForm},
};

} // namespace velmo::fuzz
