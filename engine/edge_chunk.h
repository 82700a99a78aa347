// Compares a chunk of neighbouring columns at once: the fast form of the packed step. The samples are laid out plane by
// plane, so that every loop runs over columns with a constant count and compilers turn it into vector instructions; no
// instruction set is named. The flags are exactly those of the plain form.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/arith.h"
#include "engine/edge_map.h"
#include "engine/pixel_format.h"

namespace stairmelt {

constexpr int kChunkColumns = 32;  // a multiple of the four columns of a group

// True if the chunk's pixels at p, the one behind them, and the same of the row below at q all have the same bits.
// Equal pixels never differ, whatever the format, as long as the threshold isn't negative.
template <class Format>
bool IsFlatChunk(const uint8_t* p, const uint8_t* q) {
    constexpr int kBytes = kChunkColumns * Format::kPixelBytes;
    static_assert(kBytes % 8 == 0);
    const auto word = [](const uint8_t* at) {
        uint64_t value;
        std::memcpy(&value, at, sizeof value);
        return value;
    };
    uint64_t difference = 0;
    for (int i = 0; i < kBytes; i += 8) {
        difference |= (word(p + i) ^ word(p + i + Format::kPixelBytes)) | (word(p + i) ^ word(q + i));
    }
    return difference == 0 && std::memcmp(p + kBytes, q + kBytes, Format::kPixelBytes) == 0;
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

template <class Format>
struct EdgeChunk {
    using Value = ChunkValue<Format>;
    static constexpr int kColumns = kChunkColumns + 1;  // and the pixel behind the last one

    Value p[Format::kPixelSize][kColumns];  // the row's samples, plane by plane
    Value q[Format::kPixelSize][kColumns];  // those of the row below

    static void Spread(const uint8_t* row, Value (&planes)[Format::kPixelSize][kColumns]) {
        typename Format::Sample samples[kColumns * Format::kPixelSize];
        std::memcpy(samples, row, sizeof samples);
        for (int c = 0; c < Format::kPixelSize; ++c) {
            for (int x = 0; x < kColumns; ++x) planes[c][x] = static_cast<Value>(samples[x * Format::kPixelSize + c]);
        }
    }

    // Adds `flag` to the columns where the pixel of `a` at column + aShift differs from that of `b` at column + bShift.
    static void Compare(const Value (&a)[Format::kPixelSize][kColumns], int aShift,
                        const Value (&b)[Format::kPixelSize][kColumns], int bShift, Value threshold, uint8_t flag,
                        uint8_t (&flags)[kChunkColumns]) {
        Value left[kChunkColumns];
        for (int x = 0; x < kChunkColumns; ++x) left[x] = threshold;
        if constexpr (Format::kExtra == 1) {
            const Value* const u = a[Format::kOpacity] + aShift;
            const Value* const v = b[Format::kOpacity] + bShift;
            for (int x = 0; x < kChunkColumns; ++x) left[x] = static_cast<Value>(left[x] - Distance(u[x], v[x]));
            for (int c = 0; c < Format::kChannels; ++c) {
                const Value* const s = a[c] + aShift;
                const Value* const t = b[c] + bShift;
                for (int x = 0; x < kChunkColumns; ++x) {
                    left[x] = static_cast<Value>(left[x] - VisibleDistance(Distance(s[x], t[x]), u[x], v[x]));
                }
            }
        } else {
            for (int c = 0; c < Format::kChannels; ++c) {
                const Value* const s = a[c] + aShift;
                const Value* const t = b[c] + bShift;
                for (int x = 0; x < kChunkColumns; ++x) left[x] = static_cast<Value>(left[x] - Distance(s[x], t[x]));
            }
        }
        for (int x = 0; x < kChunkColumns; ++x) {
            flags[x] = static_cast<uint8_t>(flags[x] | (left[x] < 0 ? flag : 0));
        }
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
    void CompareAll(Value threshold, uint8_t (&flags)[kChunkColumns]) const {
        std::memset(flags, 0, sizeof flags);
        Compare(p, 0, p, 1, threshold, kFlagR, flags);
        Compare(p, 0, q, 0, threshold, kFlagD, flags);
        Compare(p, 0, q, 1, threshold, kFlagX, flags);
        Compare(p, 1, q, 0, threshold, kFlagA, flags);
    }
};

// Takes from a group of four cells the diagonals that the packed step doesn't test: those of the first three cells
// where no R or D is set in any cell of the group up to the next one.
inline void DropUntestedDiagonals(uint8_t* cells) {
    constexpr uint8_t kEdges = kFlagR | kFlagD;
    constexpr uint8_t kDiagonals = kFlagX | kFlagA;
    uint8_t seen = cells[0] & kEdges;
    for (int k = 0; k < 3; ++k) {
        seen = static_cast<uint8_t>(seen | (cells[k + 1] & kEdges));
        if (seen == 0) cells[k] = static_cast<uint8_t>(cells[k] & ~kDiagonals);
    }
}

}  // namespace stairmelt
