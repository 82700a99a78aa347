// A small generator whose numbers are the same with every compiler and library.
#pragma once

#include <cstdint>

namespace stairmelt {

class SeededRandom {
public:
    explicit SeededRandom(uint64_t seed) : state(seed * 2 + 1) {}

    uint32_t Next() {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<uint32_t>(state >> 32);
    }

    // 0..bound - 1
    int Below(int bound) { return static_cast<int>(Next() % static_cast<uint32_t>(bound)); }

    // Any 32-bit value, with the ones that arithmetic stumbles over more often than chance would have them.
    int32_t Wild() {
        constexpr int32_t kCorners[] = {INT32_MIN, INT32_MAX, -1, 0, 1, 65536, 1 << 30, -(1 << 30), 100, 255};
        return Below(2) == 0 ? kCorners[Below(10)] : static_cast<int32_t>(Next());
    }

private:
    uint64_t state;
};

}  // namespace stairmelt
