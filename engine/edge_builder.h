// Builds the edge map: the one phase of a kernel that touches every pixel, and the only one that compares pixels.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "engine/arith.h"
#include "engine/edge_chunk.h"
#include "engine/edge_map.h"
#include "engine/image.h"
#include "engine/pixel_format.h"

namespace stairmelt {

// The distance above which two pixels differ: summed samples at the integer depths, the same on the scale of 1.0 at
// depth 32. With an opacity sample, colours count by the mean opacity of the two pixels and the opacity in full, so
// that two transparent pixels never differ in their hidden colours.
template <class Format>
using EdgeThreshold = std::conditional_t<std::is_floating_point_v<typename Format::Sample>, float, int32_t>;

// Strict: a distance equal to the threshold is no difference, and one that isn't a number neither.
template <class Format>
bool Differs(const typename Format::Pixel& a, const typename Format::Pixel& b, EdgeThreshold<Format> threshold) {
    if constexpr (std::is_floating_point_v<typename Format::Sample>) {
        const auto distance = [](float p, float q) {
            const float d = p - q;
            return d < 0.0f ? -d : d;
        };
        float left = threshold;
        if constexpr (Format::kExtra == 1) {
            const float opacities = a[Format::kOpacity] + b[Format::kOpacity];
            left -= distance(a[Format::kOpacity], b[Format::kOpacity]);
            for (int c = 0; c < Format::kChannels; ++c) left -= distance(a[c], b[c]) * 0.5f * opacities;
        } else {
            for (int c = 0; c < Format::kChannels; ++c) left -= distance(a[c], b[c]);
        }
        return 0.0f > left;
    } else {
        int32_t distance = 0;  // at most 4 * 65535 colour differences: no wrap
        if constexpr (Format::kExtra == 1) {
            const int32_t opacities = a[Format::kOpacity] + b[Format::kOpacity];
            distance = std::abs(a[Format::kOpacity] - b[Format::kOpacity]);
            for (int c = 0; c < Format::kChannels; ++c) {
                distance += WrapMul(std::abs(a[c] - b[c]) / 2, opacities) / Format::kOpaque;
            }
        } else {
            for (int c = 0; c < Format::kChannels; ++c) distance += std::abs(a[c] - b[c]);
        }
        return distance > threshold;
    }
}

template <class Format>
struct EdgeBuilder {
    using Pixel = typename Format::Pixel;

    const ImageView& image;
    EdgeThreshold<Format> threshold;
    EdgeMap& map;

    // The plain form, and the definition: groups of four columns by the packed step, the columns that are left by the
    // plain step. Every faster form must give the same bytes.
    void BuildPlain() {
        const int32_t packedEnd = PackedEnd();
        for (int32_t y = 0; y < image.height - 1; ++y) {
            for (int32_t group = 0; group < packedEnd; group += 4) PackedStep(group, y);
            for (int32_t x = packedEnd; x < image.width - 1; ++x) PlainStep(x, y);
        }
        BuildBorder();
    }

    // The same map, several columns at a time: chunks of bitwise equal pixels are passed over, others are compared as a
    // whole. Most of a drawing is flat, and most of a photograph isn't.
    void Build() {
        const int32_t packedEnd = PackedEnd();
        for (int32_t y = 0; y < image.height - 1; ++y) {
            int32_t x = 0;
            for (; packedEnd - x >= kChunkColumns; x += kChunkColumns) ChunkStep(x, y);
            for (; x < packedEnd; x += 4) PackedStep(x, y);
            for (; x < image.width - 1; ++x) PlainStep(x, y);
        }
        BuildBorder();
    }

    // The first column that no packed group covers: a group also reads the pixel behind its four.
    int32_t PackedEnd() const { return (image.width - 1) & ~3; }

    Pixel PixelOf(int32_t x, int32_t y) const { return Load<Format>(PixelAt<Format>(image, x, y)); }

