// Compares a chunk of neighbouring columns at once: the fast form of the packed step. The samples are laid out plane by
// plane, so that every loop runs over columns with a constant count and compilers turn it into vector instructions;
// where an instruction set has something better it is taken. The flags are exactly those of the plain form.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/arith.h"
#include "engine/cell_builder.h"
#include "engine/flag_planes.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

// The flags of a chunk, column k in bit k.
struct ChunkFlags {
    uint64_t r, d, x, a;
};

inline uint64_t BitsAt(const uint8_t* at) {
    uint64_t bits;
    std::memcpy(&bits, at, sizeof bits);
    return bits;
}

// True if the chunk's pixels and the one behind them all have the same bits.
template <class Format, int kColumns>
bool IsUniform(const uint8_t* chunk) {
    constexpr int kBytes = kColumns * Format::kPixelBytes;
    static_assert(kBytes % 8 == 0);
    uint64_t difference = 0;
    for (int i = 0; i < kBytes; i += 8) difference |= BitsAt(chunk + i) ^ BitsAt(chunk + i + Format::kPixelBytes);
    return difference == 0;
}

template <class Format>
bool IsSamePixel(const uint8_t* p, const uint8_t* q) {
    return std::memcmp(p, q, Format::kPixelBytes) == 0;
}

// The type in which a chunk is compared: the narrowest that holds every sum, for the most columns per instruction.
template <class Format>
using ChunkValue =
    std::conditional_t<Format::kBits == 8, int16_t, std::conditional_t<Format::kBits == 16, int32_t, float>>;

// A threshold in that type. One that lies beyond every distance is brought closer, so that no sum leaves the type.
template <class Format, class Threshold>
ChunkValue<Format> ChunkThreshold(Threshold threshold) {
    if constexpr (Format::kBits == 8) {
        return static_cast<int16_t>(std::clamp<int32_t>(threshold, -1, 1 << 14));
    } else if constexpr (Format::kBits == 16) {
        return std::clamp<int32_t>(threshold, -(1 << 20), 1 << 20);
    } else {
        return threshold;
    }
}

// The columns whose values lie below zero. -0.0 doesn't.
inline uint64_t NegativeColumns(const int16_t (&values)[16]) {
    const auto* const at = reinterpret_cast<const __m128i*>(values);
    // Saturation keeps the sign.
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(_mm_loadu_si128(at), _mm_loadu_si128(at + 1))));
}

inline uint64_t NegativeColumns(const int32_t (&values)[16]) {
    uint32_t columns = 0;
    for (int x = 0; x < 16; x += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(values + x));
        columns |= static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(four))) << x;
    }
    return columns;
}

inline uint64_t NegativeColumns(const float (&values)[16]) {
    uint32_t columns = 0;
    for (int x = 0; x < 16; x += 4) {
        const __m128 isNegative = _mm_cmplt_ps(_mm_loadu_ps(values + x), _mm_setzero_ps());
        columns |= static_cast<uint32_t>(_mm_movemask_ps(isNegative)) << x;
    }
    return columns;
}

// A quarter of a chunk, laid out plane by plane.
template <class Format>
struct EdgeChunk {
    using Value = ChunkValue<Format>;
    static constexpr int kColumns = 16;
    static constexpr int kRead = kColumns + 1;  // and the pixel behind the last one
    using Planes = Value[Format::kPixelSize][kRead];

    Planes p;  // the row's samples
    Planes q;  // those of the row below

    static void Spread(const uint8_t* row, Planes& planes) {
        typename Format::Sample samples[kRead * Format::kPixelSize];
        std::memcpy(samples, row, sizeof samples);
        for (int c = 0; c < Format::kPixelSize; ++c) {
            for (int x = 0; x < kRead; ++x) planes[c][x] = static_cast<Value>(samples[x * Format::kPixelSize + c]);
        }
    }

    // The columns where the pixel of `a` at column + aShift differs from that of `b` at column + bShift.
    static uint64_t Compare(const Planes& a, int aShift, const Planes& b, int bShift, Value threshold) {
        Value left[kColumns];
        for (int x = 0; x < kColumns; ++x) left[x] = threshold;
        if constexpr (Format::kExtra == 1) {
            const Value* const u = a[Format::kOpacity] + aShift;
            const Value* const v = b[Format::kOpacity] + bShift;
            for (int x = 0; x < kColumns; ++x) left[x] = static_cast<Value>(left[x] - Distance(u[x], v[x]));
            for (int c = 0; c < Format::kChannels; ++c) {
                const Value* const s = a[c] + aShift;
                const Value* const t = b[c] + bShift;
                for (int x = 0; x < kColumns; ++x) {
                    left[x] = static_cast<Value>(left[x] - VisibleDistance(Distance(s[x], t[x]), u[x], v[x]));
                }
            }
        } else {
            for (int c = 0; c < Format::kChannels; ++c) {
                const Value* const s = a[c] + aShift;
                const Value* const t = b[c] + bShift;
                for (int x = 0; x < kColumns; ++x) left[x] = static_cast<Value>(left[x] - Distance(s[x], t[x]));
            }
        }
        return NegativeColumns(left);
    }

