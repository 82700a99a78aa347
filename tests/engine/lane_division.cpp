// Compiled for AVX2, and called only where the machine has it.
#include "engine/block/lane_colors.h"

namespace stairmelt {

// The first value whose quotient by 65535 the lanes get wrong, or 0. A quotient changes only at multiples of the
// divisor.
int32_t FirstWrongQuotient() {
    const auto quotientOf = [](int32_t value) { return _mm_cvtsi128_si32(DivideBy65535(_mm_set1_epi32(value))); };
    for (int64_t multiple = 0; multiple <= INT64_C(1) << 31; multiple += 65535) {
        for (int64_t value = multiple - 2; value <= multiple + 2; ++value) {
            for (const int64_t signedValue : {value, -value}) {
                if (signedValue < INT32_MIN || signedValue > INT32_MAX) continue;
                const int32_t dividend = static_cast<int32_t>(signedValue);
                if (quotientOf(dividend) != dividend / 65535) return dividend;
            }
        }
    }
    return quotientOf(INT32_MIN) == INT32_MIN / 65535 ? 0 : INT32_MIN;
}

// Whether bytes in vectors are mixed as one is, at every distance and weight.
bool MixesBytesExactly() {
    for (int32_t weight = 0; weight <= 65535; ++weight) {
        const __m128i weights = _mm_set1_epi16(static_cast<int16_t>(weight));
        for (int32_t distance = 0; distance < 256; ++distance) {
            const __m128i low = _mm_setzero_si128(), high = _mm_set1_epi16(static_cast<int16_t>(distance));
            const auto first = [](__m128i words) { return _mm_extract_epi16(words, 0); };
            if (first(MixWords(low, high, weights)) != distance * weight / 65535) return false;
            if (first(MixWords(high, low, weights)) != distance * (65535 - weight) / 65535) return false;
        }
    }
    return true;
}

}  // namespace stairmelt
