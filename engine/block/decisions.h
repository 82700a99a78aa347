// Decides for all pixels of some blocks at once what a visit of each would do: for each kind of action the pixels at
// which it is done. The decisions rest on flags alone, which the scan never changes, so that they can be made ahead of
// the visits.
#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "engine/block/flag_block.h"
#include "engine/block/short_runs.h"
#include "engine/block/visit.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/visit_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr int kIsShort = 4 * kRunFacts;  // the first of the facts behind those of RunFact
constexpr int kActionGroups = (kActionKinds + 15) / 16;

// The pixels of each kind, one bit for each pixel. Pixels beyond the image's last column get bits without a meaning.
template <class Words>
struct Decisions {
    Words pixels[16 * kActionGroups];  // by ActionKind; zero behind the last
    Words facts[16];                   // by direction and RunFact, then which directions have a short run
    Words others = {};                 // at which anything but kAverage is done
    Words measured = {};               // at which something has to be measured that the facts don't tell
    Words touches = {};                // with a run that may touch a dot of 2 by 2 pixels

    void Set(int kind, Words where) {
        pixels[kind] = where;
        others = others | where;
    }

    // Nothing of the kinds from `kind` up to `end`.
    void Clear(int kind, int end) {
        for (; kind < end; ++kind) pixels[kind] = Words{};
    }

    // No runs in a direction and the one after it.
    void ClearFacts(int direction) {
        for (int i = 0; i < 2 * kRunFacts; ++i) facts[kRunFacts * direction + i] = Words{};
        for (int i = 0; i < 2; ++i) facts[kIsShort + direction + i] = Words{};
    }

    // Of the rules the first that holds; returns where one does.
    template <class... Rules>
    Words SetFirst(int kind, const FlagBlocks<Words>& block, Words candidates) {
        const Words before = candidates;
        const auto set = [&](Words where) {
            Set(kind++, candidates & where);
            candidates = candidates & ~where;
        };
        (set(Rules::Where(block)), ...);
        return before & ~candidates;
    }

    // Sets those of four diagonals that leave a straight piece of edge and are long enough; returns where any does.
    template <const Diagonal (&kDiagonals)[4]>
    Words SetFades(int kind, const FlagBlocks<Words>& block, Words isStraight) {
        const Words fades[] = {
            isStraight & HasDiagonal<kDiagonals[0]>(block), isStraight & HasDiagonal<kDiagonals[1]>(block),
            isStraight & HasDiagonal<kDiagonals[2]>(block), isStraight & HasDiagonal<kDiagonals[3]>(block)};
        for (int i = 0; i < 4; ++i) Set(kind + i, fades[i]);
        const Words any = fades[0] | fades[1] | fades[2] | fades[3];
        measured = measured | any;
        return any;
    }

    // Sets where one direction of an edge has a run, and else where it has a tail; returns where it has either. Runs
    // are short at most where `mayBeShort` is set.
    template <RunDirection kDirection>
    Words SetRuns(int kind, const FlagBlocks<Words>& block, Words hasEdge, Words mayBeShort, Words& hasTail) {
        const ShortRuns<Words> runs = FindShortRuns<kDirection>(block, hasEdge);
        const Words tail = hasEdge & HasTail<kRulesOf<kDirection>.tail>(block) & ~runs.any;
        Set(kind, runs.any);
        Set(kind + 1, tail);
        hasTail = hasTail | tail;
        const Words isShort = mayBeShort & (runs.isOne | runs.isTwo);
        measured = measured | tail | (runs.any & ~isShort);
        touches = touches | (runs.isOne & runs.farIsOne);
        constexpr int direction = static_cast<int>(kDirection);
        facts[kRunFacts * direction + kHasTwoCells] = runs.isTwo;
        facts[kRunFacts * direction + kFarIsOne] = runs.farIsOne;
        facts[kRunFacts * direction + kFarIsTwo] = runs.farIsTwo;
        facts[kIsShort + direction] = isShort;
        return runs.any | tail;
    }
};

// The pixels to which some decisions are confined, by their places in the image.
template <class Words>
struct Limits {
    Words mayRestoreAbove;  // RestoreMost1
    Words allButFirst;      // column 0
    Words farEndIsInside;   // of every short run
};

