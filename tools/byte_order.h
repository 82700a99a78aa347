// Reads and appends numbers of files in either byte order, whatever the machine's own.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace stairmelt {

using Bytes = std::vector<uint8_t>;

template <std::unsigned_integral T>
T GetNumber(const uint8_t* at, bool bigEndian) {
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) value = value << 8 | at[bigEndian ? i : sizeof(T) - 1 - i];
    return static_cast<T>(value);
}

template <std::unsigned_integral T>
void PutNumber(uint8_t* at, T value, bool bigEndian) {
    for (size_t i = 0; i < sizeof(T); ++i) {
        at[bigEndian ? sizeof(T) - 1 - i : i] = static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i));
    }
}

template <std::unsigned_integral T>
void AppendNumber(Bytes& to, T value, bool bigEndian) {
    to.resize(to.size() + sizeof(T));
    PutNumber(to.data() + to.size() - sizeof(T), value, bigEndian);
}

}  // namespace stairmelt
