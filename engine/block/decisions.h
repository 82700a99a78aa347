// Decides for all pixels of a few blocks at once what a visit does there: the result is a bit mask of pixels for each
// kind of action. Decisions depend on the flags alone, which the scan never changes, so they can be made ahead of it.
#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "engine/block/action.h"
#include "engine/block/flag_block.h"
#include "engine/block/short_runs.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/visit_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr int kFacts = 48;  // where the facts begin, after the kinds
static_assert(kActionKinds <= kFacts && 4 * kRunFacts <= 16);

// The pixels of each kind, one bit for each pixel. Bits beyond the image's last column are meaningless.
template <class Words>
struct Decisions {
    Words pixels[64] = {};      // by ActionKind; from kFacts on by direction and RunFact
    Words runs[4] = {};         // by direction: which have to be measured, since the facts don't describe them
    Words mayTouchDot[4] = {};  // and which may touch a dot of 2 by 2 pixels
    Words others = {};          // at which anything but kAverage is done
    Words measured = {};        // at which anything has to be measured

    void Set(int kind, Words where) {
        pixels[kind] = where;
        others = others | where;
    }

    // Sets the first rule that holds; returns where one does.
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

    // Sets the diagonals that leave a straight piece of edge and are long enough; returns where any does.
    template <const Diagonal (&kDiagonals)[4]>
    Words SetFades(int kind, const FlagBlocks<Words>& block, Words isStraight) {
        const Words fades[] = {
            isStraight & HasDiagonal<kDiagonals[0]>(block), isStraight & HasDiagonal<kDiagonals[1]>(block),
            isStraight & HasDiagonal<kDiagonals[2]>(block), isStraight & HasDiagonal<kDiagonals[3]>(block)};
        for (int i = 0; i < 4; ++i) {
            Set(kind + 2 * i, fades[i]);
            Set(kind + 2 * i + 1, kDiagonals[i].restores ? fades[i] : Words{});
        }
        const Words any = fades[0] | fades[1] | fades[2] | fades[3];
        measured = measured | any;
        return any;
    }

    // Sets where one direction of an edge has a run or else a tail; returns where it has either. Facts describe runs
    // only where `mayBeShort` is set.
    template <RunDirection kDirection>
    Words SetRuns(int kind, const FlagBlocks<Words>& block, Words hasEdge, Words mayBeShort, Words& hasTail) {
        const ShortRuns<Words> found = FindShortRuns<kDirection>(block, hasEdge);
        const Words tail = hasEdge & HasTail<kRulesOf<kDirection>.tail>(block) & ~found.any;
        Set(kind, found.any);
        Set(kind + 1, tail);
        hasTail = hasTail | tail;
        const Words isShort = mayBeShort & (found.isOne | found.isTwo);
        constexpr int direction = static_cast<int>(kDirection);
        runs[direction] = found.any & ~isShort;
        mayTouchDot[direction] = found.isOne & found.farIsOne;
        measured = measured | tail | runs[direction];
        pixels[kFacts + kRunFacts * direction + kHasTwoCells] = found.isTwo;
        pixels[kFacts + kRunFacts * direction + kFarIsOne] = found.farIsOne;
        pixels[kFacts + kRunFacts * direction + kFarIsTwo] = found.farIsTwo;
        return found.any | tail;
    }
};

// The pixels to which some decisions are limited, by their position in the image.
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
    if (!IsZero(hasRight)) {
        const Words left =
            decisions.template SetRuns<RunDirection::kLeft>(kLeftRun, block, hasRight, limits.farEndIsInside, hasTail);
        const Words right = decisions.template SetRuns<RunDirection::kRight>(kRightRun, block, hasRight,
                                                                             limits.farEndIsInside, hasTail);
        const Words fade = decisions.template SetFades<kRiserDiagonals>(kRiserFade, block, StraightRiser::Where(block));
        const Words mayContact = hasRight & ~fade & ~IsRightEdgeCut(block);
        decisions.Set(kContactRightBlend, mayContact & ~right);
        decisions.Set(kContactLeftBlend, mayContact & ~left);
        decisions.template SetFirst<RestoreRight1, RestoreRight2, RestoreRight3>(kRestoreRight, block, hasRight);
    }
    if (!IsZero(hasDown)) {
        decisions.template SetRuns<RunDirection::kUp>(kUpRun, block, hasDown, limits.farEndIsInside, hasTail);
        decisions.template SetRuns<RunDirection::kDown>(kDownRun, block, hasDown, limits.farEndIsInside, hasTail);
        decisions.template SetFades<kTreadDiagonals>(kTreadFade, block, StraightTread::Where(block));
        decisions.template SetFirst<RestoreDown1, RestoreDown2, RestoreDown3>(kRestoreDown, block, hasDown);
        decisions.template SetFirst<RestoreCorner1, RestoreCorner2>(kRestoreCorner, block, hasDown & hasRight);
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

// The transposed decisions: one word for each pixel, in which bit k is kind or fact k. Four
// rounds of interleaving bytes put the bytes of 16 kinds for the same eight pixels side by side; movemask then takes
// one bit of each.
template <class Words>
class TurnedWords {
public:
    explicit TurnedWords(const Words* words) {
        for (int group = 0; group < kGroups; ++group) Turn(words + 16 * group, turned[group]);
    }

    // The words at the pixel with the block's bit `bit`: bit k is that of word k.
    uint64_t At(int block, int bit) const {
        const int column = (block & 1) * 8 + (bit >> 3);  // of the 16 byte columns of a half vector
        const size_t offset = static_cast<size_t>(column) * sizeof(Words) + static_cast<size_t>(block >> 1) * 16;
        const __m128i shift = _mm_cvtsi32_si128(7 - (bit & 7));
        uint64_t bits = 0;
        for (int group = 0; group < kGroups; ++group) {
            const auto* const bytes = reinterpret_cast<const uint8_t*>(turned[group]) + offset;
            const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
            bits |= static_cast<uint64_t>(_mm_movemask_epi8(_mm_sll_epi64(words, shift))) << 16 * group;
        }
        return bits;
    }

private:
    static constexpr int kGroups = 4;

    static void Turn(const Words* words, Words* to) {
        Words any = words[0];
        for (int i = 1; i < 16; ++i) any = any | words[i];
        if (IsZero(any)) {
            for (int i = 0; i < 16; ++i) to[i] = Words{};
            return;
        }
        Words once[16], twice[16];
        Exchange(words, once);
        Exchange(once, twice);
        Exchange(twice, once);
        Exchange(once, to);
    }
    static void Exchange(const Words* from, Words* to) {
        for (int i = 0; i < 8; ++i) {
            to[2 * i] = InterleaveLow(from[i], from[i + 8]);
            to[2 * i + 1] = InterleaveHigh(from[i], from[i + 8]);
        }
    }

    Words turned[kGroups][16];
};

}  // namespace stairmelt::inline STAIRMELT_SET
