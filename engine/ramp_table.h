// The weights of the ramps that a picture needs again and again: those of short runs and tails. A ramp depends on the
// job's values and on one or two lengths alone; its weights are computed the first time it is wanted.
#pragma once

#include <cstdint>

#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/ramp.h"
#include "engine/step_shape.h"

namespace stairmelt::inline STAIRMELT_SET {

// The weights of a walk, pixel by pixel, bent by the bias.
template <class Weights>
struct RampWeights {
    static constexpr int32_t kMost = 12;
    enum State : int32_t { kUnknown = 0, kListed, kTooLong };

    State state;
    int32_t count;  // until the weight runs out
    typename Weights::Weight weights[kMost];

    // The first `length` weights of a ramp, whether it ends or not.
    void List(BlendRamp<Weights> ramp, int32_t length) {
        state = kListed;
        for (count = 0; count < length; ++count) weights[count] = NextBentWeight(ramp);
    }

    // All weights of a ramp, if they aren't too many.
    void List(BlendRamp<Weights> ramp) {
        state = kListed;
        for (count = 0; !ramp.finished; ++count) {
            if (count == kMost) {
                state = kTooLong;
                return;
            }
            weights[count] = NextBentWeight(ramp);
        }
    }
};

template <class Weights>
class RampTable {
public:
    RampTable(const KernelJob& job, int32_t biasOfTails)
        : softness(job.softness), bias(job.bias), tailBias(biasOfTails) {}

    BlendRamp<Weights> Stair(int32_t n, int32_t farRun) const {
        return StairRamp<Weights>(TurnedSoftness(softness, n, farRun), n, bias);
    }
    BlendRamp<Weights> DotStair(int32_t percent) const {
        return StairRamp<Weights>(DotSoftness(softness, percent), 1, bias);
    }
    BlendRamp<Weights> Tail(int32_t n) const { return TailRamp<Weights>(softness, n, tailBias); }

    // The two ramps of a diagonal of n steps; the half ramp goes on as long as the third ramp does.
    BlendRamp<Weights> Third(int32_t n) const { return DiagonalRamp(Weights::kThird, n); }
    BlendRamp<Weights> Half(int32_t n) const { return DiagonalRamp(Weights::kHalf, n); }

    // The listed weights of a ramp, or null where the lengths or the ramp are too long to be listed.
    const RampWeights<Weights>* ListedStair(int32_t n, int32_t farRun) {
        if (n > kLongest || farRun > kLongest) return nullptr;
        return Listed(stairs[n - 1][farRun], [&] { return Stair(n, farRun); });
    }
    const RampWeights<Weights>* ListedTail(int32_t n) {
        if (n > kLongest) return nullptr;
        return Listed(tails[n - 1], [&] { return Tail(n); });
    }

    // The weights of a diagonal's ramps, as many of each; null also where they outlast the n steps.
    struct FadeWeights {
        const RampWeights<Weights>* third;
        const RampWeights<Weights>* half;
    };
    FadeWeights ListedFade(int32_t n) {
        if (n > kLongest) return {nullptr, nullptr};
        RampWeights<Weights>& third = thirds[n - 1];
        RampWeights<Weights>& half = halves[n - 1];
        if (third.state == RampWeights<Weights>::kUnknown) {
            third.List(Third(n));
            if (third.count > n) third.state = RampWeights<Weights>::kTooLong;
            if (third.state == RampWeights<Weights>::kListed) half.List(Half(n), third.count);
        }
        if (third.state != RampWeights<Weights>::kListed) return {nullptr, nullptr};
        return {&third, &half};
    }

private:
    static constexpr int32_t kLongest = 8;  // a table of 6 KB

    BlendRamp<Weights> DiagonalRamp(typename Weights::Weight fullWeight, int32_t n) const {
        return {false, fullWeight, fullWeight, RampStep<Weights>(softness, n), bias};
    }

    template <class Make>
    const RampWeights<Weights>* Listed(RampWeights<Weights>& entry, Make make) {
        if (entry.state == RampWeights<Weights>::kUnknown) entry.List(make());
        return entry.state == RampWeights<Weights>::kListed ? &entry : nullptr;
    }

    int32_t softness, bias, tailBias;
    RampWeights<Weights> stairs[kLongest][kLongest + 1] = {};
    RampWeights<Weights> tails[kLongest] = {};
    RampWeights<Weights> thirds[kLongest] = {};
    RampWeights<Weights> halves[kLongest] = {};
};

}  // namespace stairmelt::inline STAIRMELT_SET
