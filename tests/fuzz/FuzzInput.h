#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmo::fuzz {

/// Reads typed choices off the front of a fuzz input. Past the end every read gives zero or
/// empty, so any input, however short, describes a complete case.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    bool empty() const { return at_ >= size_; }
    std::uint8_t byte();
    /// A choice among `count` (at least 1).
    unsigned choice(unsigned count) { return byte() % count; }
    bool flag() { return (byte() & 1) != 0; }
    /// Eight bytes, little-endian.
    std::uint64_t word();
    /// Up to `maxLength` raw bytes, the length read first.
    std::string bytes(std::size_t maxLength);

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

} // namespace velmo::fuzz
