// Changes several pixels at once, at depth 8 without opacity, with AVX2. The result equals that of changing one pixel
// after the other. Included only by files that are compiled for AVX2.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "engine/block/action.h"
#include "engine/block/lane_colors.h"
#include "engine/block/ramp_cache.h"
#include "engine/image.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

// A stroke that mixes two pixels at once, in a vector of eight samples of 16 bits, four for each pixel. Samples that a
// pixel doesn't have stay unchanged. Pixels of three bytes are loaded and stored together with the next pixel's first
// byte; storing the left one first keeps that byte correct. A stroke to the left is turned for that: `to` leads to the
// left pixel of two, `advance` to the right one, and only `toNext` to the left.
template <class Format>
class ByteStroke : Stroke {
public:
    ByteStroke() = default;
    explicit ByteStroke(const Stroke& stroke) : Stroke(stroke), toNext(2 * advance), fromNext(2 * fromAdvance) {
        const bool isLeft = stroke.advance == -kBytes && stroke.fromAdvance == 0;
        if (isLeft) {
            to += advance;
            advance = -advance;
        }
        for (int i = 0; i < 16; ++i) {
            const int pixel = i / 8, sample = i / 2 % 4;
            // A stroke of a single pixel holds it twice, with the same weight.
            const int weight = stroke.advance == 0 ? 0 : isLeft ? 1 - pixel : pixel;
            spread[i] = static_cast<int8_t>(sample < kBytes ? 2 * weight + i % 2 : -1);
        }
    }

    // Applies a ramp whose weights are in range. A pixel beyond the ramp's end may be stored unchanged.
    void Mix(uint8_t* pixel, const uint8_t* fromPixel, const CachedRamp<IntegerWeights>& ramp) const {
        uint8_t* at = pixel + to;
        const uint8_t* target = fromPixel + from;
        const __m128i places = _mm_loadu_si128(reinterpret_cast<const __m128i*>(spread));
        int32_t i = 0;
        do {
            const __m128i weights = LoadBytes<8>(reinterpret_cast<const uint8_t*>(ramp.weights + i));
            const __m128i words = _mm_shuffle_epi8(_mm_packus_epi32(weights, weights), places);
            const __m128i mixed = MixWords(LoadPair(at, advance), LoadPair(target, fromAdvance), words);
            const __m128i bytes = _mm_packus_epi16(mixed, mixed);
            Store(at, _mm_cvtsi128_si32(bytes));
            Store(at + advance, _mm_extract_epi32(bytes, 1));
            at += toNext;
            target += fromNext;
        } while ((i += 2) < ramp.count);
    }

private:
    static constexpr int kBytes = Format::kPixelBytes;
    static constexpr size_t kStoredBytes = kBytes == 3 ? 4 : kBytes;

    static __m128i LoadPair(const uint8_t* at, ptrdiff_t step) {
        const auto load = [](const uint8_t* pixel) {
            int32_t bytes = 0;
            std::memcpy(&bytes, pixel, kStoredBytes);
            return bytes;
        };
        return _mm_cvtepu8_epi16(_mm_insert_epi32(_mm_cvtsi32_si128(load(at)), load(at + step), 1));
    }
    static void Store(uint8_t* at, int32_t bytes) { std::memcpy(at, &bytes, kStoredBytes); }

    ptrdiff_t toNext, fromNext;  // to the next two
    int8_t spread[16];           // for shuffle_epi8: each sample's weight, of two weights of 16 bits
};

// Averages a row of neighbouring isolated pixels (isolated_pixel.h). Returns false without changing anything at the
// image's border or for a weight out of range.
template <class Format>
bool AverageByteRow(const KernelJob& job, int32_t x, int32_t y, int32_t count, int32_t neighbourWeight) {
    const ImageView& source = *job.source;
    constexpr int kAtOnce = 8;  // samples
    const int32_t samples = count * Format::kPixelSize;
    // Loads beyond the last pixel stay within its rows.
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
    const ptrdiff_t pixel = Format::kPixelBytes, row = source.rowStride;
    const ptrdiff_t neighbours[] = {-pixel, pixel, -row, row};
    const uint8_t* const from = PixelAt<Format>(source, x, y);
    uint8_t* const to = PixelAt<Format>(*job.destination, x, y);
    for (int32_t i = 0; i < samples; i += kAtOnce) {
        const uint8_t* const at = from + i;
        __m256 values = _mm256_setzero_ps();
        for (const ptrdiff_t neighbour : neighbours) {
            values = _mm256_add_ps(values, _mm256_mul_ps(load(at + neighbour), weight));
        }
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
