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

// The samples of 8 pixels of floats, plane by plane.
template <int kSamples>
struct FloatPlanes {
    __m256 plane[kSamples];
};

inline __m256 LoadFloatHalves(const uint8_t* low, const uint8_t* high) {
    return _mm256_castsi256_ps(LoadHalves(low, high));
}

// Each half of a vector holds 4 of the pixels. Reads nothing behind the last one.
template <int kSamples>
FloatPlanes<kSamples> LoadFloatPlanes(const uint8_t* at) {
    constexpr int kPixel = kSamples * 4;  // bytes
    constexpr int kHalf = 4 * kPixel;
    if constexpr (kSamples == 1) {
        return {{LoadFloatHalves(at, at + kHalf)}};
    } else if constexpr (kSamples == 2) {
        const __m256 a = LoadFloatHalves(at, at + kHalf), b = LoadFloatHalves(at + 16, at + kHalf + 16);
        return {{_mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)), _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1))}};
    } else if constexpr (kSamples == 3) {
        // x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3
        const __m256 a = LoadFloatHalves(at, at + kHalf), b = LoadFloatHalves(at + 16, at + kHalf + 16);
        const __m256 c = LoadFloatHalves(at + 32, at + kHalf + 32);
        const __m256 xy = _mm256_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));  // x2 y2 x3 y3
        const __m256 yz = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));  // y0 z0 y1 z1
        return {{_mm256_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0)), _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0)),
                 _mm256_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1))}};
    } else {
        // The first four samples of each pixel, 4 by 4 exchanged.
        const auto part = [&](int pixel) { return LoadFloatHalves(at + pixel * kPixel, at + kHalf + pixel * kPixel); };
        const __m256 a = part(0), b = part(1), c = part(2), d = part(3);
        const __m256 abLow = _mm256_unpacklo_ps(a, b), abHigh = _mm256_unpackhi_ps(a, b);
        const __m256 cdLow = _mm256_unpacklo_ps(c, d), cdHigh = _mm256_unpackhi_ps(c, d);
        FloatPlanes<kSamples> planes;
        planes.plane[0] = _mm256_shuffle_ps(abLow, cdLow, _MM_SHUFFLE(1, 0, 1, 0));
        planes.plane[1] = _mm256_shuffle_ps(abLow, cdLow, _MM_SHUFFLE(3, 2, 3, 2));
        planes.plane[2] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(1, 0, 1, 0));
        planes.plane[3] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(3, 2, 3, 2));
        if constexpr (kSamples == 5) {
            float fifth[8];
            for (int pixel = 0; pixel < 8; ++pixel) std::memcpy(&fifth[pixel], at + pixel * kPixel + 16, 4);
            planes.plane[4] =
                _mm256_setr_ps(fifth[0], fifth[1], fifth[2], fifth[3], fifth[4], fifth[5], fifth[6], fifth[7]);
        }
        return planes;
    }
}

// Bit k is set where the pixels k differ; every operation as in Differs.
template <class Format>
uint32_t DifferingFloats(const FloatPlanes<Format::kPixelSize>& a, const FloatPlanes<Format::kPixelSize>& b,
                         __m256 threshold) {
    const auto distance = [](__m256 s, __m256 t) {
        return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), _mm256_sub_ps(s, t));
    };
    __m256 left = threshold;
    if constexpr (Format::kExtra == 1) {
        const __m256 u = a.plane[Format::kOpacity], v = b.plane[Format::kOpacity];
        const __m256 opacities = _mm256_add_ps(u, v);
        left = _mm256_sub_ps(left, distance(u, v));
        for (int c = 0; c < Format::kChannels; ++c) {
            const __m256 half = _mm256_mul_ps(distance(a.plane[c], b.plane[c]), _mm256_set1_ps(0.5f));
            left = _mm256_sub_ps(left, _mm256_mul_ps(half, opacities));
        }
    } else {
        for (int c = 0; c < Format::kChannels; ++c) left = _mm256_sub_ps(left, distance(a.plane[c], b.plane[c]));
    }
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_cmp_ps(left, _mm256_setzero_ps(), _CMP_LT_OQ)));
}

struct Avx2 {
    static constexpr bool kComparesBytes = true;
    static constexpr bool kComparesFloats = true;
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

    // The flags of 16 columns of floats.
    template <class Format>
    static ChunkFlags CompareFloats(const uint8_t* p, const uint8_t* q, float threshold) {
        constexpr int kSamples = Format::kPixelSize;
        const __m256 most = _mm256_set1_ps(threshold);
        ChunkFlags flags{};
        for (int x = 0; x < 16; x += 8) {
            const uint8_t* const pPart = p + x * Format::kPixelBytes;
            const uint8_t* const qPart = q + x * Format::kPixelBytes;
            const FloatPlanes<kSamples> here = LoadFloatPlanes<kSamples>(pPart);
            const FloatPlanes<kSamples> right = LoadFloatPlanes<kSamples>(pPart + Format::kPixelBytes);
            const FloatPlanes<kSamples> below = LoadFloatPlanes<kSamples>(qPart);
            const FloatPlanes<kSamples> across = LoadFloatPlanes<kSamples>(qPart + Format::kPixelBytes);
            flags.r |= static_cast<uint64_t>(DifferingFloats<Format>(here, right, most)) << x;
            flags.d |= static_cast<uint64_t>(DifferingFloats<Format>(here, below, most)) << x;
            flags.x |= static_cast<uint64_t>(DifferingFloats<Format>(here, across, most)) << x;
            flags.a |= static_cast<uint64_t>(DifferingFloats<Format>(right, below, most)) << x;
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
