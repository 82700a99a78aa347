// What a visit of a pixel can do to the picture, as numbered kinds, and the record that requests it. The planner
// (block_planner.h) writes these records from the flags alone; the painter (painter.h) carries them out in one format.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/visit_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

// Most runs are one of these, and recognised without measuring.
constexpr RunPair kShortRuns[] = {{1, 0}, {1, 1}, {2, 0}, {2, 1}, {2, 2}};
constexpr int kShortRunKinds = static_cast<int>(std::size(kShortRuns));
constexpr int kRunKinds = kShortRunKinds + 1;

// In the order in which a visit does them; what fades restore comes with their blends.
enum ActionKind : uint8_t {
    // The right edge.
    kLeftRun,  // in each direction six: by kShortRuns, then one for all other runs and for tails
    kRightRun = kLeftRun + kRunKinds,
    kRiserFade = kRightRun + kRunKinds,  // four pairs, by kRiserDiagonals: of two cells, of more
    kContactRightBlend = kRiserFade + 8,
    kContactLeftBlend,
    kContactBlends,  // both
    kRestoreRight,   // three, by the rules' order
    // The bottom edge.
    kUpRun = kRestoreRight + 3,
    kDownRun = kUpRun + kRunKinds,
    kTreadFade = kDownRun + kRunKinds,  // four pairs, by kTreadDiagonals
    kRestoreDown = kTreadFade + 8,
    kRestoreCorner = kRestoreDown + 3,
    // The corners.
    kAverage = kRestoreCorner + 2,
    kRestoreMostAbove,  // the first rule's pixel
    kRestoreMostHere,   // that of the other rules, which share one blend
    kSixth,             // eight
    kDecidedKinds = kSixth + 8,
    // What fades restore: eight, by kRiserDiagonals, then by kTreadDiagonals. Never actions of their own.
    kFadeRestore = kDecidedKinds,
    kActionKinds = kFadeRestore + 8,
};
constexpr ActionKind kRunsOf[4] = {kLeftRun, kRightRun, kUpRun, kDownRun};  // by RunDirection

// The ways along which runs and fades are measured: four by RunDirection, then the eight diagonals.
constexpr int kFirstDiagonal = 4, kWays = kFirstDiagonal + 8;
constexpr const Diagonal& DiagonalOf(int way) {
    return way < kFirstDiagonal + 4 ? kRiserDiagonals[way - kFirstDiagonal] : kTreadDiagonals[way - kFirstDiagonal - 4];
}

// A fade's blends and restores are on different diagonals, so that they can be made one after the other.
constexpr bool IsBesideStaircase(const Diagonal& diagonal) {
    return diagonal.sourceX * diagonal.stepY != diagonal.sourceY * diagonal.stepX;
}
static_assert(std::all_of(kRiserDiagonals, kRiserDiagonals + 4, IsBesideStaircase) &&
              std::all_of(kTreadDiagonals, kTreadDiagonals + 4, IsBesideStaircase));

// Ramps are numbered: those of single blends by their weight, of runs, tails and diagonals by their lengths in cells.
// Longer ones share one of the two last numbers.
constexpr int32_t kMaxLength = 12;
constexpr int kFarLengths = kMaxLength + 1 - kBesideDot;
enum RampNumber : uint8_t {
    kBlendRamps,
    kBothContacts = kBlendRamps + 4,
    kStairRamps,
    kTailRamps = kStairRamps + kMaxLength * kFarLengths,
    kThirdRamps = kTailRamps + kMaxLength,  // of a diagonal's blends
    kHalfRamps = kThirdRamps + kMaxLength,  // of what it restores, in the same order
    kLongRamp = kHalfRamps + kMaxLength,
    kLongTail,
    kRampNumbers,
    kUnmeasured = kLongRamp,  // of kinds whose lengths have to be measured, and of their actions until then
};
static_assert(static_cast<int>(BlendWeight::kOneSixth) < kBothContacts - kBlendRamps);

constexpr uint8_t StairRampNumber(const RunPair& run) {
    assert(run.length >= 1 && run.farLength >= kBesideDot);
    if (run.length > kMaxLength || run.farLength > kMaxLength) return kLongRamp;
    return static_cast<uint8_t>(kStairRamps + (run.length - 1) * kFarLengths + run.farLength - kBesideDot);
}
// first: kTailRamps, kThirdRamps or kHalfRamps.
constexpr uint8_t RampNumberOf(RampNumber first, int32_t length) {
    assert(length >= 1);
    if (length > kMaxLength) return first == kTailRamps ? kLongTail : kLongRamp;
    return static_cast<uint8_t>(first + length - 1);
}
constexpr uint8_t HalfRampOf(uint8_t third) { return static_cast<uint8_t>(third + kHalfRamps - kThirdRamps); }
constexpr bool IsTail(int ramp) { return (ramp >= kTailRamps && ramp < kThirdRamps) || ramp == kLongTail; }

// The lengths that a number stands for, except for blends and long ones. Tails and diagonals have no far length.
constexpr RunPair RunOfRamp(int ramp) {
    if (ramp >= kTailRamps) return {(ramp - kTailRamps) % kMaxLength + 1, 0};
    return {(ramp - kStairRamps) / kFarLengths + 1, (ramp - kStairRamps) % kFarLengths + kBesideDot};
}

