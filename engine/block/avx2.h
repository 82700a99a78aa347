// The AVX2 instruction set: comparing parts of rows, mixing the colours of a pixel, and changing several pixels at
// once. Included only by files that are compiled for it.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "engine/block/byte_rows.h"
#include "engine/block/lane_colors.h"
#include "engine/block/part_row.h"
#include "engine/block/words_avx2.h"

namespace stairmelt::inline STAIRMELT_SET {

// 64 pixels of bytes without opacity, and the one after them, channel by channel.
template <int kSamples>
class ByteRow {
public:
    static constexpr int kColumns = 64;

    // Sums saturate at 255, which has to lie above the threshold.
    static bool Supports(int32_t threshold) { return threshold >= 0 && threshold < 255; }

    void Load(const uint8_t* row) {
        LoadHalf(row, 0);
        LoadHalf(row + 32 * kSamples, 1);
        for (int c = 0; c < kSamples; ++c) {
            // Each plane, one column later.
            const __m256i last = _mm256_zextsi128_si256(_mm_cvtsi32_si128(row[kColumns * kSamples + c]));
            const auto shifted = [](__m256i low, __m256i high) {
                return _mm256_alignr_epi8(_mm256_permute2x128_si256(low, high, 0x21), low, 1);
            };
            right[0][c] = shifted(here[0][c], here[1][c]);
            right[1][c] = shifted(here[1][c], last);
        }
    }

    static ChunkFlags Compare(const ByteRow& p, const ByteRow& q, int32_t edgeThreshold) {
        const __m256i threshold = _mm256_set1_epi8(static_cast<char>(edgeThreshold));
        const auto differing = [&](const Planes& a, const Planes& b) {
            return Differing(a[0], b[0], threshold) | Differing(a[1], b[1], threshold) << 32;
        };
        return {differing(p.here, p.right), differing(p.here, q.here), differing(p.here, q.right),
                differing(p.right, q.here)};
    }

private:
    using Planes = __m256i[2][kSamples];  // of the first 32 columns, and of the others

    // Bit k is set where the pixels k differ.
    static uint64_t Differing(const __m256i* a, const __m256i* b, __m256i threshold) {
        const auto distance = [](__m256i s, __m256i t) {
            return _mm256_or_si256(_mm256_subs_epu8(s, t), _mm256_subs_epu8(t, s));
        };
        __m256i sum = distance(a[0], b[0]);
        for (int c = 1; c < kSamples; ++c) sum = _mm256_adds_epu8(sum, distance(a[c], b[c]));
        const __m256i isWithin = _mm256_cmpeq_epi8(_mm256_subs_epu8(sum, threshold), _mm256_setzero_si256());
        return ~static_cast<uint32_t>(_mm256_movemask_epi8(isWithin));
    }