    static Value Distance(Value s, Value t) {
        const Value d = static_cast<Value>(s - t);
        return d < 0 ? static_cast<Value>(-d) : d;
    }

    // A colour distance weighted by the mean opacity of the two pixels.
    static Value VisibleDistance(Value distance, Value u, Value v) {
        if constexpr (Format::kBits == 8) {
            // x / 255, exact for every x that 127 * 510 doesn't exceed, and within 16 bits.
            const uint16_t x = static_cast<uint16_t>((distance >> 1) * (u + v));
            return static_cast<Value>(static_cast<uint16_t>(x + 1 + (x >> 8)) >> 8);
        } else if constexpr (Format::kBits == 16) {
            return WrapMul(distance >> 1, u + v) / Format::kOpaque;
        } else {
            return distance * 0.5f * (u + v);
        }
    }

    // The flags of all columns, with every diagonal tested.
    ChunkFlags CompareAll(Value threshold) const {
        return {Compare(p, 0, p, 1, threshold), Compare(p, 0, q, 0, threshold), Compare(p, 0, q, 1, threshold),
                Compare(p, 1, q, 0, threshold)};
    }
};

// Compares the chunks of one image.
template <class Format>
class ChunkComparer {
public:
    explicit ChunkComparer(EdgeThreshold<Format> edgeThreshold)
        : mayBeFlat(edgeThreshold >= 0),
          threshold(edgeThreshold),
          chunkThreshold(ChunkThreshold<Format>(edgeThreshold)) {}

    // True if a quick look tells that no pixel of the chunk, nor the one behind it, differs from another of them. Equal
    // pixels never differ, whatever the format, as long as the threshold isn't negative.
    template <int kColumns = kChunkColumns>
    bool IsFlat(const uint8_t* chunk) const {
        return mayBeFlat && IsUniform<Format, kColumns>(chunk);
    }

    // The flags of the chunk at p, with the row below at q, every diagonal tested. Reads one pixel more of both rows.
    ChunkFlags Compare(const uint8_t* p, const uint8_t* q) const {
        using InstructionSet = typename Format::InstructionSet;
        if constexpr (InstructionSet::kComparesBytes && Format::kBits == 8 && Format::kExtra == 0) {
            if (threshold >= 0 && threshold < 255) {
                return InstructionSet::template CompareBytes<Format::kChannels>(p, q, static_cast<uint8_t>(threshold));
            }
        }
        constexpr int kPartColumns = EdgeChunk<Format>::kColumns;
        ChunkFlags flags{};
        for (int x = 0; x < kChunkColumns; x += kPartColumns) {
            const uint8_t* const pPart = p + x * Format::kPixelBytes;
            const uint8_t* const qPart = q + x * Format::kPixelBytes;
            if (IsFlat<kPartColumns>(pPart) && IsFlat<kPartColumns>(qPart) && IsSamePixel<Format>(pPart, qPart))
                continue;
            const ChunkFlags part = ComparePart(pPart, qPart);
            flags.r |= part.r << x;
            flags.d |= part.d << x;
            flags.x |= part.x << x;
            flags.a |= part.a << x;
        }
        return flags;
    }

private:
    ChunkFlags ComparePart(const uint8_t* p, const uint8_t* q) const {
        using InstructionSet = typename Format::InstructionSet;
        if constexpr (InstructionSet::kComparesFloats && Format::kBits == 32) {
            return InstructionSet::template CompareFloats<Format>(p, q, threshold);
        } else {
            EdgeChunk<Format> chunk;
            chunk.Spread(p, chunk.p);
            chunk.Spread(q, chunk.q);
            return chunk.CompareAll(chunkThreshold);
        }
    }

    bool mayBeFlat;  // equal pixels differ only where the threshold is negative
    EdgeThreshold<Format> threshold;
    ChunkValue<Format> chunkThreshold;
};

}  // namespace stairmelt::inline STAIRMELT_SET
