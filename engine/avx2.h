// What the kernels do with AVX2: comparing the bytes of 64 columns, and looking at four blocks of flags at a time.
// Included only by files that are compiled for it.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "engine/edge_chunk.h"
#include "engine/flag_block.h"
#include "engine/pixel_lanes.h"

namespace stairmelt::inline STAIRMELT_SET {

// Four words with the operators of one, for FlagBlock.
struct FourWords {
    __m256i words;
};

inline FourWords operator&(FourWords a, FourWords b) { return {_mm256_and_si256(a.words, b.words)}; }
inline FourWords operator|(FourWords a, FourWords b) { return {_mm256_or_si256(a.words, b.words)}; }
inline FourWords operator~(FourWords a) { return {_mm256_xor_si256(a.words, _mm256_set1_epi32(-1))}; }
inline FourWords operator<<(FourWords a, int count) { return {_mm256_slli_epi64(a.words, count)}; }
inline FourWords operator>>(FourWords a, int count) { return {_mm256_srli_epi64(a.words, count)}; }

inline bool IsZero(FourWords a) { return _mm256_testz_si256(a.words, a.words) != 0; }

inline __m256i LoadHalves(const uint8_t* low, const uint8_t* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low))),
                                   _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1);
}

inline void LoadBlocks(FourWords& word, const uint8_t* at) {
    // Two adjacent blocks share the byte between them.
    const __m256i twoBlocks =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 7, 8, 9, 10, 11, 12, 13, 14));
    word.words = _mm256_shuffle_epi8(LoadHalves(at, at + 2 * kBlockBytes), twoBlocks);
}

// The samples of 32 pixels, plane by plane.
template <int kSamples>
struct BytePlanes {
    __m256i plane[kSamples];
};

// Each 16-byte half of a vector holds 16 of the pixels, so that no shuffle crosses the halves.
template <int kSamples>
BytePlanes<kSamples> LoadPlanes(const uint8_t* at) {
    constexpr int kHalf = 16 * kSamples;
    const auto part = [&](int index) { return LoadHalves(at + 16 * index, at + kHalf + 16 * index); };
    if constexpr (kSamples == 1) {
        return {{part(0)}};
    } else if constexpr (kSamples == 2) {
        const __m256i low = _mm256_set1_epi16(0xFF);
        return {{_mm256_packus_epi16(_mm256_and_si256(part(0), low), _mm256_and_si256(part(1), low)),
                 _mm256_packus_epi16(_mm256_srli_epi16(part(0), 8), _mm256_srli_epi16(part(1), 8))}};
    } else if constexpr (kSamples == 3) {
        // Byte k of plane c is byte 3 * k + c of the 48, which lies in one of three parts; the others give zero there.
        const __m256i a = part(0), b = part(1), c = part(2);
        const auto pick = [](__m256i from, __m128i places) {
            return _mm256_shuffle_epi8(from, _mm256_broadcastsi128_si256(places));
        };
        const auto plane = [&](__m128i inA, __m128i inB, __m128i inC) {
            return _mm256_or_si256(_mm256_or_si256(pick(a, inA), pick(b, inB)), pick(c, inC));
        };
        return {{plane(_mm_setr_epi8(0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1),
                       _mm_setr_epi8(-1, -1, -1, -1, -1, -1, 2, 5, 8, 11, 14, -1, -1, -1, -1, -1),
                       _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 1, 4, 7, 10, 13)),
                 plane(_mm_setr_epi8(1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1),
                       _mm_setr_epi8(-1, -1, -1, -1, -1, 0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1),
                       _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 2, 5, 8, 11, 14)),
                 plane(_mm_setr_epi8(2, 5, 8, 11, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1),
                       _mm_setr_epi8(-1, -1, -1, -1, -1, 1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1),
                       _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 3, 6, 9, 12, 15))}};
    } else {
        // Four pixels of a part as four bytes of each plane, then the 4 by 4 words exchanged.
        const __m256i gather =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
        const __m256i a = _mm256_shuffle_epi8(part(0), gather), b = _mm256_shuffle_epi8(part(1), gather);
        const __m256i c = _mm256_shuffle_epi8(part(2), gather), d = _mm256_shuffle_epi8(part(3), gather);
        const __m256i abLow = _mm256_unpacklo_epi32(a, b), abHigh = _mm256_unpackhi_epi32(a, b);
        const __m256i cdLow = _mm256_unpacklo_epi32(c, d), cdHigh = _mm256_unpackhi_epi32(c, d);
        return {{_mm256_unpacklo_epi64(abLow, cdLow), _mm256_unpackhi_epi64(abLow, cdLow),
                 _mm256_unpacklo_epi64(abHigh, cdHigh), _mm256_unpackhi_epi64(abHigh, cdHigh)}};
    }
}

// Bit k is set where the pixels k differ. Sums saturate at 255, which lies above the threshold.
template <int kSamples>
uint32_t DifferingBytes(const BytePlanes<kSamples>& a, const BytePlanes<kSamples>& b, __m256i threshold) {
    const auto distance = [](__m256i s, __m256i t) {
        return _mm256_or_si256(_mm256_subs_epu8(s, t), _mm256_subs_epu8(t, s));
    };
    __m256i sum = distance(a.plane[0], b.plane[0]);
    for (int c = 1; c < kSamples; ++c) sum = _mm256_adds_epu8(sum, distance(a.plane[c], b.plane[c]));
    const __m256i isWithin = _mm256_cmpeq_epi8(_mm256_subs_epu8(sum, threshold), _mm256_setzero_si256());
    return ~static_cast<uint32_t>(_mm256_movemask_epi8(isWithin));
}

struct Avx2 {
    static constexpr bool kComparesBytes = true;
    static constexpr bool kHasLanes = true;
    using Word = FourWords;

    // The flags of the chunk at p without opacity, with the row below at q. threshold: 0..254.
    template <int kSamples>
    static ChunkFlags CompareBytes(const uint8_t* p, const uint8_t* q, uint8_t threshold) {
        const __m256i most = _mm256_set1_epi8(static_cast<char>(threshold));
        ChunkFlags flags{};
        for (int x = 0; x < kChunkColumns; x += 32) {
            const BytePlanes<kSamples> here = LoadPlanes<kSamples>(p + x * kSamples);
            const BytePlanes<kSamples> right = LoadPlanes<kSamples>(p + (x + 1) * kSamples);
            const BytePlanes<kSamples> below = LoadPlanes<kSamples>(q + x * kSamples);
            const BytePlanes<kSamples> across = LoadPlanes<kSamples>(q + (x + 1) * kSamples);
            flags.r |= static_cast<uint64_t>(DifferingBytes(here, right, most)) << x;
            flags.d |= static_cast<uint64_t>(DifferingBytes(here, below, most)) << x;
            flags.x |= static_cast<uint64_t>(DifferingBytes(here, across, most)) << x;
            flags.a |= static_cast<uint64_t>(DifferingBytes(right, below, most)) << x;
        }
        return flags;
    }

    template <class Format>
    static LanePixel<Format> LoadToward(const uint8_t* at) {
        return LoadLanePixel<Format>(at);
    }
    template <class Format>
    static void MixPixelAt(uint8_t* at, const LanePixel<Format>& toward, typename Format::Weight weight) {
        MixLanePixelAt<Format>(at, toward, weight);
    }
    template <class Format>
    static void AverageIsolatedPixel(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                                     typename Format::Weight neighbourWeight) {
        AverageLanePixel<Format>(source, destination, x, y, neighbourWeight);
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