    // Each 16-byte half of a vector holds 16 of the pixels, so that no shuffle crosses the halves.
    void LoadHalf(const uint8_t* at, int half) {
        constexpr int kHalf = 16 * kSamples;
        __m256i* const plane = here[half];
        const auto part = [&](int index) { return LoadHalves(at + 16 * index, at + kHalf + 16 * index); };
        if constexpr (kSamples == 1) {
            plane[0] = part(0);
        } else if constexpr (kSamples == 2) {
            const __m256i low = _mm256_set1_epi16(0xFF);
            plane[0] = _mm256_packus_epi16(_mm256_and_si256(part(0), low), _mm256_and_si256(part(1), low));
            plane[1] = _mm256_packus_epi16(_mm256_srli_epi16(part(0), 8), _mm256_srli_epi16(part(1), 8));
        } else if constexpr (kSamples == 3) {
            // Byte k of plane c is byte 3 * k + c of the 48, which lies in one of three parts; the others give zero
            // there.
            const __m256i a = part(0), b = part(1), c = part(2);
            const auto pick = [](__m256i from, __m128i places) {
                return _mm256_shuffle_epi8(from, _mm256_broadcastsi128_si256(places));
            };
            const auto gather = [&](__m128i inA, __m128i inB, __m128i inC) {
                return _mm256_or_si256(_mm256_or_si256(pick(a, inA), pick(b, inB)), pick(c, inC));
            };
            plane[0] = gather(_mm_setr_epi8(0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1),
                              _mm_setr_epi8(-1, -1, -1, -1, -1, -1, 2, 5, 8, 11, 14, -1, -1, -1, -1, -1),
                              _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 1, 4, 7, 10, 13));
            plane[1] = gather(_mm_setr_epi8(1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1),
                              _mm_setr_epi8(-1, -1, -1, -1, -1, 0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1),
                              _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 2, 5, 8, 11, 14));
            plane[2] = gather(_mm_setr_epi8(2, 5, 8, 11, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1),
                              _mm_setr_epi8(-1, -1, -1, -1, -1, 1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1),
                              _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 3, 6, 9, 12, 15));
        } else {
            // Four pixels of a part as four bytes of each plane, then the 4 by 4 words exchanged.
            const __m256i gather =
                _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
            const __m256i a = _mm256_shuffle_epi8(part(0), gather), b = _mm256_shuffle_epi8(part(1), gather);
            const __m256i c = _mm256_shuffle_epi8(part(2), gather), d = _mm256_shuffle_epi8(part(3), gather);
            const __m256i abLow = _mm256_unpacklo_epi32(a, b), abHigh = _mm256_unpackhi_epi32(a, b);
            const __m256i cdLow = _mm256_unpacklo_epi32(c, d), cdHigh = _mm256_unpackhi_epi32(c, d);
            plane[0] = _mm256_unpacklo_epi64(abLow, cdLow);
            plane[1] = _mm256_unpackhi_epi64(abLow, cdLow);
            plane[2] = _mm256_unpacklo_epi64(abHigh, cdHigh);
            plane[3] = _mm256_unpackhi_epi64(abHigh, cdHigh);
        }
    }

    Planes here, right;
};

// 16 pixels of floats, and the one after them, channel by channel.
template <class Format>
class FloatRow {
public:
    static constexpr int kColumns = 16;

    static bool Supports(float) { return true; }

    void Load(const uint8_t* row) {
        LoadHalf(row, here[0]);
        LoadHalf(row + 8 * Format::kPixelBytes, here[1]);
        for (int c = 0; c < kSamples; ++c) {
            // Each plane, one column later.
            float last;
            std::memcpy(&last, row + kColumns * Format::kPixelBytes + c * sizeof last, sizeof last);
            const auto rotated = [](__m256 plane) {
                return _mm256_permutevar8x32_ps(plane, _mm256_setr_epi32(1, 2, 3, 4, 5, 6, 7, 0));
            };
            const __m256 second = rotated(here[1][c]);
            right[0][c] = _mm256_blend_ps(rotated(here[0][c]), second, 0x80);
            right[1][c] = _mm256_blend_ps(second, _mm256_set1_ps(last), 0x80);
        }
    }

    static ChunkFlags Compare(const FloatRow& p, const FloatRow& q, float edgeThreshold) {
        const __m256 threshold = _mm256_set1_ps(edgeThreshold);
        const auto differing = [&](const Planes& a, const Planes& b) {
            return Differing(a[0], b[0], threshold) | Differing(a[1], b[1], threshold) << 8;
        };
        return {differing(p.here, p.right), differing(p.here, q.here), differing(p.here, q.right),
                differing(p.right, q.here)};
    }

private:
    static constexpr int kSamples = Format::kPixelSize;
    using Planes = __m256[2][kSamples];  // of the first 8 columns, and of the others

