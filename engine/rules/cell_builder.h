// Compares pixels, one column or one group of four columns at a time: the definition of the flags.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/arith.h"
#include "engine/rules/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// The distance above which two pixels differ: summed samples at the integer depths, the same on the scale of 1.0 at
// depth 32. With an opacity sample, colours count by the mean opacity of the two pixels and the opacity in full, so
// that two transparent pixels never differ in their hidden colours.
template <class Format>
using EdgeThreshold = std::conditional_t<std::is_floating_point_v<typename Format::Sample>, float, int32_t>;

// Strict: a distance equal to the threshold is no difference, and neither is NaN.
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

// The cells of an image, one group of four columns or one column at a time.
template <class Format>
struct CellBuilder {
    using Pixel = typename Format::Pixel;

    const ImageView& image;
    EdgeThreshold<Format> threshold;

    // The first column that no packed group covers: a group also reads the pixel after its four.
    int32_t PackedEnd() const { return (image.width - 1) & ~3; }

    Pixel PixelOf(int32_t x, int32_t y) const { return LoadSamples<Format>(PixelAt<Format>(image, x, y)); }

    // Four cells as one word, cell k in byte k. The diagonals of the first three cells are only tested once another
    // flag is set; the scan sees the difference, so the plain step must not be made to match.
    uint32_t PackedStep(int32_t x, int32_t y) const {
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

        return word | Flag(p4, q3, kFlagA, 3) | Flag(p3, q4, kFlagX, 3);
    }

    uint8_t PlainStep(int32_t x, int32_t y) const {
        const Pixel p0 = PixelOf(x, y), p1 = PixelOf(x + 1, y);
        const Pixel q0 = PixelOf(x, y + 1), q1 = PixelOf(x + 1, y + 1);
        return static_cast<uint8_t>(Flag(p0, p1, kFlagR, 0) | Flag(p0, q0, kFlagD, 0) | Flag(p0, q1, kFlagX, 0) |
                                    Flag(p1, q0, kFlagA, 0));
    }

    // The last row has no flags but R, the last column none but D, and the bottom right pixel none at all.
    uint8_t LastRowStep(int32_t x) const {
        const int32_t y = image.height - 1;
        return static_cast<uint8_t>(Flag(PixelOf(x, y), PixelOf(x + 1, y), kFlagR, 0));
    }
    uint8_t LastColumnStep(int32_t y) const {
        const int32_t x = image.width - 1;
        return static_cast<uint8_t>(Flag(PixelOf(x, y), PixelOf(x, y + 1), kFlagD, 0));
    }

    // The flag in byte `cell` of a word if the pixels differ, else 0.
    uint32_t Flag(const Pixel& a, const Pixel& b, uint32_t flag, int cell) const {
        return Differs<Format>(a, b, threshold) ? flag << (8 * cell) : 0;
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
