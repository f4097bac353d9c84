#include "FuzzInput.h"

#include <algorithm>

namespace velmo::fuzz {

std::uint8_t FuzzInput::byte() {
    return at_ < size_ ? data_[at_++] : 0;
}

std::uint64_t FuzzInput::word() {
    std::uint64_t w = 0;
    for (int i = 0; i < 8; ++i)
        w |= static_cast<std::uint64_t>(byte()) << (8 * i);
    return w;
}

std::string FuzzInput::bytes(std::size_t maxLength) {
    const std::size_t wanted = byte() % (maxLength + 1);
    const std::size_t length = std::min(wanted, size_ - std::min(at_, size_));
    std::string out(reinterpret_cast<const char*>(data_ + at_), length);
    at_ += length;
    return out;
}

} // namespace velmo::fuzz
