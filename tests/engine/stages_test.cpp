// One small test for each stage of a kernel, so that a wrong result can be traced to a stage.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/rules/cell_builder.h"
#include "engine/rules/isolated_pixel.h"
#include "engine/rules/mix.h"
#include "engine/rules/ramp.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/scan_weights.h"

namespace stairmelt {

namespace {

using Int = IntegerWeights;
using Float = FloatWeights;
template <class Depth, int kChannels = 1, int kExtra = 0>
using Of = PixelFormat<Depth, kChannels, kExtra>;

template <class Weights>
std::vector<typename Weights::Weight> WeightsOf(BlendRamp<Weights> ramp) {
    std::vector<typename Weights::Weight> weights;
    while (!ramp.finished && weights.size() < 2000) weights.push_back(NextBentWeight(ramp));
    return weights;
}

// The pixel after a mix with the other one.
template <class Format>
typename Format::Pixel Mixed(typename Format::Pixel pixel, const typename Format::Pixel& other,
                             typename Format::Weight weight) {
    uint8_t bytes[Format::kPixelBytes], target[Format::kPixelBytes];
    std::memcpy(bytes, &pixel, sizeof bytes);
    std::memcpy(target, &other, sizeof target);
    MixPixel<Format>(bytes, LoadBlendTarget<Format>(target), weight);
    return LoadSamples<Format>(bytes);
}

}  // namespace

TEST(Stages, Flags) {
    // Pixel (0, 0) and the one diagonally below it differ, but no flag tested before says so.
    uint8_t pixels[2][5] = {{0, 30, 30, 30, 30}, {0, 60, 60, 60, 200}};
    const ImageView view = {5, 2, pixels[0], 5};
    const CellBuilder<Of<Depth8>> cells{view, 40};
    EXPECT_EQ(cells.PackedStep(0, 0), uint32_t{kFlagX} << 24);
    EXPECT_EQ(cells.PlainStep(0, 0), kFlagX);
    EXPECT_EQ((CellBuilder<Of<Depth8>>{view, 60}.PlainStep(0, 0)), 0) << "a difference equal to the threshold";
}

TEST(Stages, Weights) {
    EXPECT_EQ(DeriveEdgeThreshold<Of<Depth8>>(10), 5);
    EXPECT_EQ((DeriveEdgeThreshold<Of<Depth8, 4, 1>>(10)), 12) << "opacity doesn't count";
    EXPECT_EQ((DeriveEdgeThreshold<Of<Depth16, 3>>(10)), 1285);
    EXPECT_EQ((DeriveEdgeThreshold<Of<Depth32, 3>>(10)), 10 / 255.0f);
    EXPECT_EQ(DeriveNeighbourWeight<Of<Depth8>>(70), 11468);
    EXPECT_EQ(DeriveCornerWeight<Of<Depth8>>(70), 6553);
    EXPECT_EQ(DeriveCornerWeight<Of<Depth8>>(35), 3276);
    EXPECT_EQ(RunSoftness(70, {4, 0}), 70);
    EXPECT_EQ(RunSoftness(70, {4, 4}), 50);
    EXPECT_EQ(RunSoftness(70, {2, 5}), -25);
    EXPECT_EQ(RunSoftness(70, {1, kWithinDot}), 7);
    EXPECT_EQ(RunSoftness(70, {1, kBesideDot}), 25);
}

TEST(Stages, Ramps) {
    const struct {
        const char* name;
        BlendRamp<Int> ramp;
        std::vector<int32_t> weights;
    } rows[] = {
        {"stair, softness 100, one pixel", StairRamp<Int>(100, 1, 0), {24576, 8193, 0}},
        {"narrowed by bias 50", StairRamp<Int>(100, 1, 50), {19200, 4352, 0}},
        {"widened by bias -50", StairRamp<Int>(100, 1, -50), {28415, 13569, 0}},
        {"softness 50, one pixel: spent on it", StairRamp<Int>(50, 1, 0), {16383}},
        {"softness 0 counts as 1", StairRamp<Int>(0, 1, 0), {327}},
        {"tail over two pixels", TailRamp<Int>(70, 2, 0), {49932, 18726, 156}},
        {"tail spent at once: the square wraps", TailRamp<Int>(10, 1, 0), {0}},
    };
    for (const auto& row : rows) EXPECT_EQ(WeightsOf(row.ramp), row.weights) << row.name;
    EXPECT_EQ(WeightsOf(StairRamp<Float>(100, 1, 0)), (std::vector<float>{0.375f, 0.125f}));
    EXPECT_EQ(WeightsOf(TailRamp<Float>(10, 1, 0)), (std::vector<float>{0.1f})) << "no square that wraps";
    // A step of 0 holds the weight for as long as the walk lasts.
    EXPECT_EQ(WeightsOf(StairRamp<Int>(3276701, 1, 0)), std::vector<int32_t>(2000, Int::kHalf));
    EXPECT_EQ(WeightsOf(StairRamp<Int>(INT32_MAX, 3, 0))[0], 442355) << "half of a negative step rounds down";
    EXPECT_EQ(ApplyBiasCurve<int32_t>(16384, 32768, 100), 4096) << "a pure cube";
    EXPECT_EQ(ApplyBiasCurve<int32_t>(16384, 32768, -100), 28672) << "its mirror";
}

// Rows must be built before a walk changes them, so its length has to be known ahead. Rounding lets long walks of
// floating-point weights outlast the quotient of weight and step.
template <class Weights>
void ExpectMaxPixels(BlendRamp<Weights> ramp) {
    const int32_t max = MaxPixels(ramp);
    if (max == INT32_MAX) return;
    int32_t pixels = 0;
    for (BlendRamp<Weights> walk = ramp; !walk.finished && pixels <= max; ++pixels) NextRampWeight(walk);
    EXPECT_LE(pixels, max) << "from " << ramp.weight << " by " << ramp.step;
}

TEST(Stages, MaxPixelsOfRamps) {
    for (const int32_t n : {1, 2, 3, 24731, 59389, 524000}) {
        for (const int32_t softness : {1, 36, 70, 100}) {
            ExpectMaxPixels(StairRamp<Int>(softness, n, 0));
            ExpectMaxPixels(TailRamp<Int>(softness, n, 0));
            ExpectMaxPixels(StairRamp<Float>(softness, n, 0));
            ExpectMaxPixels(TailRamp<Float>(softness, n, 0));
        }
    }
}

TEST(Stages, Mixes) {
    EXPECT_EQ(Mixed<Of<Depth8>>({10}, {200}, 32767)[0], 104);
    EXPECT_EQ(Mixed<Of<Depth16>>({32768}, {0}, 21844)[0], 21845);
    EXPECT_EQ(Mixed<Of<Depth32>>({1.0f}, {0.5f}, 0.5f)[0], 0.75f);
    using Colors8 = SampleColors<Of<Depth8>>;
    EXPECT_EQ(Colors8::MixToNearest({{0}}, {{1}}, 32767).samples[0], 1) << "a half rounds up";
    using Opaque8 = Of<Depth8, 1, 1>;
    EXPECT_EQ(Mixed<Opaque8>({10, 255}, {200, 255}, 32767), (Opaque8::Pixel{104, 255}));
    EXPECT_EQ(Mixed<Opaque8>({10, 255}, {200, 0}, 32767), (Opaque8::Pixel{10, 127})) << "a hidden colour";
    EXPECT_EQ(Mixed<Opaque8>({10, 0}, {200, 255}, 32767), (Opaque8::Pixel{200, 127}));
    EXPECT_EQ(Mixed<Opaque8>({10, 51}, {200, 204}, 32767), (Opaque8::Pixel{162, 127})) << "rounded to nearest";
}

TEST(Stages, Averages) {
    uint8_t source[3][3] = {{0, 20, 0}, {30, 0, 40}, {0, 50, 0}}, destination[3][3] = {{}, {0, 200, 0}, {}};
    const ImageView from = {3, 3, source[0], 3}, to = {3, 3, destination[0], 3};
    const KernelJob job = {0, 70, 0, nullptr, 0, &from, &to, 0, 0, 0, 0};
    AverageIsolatedPixel<Of<Depth8>>(job, 1, 1, 11468);
    EXPECT_EQ(destination[1][1], 132);
    AverageIsolatedPixel<Of<Depth8>>(job, 0, 0, 11468);
    EXPECT_EQ(destination[0][0], 6) << "two neighbours in a corner";
}

}  // namespace stairmelt
