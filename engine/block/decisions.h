// Decides for all pixels of a few blocks at once what a visit does there: the result is a bit mask of pixels for each
// kind of action. Decisions depend on the flags alone, which the scan never changes, so they can be made ahead of it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/block/action.h"
#include "engine/block/flag_block.h"
#include "engine/block/short_runs.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/visit_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

// The pixels to which some decisions are limited, by their position in the image.
template <class Words>
struct Limits {
    Words mayRestoreAbove;  // RestoreMost1
    Words farEndIsInside;   // of every short run
};

// The pixels that may be near a dot of 2 by 2 pixels, as FarLengthAtDot defines it.
template <class Words>
Words IsNearDot(const FlagBlocks<Words>& block) {
    const auto isAt = [&]<int kDy, FlagTest... kTests>(Pattern<kTests...>) {
        return WhereAll<Moved(kTests, 0, kDy)...>(block);
    };
    const Words dots = isAt.template operator()<-2>(IsolatedBlock{}) | isAt.template operator()<-1>(IsolatedBlock{}) |
                       isAt.template operator()<0>(IsolatedBlock{}) | isAt.template operator()<1>(IsolatedBlock{});
    return dots << 2 | dots << 1 | dots | dots >> 1;
}

// What is done at the pixels of some blocks.
template <class Words>
struct Decisions {
    static constexpr int kPaddedKinds = 64;  // read in groups of eight, and each has a bit in a set of kinds
    static_assert(kDecidedKinds <= kPaddedKinds);
    Words pixels[kPaddedKinds];  // by ActionKind: one bit for each pixel; those of the neighbours are meaningless

    Decisions() { std::fill(pixels + kDecidedKinds, pixels + kPaddedKinds, Words{}); }

    // Sets the first rule that holds.
    template <class... Rules>
    void SetFirst(int kind, const FlagBlocks<Words>& block, Words candidates) {
        const auto set = [&](Words where) {
            pixels[kind++] = candidates & where;
            candidates = candidates & ~where;
        };
        (set(Rules::Where(block)), ...);
    }

    // Sets the diagonals that leave a straight piece of edge and are long enough; returns where any does.
    template <const Diagonal (&kDiagonals)[4]>
    Words SetFades(int kind, const FlagBlocks<Words>& block, Words isStraight) {
        Words any = {};
        const auto set = [&]<Diagonal kDiagonal>() {
            const Words fade = isStraight & HasDiagonal<kDiagonal>(block);
            const Words isLonger = DiagonalGoesOn<kDiagonal, kShortestDiagonal>(block);
            pixels[kind++] = fade & ~isLonger;
            pixels[kind++] = fade & isLonger;
            any = any | fade;
        };
        set.template operator()<kDiagonals[0]>();
        set.template operator()<kDiagonals[1]>();
        set.template operator()<kDiagonals[2]>();
        set.template operator()<kDiagonals[3]>();
        return any;
    }

    // Sets where one direction of an edge has a run or else a tail; returns where it has either.
    template <RunDirection kDirection>
    Words SetRuns(const FlagBlocks<Words>& block, Words hasEdge, const Limits<Words>& limits, Words& hasTail) {
        constexpr int kind = kRunsOf[static_cast<int>(kDirection)];
        const ShortRuns<Words> found = FindShortRuns<kDirection>(block, hasEdge);
        const Words tail = hasEdge & HasTail<kDirection>(block) & ~found.any;
        hasTail = hasTail | tail;
        Words others = tail | found.any;
        for (int i = 0; i < kShortRunKinds; ++i) {
            const Words run = found.pixels[i] & limits.farEndIsInside;
            pixels[kind + i] = run;
            others = others & ~run;
        }
        pixels[kind + kShortRunKinds] = others;
        return found.any | tail;
    }

