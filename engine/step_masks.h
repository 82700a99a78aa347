// Decides for all pixels of a block at once what a visit of each would do: one word for each thing that can be done,
// one bit for each pixel. The decisions are those of stair_scan.h, pixel by pixel; all of them rest on flags alone,
// which the scan never changes, so that they can be made ahead of the visits.
#pragma once

#include <cstdint>

#include "engine/diagonal_measure.h"
#include "engine/flag_block.h"
#include "engine/run_rules.h"
#include "engine/scan_patterns.h"

namespace stairmelt::inline STAIRMELT_SET {

// What applies at each pixel of a block, in the order in which a visit does it.
template <class Word>
struct StepMasks {
    // The right edge.
    Word leftRun, leftTail, rightRun, rightTail;
    Word riserFade[4];               // by kRiserDiagonals
    Word contactRight, contactLeft;  // the pixel beyond the edge, the pixel itself
    Word restoreRight[3];            // by the rules' order; at most one of them
    // The bottom edge.
    Word upRun, upTail, downRun, downTail;
    Word treadFade[4];  // by kTreadDiagonals
    Word restoreDown[3];
    Word restoreCorner[2];
    // The corners.
    Word average;
    Word restoreMost[2];  // the first rule's pixel, the pixel itself
    Word sixth[8];
    // Unions: is anything of this kind done at all?
    Word rightEdge, bottomEdge, corner, any;
};

// Where the walk's cell number kCell, counted from 1, goes on.
template <RunScanner kScanner, Walk kWalk, int kCell, class Word>
Word WalkGoesOn(const FlagBlock<Word>& block) {
    constexpr int dx = kScanner.dx * kCell, dy = kScanner.dy * kCell;
    return block.template WhereAll<Not(Moved(kScanner.end, dx, dy)), Not(Moved(kWalk.breakIfSet, dx, dy)),
                                   Moved(kWalk.breakIfClear, dx, dy)>();
}

// Where the walk counts at least one cell and isn't dropped as a long run without confirmation.
template <RunScanner kScanner, Walk kWalk, class Word>
Word WalkCounts(const FlagBlock<Word>& block) {
    static_assert(kLongRun == 3);
    const Word isLong = WalkGoesOn<kScanner, kWalk, 2>(block) & WalkGoesOn<kScanner, kWalk, 3>(block);
    return WalkGoesOn<kScanner, kWalk, 1>(block) & block.template Where<Not(kWalk.guard)>() &
           (~isLong | block.template Where<kWalk.confirmation>());
}

// Where the scanner finds a run.
template <RunScanner kScanner, class Word>
Word HasRun(const FlagBlock<Word>& block) {
    return WalkCounts<kScanner, kScanner.first>(block) | WalkCounts<kScanner, kScanner.second>(block);
}

// Where there is a tail, as long as no run was found.
template <TailRule kRule, class Word>
Word HasTail(const FlagBlock<Word>& block) {
    constexpr int dx = kRule.dx, dy = kRule.dy;
    return block.template WhereAll<Not(Moved(kRule.end, dx, dy)), Not(Moved(kRule.nearBreak, dx, dy)),
                                   Moved(kRule.nearSide, dx, dy), Not(Moved(kRule.farBreak, dx, dy)),
                                   Moved(kRule.farSide, dx, dy), Not(kRule.clear[0]), Not(kRule.clear[1]),
                                   Not(kRule.clear[2]), Not(kRule.clear[3]), Not(kRule.clear[4])>();
}

template <Diagonal kDiagonal, int kStep, class Word>
Word DiagonalGoesOn(const FlagBlock<Word>& block) {
    constexpr int dx = kDiagonal.startX + kStep * kDiagonal.stepX, dy = kDiagonal.startY + kStep * kDiagonal.stepY;
    return block.template WhereAll<FlagTest{dx, dy, kDiagonal.continueFlag, true},
                                   Not(Moved(kDiagonal.stop[0], dx, dy)), Not(Moved(kDiagonal.stop[1], dx, dy))>();
}

// Where the diagonal is long enough to be faded.
template <Diagonal kDiagonal, class Word>
Word HasDiagonal(const FlagBlock<Word>& block) {
    static_assert(kShortestDiagonal == 2);
    return DiagonalGoesOn<kDiagonal, 0>(block) & DiagonalGoesOn<kDiagonal, 1>(block);
}

// Where all four sides are edges, or three of them, and the diagonals say that the pixel's colour doesn't go on past
// its corners.
template <class Word>
Word IsLoneOrSpikeTip(const FlagBlock<Word>& block) {
    const Word nw = block.template Where<X(-1, -1)>(), se = block.template Where<X(0, 0)>();
    const Word ne = block.template Where<A(0, -1)>(), sw = block.template Where<A(-1, 0)>();
    const Word left = block.template Where<R(-1, 0)>(), right = block.template Where<R(0, 0)>();
    const Word top = block.template Where<D(0, -1)>(), bottom = block.template Where<D(0, 0)>();
    const Word lone = left & right & top & bottom & (se | nw) & (ne | sw);
    const Word tip = (~left & right & top & bottom & ne & se) | (left & ~right & top & bottom & sw & nw) |
                     (left & right & ~top & bottom & sw & se) | (left & right & top & ~bottom & ne & nw);
    return lone | (tip & ~(nw & se & ne & sw));
}

// Which columns of the image some of the decisions are confined to.
template <class Word>
struct Limits {
    Word allButLastThree;
    Word allButFirst;
};

// The right edge: what is in masks.rightEdge and the words before it. Returns where a tail is found.
template <class Word>
Word DecideRightEdge(const FlagBlock<Word>& block, StepMasks<Word>& masks) {
    const Word hasRight = block.template Where<R(0, 0)>();
    if (IsZero(hasRight)) {
        masks.rightEdge = Word{};
        return Word{};
    }
    const Word leftRun = HasRun<kScanLeft>(block), rightRun = HasRun<kScanRight>(block);
    const Word leftTail = HasTail<kTailLeft>(block) & ~leftRun, rightTail = HasTail<kTailRight>(block) & ~rightRun;
    masks.leftRun = leftRun & hasRight;
    masks.leftTail = leftTail & hasRight;
    masks.rightRun = rightRun & hasRight;
    masks.rightTail = rightTail & hasRight;

    const Word isStraight = block.WhereAll(StraightRiser{});
    masks.riserFade[0] = isStraight & HasDiagonal<kRiserDiagonals[0]>(block);
    masks.riserFade[1] = isStraight & HasDiagonal<kRiserDiagonals[1]>(block);
    masks.riserFade[2] = isStraight & HasDiagonal<kRiserDiagonals[2]>(block);
    masks.riserFade[3] = isStraight & HasDiagonal<kRiserDiagonals[3]>(block);
    const Word fade = masks.riserFade[0] | masks.riserFade[1] | masks.riserFade[2] | masks.riserFade[3];

    // Diagonals of both directions cut the step.
    const Word isCut = (block.template Where<A(0, 0)>() | block.template Where<A(0, -1)>()) &
                       (block.template Where<X(0, 0)>() | block.template Where<X(0, -1)>());
    const Word mayTouch = hasRight & ~fade & ~isCut;
    masks.contactRight = mayTouch & ~(rightRun | rightTail);
    masks.contactLeft = mayTouch & ~(leftRun | leftTail);

    masks.restoreRight[0] = hasRight & block.WhereAll(RestoreRight1{});
    masks.restoreRight[1] = hasRight & block.WhereAll(RestoreRight2{}) & ~masks.restoreRight[0];
    masks.restoreRight[2] =
        hasRight & block.WhereAll(RestoreRight3{}) & ~(masks.restoreRight[0] | masks.restoreRight[1]);

    masks.rightEdge = masks.leftRun | masks.leftTail | masks.rightRun | masks.rightTail | fade | masks.contactRight |
                      masks.contactLeft | masks.restoreRight[0] | masks.restoreRight[1] | masks.restoreRight[2];
    return masks.leftTail | masks.rightTail;
}

// The same for the bottom edge.
template <class Word>
Word DecideBottomEdge(const FlagBlock<Word>& block, StepMasks<Word>& masks) {
    const Word hasDown = block.template Where<D(0, 0)>();
    if (IsZero(hasDown)) {
        masks.bottomEdge = Word{};
        return Word{};
    }
    const Word upRun = HasRun<kScanUp>(block), downRun = HasRun<kScanDown>(block);
    masks.upRun = upRun & hasDown;
    masks.upTail = HasTail<kTailUp>(block) & ~upRun & hasDown;
    masks.downRun = downRun & hasDown;
    masks.downTail = HasTail<kTailDown>(block) & ~downRun & hasDown;

    const Word isStraight = block.WhereAll(StraightTread{});
    masks.treadFade[0] = isStraight & HasDiagonal<kTreadDiagonals[0]>(block);
    masks.treadFade[1] = isStraight & HasDiagonal<kTreadDiagonals[1]>(block);
    masks.treadFade[2] = isStraight & HasDiagonal<kTreadDiagonals[2]>(block);
    masks.treadFade[3] = isStraight & HasDiagonal<kTreadDiagonals[3]>(block);
    const Word fade = masks.treadFade[0] | masks.treadFade[1] | masks.treadFade[2] | masks.treadFade[3];

    const Word hasBoth = hasDown & block.template Where<R(0, 0)>();
    masks.restoreDown[0] = hasDown & block.WhereAll(RestoreDown1{});
    masks.restoreDown[1] = hasDown & block.WhereAll(RestoreDown2{}) & ~masks.restoreDown[0];
    masks.restoreDown[2] = hasDown & block.WhereAll(RestoreDown3{}) & ~(masks.restoreDown[0] | masks.restoreDown[1]);
    masks.restoreCorner[0] = hasBoth & block.WhereAll(RestoreCorner1{});
    masks.restoreCorner[1] = hasBoth & block.WhereAll(RestoreCorner2{}) & ~masks.restoreCorner[0];

    masks.bottomEdge = masks.upRun | masks.upTail | masks.downRun | masks.downTail | fade | masks.restoreDown[0] |
                       masks.restoreDown[1] | masks.restoreDown[2] | masks.restoreCorner[0] | masks.restoreCorner[1];
    return masks.upTail | masks.downTail;
}

// The corners. hasTail: where a tail was found on either edge.
template <class Word>
void DecideCorners(const FlagBlock<Word>& block, const Word& hasTail, const Limits<Word>& limits, int32_t y,
                   StepMasks<Word>& masks) {
    const Word hasEdge = block.template Where<R(0, 0)>() | block.template Where<D(0, 0)>();
    masks.average = hasEdge & ~hasTail & IsLoneOrSpikeTip(block);
    const Word mayRestore = ~hasTail & ~masks.average;
    masks.restoreMost[0] = mayRestore & block.WhereAll(RestoreMost1{}) & limits.allButLastThree;
    if (y <= 2) masks.restoreMost[0] = Word{};
    masks.restoreMost[1] =
        mayRestore & ~masks.restoreMost[0] & limits.allButFirst &
        (block.WhereAll(RestoreMost2{}) | block.WhereAll(RestoreMost3{}) | block.WhereAll(RestoreMost4{}));
    masks.sixth[0] = block.WhereAll(Sixth1{});
    masks.sixth[1] = block.WhereAll(Sixth2{});
    masks.sixth[2] = block.WhereAll(Sixth3{});
    masks.sixth[3] = block.WhereAll(Sixth4{});
    masks.sixth[4] = block.WhereAll(Sixth5{});
    masks.sixth[5] = block.WhereAll(Sixth6{});
    masks.sixth[6] = block.WhereAll(Sixth7{});
    masks.sixth[7] = block.WhereAll(Sixth8{});
    masks.corner = masks.average | masks.restoreMost[0] | masks.restoreMost[1];
    for (const Word& sixth : masks.sixth) masks.corner = masks.corner | sixth;
}

// y: the block's row. Pixels beyond the image's last column get bits without a meaning, and the words of an edge that
// no pixel of the block has are left as they are.
template <class Word>
void DecideSteps(const FlagBlock<Word>& block, const Limits<Word>& limits, int32_t y, StepMasks<Word>& masks) {
    const Word tailRight = DecideRightEdge(block, masks);
    const Word tailDown = DecideBottomEdge(block, masks);
    DecideCorners<Word>(block, tailRight | tailDown, limits, y, masks);
    masks.any = masks.rightEdge | masks.bottomEdge | masks.corner;
}

}  // namespace stairmelt::inline STAIRMELT_SET
