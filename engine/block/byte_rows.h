// Changes neighbouring pixels of a row at once, at depth 8 without opacity, with AVX2. The results are those of
// changing one pixel after the other, to the bit. Included only by files that are compiled for AVX2.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "engine/block/lane_colors.h"
#include "engine/block/ramp_cache.h"
#include "engine/block/words_avx2.h"
#include "engine/image.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

// How a ramp's pixels lie in a vector of 16 samples of 16 bits: in order where the walk goes right (kDx 1), reversed
// and at the end of the vector where it goes left (kDx -1), so that the next pixel of the walk is always outside.
template <class Format, int kDx>
struct RowLayout {
    static constexpr int kSamples = Format::kPixelSize;
    static constexpr int kBytes = kSamples == 1 ? 8 : 16;       // of the row, loaded and stored at once
    static constexpr int kPixels = kBytes / kSamples;           // mixed at once; at most 8
    static constexpr int kSpare = kBytes - kPixels * kSamples;  // bytes behind the last pixel, stored as they are

    // A pattern for shuffle_epi8 in each half of a vector.
    struct Shuffle {
        int8_t bytes[32];

        __m256i Of(__m128i from) const {
            return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(from),
                                       _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)));
        }
    };

    // 16 bits for each sample, by its pixel's place in the walk and its own in the pixel. Spare samples are 0.
    template <class Place>
    static constexpr Shuffle ShuffleBy(Place place) {
        Shuffle shuffle{};
        for (int i = 0; i < 16; ++i) {
            const int inWalk = kDx > 0 ? i : i - kSpare;
            const bool isSpare = inWalk < 0 || inWalk >= kPixels * kSamples;
            const int pixel = kDx > 0 ? inWalk / kSamples : kPixels - 1 - inWalk / kSamples;
            for (int half = 0; half < 2; ++half) {
                const int from = isSpare ? -1 : place(pixel, inWalk % kSamples, half);
                shuffle.bytes[2 * i + half] = static_cast<int8_t>(from);
            }
        }
        return shuffle;
    }
    static constexpr Shuffle kTargets = ShuffleBy([](int, int sample, int half) { return half == 0 ? sample : -1; });
    static constexpr Shuffle kWeights = ShuffleBy([](int pixel, int, int half) { return 2 * pixel + half; });
};

// Walks a ramp whose weights are in range along a row, from the pixel at `to` on, toward the pixel at `from`. Pixels
// that are up to 16 columns away are loaded and stored.
template <class Format, int kDx>
void MixByteRow(uint8_t* to, const uint8_t* from, const CachedRamp<IntegerWeights>& ramp) {
    using Layout = RowLayout<Format, kDx>;
    const __m256i targets = Layout::kTargets.Of(LoadBytes<Layout::kSamples>(from));
    for (int32_t i = 0; i < ramp.count; i += Layout::kPixels) {
        const auto* const weights = reinterpret_cast<const __m128i*>(ramp.weights + i);
        const __m128i eight = _mm_packus_epi32(_mm_loadu_si128(weights), _mm_loadu_si128(weights + 1));
        const ptrdiff_t offset = kDx > 0 ? i * Layout::kSamples : (1 - i) * Layout::kSamples - Layout::kBytes;
        uint8_t* const at = to + offset;
        const __m256i samples = _mm256_cvtepu8_epi16(LoadBytes<Layout::kBytes>(at));
        const __m256i mixed = MixWords(samples, targets, Layout::kWeights.Of(eight));
        StoreBytes<Layout::kBytes>(at,
                                   _mm_packus_epi16(_mm256_castsi256_si128(mixed), _mm256_extracti128_si256(mixed, 1)));
    }
}

// Averages neighbouring pixels of which each is isolated (isolated_pixel.h). Returns false, having changed nothing, at
// the image's border or for a weight out of range.
template <class Format>
bool AverageByteRow(const KernelJob& job, int32_t x, int32_t y, int32_t count, int32_t neighbourWeight) {
    const ImageView& source = *job.source;
    constexpr int kAtOnce = 8;  // samples
    const int32_t samples = count * Format::kPixelSize;
    // What is loaded behind the last pixel lies in the same rows.
    const bool isInside = x > 0 && y > 0 && y < source.height - 1 && x + count + kAtOnce < source.width;
    if (!isInside || neighbourWeight <= 0 || neighbourWeight > IntegerWeights::kWhole) return false;

    const auto load = [](const uint8_t* at) {
        return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at))));
    };
    // A product of a byte and a weight is exact in a float.
    const __m256 weight = _mm256_set1_ps(static_cast<float>(neighbourWeight));
    const float ofFour = 4.0f * static_cast<float>(neighbourWeight);  // exact, as each sum on the way to it
    const __m256 sum = _mm256_set1_ps(ofFour + static_cast<float>(IntegerWeights::kWhole));
    const __m256 whole = _mm256_set1_ps(static_cast<float>(IntegerWeights::kWhole));
    const uint8_t* const from = PixelAt<Format>(source, x, y);
    uint8_t* const to = PixelAt<Format>(*job.destination, x, y);
    for (int32_t i = 0; i < samples; i += kAtOnce) {
        const uint8_t* const at = from + i;
        __m256 values = _mm256_mul_ps(load(at - Format::kPixelBytes), weight);
        values = _mm256_add_ps(values, _mm256_mul_ps(load(at + Format::kPixelBytes), weight));
        values = _mm256_add_ps(values, _mm256_mul_ps(load(at - static_cast<ptrdiff_t>(source.rowStride)), weight));
        values = _mm256_add_ps(values, _mm256_mul_ps(load(at + static_cast<ptrdiff_t>(source.rowStride)), weight));
        values = _mm256_add_ps(values, _mm256_mul_ps(load(to + i), whole));
        const __m256i averages = _mm256_cvttps_epi32(_mm256_div_ps(values, sum));
        const __m128i words = _mm_packus_epi32(_mm256_castsi256_si128(averages), _mm256_extracti128_si256(averages, 1));
        const __m128i bytes = _mm_packus_epi16(words, words);
        if (i + kAtOnce <= samples) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(to + i), bytes);
        } else {
            uint64_t rest;
            _mm_storel_epi64(reinterpret_cast<__m128i*>(&rest), bytes);
            std::memcpy(to + i, &rest, static_cast<size_t>(samples - i));
        }
    }
    return true;
}

}  // namespace stairmelt::inline STAIRMELT_SET
