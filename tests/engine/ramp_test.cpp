#include "engine/rules/ramp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace stairmelt {

namespace {

using Int = IntegerWeights;
using Float = FloatWeights;

template <class Weights>
std::vector<typename Weights::Weight> WeightsOf(BlendRamp<Weights> ramp) {
    std::vector<typename Weights::Weight> weights;
    while (!ramp.finished && weights.size() < 2000) weights.push_back(NextBentWeight(ramp));
    return weights;
}

}  // namespace

TEST(Ramp, FallsToZeroAcrossItsRun) {
    struct Case {
        const char* name;
        BlendRamp<Int> ramp;
        std::vector<int32_t> weights;
    };
    const Case cases[] = {
        {"stair, softness 100, one pixel", StairRamp<Int>(100, 1, 0), {24576, 8193, 0}},
        {"the same, narrowed by bias 50", StairRamp<Int>(100, 1, 50), {19200, 4352, 0}},
        {"the same, widened by bias -50", StairRamp<Int>(100, 1, -50), {28415, 13569, 0}},
        {"softness 50, one pixel: spent on it", StairRamp<Int>(50, 1, 0), {16383}},
        {"softness 0 counts as 1", StairRamp<Int>(0, 1, 0), {327}},
        {"tail over two pixels", TailRamp<Int>(70, 2, 0), {49932, 18726, 156}},
        {"tail spent at once: the square wraps", TailRamp<Int>(10, 1, 0), {0}},
    };
    for (const Case& c : cases) EXPECT_EQ(WeightsOf(c.ramp), c.weights) << c.name;

    EXPECT_EQ(WeightsOf(StairRamp<Float>(100, 1, 0)), (std::vector<float>{0.375f, 0.125f}));
    // The tail that is spent at once keeps its weight here: there is nothing to wrap.
    EXPECT_EQ(WeightsOf(TailRamp<Float>(10, 1, 0)), (std::vector<float>{1.0f / 10.0f}));
}

TEST(Ramp, StepsOfAnySoftnessAreDefined) {
    EXPECT_EQ(RampStep<Int>(3276701, 1), 0);
    EXPECT_EQ(RampStep<Int>(1 << 30, 4), 0) << "the divisor wraps to 0";
    EXPECT_EQ(RampStep<Float>(1 << 30, 4), INFINITY);
    EXPECT_LT(RampStep<Int>(1 << 20, 3000), 1);

    // A step of 0 holds the weight for as long as the walk lasts.
    const std::vector<int32_t> held = WeightsOf(StairRamp<Int>(3276701, 1, 0));
    EXPECT_EQ(held.size(), 2000u);
    EXPECT_EQ(held.back(), Int::kHalf);

    // A negative step lets the weight grow until it wraps, and the walk ends there.
    BlendRamp<Int> growing{false, Int::kHalf, Int::kHalf, -3276700, 0};
    EXPECT_LT(WeightsOf(growing).size(), 700u);
}

// The rows that a walk changes have to be known before it begins. Rounding lets long walks of floating-point weights
// outlast the quotient of weight and step.
template <class Weights>
void ExpectMaxPixels(BlendRamp<Weights> ramp) {
    const int32_t most = MaxPixels(ramp);
    if (most == INT32_MAX) return;
    int32_t pixels = 0;
    for (BlendRamp<Weights> walk = ramp; !walk.finished && pixels <= most; ++pixels) NextRampWeight(walk);
    EXPECT_LE(pixels, most) << "from " << ramp.weight << " by " << ramp.step;
}

TEST(Ramp, NoWalkTakesMorePixelsThanAreForetold) {
    for (const int32_t n : {1, 2, 3, 24731, 30000, 59389, 297000, 524000}) {
        for (const int32_t softness : {1, 36, 70, 100}) {
            ExpectMaxPixels(StairRamp<Int>(softness, n, 0));
            ExpectMaxPixels(TailRamp<Int>(softness, n, 0));
            ExpectMaxPixels(StairRamp<Float>(softness, n, 0));
            ExpectMaxPixels(TailRamp<Float>(softness, n, 0));
        }
    }
}

TEST(BiasCurve, KeepsItsEnds) {
    for (const int32_t bias : {1, 50, 100, -1, -50, -100}) {
        EXPECT_EQ(ApplyBiasCurve<int32_t>(0, 32767, bias), 0) << bias;
        EXPECT_NEAR(ApplyBiasCurve<int32_t>(32767, 32767, bias), 32767, 1) << bias;
    }
    EXPECT_EQ(ApplyBiasCurve<int32_t>(16384, 32768, 100), 4096) << "a pure cube";
    EXPECT_EQ(ApplyBiasCurve<int32_t>(16384, 32768, -100), 28672) << "its mirror";
    EXPECT_EQ(ApplyBiasCurve<float>(0.25f, 0.5f, 100), 0.0625f);
}

TEST(Arith, TruncationsAreDefinedForEveryValue) {
    EXPECT_EQ(TruncateToInt(-1.99f), -1);
    EXPECT_EQ(TruncateToInt(2147483520.0f), 2147483520);
    EXPECT_EQ(TruncateToInt(2147483648.0f), INT32_MIN);
    EXPECT_EQ(TruncateToInt(-INFINITY), INT32_MIN);
    EXPECT_EQ(TruncateToInt(NAN), INT32_MIN);
    EXPECT_EQ(QuotientOrZero(INT32_MIN, -1), INT32_MIN);
}

}  // namespace stairmelt
