// Mixes all colours of a pixel at once, in the four lanes of a vector: what mix.h and isolated_pixel.h do one sample
// after the other, with the same result to the bit. Lanes hold 32 bits, wrap as the plain form does, and are truncated
// to a sample by keeping the low bits. Where a float isn't a number, the result isn't either; which of several such
// values comes out is left to the machine, as it is in the plain form.
//
// Needs SSE 4.1: included only by files that are compiled for an instruction set that has it.
#pragma once

#include <smmintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/arith.h"
#include "engine/image.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Weight>
struct LanesOf {
    using Lanes = __m128i;
};
template <>
struct LanesOf<float> {
    using Lanes = __m128;
};

// The colours of a pixel, channel c in lane c, and its opacity where the format has one.
template <class Format>
struct LanePixel : LanesOf<typename Format::Weight> {
    static constexpr bool kIsFloat = std::is_floating_point_v<typename Format::Sample>;
    typename LanesOf<typename Format::Weight>::Lanes colors;
    typename Format::Weight opacity;
};

// kBytes bytes in the low end of a vector, without touching what lies behind them.
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

template <class Format>
constexpr int kColorBytes = Format::kChannels* static_cast<int>(sizeof(typename Format::Sample));

template <class Format>
typename LanePixel<Format>::Lanes LoadColors(const uint8_t* at) {
    const __m128i bytes = LoadBytes<kColorBytes<Format>>(at);
    if constexpr (Format::kBits == 8) {
        return _mm_cvtepu8_epi32(bytes);
    } else if constexpr (Format::kBits == 16) {
        return _mm_cvtepu16_epi32(bytes);
    } else {
        return _mm_castsi128_ps(bytes);
    }
}

template <class Format>
void StoreColors(uint8_t* at, typename LanePixel<Format>::Lanes colors) {
    if constexpr (Format::kBits == 8) {
        const __m128i lowBytes = _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
        StoreBytes<kColorBytes<Format>>(at, _mm_shuffle_epi8(colors, lowBytes));
    } else if constexpr (Format::kBits == 16) {
        const __m128i lowWords = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1);
        StoreBytes<kColorBytes<Format>>(at, _mm_shuffle_epi8(colors, lowWords));
    } else {
        StoreBytes<kColorBytes<Format>>(at, _mm_castps_si128(colors));
    }
}

template <class Format>
typename Format::Weight LoadOpacity(const uint8_t* at) {
    typename Format::Sample sample;
    std::memcpy(&sample, at + kColorBytes<Format>, sizeof sample);
    return sample;
}

template <class Format>
void StoreOpacity(uint8_t* at, typename Format::Sample sample) {
    std::memcpy(at + kColorBytes<Format>, &sample, sizeof sample);
}

template <class Format>
LanePixel<Format> LoadLanePixel(const uint8_t* at) {
    LanePixel<Format> pixel;
    pixel.colors = LoadColors<Format>(at);
    pixel.opacity = 0;
    if constexpr (Format::kExtra == 1) pixel.opacity = LoadOpacity<Format>(at);
    return pixel;
}

// Each lane divided by 65535, truncated toward zero. Exact for every value: for 0 <= x <= 2^31 the quotient is
// (x + 1 + (x >> 16)) >> 16.
inline __m128i DivideBy65535(__m128i lanes) {
    const __m128i x = _mm_abs_epi32(lanes);  // 2^31 stays as it is, and all that follows takes it as unsigned
    const __m128i sum = _mm_add_epi32(_mm_add_epi32(x, _mm_set1_epi32(1)), _mm_srli_epi32(x, 16));
    return _mm_sign_epi32(_mm_srli_epi32(sum, 16), lanes);
}

// `a` moved toward `b`, not yet divided.
inline __m128i WeighLanes(__m128i a, __m128i b, int32_t weight) {
    return _mm_add_epi32(_mm_mullo_epi32(a, _mm_set1_epi32(WrapSub(IntegerWeights::kWhole, weight))),
                         _mm_mullo_epi32(b, _mm_set1_epi32(weight)));
}

inline __m128i MixLanes(__m128i a, __m128i b, int32_t weight) { return DivideBy65535(WeighLanes(a, b, weight)); }

inline __m128 MixLanes(__m128 a, __m128 b, float weight) {
    return _mm_add_ps(_mm_mul_ps(_mm_set1_ps(1.0f - weight), a), _mm_mul_ps(_mm_set1_ps(weight), b));
}

// The mix of two pixels whose opacities differ.
template <class Format>
void MixUnlikeOpacities(uint8_t* at, const LanePixel<Format>& toward, typename Format::Weight opacity,
                        typename Format::Weight weight) {
    if constexpr (LanePixel<Format>::kIsFloat) {
        const float kept = (1.0f - weight) * opacity;
        const float taken = toward.opacity * weight;
        if (toward.opacity != 0.0f && !(opacity == 0.0f && weight == 0.0f)) {
            const float share = 1.0f / (kept / taken + 1.0f);
            StoreColors<Format>(at, MixLanes(LoadColors<Format>(at), toward.colors, share));
        }
        StoreOpacity<Format>(at, kept + taken);
    } else {
        using Sample = typename Format::Sample;
        const int32_t kept = WrapMul(opacity, WrapSub(Format::kWhole, weight));
        if (toward.opacity == 0) return StoreOpacity<Format>(at, LowBits<Sample>(kept / Format::kWhole));
        const int32_t taken = WrapMul(toward.opacity, weight);
        if (kept != 0 || taken != 0) {
            const float ratio = static_cast<float>(kept) / static_cast<float>(taken);
            const int32_t share = TruncateToInt(65535.0f / (ratio + 1.0f));
            const __m128i mixed = WeighLanes(LoadColors<Format>(at), toward.colors, share);
            StoreColors<Format>(at, DivideBy65535(_mm_add_epi32(mixed, _mm_set1_epi32(32768))));
        }
        StoreOpacity<Format>(at, LowBits<Sample>(WrapAdd(kept, taken) / Format::kWhole));
    }
}

