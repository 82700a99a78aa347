// The AVX2 instruction set: comparing parts of rows, mixing the colours of a pixel, and changing several pixels at
// once. Included only by files that are compiled for it.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/block/byte_rows.h"
#include "engine/block/lane_colors.h"
#include "engine/block/part_row.h"
#include "engine/block/words_avx2.h"

namespace stairmelt::inline STAIRMELT_SET {

// Two halves of a part of a row, and the pixel after it, channel by channel.
template <class Format, class Half>
class VectorRow {
public:
    static constexpr int kColumns = 2 * Half::kColumns;

    static bool Supports(EdgeThreshold<Format> threshold) { return Half::Supports(threshold); }

    void Load(const uint8_t* row) {
        constexpr int kHalfBytes = Half::kColumns * Format::kPixelBytes;
        Half::Load(row, here[0]);
        Half::Load(row + kHalfBytes, here[1]);
        const auto next = LoadSamples<Format>(row + 2 * kHalfBytes);
        for (size_t c = 0; c < next.size(); ++c) {
            right[0][c] = Half::OneLater(here[0][c], here[1][c]);
            right[1][c] = Half::OneLater(here[1][c], Half::Filled(next[c]));
        }
    }

    static ChunkFlags Compare(const VectorRow& p, const VectorRow& q, EdgeThreshold<Format> edgeThreshold) {
        const typename Half::Vector threshold = Half::Filled(edgeThreshold);
        const auto differing = [&](const Planes& a, const Planes& b) {
            return Half::Differing(a[0], b[0], threshold) | Half::Differing(a[1], b[1], threshold) << Half::kColumns;
        };
        return {differing(p.here, p.right), differing(p.here, q.here), differing(p.here, q.right),
                differing(p.right, q.here)};
    }

private:
    using Planes = typename Half::Vector[2][Format::kPixelSize];
    Planes here, right;
};

// 32 pixels at depth 8 or 16 pixels at depth 16, without opacity.
template <class Format>
struct IntegerHalf {
    static_assert(Format::kExtra == 0);
    using Vector = __m256i;
    static constexpr int kSamples = Format::kPixelSize, kSampleBytes = Format::kBits / 8, kColumns = 32 / kSampleBytes;
    static constexpr bool kIsByte = kSampleBytes == 1;

    // Sums saturate at the greatest sample, which has to be above the threshold.
    static bool Supports(int32_t threshold) { return threshold >= 0 && threshold < (1 << Format::kBits) - 1; }
    // A byte is repeated in both halves of a word.
    static __m256i Filled(int32_t value) {
        return _mm256_set1_epi16(static_cast<int16_t>(kIsByte ? value * 0x0101 : value));
    }

    // Each 16-byte lane of a vector holds half of the pixels, so that no shuffle crosses the lanes.
    static void Load(const uint8_t* at, __m256i* planes) {
        for (size_t c = 0; c < kSamples; ++c) {
            planes[c] = _mm256_setzero_si256();
            for (size_t piece = 0; piece < kSamples; ++piece) {
                const uint8_t* const places = kPlaces[c][piece].data();
                const __m256i bytes = LoadHalves(at + 16 * piece, at + 16 * (kSamples + piece));
                planes[c] = _mm256_or_si256(planes[c], _mm256_shuffle_epi8(bytes, LoadHalves(places, places)));
            }
        }
    }

    // A plane one column later, and the first column of what follows it.
    static __m256i OneLater(__m256i plane, __m256i next) {
        return _mm256_alignr_epi8(_mm256_permute2x128_si256(plane, next, 0x21), plane, kSampleBytes);
    }

    // Bit k is set where the pixels k differ.
    static uint64_t Differing(const __m256i* a, const __m256i* b, __m256i threshold) {
        const auto minus = [](__m256i s, __m256i t) {
            return kIsByte ? _mm256_subs_epu8(s, t) : _mm256_subs_epu16(s, t);
        };
        const auto distance = [&](int c) { return _mm256_or_si256(minus(a[c], b[c]), minus(b[c], a[c])); };
        __m256i sum = distance(0);
        for (int c = 1; c < kSamples; ++c)
            sum = kIsByte ? _mm256_adds_epu8(sum, distance(c)) : _mm256_adds_epu16(sum, distance(c));
        const __m256i excess = minus(sum, threshold), zero = _mm256_setzero_si256();
        if constexpr (kIsByte) {
            return ~static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(excess, zero)));
        } else {
            const __m256i words = _mm256_cmpeq_epi16(excess, zero), bytes = _mm256_packs_epi16(words, zero);
            const uint32_t isWithin = static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
            return ~(isWithin | isWithin >> 8) & 0xFFFF;
        }
    }