    // Has the runs measured that may be at a dot.
    void MeasureNearDots(const FlagBlocks<Words>& block) {
        constexpr int kMayTouchDot = 1;  // of the run kinds
        static_assert(MayTouchDot(kShortRuns[kMayTouchDot]));
        Words mayTouchDot = {};
        for (const int kind : kRunsOf) mayTouchDot = mayTouchDot | pixels[kind + kMayTouchDot];
        if (IsZero(mayTouchDot)) return;
        const Words isNearDot = IsNearDot(block);
        for (const int kind : kRunsOf) {
            Words& run = pixels[kind + kMayTouchDot];
            pixels[kind + kShortRunKinds] = pixels[kind + kShortRunKinds] | (run & isNearDot);
            run = run & ~isNearDot;
        }
    }
};

template <class Words>
void Decide(const FlagPlanes& planes, const BlockPlace* places, const Limits<Words>& limits,
            Decisions<Words>& decisions) {
    const FlagBlocks<Words> block(planes, places);
    const Words hasRight = block.template Where<R(0, 0)>(), hasDown = block.template Where<D(0, 0)>();
    Words hasTail = {};
    const Words left = decisions.template SetRuns<RunDirection::kLeft>(block, hasRight, limits, hasTail);
    const Words right = decisions.template SetRuns<RunDirection::kRight>(block, hasRight, limits, hasTail);
    const Words fade = decisions.template SetFades<kRiserDiagonals>(kRiserFade, block, StraightRiser::Where(block));
    const Words mayContact = hasRight & ~fade & ~IsRightEdgeCut(block);
    decisions.pixels[kContactRightBlend] = mayContact & ~right & left;
    decisions.pixels[kContactLeftBlend] = mayContact & ~left & right;
    decisions.pixels[kContactBlends] = mayContact & ~left & ~right;
    decisions.template SetFirst<RestoreRight1, RestoreRight2, RestoreRight3>(kRestoreRight, block, hasRight);

    decisions.template SetRuns<RunDirection::kUp>(block, hasDown, limits, hasTail);
    decisions.template SetRuns<RunDirection::kDown>(block, hasDown, limits, hasTail);
    decisions.template SetFades<kTreadDiagonals>(kTreadFade, block, StraightTread::Where(block));
    decisions.template SetFirst<RestoreDown1, RestoreDown2, RestoreDown3>(kRestoreDown, block, hasDown);
    decisions.template SetFirst<RestoreCorner1, RestoreCorner2>(kRestoreCorner, block, hasDown & hasRight);

    const Words average = (hasRight | hasDown) & ~hasTail & IsLonePixelOrSpikeTip(block);
    decisions.pixels[kAverage] = average;
    const Words mayRestore = ~hasTail & ~average;
    const Words above = mayRestore & limits.mayRestoreAbove & RestoreMost1::Where(block);
    decisions.pixels[kRestoreMostAbove] = above;
    // Nowhere in column 0, as in the definition: each of these rules tests a set flag on the left.
    decisions.pixels[kRestoreMostHere] =
        mayRestore & ~above & (RestoreMost2::Where(block) | RestoreMost3::Where(block) | RestoreMost4::Where(block));
    int sixth = kSixth;
    const auto setSixths = [&]<class... Rules>() { ((decisions.pixels[sixth++] = Rules::Where(block)), ...); };
    setSixths.template operator()<Sixth1, Sixth2, Sixth3, Sixth4, Sixth5, Sixth6, Sixth7, Sixth8>();
    decisions.MeasureNearDots(block);
}

// The kinds that each block has at any pixel, as sets of bits.
template <class Words>
std::array<uint64_t, kBlocksOf<Words>> KindsOfBlocks(const Decisions<Words>& decisions) {
    std::array<uint64_t, kBlocksOf<Words>> kinds{};
    for (int first = 0; first < kDecidedKinds; first += 8) {
        const uint32_t found = NonzeroWords(decisions.pixels + first);
        for (size_t i = 0; i < kinds.size(); ++i) kinds[i] |= uint64_t{found >> 8 * i & 0xFF} << first;
    }
    return kinds;
}

}  // namespace stairmelt::inline STAIRMELT_SET
