// Reads a fuzzer's input as the series of choices that make up a test case. After its end, all choices are 0, so that
// every input is a complete case and a truncated input is a simpler one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace stairmelt {

class ByteSource {
public:
    ByteSource(const uint8_t* data, size_t size) : next_(data), end_(data + size) {}

    bool IsEmpty() const { return next_ == end_; }

    uint8_t Byte() { return IsEmpty() ? uint8_t{0} : *next_++; }

    uint32_t Word() {
        uint32_t word = 0;
        for (int shift = 0; shift < 32; shift += 8) word |= static_cast<uint32_t>(Byte()) << shift;
        return word;
    }

    // 0..bound - 1; bound: 1..65536
    int Below(int bound) { return (bound <= 256 ? Byte() : Byte() | Byte() << 8) % bound; }

    // min..max, which are less than 65536 apart
    int Between(int min, int max) { return min + Below(max - min + 1); }

    bool OneIn(int count) { return Byte() % count == count - 1; }

    // Any 32-bit value; half of the time one of those that often break arithmetic.
    int32_t Wild() {
        constexpr int32_t kCorners[] = {0,     1,     -1,      100,        255,           INT32_MIN, INT32_MAX,
                                        32767, 65536, 1 << 30, -(1 << 30), INT32_MIN + 1, -2,        70};
        const uint8_t choice = Byte();
        return choice % 2 == 0 ? kCorners[choice / 2 % std::size(kCorners)] : static_cast<int32_t>(Word());
    }

private:
    const uint8_t* next_;
    const uint8_t* end_;
};

}  // namespace stairmelt