// Moves the pixel at `at` toward another.
template <class Format>
void MixLanePixelAt(uint8_t* at, const LanePixel<Format>& toward, typename Format::Weight weight) {
    if constexpr (Format::kExtra == 1) {
        const auto opacity = LoadOpacity<Format>(at);
        if (opacity != toward.opacity) return MixUnlikeOpacities<Format>(at, toward, opacity, weight);
    }
    StoreColors<Format>(at, MixLanes(LoadColors<Format>(at), toward.colors, weight));
}

// The colours of a neighbour or of the pixel itself, weighted for an average.
template <class Format>
__m128 WeightedColors(const uint8_t* at, typename Format::Weight weight) {
    if constexpr (LanePixel<Format>::kIsFloat) {
        return _mm_mul_ps(_mm_set1_ps(weight), LoadColors<Format>(at));
    } else {
        return _mm_cvtepi32_ps(_mm_mullo_epi32(LoadColors<Format>(at), _mm_set1_epi32(weight)));
    }
}

template <class Format>
__m128 FloatColors(const uint8_t* at) {
    if constexpr (LanePixel<Format>::kIsFloat) {
        return LoadColors<Format>(at);
    } else {
        return _mm_cvtepi32_ps(LoadColors<Format>(at));
    }
}

template <class Format>
void StoreAverage(uint8_t* at, __m128 colors) {
    if constexpr (LanePixel<Format>::kIsFloat) {
        StoreColors<Format>(at, colors);
    } else {
        StoreColors<Format>(at, _mm_cvttps_epi32(colors));  // as TruncateToInt
    }
}

// The average of a lone pixel and its neighbours.
template <class Format>
void AverageLanePixel(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                      typename Format::Weight neighbourWeight) {
    __m128 values = _mm_setzero_ps();
    float weights = 0.0f;
    const uint8_t* const neighbour = PixelAt<Format>(source, x, y);
    uint8_t* const at = PixelAt<Format>(destination, x, y);
    const auto forEachNeighbour = [&](auto visit) {
        if (x > 0) visit(neighbour - Format::kPixelBytes);
        if (x < source.width - 1) visit(neighbour + Format::kPixelBytes);
        if (y > 0) visit(neighbour - static_cast<ptrdiff_t>(source.rowStride));
        if (y < source.height - 1) visit(neighbour + static_cast<ptrdiff_t>(source.rowStride));
    };
    if constexpr (Format::kExtra == 0) {
        forEachNeighbour([&](const uint8_t* from) {
            weights += static_cast<float>(neighbourWeight);
            values = _mm_add_ps(values, WeightedColors<Format>(from, neighbourWeight));
        });
        if (!(weights > 0.0f)) return;
        weights += static_cast<float>(Format::kWhole);
        values = _mm_add_ps(values, WeightedColors<Format>(at, Format::kWhole));
        StoreAverage<Format>(at, _mm_div_ps(values, _mm_set1_ps(weights)));
    } else {
        constexpr bool kRounds = !LanePixel<Format>::kIsFloat;
        const float weight = static_cast<float>(neighbourWeight) / static_cast<float>(Format::kWhole);
        float opacities = 0.0f;
        forEachNeighbour([&](const uint8_t* from) {
            const float share = static_cast<float>(LoadOpacity<Format>(from)) * weight;
            weights += weight;
            opacities += share;
            values = _mm_add_ps(values, _mm_mul_ps(FloatColors<Format>(from), _mm_set1_ps(share)));
        });
        if (!(weights > 0.0f)) return;
        weights += 1.0f;
        const float opacity = static_cast<float>(LoadOpacity<Format>(at));
        opacities += opacity;
        values = _mm_add_ps(values, _mm_mul_ps(FloatColors<Format>(at), _mm_set1_ps(opacity)));
        if constexpr (kRounds) {
            const int32_t average = TruncateToInt((weights * 0.5f + opacities) / weights);
            StoreOpacity<Format>(
                at, LowBits<typename Format::Sample>(average > Format::kOpaque ? Format::kOpaque : average));
        } else {
            StoreOpacity<Format>(at, opacities / weights);
        }
        if (opacities == 0.0f) return;
        if constexpr (kRounds) values = _mm_add_ps(_mm_set1_ps(opacities * 0.5f), values);
        StoreAverage<Format>(at, _mm_div_ps(values, _mm_set1_ps(opacities)));
    }
}

}  // namespace stairmelt::inline STAIRMELT_SET