    // Bit k is set where the pixels k differ; every operation as in Differs.
    static uint64_t Differing(const __m256* a, const __m256* b, __m256 threshold) {
        const auto distance = [](__m256 s, __m256 t) {
            return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), _mm256_sub_ps(s, t));
        };
        __m256 rest = threshold;
        if constexpr (Format::kExtra == 1) {
            const __m256 u = a[Format::kOpacity], v = b[Format::kOpacity];
            const __m256 opacities = _mm256_add_ps(u, v);
            rest = _mm256_sub_ps(rest, distance(u, v));
            for (int c = 0; c < Format::kChannels; ++c) {
                const __m256 half = _mm256_mul_ps(distance(a[c], b[c]), _mm256_set1_ps(0.5f));
                rest = _mm256_sub_ps(rest, _mm256_mul_ps(half, opacities));
            }
        } else {
            for (int c = 0; c < Format::kChannels; ++c) rest = _mm256_sub_ps(rest, distance(a[c], b[c]));
        }
        return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_cmp_ps(rest, _mm256_setzero_ps(), _CMP_LT_OQ)));
    }

    static __m256 LoadFloatHalves(const uint8_t* low, const uint8_t* high) {
        return _mm256_castsi256_ps(LoadHalves(low, high));
    }

    // Each half of a vector holds 4 of the pixels. Reads nothing beyond the last one.
    static void LoadHalf(const uint8_t* at, __m256* plane) {
        constexpr int kPixel = kSamples * 4;  // bytes
        constexpr int kHalf = 4 * kPixel;
        if constexpr (kSamples == 1) {
            plane[0] = LoadFloatHalves(at, at + kHalf);
        } else if constexpr (kSamples == 2) {
            const __m256 a = LoadFloatHalves(at, at + kHalf), b = LoadFloatHalves(at + 16, at + kHalf + 16);
            plane[0] = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
            plane[1] = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
        } else if constexpr (kSamples == 3) {
            // x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3
            const __m256 a = LoadFloatHalves(at, at + kHalf), b = LoadFloatHalves(at + 16, at + kHalf + 16);
            const __m256 c = LoadFloatHalves(at + 32, at + kHalf + 32);
            const __m256 xy = _mm256_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));  // x2 y2 x3 y3
            const __m256 yz = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));  // y0 z0 y1 z1
            plane[0] = _mm256_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
            plane[1] = _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
            plane[2] = _mm256_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
        } else {
            // The first four samples of each pixel, 4 by 4 exchanged.
            const auto part = [&](int pixel) {
                return LoadFloatHalves(at + pixel * kPixel, at + kHalf + pixel * kPixel);
            };
            const __m256 a = part(0), b = part(1), c = part(2), d = part(3);
            const __m256 abLow = _mm256_unpacklo_ps(a, b), abHigh = _mm256_unpackhi_ps(a, b);
            const __m256 cdLow = _mm256_unpacklo_ps(c, d), cdHigh = _mm256_unpackhi_ps(c, d);
            plane[0] = _mm256_shuffle_ps(abLow, cdLow, _MM_SHUFFLE(1, 0, 1, 0));
            plane[1] = _mm256_shuffle_ps(abLow, cdLow, _MM_SHUFFLE(3, 2, 3, 2));
            plane[2] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(1, 0, 1, 0));
            plane[3] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(3, 2, 3, 2));
            if constexpr (kSamples == 5) {
                float fifth[8];
                for (int pixel = 0; pixel < 8; ++pixel) std::memcpy(&fifth[pixel], at + pixel * kPixel + 16, 4);
                plane[4] =
                    _mm256_setr_ps(fifth[0], fifth[1], fifth[2], fifth[3], fifth[4], fifth[5], fifth[6], fifth[7]);
            }
        }
    }

    Planes here, right;
};

template <class Format, bool kIsBytes>
struct RowOf {
    using Row = FloatRow<Format>;
};
template <class Format>
struct RowOf<Format, true> {
    using Row = ByteRow<Format::kChannels>;
};

struct Avx2 {
    static constexpr bool kHasVectors = true;

    template <class Format>
    using Colors = LaneColors<Format>;
    template <class Format>
    using Row = typename RowOf<Format, Format::kBits == 8>::Row;

    template <class Format>
    using StrokeOf = ByteStroke<Format>;
    template <class Format>
    static bool AverageRow(const KernelJob& job, int32_t x, int32_t y, int32_t count, int32_t neighbourWeight) {
        return AverageByteRow<Format>(job, x, y, count, neighbourWeight);
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
