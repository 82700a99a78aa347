// Two words of flags in a vector of SSE2, which every x86-64 machine has.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

struct TwoWords {
    __m128i words;
};

inline TwoWords operator&(TwoWords a, TwoWords b) { return {_mm_and_si128(a.words, b.words)}; }
inline TwoWords operator|(TwoWords a, TwoWords b) { return {_mm_or_si128(a.words, b.words)}; }
inline TwoWords operator^(TwoWords a, TwoWords b) { return {_mm_xor_si128(a.words, b.words)}; }
inline TwoWords operator~(TwoWords a) { return {_mm_xor_si128(a.words, _mm_set1_epi32(-1))}; }
inline TwoWords operator<<(TwoWords a, int count) { return {_mm_slli_epi64(a.words, count)}; }
inline TwoWords operator>>(TwoWords a, int count) { return {_mm_srli_epi64(a.words, count)}; }

inline bool IsZero(TwoWords a) { return _mm_movemask_epi8(_mm_cmpeq_epi8(a.words, _mm_setzero_si128())) == 0xFFFF; }

inline void LoadWords(TwoWords& to, const uint8_t* at) {
    to.words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// Loads a word from each of two places.
inline void LoadBlocks(TwoWords& to, const uint8_t* const* at, ptrdiff_t offset) {
    to.words = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at[0] + offset)),
                                  _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at[1] + offset)));
}

// Of eight vectors: bit 8 * i + k is set where word i of vector k isn't 0.
inline uint32_t NonzeroWords(const TwoWords* eight) {
    uint32_t bits = 0;
    for (int k = 0; k < 8; ++k) {
        const int isZero = _mm_movemask_epi8(_mm_cmpeq_epi8(eight[k].words, _mm_setzero_si128()));
        bits |= ((isZero & 0xFF) != 0xFF ? 1u << k : 0u) | (isZero >> 8 != 0xFF ? 0x100u << k : 0u);
    }
    return bits;
}

}  // namespace stairmelt::inline STAIRMELT_SET
