// The colours of a pixel in the four lanes of a vector, mixed at once: the vector form of SampleColors (mix.h), with
// the same result to the bit. Lanes hold 32 bits, wrap as SampleColors does, and are truncated to a sample by keeping
// the low bits. Included only by files that are compiled for AVX2.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/pixel_format.h"
#include "engine/rules/arith.h"

namespace stairmelt::inline STAIRMELT_SET {

// Loads kBytes bytes into the low end of a vector, without reading beyond them.
template <int kBytes>
__m128i LoadBytes(const uint8_t* at) {
    const auto part = [&]<class Word>(Word word, int offset) {
        std::memcpy(&word, at + offset, sizeof word);
        return word;
    };
    if constexpr (kBytes == 2) return _mm_cvtsi32_si128(part(uint16_t{}, 0));
    if constexpr (kBytes == 3) return _mm_cvtsi32_si128(part(uint16_t{}, 0) | part(uint8_t{}, 2) << 16);
    if constexpr (kBytes == 4) return _mm_cvtsi32_si128(part(int32_t{}, 0));
    if constexpr (kBytes == 6) return _mm_insert_epi16(_mm_cvtsi32_si128(part(int32_t{}, 0)), part(uint16_t{}, 4), 2);
    if constexpr (kBytes == 8) return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at));
    if constexpr (kBytes == 12) {
        return _mm_insert_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)), part(int32_t{}, 8), 2);
    }
    if constexpr (kBytes == 16) return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

template <int kBytes>
void StoreBytes(uint8_t* at, __m128i bytes) {
    const auto put = [&]<class Word>(Word word, int offset) { std::memcpy(at + offset, &word, sizeof word); };
    if constexpr (kBytes == 2 || kBytes == 3) put(static_cast<uint16_t>(_mm_cvtsi128_si32(bytes)), 0);
    if constexpr (kBytes == 3) put(static_cast<uint8_t>(_mm_extract_epi8(bytes, 2)), 2);
    if constexpr (kBytes == 4 || kBytes == 6) put(_mm_cvtsi128_si32(bytes), 0);
    if constexpr (kBytes == 6) put(static_cast<uint16_t>(_mm_extract_epi16(bytes, 2)), 4);
    if constexpr (kBytes == 8 || kBytes == 12) _mm_storel_epi64(reinterpret_cast<__m128i*>(at), bytes);
    if constexpr (kBytes == 12) put(_mm_extract_epi32(bytes, 2), 8);
    if constexpr (kBytes == 16) _mm_storeu_si128(reinterpret_cast<__m128i*>(at), bytes);
}

// Each lane divided by 65535, truncated toward zero. Exact for every value: for 0 <= x <= 2^31 the quotient is
// (x + 1 + (x >> 16)) >> 16.
inline __m128i DivideBy65535(__m128i lanes) {
    const __m128i x = _mm_abs_epi32(lanes);  // 2^31 is unchanged; the code below treats it as unsigned
    const __m128i sum = _mm_add_epi32(_mm_add_epi32(x, _mm_set1_epi32(1)), _mm_srli_epi32(x, 16));
    return _mm_sign_epi32(_mm_srli_epi32(sum, 16), lanes);
}

// Eight samples moved toward others by weights from 0 to 65535. Exact: with d the distance of the two and w the weight
// of the greater one, the mix is the lesser one and floor(d * w / 65535); with d * w = high * 65536 + low that is high,
// or one more if high + low reaches 65535.
inline __m128i MixWords(__m128i samples, __m128i targets, __m128i weights) {
    const __m128i lesser = _mm_min_epi16(samples, targets);
    const __m128i distance = _mm_sub_epi16(_mm_max_epi16(samples, targets), lesser);
    // The weight, or 65535 minus it.
    const __m128i ofGreater = _mm_xor_si128(weights, _mm_cmpgt_epi16(samples, targets));
    const __m128i high = _mm_mulhi_epu16(distance, ofGreater);
    const __m128i low = _mm_mullo_epi16(distance, ofGreater);
    const __m128i carry = _mm_cmpeq_epi16(_mm_adds_epu16(high, low), _mm_set1_epi16(-1));
    return _mm_sub_epi16(_mm_add_epi16(lesser, high), carry);
}

