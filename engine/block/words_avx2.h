// Four words of flags in a vector of AVX2. Included only by files that are compiled for it.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

struct FourWords {
    __m256i words;
};

inline FourWords operator&(FourWords a, FourWords b) { return {_mm256_and_si256(a.words, b.words)}; }
inline FourWords operator|(FourWords a, FourWords b) { return {_mm256_or_si256(a.words, b.words)}; }
inline FourWords operator^(FourWords a, FourWords b) { return {_mm256_xor_si256(a.words, b.words)}; }
inline FourWords operator~(FourWords a) { return {_mm256_xor_si256(a.words, _mm256_set1_epi32(-1))}; }
inline FourWords operator<<(FourWords a, int count) { return {_mm256_slli_epi64(a.words, count)}; }
inline FourWords operator>>(FourWords a, int count) { return {_mm256_srli_epi64(a.words, count)}; }

inline bool IsZero(FourWords a) { return _mm256_testz_si256(a.words, a.words) != 0; }

inline void LoadWords(FourWords& to, const uint8_t* at) {
    to.words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}

// Loads 16 bytes from each of two places.
inline __m256i LoadHalves(const uint8_t* low, const uint8_t* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low))),
                                   _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1);
}

// Loads a word from each of four places.
inline void LoadBlocks(FourWords& to, const uint8_t* const* at, ptrdiff_t offset) {
    const auto two = [&](const uint8_t* low, const uint8_t* high) {
        return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(low + offset)),
                                  _mm_loadl_epi64(reinterpret_cast<const __m128i*>(high + offset)));
    };
    to.words = _mm256_inserti128_si256(_mm256_castsi128_si256(two(at[0], at[1])), two(at[2], at[3]), 1);
}

// Of eight vectors: bit 8 * i + k is set where word i of vector k isn't 0.
inline uint32_t NonzeroWords(const FourWords* eight) {
    const auto isZero = [&](int k) { return _mm256_cmpeq_epi64(eight[k].words, _mm256_setzero_si256()); };
    const auto two = [&](int k) { return _mm256_blend_epi32(isZero(k), isZero(k + 1), 0xAA); };
    const auto four = [&](int k) { return _mm256_packs_epi32(two(k), two(k + 2)); };
    const __m256i order = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15,  //
                                           0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    return ~static_cast<uint32_t>(
        _mm256_movemask_epi8(_mm256_shuffle_epi8(_mm256_packs_epi16(four(0), four(4)), order)));
}

}  // namespace stairmelt::inline STAIRMELT_SET
