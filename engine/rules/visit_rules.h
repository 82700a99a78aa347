// What a visit does to single pixels, and the patterns of flags that decide on it. The tables are complete as they
// stand: they aren't symmetric, and no mirrored forms exist. The tests of a pattern are ordered so that one fails
// before any that is beyond the guard border.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/rules/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

enum class BlendWeight : uint8_t { kContact, kHalf, kThreeQuarters, kOneSixth };

// Moves one destination pixel toward one source pixel; both are offsets from the visited pixel.
struct Blend {
    int dx, dy;
    int fromDx, fromDy;
    BlendWeight weight;
};

// By BlendWeight.
template <class Weights>
constexpr std::array<typename Weights::Weight, 4> BlendWeightsOf(typename Weights::Weight cornerWeight) {
    return {cornerWeight, Weights::kHalf, Weights::kThreeQuarters, Weights::kOneSixth};
}

// The contact blends soften a right edge that no ramp has softened on one or both of its sides.
constexpr Blend kContactRight = {1, 0, 0, 0, BlendWeight::kContact};
constexpr Blend kContactLeft = {0, 0, 1, 0, BlendWeight::kContact};

// A blend, and the pattern at which it is made. Each pattern tests a flag of the changed pixel's cell or of one beyond
// it, or is confined to columns and rows that keep the pixel inside the image.
template <Blend kBlendValue, FlagTest... kTests>
struct BlendRule : Pattern<kTests...> {
    static constexpr Blend kBlend = kBlendValue;
};

// A restore takes a pixel part of the way back toward its own source value, where the blends around it went too far.
constexpr Blend Restore(int dx, int dy, BlendWeight weight) { return {dx, dy, dx, dy, weight}; }
constexpr Blend HalfBack(int dx, int dy) { return Restore(dx, dy, BlendWeight::kHalf); }
constexpr Blend MostlyBack(int dx, int dy) { return Restore(dx, dy, BlendWeight::kThreeQuarters); }

// In each group of restores, only the first rule that holds is applied.

// After the right edge of a pixel.
using RestoreRight1 = BlendRule<HalfBack(-1, 0), D(0, -1), Not(X(0, 0)), D(-1, -1), Not(R(-1, 0)), D(-1, 0), R(-2, 0),
                                D(-2, -1), R(-2, -1), Not(X(-2, -1)), D(-2, -2)>;
using RestoreRight2 = BlendRule<HalfBack(1, -1), R(-1, 0), D(0, -1), R(0, -1), Not(A(0, -1)), D(1, -1), R(1, -1),
                                R(0, -2), Not(D(1, -2)), R(1, -3), Not(A(1, -3))>;
using RestoreRight3 = BlendRule<HalfBack(-1, -1), R(-1, 0), D(0, -1), R(-1, -1), Not(X(-1, -1)), D(-1, -1), R(-2, -1),
                                R(-1, -2), Not(D(-1, -2)), D(-1, -3), Not(X(-2, -3))>;

// After the bottom edge of a pixel.
using RestoreDown1 = BlendRule<HalfBack(0, 0), D(0, -1), Not(A(0, -1)), R(0, -1), D(1, -1), D(1, -2), D(-1, -1),
                               R(-2, 0), Not(R(-1, 0)), Not(A(-2, 0))>;
using RestoreDown2 = BlendRule<HalfBack(-1, -1), R(-1, 0), D(0, -1), Not(X(-1, -1)), D(-1, -1), R(-1, -1), D(-1, -2),
                               D(-2, -1), R(-3, -1), Not(R(-2, -1)), Not(X(-3, -2))>;
using RestoreDown3 = BlendRule<HalfBack(0, -1), R(-1, 0), R(-1, -1), Not(D(0, -1)), R(0, -1), D(0, -2), R(-1, -2),
                               D(-1, -2), Not(X(-1, -2)), R(-2, -2), Not(X(0, 0))>;

// After a pixel with both edges.
using RestoreCorner1 = BlendRule<HalfBack(1, -1), R(0, -1), D(0, -1), D(1, -1), D(1, -2), R(2, -1), D(2, -1),
                                 Not(R(1, -1)), Not(A(2, -2)), Not(A(0, -1))>;
using RestoreCorner2 = BlendRule<HalfBack(0, -1), R(0, -1), R(0, -2), R(-1, -1), D(0, -2), D(1, -2), R(1, -2),
                                 Not(D(0, -1)), Not(A(0, -2)), Not(A(-1, 0))>;

// Beside a corner. The first rule also needs x < width - 3 and y > 2; the others change nothing in column 0.
constexpr int32_t kBesideLastColumns = 3;
constexpr int32_t kBelowFirstRows = 2;
using RestoreMost1 =
    BlendRule<MostlyBack(1, -1), R(0, 0), Not(X(0, -2)), D(1, -2), D(2, -2), R(0, -1), Not(D(1, -1)), Not(R(1, -1))>;
