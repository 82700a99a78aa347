// A part of a chunk: 16 neighbouring pixels of a row, laid out channel by channel to be compared at once: loops run
// over columns with a constant count, and compilers turn them into vector instructions. An instruction set may provide
// something faster with the same flags (avx2.h).
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/pixel_format.h"
#include "engine/rules/arith.h"
#include "engine/rules/cell_builder.h"

namespace stairmelt::inline STAIRMELT_SET {

// The flags of a chunk, column k in bit k, with every diagonal tested.
struct ChunkFlags {
    uint64_t r, d, x, a;
};

// The type in which a part is compared: the narrowest that holds every sum, for the most columns per instruction.
template <class Format>
using PartValue =
    std::conditional_t<Format::kBits == 8, int16_t, std::conditional_t<Format::kBits == 16, int32_t, float>>;

// A threshold in that type. Thresholds beyond any distance are clamped, so that no sum overflows. At 16 bits, distances
// of samples out of range wrap, and may be negative.
template <class Format>
PartValue<Format> PartThreshold(EdgeThreshold<Format> threshold) {
    if constexpr (Format::kBits == 32) {
        return threshold;
    } else {
        constexpr int32_t kMax = Format::kBits == 8 ? 1 << 14 : 1 << 20;
        return static_cast<PartValue<Format>>(std::clamp(threshold, -kMax, kMax));
    }
}

// Bit mask of the columns with negative values; -0.0 does not count as negative.
template <class Value>
uint64_t NegativeColumns(const Value (&values)[16]) {
    const auto* const at = reinterpret_cast<const __m128i*>(values);
    if constexpr (sizeof(Value) == 2) {
        // Saturation keeps the sign.
        return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(_mm_loadu_si128(at), _mm_loadu_si128(at + 1))));
    } else {
        uint32_t columns = 0;
        for (int i = 0; i < 4; ++i) {
            __m128 four = _mm_castsi128_ps(_mm_loadu_si128(at + i));
            if constexpr (std::is_floating_point_v<Value>) four = _mm_cmplt_ps(four, _mm_setzero_ps());
            columns |= static_cast<uint32_t>(_mm_movemask_ps(four)) << (4 * i);
        }
        return columns;
    }
}

template <class Format>
class PartRow {
public:
    static constexpr int kColumns = 16;

    // Reads the part at `row` and the pixel after it.
    void Load(const uint8_t* row) {
        typename Format::Sample samples[kRead * Format::kPixelSize];
        std::memcpy(samples, row, sizeof samples);
        for (int c = 0; c < Format::kPixelSize; ++c) {
            for (int x = 0; x < kRead; ++x) planes[c][x] = static_cast<Value>(samples[x * Format::kPixelSize + c]);
        }
    }

    // The flags of part p; q is the part below it.
    static ChunkFlags Compare(const PartRow& p, const PartRow& q, EdgeThreshold<Format> edgeThreshold) {
        const Value threshold = PartThreshold<Format>(edgeThreshold);
        // A loop, so that the long code of a comparison stands once.
        const PartRow* const second[] = {&p, &q, &q, &q};
        uint64_t flags[4];
        for (int i = 0; i < 4; ++i) flags[i] = Differing(p, i == 3, *second[i], i == 0 || i == 2, threshold);
        return {flags[0], flags[1], flags[2], flags[3]};
    }

private:
    using Value = PartValue<Format>;
    static constexpr int kRead = kColumns + 1;

    // The columns where the pixel of `a` at column + aShift differs from that of `b` at column + bShift.
    static uint64_t Differing(const PartRow& a, int aShift, const PartRow& b, int bShift, Value threshold) {
        Value rest[kColumns];
        const auto distance = [&](int channel, int x) {
            return Distance(a.planes[channel][x + aShift], b.planes[channel][x + bShift]);
        };
        if constexpr (Format::kExtra == 1) {
            // One loop for all channels: compilers unroll the opacity's alone, and then use no vectors.
            for (int x = 0; x < kColumns; ++x) {
                const Value u = a.planes[Format::kOpacity][x + aShift], v = b.planes[Format::kOpacity][x + bShift];
                Value restOfColumn = static_cast<Value>(threshold - distance(Format::kOpacity, x));
                for (int c = 0; c < Format::kChannels; ++c)
                    restOfColumn = static_cast<Value>(restOfColumn - VisibleDistance(distance(c, x), u, v));
                rest[x] = restOfColumn;
            }
        } else {
            for (int x = 0; x < kColumns; ++x) rest[x] = threshold;
            for (int c = 0; c < Format::kChannels; ++c) {
                for (int x = 0; x < kColumns; ++x) rest[x] = static_cast<Value>(rest[x] - distance(c, x));
            }
        }
        return NegativeColumns(rest);
    }

    static Value Distance(Value s, Value t) {
        const Value d = static_cast<Value>(s - t);
        return d < 0 ? static_cast<Value>(-d) : d;
    }

    // A colour distance weighted by the mean opacity of the two pixels.
    static Value VisibleDistance(Value distance, Value u, Value v) {
        if constexpr (Format::kBits == 8) {
            // x / 255, exact for every x up to 127 * 510, and within 16 bits.
            const uint16_t x = static_cast<uint16_t>((distance >> 1) * (u + v));
            return static_cast<Value>(static_cast<uint16_t>(x + 1 + (x >> 8)) >> 8);
        } else if constexpr (Format::kBits == 16) {
            return WrapMul(distance >> 1, u + v) / Format::kOpaque;
        } else {
            return distance * 0.5f * (u + v);
        }
    }

    Value planes[Format::kPixelSize][kRead];
};

}  // namespace stairmelt::inline STAIRMELT_SET