    // Four cells as one word, cell k in byte k. The diagonals of the first three cells are only tested once another
    // flag is set; the scan sees the difference, so the plain step must not be made to match.
    void PackedStep(int32_t x, int32_t y) {
        const Pixel p0 = PixelOf(x, y), p1 = PixelOf(x + 1, y), p2 = PixelOf(x + 2, y);
        const Pixel q0 = PixelOf(x, y + 1), q1 = PixelOf(x + 1, y + 1), q2 = PixelOf(x + 2, y + 1);
        uint32_t word =
            Flag(p0, p1, kFlagR, 0) | Flag(p1, p2, kFlagR, 1) | Flag(p0, q0, kFlagD, 0) | Flag(p1, q1, kFlagD, 1);
        if (word != 0) word |= Flag(p0, q1, kFlagX, 0) | Flag(p1, q0, kFlagA, 0);

        const Pixel p3 = PixelOf(x + 3, y), q3 = PixelOf(x + 3, y + 1);
        word |= Flag(p2, p3, kFlagR, 2) | Flag(p2, q2, kFlagD, 2);
        if (word != 0) word |= Flag(p2, q1, kFlagA, 1) | Flag(p1, q2, kFlagX, 1);

        const Pixel p4 = PixelOf(x + 4, y), q4 = PixelOf(x + 4, y + 1);
        word |= Flag(p3, p4, kFlagR, 3) | Flag(p3, q3, kFlagD, 3);
        if (word != 0) word |= Flag(p2, q3, kFlagX, 2) | Flag(p3, q2, kFlagA, 2);

        word |= Flag(p4, q3, kFlagA, 3) | Flag(p3, q4, kFlagX, 3);
        StoreGroup(x, y, word);
    }

    void StoreGroup(int32_t x, int32_t y, uint32_t word) {
        if (word == 0) return;  // the map is zero already
        uint8_t* const cells = map.CellAt(x, y);
        for (int k = 0; k < 4; ++k) cells[k] = static_cast<uint8_t>(word >> (8 * k));
    }

    void ChunkStep(int32_t x, int32_t y) {
        const uint8_t* const p = PixelAt<Format>(image, x, y);
        const uint8_t* const q = PixelAt<Format>(image, x, y + 1);
        if (threshold >= 0 && IsFlatChunk<Format>(p, q)) return;
        EdgeChunk<Format> chunk;
        chunk.Spread(p, chunk.p);
        chunk.Spread(q, chunk.q);
        uint8_t flags[kChunkColumns];
        chunk.CompareAll(ChunkThreshold<Format>(threshold), flags);
        for (int group = 0; group < kChunkColumns; group += 4) DropUntestedDiagonals(flags + group);
        std::memcpy(map.CellAt(x, y), flags, sizeof flags);
    }

    void PlainStep(int32_t x, int32_t y) {
        const Pixel p0 = PixelOf(x, y), p1 = PixelOf(x + 1, y);
        const Pixel q0 = PixelOf(x, y + 1), q1 = PixelOf(x + 1, y + 1);
        *map.CellAt(x, y) = static_cast<uint8_t>(Flag(p0, p1, kFlagR, 0) | Flag(p0, q0, kFlagD, 0) |
                                                 Flag(p0, q1, kFlagX, 0) | Flag(p1, q0, kFlagA, 0));
    }

    // The last row has no flags but R, the last column none but D, and the bottom right pixel none at all.
    void BuildBorder() {
        const int32_t lastX = image.width - 1;
        const int32_t lastY = image.height - 1;
        for (int32_t x = 0; x < lastX; ++x) {
            *map.CellAt(x, lastY) = static_cast<uint8_t>(Flag(PixelOf(x, lastY), PixelOf(x + 1, lastY), kFlagR, 0));
        }
        for (int32_t y = 0; y < lastY; ++y) {
            *map.CellAt(lastX, y) = static_cast<uint8_t>(Flag(PixelOf(lastX, y), PixelOf(lastX, y + 1), kFlagD, 0));
        }
    }

    // The flag in byte `cell` of a word if the pixels differ, else 0.
    uint32_t Flag(const Pixel& a, const Pixel& b, uint32_t flag, int cell) const {
        return Differs<Format>(a, b, threshold) ? flag << (8 * cell) : 0;
    }
};

// Sets the flags of a zeroed map of the image's size. An image without pixels gets none, and nothing is read.
template <class Format>
void BuildEdgeMap(const ImageView& image, EdgeThreshold<Format> threshold, EdgeMap& map) {
    if (image.width < 1 || image.height < 1) return;
    EdgeBuilder<Format>{image, threshold, map}.Build();
}

template <class Format>
void BuildEdgeMapPlain(const ImageView& image, EdgeThreshold<Format> threshold, EdgeMap& map) {
    if (image.width < 1 || image.height < 1) return;
    EdgeBuilder<Format>{image, threshold, map}.BuildPlain();
}

}  // namespace stairmelt
