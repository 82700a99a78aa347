// What a visit of a pixel can do to the picture, as numbered kinds, and the record that requests it. The planner
// (block_planner.h) writes these records from the flags alone; the painter (painter.h) carries them out in one format.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/visit_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

// In the order in which a visit does them.
enum ActionKind : uint8_t {
    // The right edge.
    kLeftRun,
    kLeftTail,
    kRightRun,
    kRightTail,
    kRiserFade,  // four, by kRiserDiagonals: of each the blends, then the restores
    kContactRightBlend = kRiserFade + 8,
    kContactLeftBlend,
    kRestoreRight,  // three, by the rules' order
    // The bottom edge.
    kUpRun = kRestoreRight + 3,
    kUpTail,
    kDownRun,
    kDownTail,
    kTreadFade,  // four, by kTreadDiagonals
    kRestoreDown = kTreadFade + 8,
    kRestoreCorner = kRestoreDown + 3,
    // The corners.
    kAverage = kRestoreCorner + 2,
    kRestoreMostAbove,  // the first rule's pixel
    kRestoreMostHere,   // that of the other rules, which share one blend
    kSixth,             // eight
    kActionKinds = kSixth + 8,
};

// Runs and tails are numbered in the order of directions.
constexpr bool IsRunOrTail(int kind) { return kind < kRiserFade || (kind >= kUpRun && kind < kTreadFade); }
constexpr bool IsTail(int kind) { return kind < kUpRun ? kind % 2 != 0 : (kind - kUpRun) % 2 != 0; }
constexpr const RunScanner& ScannerOf(int kind) {
    return kDirections[kind < kUpRun ? kind / 2 : 2 + (kind - kUpRun) / 2].forth;
}
constexpr bool IsFade(int kind) {
    return (kind >= kRiserFade && kind < kContactRightBlend) || (kind >= kTreadFade && kind < kRestoreDown);
}
// For fades: the diagonal, and whether this is the part that restores.
constexpr const Diagonal& DiagonalOf(int kind) {
    return kind < kTreadFade ? kRiserDiagonals[(kind - kRiserFade) / 2] : kTreadDiagonals[(kind - kTreadFade) / 2];
}
constexpr bool IsRestoringFade(int kind) {
    return IsFade(kind) && (kind - (kind < kTreadFade ? kRiserFade : kTreadFade)) % 2 != 0;
}

// A fade's blends and restores are on different diagonals, so that they can be made one after the other.
constexpr bool IsBesideStaircase(const Diagonal& diagonal) {
    return diagonal.sourceX * diagonal.stepY != diagonal.sourceY * diagonal.stepX;
}
static_assert(std::all_of(kRiserDiagonals, kRiserDiagonals + 4, IsBesideStaircase) &&
              std::all_of(kTreadDiagonals, kTreadDiagonals + 4, IsBesideStaircase));

// What the decisions know about runs of one and two cells: three bits for each direction, in the order left, right, up,
// down. They are also the number of the run's ramp.
enum RunFact { kHasTwoCells, kFarIsOne, kFarIsTwo, kRunFacts };
constexpr int kShortRuns = 1 << kRunFacts;
constexpr RunPair ShortRun(int facts) { return {(facts >> kHasTwoCells & 1) + 1, facts >> kFarIsOne & 3}; }

// Ramps are numbered: those of short runs by their facts, of single blends by their weight, of measured runs, tails and
// diagonals by their lengths in cells. All longer ones share one number.
constexpr int32_t kMaxLength = 8;
constexpr int kFarLengths = kMaxLength + 1 - kBesideDot;
enum RampNumber : uint8_t {
    kBlendRamps = kShortRuns,
    kStairRamps = kBlendRamps + 4,
    kTailRamps = kStairRamps + kMaxLength * kFarLengths,
    kThirdRamps = kTailRamps + kMaxLength,  // of a diagonal's blends
    kHalfRamps = kThirdRamps + kMaxLength,  // of its restores
    kLongRamp = kHalfRamps + kMaxLength,
    kRampNumbers,
};
static_assert(static_cast<int>(BlendWeight::kOneSixth) < kStairRamps - kBlendRamps);

