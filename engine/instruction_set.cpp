#include "engine/instruction_set.h"

#include <immintrin.h>

#include <array>
#include <cstring>
#ifdef _MSC_VER
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace stairmelt {

namespace {

// The registers a, b, c and d; zeroes for a leaf that the processor doesn't support.
std::array<uint32_t, 4> Identify(uint32_t leaf) {
    std::array<uint32_t, 4> registers{};
#ifdef _MSC_VER
    int values[4];
    __cpuid(values, static_cast<int>(leaf & 0x80000000));
    if (static_cast<uint32_t>(values[0]) < leaf) return registers;
    __cpuidex(values, static_cast<int>(leaf), 0);
    std::memcpy(registers.data(), values, sizeof values);
#else
    __get_cpuid_count(leaf, 0, &registers[0], &registers[1], &registers[2], &registers[3]);
#endif
    return registers;
}

constexpr bool HasAll(uint32_t value, uint32_t bits) { return (value & bits) == bits; }

}  // namespace

bool HasAvx2() {
    constexpr uint32_t kPopcnt = 1u << 23, kSystemSaves = 1u << 27, kAvx = 1u << 28;  // leaf 1, c
    constexpr uint32_t kBmi1 = 1u << 3, kAvx2 = 1u << 5, kBmi2 = 1u << 8;             // leaf 7, b
    constexpr uint32_t kLzcnt = 1u << 5;                                              // leaf 0x80000001, c
    constexpr uint64_t kXmmAndYmm = 6;  // the registers that the system saves when it switches threads
    return HasAll(Identify(1)[2], kPopcnt | kSystemSaves | kAvx) && HasAll(Identify(7)[1], kBmi1 | kAvx2 | kBmi2) &&
           HasAll(Identify(0x80000001)[2], kLzcnt) && (_xgetbv(0) & kXmmAndYmm) == kXmmAndYmm;
}

}  // namespace stairmelt
