#include "engine/instruction_set.h"

#include <immintrin.h>
#ifdef _MSC_VER
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace stairmelt {

namespace {

struct Registers {
    uint32_t a = 0, b = 0, c = 0, d = 0;
};

// Returns zeroes for a leaf that the processor doesn't support.
Registers Identify(uint32_t leaf) {
    Registers r;
#ifdef _MSC_VER
    int highest[4], values[4];
    __cpuid(highest, static_cast<int>(leaf & 0x80000000));
    if (static_cast<uint32_t>(highest[0]) < leaf) return r;
    __cpuidex(values, static_cast<int>(leaf), 0);
    r = {static_cast<uint32_t>(values[0]), static_cast<uint32_t>(values[1]), static_cast<uint32_t>(values[2]),
         static_cast<uint32_t>(values[3])};
#else
    if (__get_cpuid_count(leaf, 0, &r.a, &r.b, &r.c, &r.d) == 0) return {};
#endif
    return r;
}

constexpr bool HasAll(uint32_t value, uint32_t bits) { return (value & bits) == bits; }

}  // namespace

bool HasAvx2() {
    constexpr uint32_t kPopcnt = 1u << 23, kSystemSaves = 1u << 27, kAvx = 1u << 28;  // leaf 1, c
    constexpr uint32_t kBmi1 = 1u << 3, kAvx2 = 1u << 5, kBmi2 = 1u << 8;             // leaf 7, b
    constexpr uint32_t kLzcnt = 1u << 5;                                              // leaf 0x80000001, c
    constexpr uint64_t kXmmAndYmm = 6;  // the registers that the system saves when it switches threads
    return HasAll(Identify(1).c, kPopcnt | kSystemSaves | kAvx) && HasAll(Identify(7).b, kBmi1 | kAvx2 | kBmi2) &&
           HasAll(Identify(0x80000001).c, kLzcnt) && (_xgetbv(0) & kXmmAndYmm) == kXmmAndYmm;
}

}  // namespace stairmelt