// By the type of weights.
__m128i LanesOf(int32_t);
__m128 LanesOf(float);

template <class Format>
struct LaneColors {
    static constexpr bool kIsFloat = std::is_floating_point_v<typename Format::Weight>;
    static constexpr int kBytes = Format::kChannels * static_cast<int>(sizeof(typename Format::Sample));
    using Weight = typename Format::Weight;
    using Lanes = decltype(LanesOf(Weight{}));
    using Sums = __m128;
    Lanes lanes;

    static LaneColors Load(const uint8_t* at) {
        const __m128i bytes = LoadBytes<kBytes>(at);
        if constexpr (Format::kBits == 8) {
            return {_mm_cvtepu8_epi32(bytes)};
        } else if constexpr (Format::kBits == 16) {
            return {_mm_cvtepu16_epi32(bytes)};
        } else {
            return {_mm_castsi128_ps(bytes)};
        }
    }
    void Store(uint8_t* at) const {
        if constexpr (Format::kBits == 8) {
            const __m128i lowBytes = _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
            StoreBytes<kBytes>(at, _mm_shuffle_epi8(lanes, lowBytes));
        } else if constexpr (Format::kBits == 16) {
            const __m128i lowWords = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1);
            StoreBytes<kBytes>(at, _mm_shuffle_epi8(lanes, lowWords));
        } else {
            StoreBytes<kBytes>(at, _mm_castps_si128(lanes));
        }
    }

    static LaneColors Mix(const LaneColors& a, const LaneColors& b, Weight weight) {
        if constexpr (kIsFloat) {
            return {
                _mm_add_ps(_mm_mul_ps(_mm_set1_ps(1.0f - weight), a.lanes), _mm_mul_ps(_mm_set1_ps(weight), b.lanes))};
        } else {
            if constexpr (Format::kBits == 8) {
                if (weight >= 0 && weight <= Format::kWhole) {  // the upper half of each lane is 0, and stays it
                    return {MixWords(a.lanes, b.lanes, _mm_set1_epi16(static_cast<int16_t>(weight)))};
                }
            }
            return {DivideBy65535(Weigh(a, b, weight))};
        }
    }
    static LaneColors MixToNearest(const LaneColors& a, const LaneColors& b, int32_t weight) {
        return {DivideBy65535(_mm_add_epi32(Weigh(a, b, weight), _mm_set1_epi32(32768)))};
    }

    Sums Weighted(Weight weight) const {
        if constexpr (kIsFloat) {
            return Scaled(weight);
        } else {
            return _mm_cvtepi32_ps(_mm_mullo_epi32(lanes, _mm_set1_epi32(weight)));
        }
    }
    Sums Scaled(float factor) const {
        Sums sums;
        if constexpr (kIsFloat) {
            sums = lanes;
        } else {
            sums = _mm_cvtepi32_ps(lanes);
        }
        return _mm_mul_ps(sums, _mm_set1_ps(factor));
    }
    static Sums Add(Sums a, Sums b) { return _mm_add_ps(a, b); }
    static Sums Add(float a, Sums b) { return _mm_add_ps(_mm_set1_ps(a), b); }
    static LaneColors Quotient(Sums sums, float divisor) {
        const __m128 quotients = _mm_div_ps(sums, _mm_set1_ps(divisor));
        if constexpr (kIsFloat) {
            return {quotients};
        } else {
            return {_mm_cvttps_epi32(quotients)};  // as TruncateToInt
        }
    }

private:
    static __m128i Weigh(const LaneColors& a, const LaneColors& b, int32_t weight) {
        return _mm_add_epi32(_mm_mullo_epi32(a.lanes, _mm_set1_epi32(WrapSub(IntegerWeights::kWhole, weight))),
                             _mm_mullo_epi32(b.lanes, _mm_set1_epi32(weight)));
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