constexpr uint8_t StairRampNumber(const RunPair& run) {
    assert(run.length >= 1 && run.farLength >= kBesideDot);
    if (run.length > kMaxLength || run.farLength > kMaxLength) return kLongRamp;
    return static_cast<uint8_t>(kStairRamps + (run.length - 1) * kFarLengths + run.farLength - kBesideDot);
}
// first: kTailRamps, kThirdRamps or kHalfRamps.
constexpr uint8_t RampNumberOf(RampNumber first, int32_t length) {
    assert(length >= 1);
    return static_cast<uint8_t>(length > kMaxLength ? static_cast<int32_t>(kLongRamp) : first + length - 1);
}

// The lengths that a number stands for, except for single blends and kLongRamp. Tails and diagonals have no far length.
constexpr RunPair RunOfRamp(int ramp) {
    if (ramp < kShortRuns) return ShortRun(ramp);
    if (ramp >= kTailRamps) return {(ramp - kTailRamps) % kMaxLength + 1, 0};
    return {(ramp - kStairRamps) / kFarLengths + 1, (ramp - kStairRamps) % kFarLengths + kBesideDot};
}

// The blend of each kind that makes a single one; {} for other kinds.
using BlendTable = std::array<Blend, kActionKinds>;
template <class... Rules>
constexpr void SetBlends(BlendTable& table, size_t kind) {
    ((table[kind++] = Rules::kBlend), ...);
}
constexpr BlendTable MakeBlends() {
    BlendTable table{};
    table[kContactRightBlend] = kContactRight;
    table[kContactLeftBlend] = kContactLeft;
    SetBlends<RestoreRight1, RestoreRight2, RestoreRight3>(table, kRestoreRight);
    SetBlends<RestoreDown1, RestoreDown2, RestoreDown3>(table, kRestoreDown);
    SetBlends<RestoreCorner1, RestoreCorner2>(table, kRestoreCorner);
    SetBlends<RestoreMost1, RestoreMost2>(table, kRestoreMostAbove);
    SetBlends<Sixth1, Sixth2, Sixth3, Sixth4, Sixth5, Sixth6, Sixth7, Sixth8>(table, kSixth);
    return table;
}
inline constexpr BlendTable kBlends = MakeBlends();

// The number of a ramp that isn't measured: `first`, plus a run's facts.
struct KindRamp {
    uint8_t first, factShift;
};
constexpr std::array<KindRamp, kActionKinds> MakeKindRamps() {
    std::array<KindRamp, kActionKinds> table{};
    constexpr uint8_t kNoFacts = 4 * kRunFacts;
    for (size_t kind = 0; kind < kActionKinds; ++kind) {
        table[kind] = {static_cast<uint8_t>(kBlendRamps + static_cast<int>(kBlends[kind].weight)), kNoFacts};
    }
    table[kLeftRun] = {0, 0};
    table[kRightRun] = {0, kRunFacts};
    table[kUpRun] = {0, 2 * kRunFacts};
    table[kDownRun] = {0, 3 * kRunFacts};
    return table;
}
inline constexpr std::array<KindRamp, kActionKinds> kKindRamps = MakeKindRamps();

// The distance from the image's border at which a visited pixel is inner: ramps of kMaxCached pixels stay inside the
// image even where vectors process four pixels at a time.
constexpr int32_t kMaxCached = 12;
constexpr int32_t kMargin = kMaxCached + 4;

// One thing to do.
struct Action {
    int32_t x, y;  // the visited pixel
    uint8_t kind;  // an ActionKind
    uint8_t ramp;  // a RampNumber; unused for kAverage
    uint8_t span;  // for kAverage: the number of pixels from x on to the right
    bool isInner;  // no cached ramp reaches the image's border
};

// How a kind walks over pixels, or which single one it changes; in bytes.
struct Stroke {
    ptrdiff_t to, from;              // from the visited pixel to the first one, and to the one that it moves toward
    ptrdiff_t advance, fromAdvance;  // from one pixel to the next; 0 for a single pixel
};

// Receives the actions in the order of the scan.
class ActionSink {
public:
    // lengths: one entry for each action whose ramp is kLongRamp, in their order.
    virtual void Perform(const Action* actions, int count, const RunPair* lengths) = 0;

protected:
    ~ActionSink() = default;
};

}  // namespace stairmelt::inline STAIRMELT_SET
