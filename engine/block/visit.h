// What a visit of a pixel can do to the picture, as numbered kinds, and the record that asks for it. The planner
// (block_planner.h) writes these records from the flags alone; the painter (painter.h) carries them out in one format.
#pragma once

#include <cstdint>

#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/visit_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

// In the order in which a visit does them.
enum ActionKind : uint8_t {
    // The right edge.
    kLeftRun,
    kLeftTail,
    kRightRun,
    kRightTail,
    kRiserFade,  // four, by kRiserDiagonals
    kContactRightBlend = kRiserFade + 4,
    kContactLeftBlend,
    kRestoreRight,  // three, by the rules' order
    // The bottom edge.
    kUpRun = kRestoreRight + 3,
    kUpTail,
    kDownRun,
    kDownTail,
    kTreadFade,  // four, by kTreadDiagonals
    kRestoreDown = kTreadFade + 4,
    kRestoreCorner = kRestoreDown + 3,
    // The corners.
    kAverage = kRestoreCorner + 2,
    kRestoreMostAbove,  // the first rule's pixel
    kRestoreMostHere,   // the other rules'
    kSixth,             // eight
    kActionKinds = kSixth + 8,
};

constexpr uint64_t KindBits(int first, int count) { return ((uint64_t{1} << count) - 1) << first; }
constexpr uint64_t kRunKinds =
    KindBits(kLeftRun, 1) | KindBits(kRightRun, 1) | KindBits(kUpRun, 1) | KindBits(kDownRun, 1);
constexpr uint64_t kTailKinds = kRunKinds << 1;
constexpr uint64_t kFadeKinds = KindBits(kRiserFade, 4) | KindBits(kTreadFade, 4);

// What is known of the runs of one and two cells without measuring: three bits for each direction, in the order left,
// right, up, down. They are the index of a short run's RunPair.
enum RunFact { kHasTwoCells, kFarIsOne, kFarIsTwo, kRunFacts };
constexpr int kShortRuns = 1 << kRunFacts;
constexpr int kNoFacts = 16;  // a shift that leaves none of a visit's facts
constexpr RunPair ShortRun(int facts, int direction) {
    const int ofRun = facts >> kRunFacts * direction;
    return {(ofRun >> kHasTwoCells & 1) + 1, ofRun >> kFarIsOne & 3};
}

// A pixel, or a span of pixels in a row, at which something is done.
struct Visit {
    uint64_t kinds;     // bit k: kind k
    uint64_t measured;  // those with an entry in the lengths: tails, fades, and runs that the facts don't describe
    int32_t x, y;
    uint16_t facts;  // of all directions; valid for runs that aren't measured
    uint8_t span;    // 0, or so many pixels from x on to the right at which nothing but kAverage is done
};

// The diagonal that a kind fades.
constexpr const Diagonal& DiagonalOf(int kind) {
    return kind < kTreadFade ? kRiserDiagonals[kind - kRiserFade] : kTreadDiagonals[kind - kTreadFade];
}

// The blend that each kind makes; {} for kinds that aren't single blends.
struct BlendTable {
    Blend of[kActionKinds];
};
template <class... Rules>
constexpr void SetBlends(BlendTable& table, int kind) {
    ((table.of[kind++] = Rules::kBlend), ...);
}
constexpr BlendTable MakeBlends() {
    BlendTable table{};
    table.of[kContactRightBlend] = kContactRight;
    table.of[kContactLeftBlend] = kContactLeft;
    SetBlends<RestoreRight1, RestoreRight2, RestoreRight3>(table, kRestoreRight);
    SetBlends<RestoreDown1, RestoreDown2, RestoreDown3>(table, kRestoreDown);
    SetBlends<RestoreCorner1, RestoreCorner2>(table, kRestoreCorner);
    SetBlends<RestoreMost1, RestoreMost2>(table, kRestoreMostAbove);
    SetBlends<Sixth1, Sixth2, Sixth3, Sixth4, Sixth5, Sixth6, Sixth7, Sixth8>(table, kSixth);
    return table;
}
inline constexpr BlendTable kBlends = MakeBlends();

// Receives the visits in the order of the scan.
class VisitSink {
public:
    // lengths: one entry for each bit of the visits' `measured`, in their order; a tail's and a diagonal's have no far
    // length.
    virtual void Perform(const Visit* visits, int count, const RunPair* lengths) = 0;

protected:
    ~VisitSink() = default;
};

}  // namespace stairmelt::inline STAIRMELT_SET
