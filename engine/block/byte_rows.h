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

// A stroke that mixes four pixels at once, in a vector of 16 samples of 16 bits, four for each pixel. Samples that a
// pixel doesn't have stay unchanged. Pixels of three bytes are loaded and stored together with the next pixel's first
// byte; storing them from left to right keeps that byte correct. A stroke to the left is turned for that: `to` leads to
// the leftmost pixel of four, and `advance` to the right.
template <class Format>
class ByteStroke : Stroke {
public:
    ByteStroke() = default;
    explicit ByteStroke(const Stroke& stroke)
        : Stroke(stroke), toNext(kPixels * advance), fromNext(kPixels * fromAdvance) {
        const bool isLeft = stroke.advance == -kBytes && stroke.fromAdvance == 0;
        if (isLeft) {
            to += (kPixels - 1) * advance;
            advance = -advance;
        }
        toPair = isLeft ? (kPixels - kPair) * advance : 0;
        pairSpread = isLeft ? 8 * (kPixels - kPair) : 0;
        for (int i = 0; i < 32; ++i) {
            const int pixel = i / 8, sample = i / 2 % 4;
            // A stroke of a single pixel holds it four times, with the same weight.
            const int weight = stroke.advance == 0 ? 0 : isLeft ? kPixels - 1 - pixel : pixel;
            spread[i] = static_cast<int8_t>(sample < kBytes ? 2 * weight + i % 2 : -1);
        }
    }

    // Applies a ramp whose weights are in range. Up to three pixels beyond the ramp's end are stored unchanged.
    void Mix(uint8_t* pixel, const uint8_t* fromPixel, const CachedRamp<IntegerWeights>& ramp) const {
        uint8_t* at = pixel + to;
        const uint8_t* target = fromPixel + from;
        if (ramp.count <= kPair) return MixPixels<kPair>(at + toPair, target, ramp.weights, spread + pairSpread);
        for (int32_t i = 0; i < ramp.count; i += kPixels) {
            MixPixels<kPixels>(at, target, ramp.weights + i, spread);
            at += toNext;
            target += fromNext;
        }
    }

private:
    static constexpr int kPixels = 4, kPair = 2;
    static constexpr int kBytes = Format::kPixelBytes;
    static constexpr size_t kStoredBytes = kBytes == 3 ? 4 : kBytes;

    template <int kCount>
    void MixPixels(uint8_t* at, const uint8_t* target, const int32_t* weights, const int8_t* spreading) const {
        const __m128i some = LoadBytes<4 * kCount>(reinterpret_cast<const uint8_t*>(weights));
        const __m256i words = _mm256_broadcastsi128_si256(_mm_packus_epi32(some, some));
        const __m256i places = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(spreading));
        const __m256i mixed =
            MixWords(Load<kCount>(at, advance), Load<kCount>(target, fromAdvance), _mm256_shuffle_epi8(words, places));
        const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(mixed), _mm256_extracti128_si256(mixed, 1));
        Store(at, _mm_cvtsi128_si32(bytes));
        Store(at + advance, _mm_extract_epi32(bytes, 1));
        if constexpr (kCount == kPixels) {
            Store(at + 2 * advance, _mm_extract_epi32(bytes, 2));
            Store(at + 3 * advance, _mm_extract_epi32(bytes, 3));
        }
    }

    template <int kCount>
    static __m256i Load(const uint8_t* at, ptrdiff_t step) {
        const auto load = [&](int pixel) {
            int32_t bytes = 0;
            if (pixel < kCount) std::memcpy(&bytes, at + pixel * step, kStoredBytes);
            return bytes;
        };
        return _mm256_cvtepu8_epi16(_mm_setr_epi32(load(0), load(1), load(2), load(3)));
    }
    static void Store(uint8_t* at, int32_t bytes) { std::memcpy(at, &bytes, kStoredBytes); }

    ptrdiff_t toNext, fromNext;    // to the next four
    ptrdiff_t toPair, pairSpread;  // for a ramp of at most two pixels: from `to` and in `spread` to what they have
    int8_t spread[48] = {};        // for shuffle_epi8: each sample's weight, of eight weights of 16 bits
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