// Where a kind changes pixels: offsets in pixels from the visited one.
struct Track {
    int toX, toY, fromX, fromY;  // the first changed pixel, and the one that it moves toward
    int stepX, stepY;            // from one changed pixel to the next; 0 for a single one
    int fromStepX = 0, fromStepY = 0;
};
enum class Shape : uint8_t { kBlend, kRun, kFade };

// What an action of a kind does. Of what fades restore, only the track is set.
struct KindInfo {
    Track track;
    Shape shape;
    uint8_t ramp;         // a RampNumber
    uint8_t way;          // of a run or a fade
    uint8_t restore = 0;  // the kind of what a fade restores; 0: nothing
};

using KindTable = std::array<KindInfo, kActionKinds>;
constexpr void SetRuns(KindTable& table, uint8_t direction) {
    const int dx = kDirections[direction].forth.dx, dy = kDirections[direction].forth.dy;
    // As PaintRun (rules/walks.h).
    const Track track = dx + dy > 0 ? Track{dx, dy, 0, 0, dx, dy} : Track{0, 0, -dx, -dy, dx, dy};
    size_t kind = kRunsOf[direction];
    for (const RunPair& run : kShortRuns) table[kind++] = {track, Shape::kRun, StairRampNumber(run), direction};
    table[kind] = {track, Shape::kRun, kUnmeasured, direction};
}
constexpr void SetFades(KindTable& table, size_t kind, uint8_t way) {
    const Diagonal& diagonal = DiagonalOf(way);
    const int fromX = diagonal.pixelX + diagonal.sourceX, fromY = diagonal.pixelY + diagonal.sourceY;
    const int dx = diagonal.stepX, dy = diagonal.stepY;
    const Track track = {diagonal.pixelX, diagonal.pixelY, fromX, fromY, dx, dy, dx, dy};
    const uint8_t restore = diagonal.restores ? static_cast<uint8_t>(kFadeRestore + way - kFirstDiagonal) : 0;
    table[kind] = {track, Shape::kFade, RampNumberOf(kThirdRamps, kShortestDiagonal), way, restore};
    table[kind + 1] = {track, Shape::kFade, kUnmeasured, way, restore};
    if (restore != 0) table[restore].track = {fromX, fromY, fromX, fromY, dx, dy, dx, dy};
}
template <size_t kCount>
constexpr void SetBlends(KindTable& table, size_t kind, const Blend (&blends)[kCount]) {
    for (const Blend& blend : blends) {
        const uint8_t ramp = static_cast<uint8_t>(kBlendRamps + static_cast<int>(blend.weight));
        table[kind++] = {{blend.dx, blend.dy, blend.fromDx, blend.fromDy, 0, 0}, Shape::kBlend, ramp, 0};
    }
}
constexpr KindTable MakeKinds() {
    KindTable table{};  // has nothing for kAverage
    for (uint8_t direction = 0; direction < 4; ++direction) SetRuns(table, direction);
    for (uint8_t i = 0; i < 4; ++i) {
        SetFades(table, kRiserFade + size_t{2} * i, kFirstDiagonal + i);
        SetFades(table, kTreadFade + size_t{2} * i, kFirstDiagonal + 4 + i);
    }
    SetBlends(table, kContactRightBlend, {kContactRight, kContactLeft});
    table[kContactBlends] = {{0, 0, 1, 0, 1, 0, -1, 0}, Shape::kBlend, kBothContacts, 0};
    SetBlends(table, kRestoreRight, {RestoreRight1::kBlend, RestoreRight2::kBlend, RestoreRight3::kBlend});
    SetBlends(table, kRestoreDown, {RestoreDown1::kBlend, RestoreDown2::kBlend, RestoreDown3::kBlend});
    SetBlends(table, kRestoreCorner, {RestoreCorner1::kBlend, RestoreCorner2::kBlend});
    SetBlends(table, kRestoreMostAbove, {RestoreMost1::kBlend, RestoreMost2::kBlend});
    SetBlends(table, kSixth,
              {Sixth1::kBlend, Sixth2::kBlend, Sixth3::kBlend, Sixth4::kBlend, Sixth5::kBlend, Sixth6::kBlend,
               Sixth7::kBlend, Sixth8::kBlend});
    return table;
}
inline constexpr KindTable kKinds = MakeKinds();

// The distance from the image's border at which a visited pixel is inner: cached ramps, of at most kMaxCached pixels,
// stay inside the image, and so do the pixels that they move toward, at most one farther away, and a pixel beside them.
constexpr int32_t kMaxCached = 12;
constexpr int32_t kMargin = kMaxCached + 2;

// One thing to do.
struct Action {
    int32_t x, y;  // the visited pixel
    uint8_t kind;  // an ActionKind below kDecidedKinds
    uint8_t ramp;  // a RampNumber; unused for kAverage
    uint8_t span;  // for kAverage: the number of pixels from x on to the right
    bool isInner;  // no cached ramp reaches the image's border
};

// A Track in bytes.
struct Stroke {
    ptrdiff_t to, from, advance, fromAdvance;
};

// Receives the actions in the order of the scan.
class ActionSink {
public:
    // lengths: one entry for each action; set for those whose ramp is long.
    virtual void Perform(const Action* actions, int count, const RunPair* lengths) = 0;

protected:
    ~ActionSink() = default;
};

}  // namespace stairmelt::inline STAIRMELT_SET