using RestoreMost2 =
    BlendRule<MostlyBack(0, 0), R(0, 0), D(-1, -1), D(0, -1), Not(A(0, -1)), Not(R(-1, 0)), Not(D(0, 0)), R(0, 1)>;
using RestoreMost3 =
    BlendRule<MostlyBack(0, 0), R(0, 0), R(0, -1), Not(D(0, -1)), Not(R(-1, 0)), D(-1, 0), D(0, 0), Not(X(0, 0))>;
using RestoreMost4 =
    BlendRule<MostlyBack(0, 0), Not(R(0, 0)), D(0, 0), R(-1, -1), Not(D(0, -1)), R(-1, 0), Not(A(-1, 0)), D(1, 0)>;

// One-sixth blends smooth the corners at the ends of an edge. All that hold are applied, in this order: the right
// edge's, then the bottom edge's. The order matters, since both can change (1, 1).
constexpr Blend Sixth(int dx, int dy, int fromDx, int fromDy) {
    return {dx, dy, fromDx, fromDy, BlendWeight::kOneSixth};
}
using Sixth1 = BlendRule<Sixth(0, -1, 0, 0), R(0, 0), D(0, -1), D(1, -1), Not(R(0, -1)), Not(X(-1, -1))>;
using Sixth2 = BlendRule<Sixth(1, -1, 1, 0), R(0, 0), D(0, -1), D(1, -1), Not(R(0, -1)), Not(A(1, -1))>;
using Sixth3 = BlendRule<Sixth(0, 1, 0, 0), R(0, 0), D(0, 0), D(1, 0), Not(R(0, 1)), Not(A(-1, 0))>;
using Sixth4 = BlendRule<Sixth(1, 1, 1, 0), R(0, 0), D(0, 0), D(1, 0), Not(R(0, 1)), Not(X(1, 0))>;
using Sixth5 = BlendRule<Sixth(-1, 0, 0, 0), D(0, 0), R(-1, 0), R(-1, 1), Not(D(-1, 0)), Not(X(-1, -1))>;
using Sixth6 = BlendRule<Sixth(-1, 1, 0, 1), D(0, 0), R(-1, 0), R(-1, 1), Not(D(-1, 0)), Not(A(-1, 1))>;
using Sixth7 = BlendRule<Sixth(1, 0, 0, 0), D(0, 0), R(0, 0), R(0, 1), Not(D(1, 0)), Not(A(0, -1))>;
using Sixth8 = BlendRule<Sixth(1, 1, 0, 1), D(0, 0), R(0, 0), R(0, 1), Not(D(1, 0)), Not(X(0, 1))>;

// There is a straight piece of edge two pixels long at the pixel: diagonals may leave its ends.
using StraightRiser = Pattern<R(0, 0), R(0, 1), Not(D(0, 0)), Not(D(1, 0))>;
using StraightTread = Pattern<D(0, 0), D(-1, 0), Not(R(-1, 0)), Not(R(-1, 1))>;

// Diagonals of both directions cut the right edge: no contact blends there.
template <class At>
auto IsRightEdgeCut(const At& at) {
    return (at.template Where<A(0, 0)>() | at.template Where<A(0, -1)>()) &
           (at.template Where<X(0, 0)>() | at.template Where<X(0, -1)>());
}

// All four sides of the pixel are edges, or three of them, and the diagonals show that its colour doesn't continue past
// its corners.
template <class At>
auto IsLonePixelOrSpikeTip(const At& at) {
    // A set corner flag means that the diagonal neighbour differs from the pixel.
    constexpr FlagTest kNw = X(-1, -1), kSe = X(0, 0), kNe = A(0, -1), kSw = A(-1, 0);
    constexpr FlagTest kLeft = R(-1, 0), kRight = R(0, 0), kTop = D(0, -1), kBottom = D(0, 0);
    const auto lone = WhereAll<kLeft, kRight, kTop, kBottom>(at) &
                      (at.template Where<kNw>() | at.template Where<kSe>()) &
                      (at.template Where<kNe>() | at.template Where<kSw>());
    // A spike's two corners on the side away from its open one.
    const auto tip = WhereAll<Not(kLeft), kRight, kTop, kBottom, kNe, kSe>(at) |
                     WhereAll<kLeft, Not(kRight), kTop, kBottom, kSw, kNw>(at) |
                     WhereAll<kLeft, kRight, Not(kTop), kBottom, kSw, kSe>(at) |
                     WhereAll<kLeft, kRight, kTop, Not(kBottom), kNe, kNw>(at);
    const auto continuesSomewhere = at.template Where<Not(kNw)>() | at.template Where<Not(kSe)>() |
                                    at.template Where<Not(kNe)>() | at.template Where<Not(kSw)>();
    return lone | (tip & continuesSomewhere);
}

}  // namespace stairmelt::inline STAIRMELT_SET
