// Every fact about a pixel format: depth (the sample and the weights that mix it) x colour channels x opacity.
// Samples are copied in and out of memory, since a caller's rows may start at any byte.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "engine/image.h"
#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

// Weights of the integer depths: 65535 moves a sample all the way to its neighbour.
struct IntegerWeights {
    using Weight = int32_t;
    static constexpr Weight kWhole = 65535;
    static constexpr Weight kHalf = 32767;   // a stair ramp moves a pixel at most halfway
    static constexpr Weight kThird = 21844;  // start and scale of a diagonal's fade; not 65535 / 3, which is 21845
    static constexpr Weight kThreeQuarters = 49151;
    static constexpr Weight kOneSixth = 10922;
    static constexpr Weight kContact = 6553;        // a tenth: the contact blend at full strength
    static constexpr Weight kRampBudget = 3276700;  // kHalf * 100: softness is a percentage
};

// Weights of the floating-point depth: 1.0 moves a sample all the way.
struct FloatWeights {
    using Weight = float;
    static constexpr Weight kWhole = 1.0f;
    static constexpr Weight kHalf = 0.5f;
    static constexpr Weight kThird = 0.33333334f;
    static constexpr Weight kThreeQuarters = 0.75f;
    static constexpr Weight kOneSixth = 0.16666667f;
    static constexpr Weight kContact = 0.5f / 5.0f;
    static constexpr Weight kRampBudget = 50.0f;
};

struct Depth8 : IntegerWeights {
    using Weights = IntegerWeights;
    using Sample = uint8_t;
    static constexpr int kBits = 8;
    static constexpr int32_t kOpaque = 255;
};

struct Depth16 : IntegerWeights {
    using Weights = IntegerWeights;
    using Sample = uint16_t;  // 0..32768: white is not 65535 here
    static constexpr int kBits = 16;
    static constexpr int32_t kOpaque = 32768;
};

struct Depth32 : FloatWeights {
    using Weights = FloatWeights;
    using Sample = float;  // 1.0 is white; values outside 0..1 pass through
    static constexpr int kBits = 32;
};

// Set names the instruction set that a kernel of the format is compiled for: instances for different ones never share
// code.
template <class SampleDepth, int Channels, int Extra, class Set = Baseline>
struct PixelFormat : SampleDepth {
    static_assert(Extra == 0 || Extra == 1);
    using Depth = SampleDepth;
    using InstructionSet = Set;
    static constexpr int kChannels = Channels;           // colour samples, 1..4
    static constexpr int kExtra = Extra;                 // 1 when an opacity sample follows them
    static constexpr int kPixelSize = Channels + Extra;  // samples from one pixel to the next
    static constexpr int kPixelBytes = kPixelSize * static_cast<int>(sizeof(typename Depth::Sample));
    static constexpr int kOpacity = Channels;  // index of the opacity sample
    // Where the set's vectors are used to compare chunks of a row, and to change several pixels at once.
    static constexpr bool kComparesChunks = Set::kHasVectors && (Depth::kBits == 32 || Extra == 0);
    static constexpr bool kMixesStrokes = Set::kHasVectors && Depth::kBits == 8 && Extra == 0;
    using Pixel = std::array<typename Depth::Sample, static_cast<size_t>(kPixelSize)>;
};

template <class Format>
uint8_t* PixelAt(const ImageView& view, int32_t x, int32_t y) {
    return view.base + static_cast<ptrdiff_t>(y) * view.rowStride + static_cast<ptrdiff_t>(x) * Format::kPixelBytes;
}

template <class Format>
typename Format::Pixel LoadSamples(const uint8_t* at) {
    typename Format::Pixel pixel;
    std::memcpy(&pixel, at, Format::kPixelBytes);
    return pixel;
}

}  // namespace stairmelt::inline STAIRMELT_SET
