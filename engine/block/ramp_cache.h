// The weights of the ramps that a picture needs again and again: those of short runs, tails and diagonals. A ramp
// depends on the job's values and on one or two lengths alone; its weights are computed on first use.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>

#include "engine/block/action.h"
#include "engine/image.h"
#include "engine/rules/ramp.h"
#include "engine/rules/run_softness.h"

namespace stairmelt::inline STAIRMELT_SET {

// The weights of a walk, pixel by pixel, bent by the bias.
template <class Weights>
struct CachedRamp {
    enum State : uint8_t {  // from what can't be painted to what any stroke can
        kUnknown,
        kTooLong,
        kOutOfRange,  // a weight is below 0 or above kWhole
        kReady,
    };

    State state;
    static_assert(kMaxCached % 2 == 0);
    int32_t count;                                 // until the weight runs out
    typename Weights::Weight weights[kMaxCached];  // zero after the last one: they may be read in pairs

    // Stores the first `length` weights of a ramp, whether it ends there or not.
    void Fill(BlendRamp<Weights> ramp, int32_t length) {
        assert(length <= kMaxCached);
        state = kReady;
        for (count = 0; count < length; ++count) {
            const auto weight = NextBentWeight(ramp);
            if (!(weight >= 0 && weight <= Weights::kWhole)) state = kOutOfRange;
            weights[count] = weight;
        }
    }

    // Stores all weights of a ramp, unless there are too many.
    void Fill(BlendRamp<Weights> ramp) {
        BlendRamp<Weights> walk = ramp;
        int32_t length = 0;
        for (; !walk.finished && length <= kMaxCached; ++length) NextRampWeight(walk);
        state = kTooLong;
        if (length <= kMaxCached) Fill(ramp, length);
    }
};

template <class Weights>
class RampCache {
public:
    using Weight = typename Weights::Weight;
    using Cached = CachedRamp<Weights>;

    RampCache(const KernelJob& job, int32_t biasOfTails, Weight cornerWeight)
        : softness(job.softness), bias(job.bias), tailBias(biasOfTails) {
        Cached* ramp = ramps + kBlendRamps;
        for (const Weight weight : BlendWeightsOf<Weights>(cornerWeight)) {
            const bool isInRange = weight >= 0 && weight <= Weights::kWhole;
            *ramp++ = {isInRange ? Cached::kReady : Cached::kOutOfRange, 1, {weight}};
        }
        *ramp = ramps[kBlendRamps + static_cast<int>(BlendWeight::kContact)];
        ramp->weights[ramp->count++] = cornerWeight;
        ramps[kLongRamp].state = ramps[kLongTail].state = Cached::kTooLong;
    }

    // The weights of a numbered ramp.
    const Cached& Find(uint8_t ramp) {
        if (ramps[ramp].state == Cached::kUnknown) Fill(ramp);
        return ramps[ramp];
    }

    // The uncached ramps of a run, a tail and a diagonal; the latter starts at kThird or kHalf.
    BlendRamp<Weights> Stair(const RunPair& run) const {
        return StairRamp<Weights>(RunSoftness(softness, run), run.length, bias);
    }
    BlendRamp<Weights> Tail(int32_t n) const { return TailRamp<Weights>(softness, n, tailBias); }
    BlendRamp<Weights> Fade(Weight fullWeight, int32_t n) const {
        return FadeRamp<Weights>(fullWeight, softness, n, bias);
    }

private:
    void Fill(uint8_t ramp) {
        const RunPair run = RunOfRamp(ramp);
        if (ramp < kTailRamps) return ramps[ramp].Fill(Stair(run));
        if (ramp < kThirdRamps) return ramps[ramp].Fill(Tail(run.length));
        // Both parts of a fade share state and length, so that they are painted the same way.
        Cached& third = ramps[kThirdRamps + run.length - 1];
        Cached& half = ramps[kHalfRamps + run.length - 1];
        third.Fill(Fade(Weights::kThird, run.length));
        half.state = third.state;
        if (third.state != Cached::kTooLong) half.Fill(Fade(Weights::kHalf, run.length), third.count);
        third.state = half.state = std::min(third.state, half.state);
    }

    const int32_t softness, bias, tailBias;
    Cached ramps[kRampNumbers] = {};
};

}  // namespace stairmelt::inline STAIRMELT_SET
