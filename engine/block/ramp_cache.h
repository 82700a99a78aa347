// The weights of the ramps that a picture needs again and again: those of short runs, tails and diagonals. A ramp
// depends on the job's values and on one or two lengths alone; its weights are computed when they are first wanted.
#pragma once

#include <cassert>
#include <cstdint>
#include <iterator>

#include "engine/block/visit.h"
#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/ramp.h"
#include "engine/rules/run_softness.h"

namespace stairmelt::inline STAIRMELT_SET {

// The weights of a walk, pixel by pixel, bent by the bias.
template <class Weights>
struct CachedRamp {
    static constexpr int32_t kMaxCount = 12;
    static constexpr int32_t kRoom = 24;  // wide loads read behind the last weight
    enum State : uint8_t { kUnknown, kCached, kTooLong };

    State state;
    bool isInRange;                           // every weight lies between 0 and kWhole
    int32_t count;                            // until the weight runs out
    typename Weights::Weight weights[kRoom];  // zero behind the last

    // The first `length` weights of a ramp, whether it ends or not.
    void Fill(BlendRamp<Weights> ramp, int32_t length) {
        assert(length <= kMaxCount);
        state = kCached;
        isInRange = true;
        for (count = 0; count < length; ++count) {
            const auto weight = NextBentWeight(ramp);
            isInRange = isInRange && weight >= 0 && weight <= Weights::kWhole;
            weights[count] = weight;
        }
    }

    // All weights of a ramp, unless they are too many.
    void Fill(BlendRamp<Weights> ramp) {
        BlendRamp<Weights> walk = ramp;
        int32_t length = 0;
        for (; !walk.finished && length <= kMaxCount; ++length) NextRampWeight(walk);
        state = kTooLong;
        if (length <= kMaxCount) Fill(ramp, length);
    }
};

// Where the ramps of a kind stand that are known without measuring, and its facts: short runs by their facts, then
// single blends by weight.
struct KnownRamp {
    uint8_t first, factShift;
};
struct KnownRampTable {
    KnownRamp of[kActionKinds];
};
constexpr KnownRampTable MakeKnownRamps() {
    KnownRampTable table{};
    for (int kind = 0; kind < kActionKinds; ++kind) {
        const int weight = static_cast<int>(kBlends.of[kind].weight);
        table.of[kind] = {static_cast<uint8_t>(kShortRuns + weight), kNoFacts};
    }
    table.of[kLeftRun] = {0, 0};
    table.of[kRightRun] = {0, kRunFacts};
    table.of[kUpRun] = {0, 2 * kRunFacts};
    table.of[kDownRun] = {0, 3 * kRunFacts};
    return table;
}
inline constexpr KnownRampTable kKnownRamps = MakeKnownRamps();

template <class Weights>
class RampCache {
public:
    using Weight = typename Weights::Weight;
    using Cached = CachedRamp<Weights>;

    RampCache(const KernelJob& job, int32_t biasOfTails, Weight cornerWeight)
        : softness(job.softness), bias(job.bias), tailBias(biasOfTails) {
        for (int facts = 0; facts < kShortRuns; ++facts) known[facts].Fill(Stair(ShortRun(facts, 0)));
        for (const BlendWeight blend : kBlendWeights) {
            const Weight weight = WeightOf<Weights>(blend, cornerWeight);
            const bool isInRange = weight >= 0 && weight <= Weights::kWhole;
            known[kShortRuns + static_cast<int>(blend)] = {Cached::kCached, isInRange, 1, {weight}};
        }
    }

    // The ramp of a run or a tail, and of a diagonal from kThird or kHalf on.
    BlendRamp<Weights> Stair(const RunPair& run) const {
        return StairRamp<Weights>(RunSoftness(softness, run), run.length, bias);
    }
    BlendRamp<Weights> Tail(int32_t n) const { return TailRamp<Weights>(softness, n, tailBias); }
    BlendRamp<Weights> Fade(Weight fullWeight, int32_t n) const {
        return FadeRamp<Weights>(fullWeight, softness, n, bias);
    }

    // The weights of a short run or a single blend. Null where the ramp is too long for the cache.
    const Cached* FindKnown(int kind, int facts) const {
        const KnownRamp& place = kKnownRamps.of[kind];
        const Cached& ramp = known[place.first + (facts >> place.factShift & (kShortRuns - 1))];
        return ramp.state == Cached::kCached ? &ramp : nullptr;
    }

    // The weights of a measured run or tail. Null where the lengths or the ramp are too long for the cache.
    const Cached* FindMeasured(bool isTail, const RunPair& run) {
        if (run.length > kMaxLength || run.farLength > kMaxLength) return nullptr;
        assert(run.length >= 1 && run.farLength >= kBesideDot);
        Cached& ramp = isTail ? tails[run.length - 1] : stairs[run.length - 1][run.farLength - kBesideDot];
        if (ramp.state == Cached::kUnknown) ramp.Fill(isTail ? Tail(run.length) : Stair(run));
        return ramp.state == Cached::kCached ? &ramp : nullptr;
    }

    // The weights of a diagonal's two ramps, as many of each. Null also where they outlast the n cells.
    struct FadePair {
        const Cached* third;
        const Cached* half;
    };
    FadePair FindFade(int32_t n) {
        if (n > kMaxLength) return {nullptr, nullptr};
        assert(n >= 1);
        Cached& third = thirds[n - 1];
        Cached& half = halves[n - 1];
        if (third.state == Cached::kUnknown) {
            third.Fill(Fade(Weights::kThird, n));
            if (third.count > n) third.state = Cached::kTooLong;
            if (third.state == Cached::kCached) half.Fill(Fade(Weights::kHalf, n), third.count);
        }
        if (third.state != Cached::kCached) return {nullptr, nullptr};
        return {&third, &half};
    }

private:
    static constexpr int32_t kMaxLength = 8;  // cells

    const int32_t softness, bias, tailBias;
    Cached known[kShortRuns + std::size(kBlendWeights)] = {};  // short runs by their facts, single blends by weight
    Cached stairs[kMaxLength][kMaxLength + 1 - kBesideDot] = {};
    Cached tails[kMaxLength] = {};
    Cached thirds[kMaxLength] = {};
    Cached halves[kMaxLength] = {};
};

}  // namespace stairmelt::inline STAIRMELT_SET