private:
    // By plane and 16-byte piece, for shuffle_epi8: where in the piece each byte of the plane's lane is, or kElsewhere,
    // which gives zero.
    using Places = std::array<std::array<std::array<uint8_t, 16>, kSamples>, kSamples>;
    static constexpr Places kPlaces = [] {
        constexpr uint8_t kElsewhere = 0x80;
        Places places{};
        for (size_t i = 0; i < 16 * kSamples * kSamples; ++i) {
            const size_t plane = i % kSamples, k = i / kSamples % 16, piece = i / kSamples / 16;
            const size_t byte = (k / kSampleBytes * kSamples + plane) * kSampleBytes + k % kSampleBytes;
            places[plane][piece][k] = byte / 16 == piece ? static_cast<uint8_t>(byte % 16) : kElsewhere;
        }
        return places;
    }();
};

// 8 pixels of floats.
template <class Format>
struct FloatHalf {
    using Vector = __m256;
    static constexpr int kSamples = Format::kPixelSize;
    static constexpr int kColumns = 8;

    static bool Supports(float) { return true; }
    static __m256 Filled(float value) { return _mm256_set1_ps(value); }

    // Each lane of a vector holds 4 of the pixels. Reads nothing beyond the pixel after them.
    static void Load(const uint8_t* at, __m256* planes) {
        const auto load = [&](int offset) {
            return _mm256_castsi256_ps(LoadHalves(at + offset, at + 4 * Format::kPixelBytes + offset));
        };
        if constexpr (kSamples == 1) {
            planes[0] = load(0);
        } else {
            // Four samples from each pixel's first one on, 4 by 4 exchanged.
            const __m256 a = load(0), b = load(Format::kPixelBytes);
            const __m256 c = load(2 * Format::kPixelBytes), d = load(3 * Format::kPixelBytes);
            const __m256 abLow = _mm256_unpacklo_ps(a, b), abHigh = _mm256_unpackhi_ps(a, b);
            const __m256 cdLow = _mm256_unpacklo_ps(c, d), cdHigh = _mm256_unpackhi_ps(c, d);
            planes[0] = _mm256_shuffle_ps(abLow, cdLow, _MM_SHUFFLE(1, 0, 1, 0));
            planes[1] = _mm256_shuffle_ps(abLow, cdLow, _MM_SHUFFLE(3, 2, 3, 2));
            if constexpr (kSamples > 2) planes[2] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(1, 0, 1, 0));
            if constexpr (kSamples > 3) planes[3] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(3, 2, 3, 2));
            if constexpr (kSamples > 4) {
                float fifth[kColumns];
                for (int i = 0; i < kColumns; ++i) std::memcpy(&fifth[i], at + i * Format::kPixelBytes + 16, 4);
                planes[4] = _mm256_loadu_ps(fifth);
            }
        }
    }

    static __m256 OneLater(__m256 plane, __m256 next) {
        const __m256 firstIsNext = _mm256_blend_ps(plane, next, 1);
        return _mm256_permutevar8x32_ps(firstIsNext, _mm256_setr_epi32(1, 2, 3, 4, 5, 6, 7, 0));
    }

    // Every operation as in Differs.
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
};

struct Avx2 {
    using Words = FourWords;
    static constexpr bool kHasVectors = true;

    // A single colour gains nothing from lanes.
    template <class Format>
    using Colors = std::conditional_t<(Format::kChannels > 1), LaneColors<Format>, SampleColors<Format>>;
    template <class Format>
    using Row = VectorRow<Format, std::conditional_t<Format::kBits == 32, FloatHalf<Format>, IntegerHalf<Format>>>;
    template <class Format>
    using StrokeOf = ByteStroke<Format>;
    template <class Format>
    static bool AverageRow(const KernelJob& job, int32_t x, int32_t y, int32_t count, int32_t neighbourWeight) {
        return AverageByteRow<Format>(job, x, y, count, neighbourWeight);
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