template <class Words>
void Decide(const FlagBlocks<Words>& block, const Limits<Words>& limits, Decisions<Words>& decisions) {
    const Words hasRight = block.template Where<R(0, 0)>(), hasDown = block.template Where<D(0, 0)>();
    Words hasTail = {};
    decisions.Clear(kActionKinds, 16 * kActionGroups);
    if (!IsZero(hasRight)) {
        const Words left =
            decisions.template SetRuns<RunDirection::kLeft>(kLeftRun, block, hasRight, limits.farEndIsInside, hasTail);
        const Words right = decisions.template SetRuns<RunDirection::kRight>(kRightRun, block, hasRight,
                                                                             limits.farEndIsInside, hasTail);
        const Words fade = decisions.template SetFades<kRiserDiagonals>(kRiserFade, block, StraightRiser::Where(block));
        const Words mayTouch = hasRight & ~fade & ~IsRightEdgeCut(block);
        decisions.Set(kContactRightBlend, mayTouch & ~right);
        decisions.Set(kContactLeftBlend, mayTouch & ~left);
        decisions.template SetFirst<RestoreRight1, RestoreRight2, RestoreRight3>(kRestoreRight, block, hasRight);
    } else {
        decisions.Clear(kLeftRun, kUpRun);
        decisions.ClearFacts(0);
    }
    if (!IsZero(hasDown)) {
        decisions.template SetRuns<RunDirection::kUp>(kUpRun, block, hasDown, limits.farEndIsInside, hasTail);
        decisions.template SetRuns<RunDirection::kDown>(kDownRun, block, hasDown, limits.farEndIsInside, hasTail);
        decisions.template SetFades<kTreadDiagonals>(kTreadFade, block, StraightTread::Where(block));
        decisions.template SetFirst<RestoreDown1, RestoreDown2, RestoreDown3>(kRestoreDown, block, hasDown);
        decisions.template SetFirst<RestoreCorner1, RestoreCorner2>(kRestoreCorner, block, hasDown & hasRight);
    } else {
        decisions.Clear(kUpRun, kAverage);
        decisions.ClearFacts(2);
    }
    const Words average = (hasRight | hasDown) & ~hasTail & IsLonePixelOrSpikeTip(block);
    decisions.pixels[kAverage] = average;
    const Words mayRestore = ~hasTail & ~average;
    const Words above = mayRestore & limits.mayRestoreAbove & RestoreMost1::Where(block);
    decisions.Set(kRestoreMostAbove, above);
    decisions.Set(kRestoreMostHere,
                  mayRestore & ~above & limits.allButFirst &
                      (RestoreMost2::Where(block) | RestoreMost3::Where(block) | RestoreMost4::Where(block)));
    const Words sixths[] = {Sixth1::Where(block), Sixth2::Where(block), Sixth3::Where(block), Sixth4::Where(block),
                            Sixth5::Where(block), Sixth6::Where(block), Sixth7::Where(block), Sixth8::Where(block)};
    for (int i = 0; i < 8; ++i) decisions.Set(kSixth + i, sixths[i]);
}

// The pixels near which an isolated block of 2 by 2 pixels may stand, as seen by FarLengthAtDot.
template <class Words>
Words IsNearDot(const FlagBlocks<Words>& block) {
    const auto isAt = [&]<int kDy, FlagTest... kTests>(Pattern<kTests...>) {
        return WhereAll<Moved(kTests, 0, kDy)...>(block);
    };
    const Words dots = isAt.template operator()<-2>(IsolatedBlock{}) | isAt.template operator()<-1>(IsolatedBlock{}) |
                       isAt.template operator()<0>(IsolatedBlock{}) | isAt.template operator()<1>(IsolatedBlock{});
    return dots << 2 | dots << 1 | dots | dots >> 1;
}

// For a group of 16 kinds the same bits, turned: 16 bits for each pixel. Words that are exchanged byte by byte four
// times have one byte of each kind side by side, for eight pixels; movemask takes one bit of each.
template <class Words>
class ActionGroup {
public:
    explicit ActionGroup(const Words* kinds) {
        Words any = kinds[0];
        for (int i = 1; i < 16; ++i) any = any | kinds[i];
        isEmpty = IsZero(any);
        if (isEmpty) return;
        Words once[16], twice[16];
        Exchange(kinds, once);
        Exchange(once, twice);
        Exchange(twice, once);
        Exchange(once, turned);
    }

    // The kinds at the pixel with the block's bit `bit`: bit k is kind k of the group.
    uint64_t At(int block, int bit) const {
        if (isEmpty) return 0;
        const int column = (block & 1) * 8 + (bit >> 3);  // of the 16 byte columns of a half vector
        const auto* const bytes = reinterpret_cast<const uint8_t*>(&turned[column]) + (block >> 1) * 16;
        const __m128i kinds = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        return static_cast<uint32_t>(_mm_movemask_epi8(_mm_sll_epi64(kinds, _mm_cvtsi32_si128(7 - (bit & 7)))));
    }

private:
    static void Exchange(const Words* from, Words* to) {
        for (int i = 0; i < 8; ++i) {
            to[2 * i] = InterleaveLow(from[i], from[i + 8]);
            to[2 * i + 1] = InterleaveHigh(from[i], from[i + 8]);
        }
    }

    bool isEmpty;
    Words turned[16];
};

}  // namespace stairmelt::inline STAIRMELT_SET
