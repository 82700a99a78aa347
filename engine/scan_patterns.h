// The small patterns of flags at which the scan takes pixels back or smooths corners, each written once with the pixel
// that it changes. The tables are complete as they stand: they aren't symmetric, and no mirrored forms exist.
//
// The nearer cells come first in a pattern, so that no test at one pixel reads past the guard border.
#pragma once

#include "engine/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// A pattern, and the offset of the pixel that is taken back toward its own source value. Each pattern demands a flag of
// that pixel or stands at it, so that it lies inside the image.
template <int kDx, int kDy, FlagTest... kTests>
struct RestoreRule : Pattern<kTests...> {
    static constexpr int dx = kDx;
    static constexpr int dy = kDy;
};

// Of the rules of one group the first that holds is applied.

// After the right edge of a pixel: half-way back.
using RestoreRight1 = RestoreRule<-1, 0, D(0, -1), Not(X(0, 0)), D(-1, -1), Not(R(-1, 0)), D(-1, 0), R(-2, 0),
                                  D(-2, -1), R(-2, -1), Not(X(-2, -1)), D(-2, -2)>;
using RestoreRight2 = RestoreRule<1, -1, R(-1, 0), D(0, -1), R(0, -1), Not(A(0, -1)), D(1, -1), R(1, -1), R(0, -2),
                                  Not(D(1, -2)), R(1, -3), Not(A(1, -3))>;
using RestoreRight3 = RestoreRule<-1, -1, R(-1, 0), D(0, -1), R(-1, -1), Not(X(-1, -1)), D(-1, -1), R(-2, -1),
                                  R(-1, -2), Not(D(-1, -2)), D(-1, -3), Not(X(-2, -3))>;

// After the bottom edge of a pixel: half-way back.
using RestoreDown1 = RestoreRule<0, 0, D(0, -1), Not(A(0, -1)), R(0, -1), D(1, -1), D(1, -2), D(-1, -1), R(-2, 0),
                                 Not(R(-1, 0)), Not(A(-2, 0))>;
using RestoreDown2 = RestoreRule<-1, -1, R(-1, 0), D(0, -1), Not(X(-1, -1)), D(-1, -1), R(-1, -1), D(-1, -2), D(-2, -1),
                                 R(-3, -1), Not(R(-2, -1)), Not(X(-3, -2))>;
using RestoreDown3 = RestoreRule<0, -1, R(-1, 0), R(-1, -1), Not(D(0, -1)), R(0, -1), D(0, -2), R(-1, -2), D(-1, -2),
                                 Not(X(-1, -2)), R(-2, -2), Not(X(0, 0))>;

// After a pixel with both edges: half-way back.
using RestoreCorner1 = RestoreRule<1, -1, R(0, -1), D(0, -1), D(1, -1), D(1, -2), R(2, -1), D(2, -1), Not(R(1, -1)),
                                   Not(A(2, -2)), Not(A(0, -1))>;
using RestoreCorner2 = RestoreRule<0, -1, R(0, -1), R(0, -2), R(-1, -1), D(0, -2), D(1, -2), R(1, -2), Not(D(0, -1)),
                                   Not(A(0, -2)), Not(A(-1, 0))>;

// Beside a corner: three quarters of the way back. The first rule also needs x below width - 3 and y above 2.
using RestoreMost1 =
    RestoreRule<1, -1, R(0, 0), Not(X(0, -2)), D(1, -2), D(2, -2), R(0, -1), Not(D(1, -1)), Not(R(1, -1))>;
using RestoreMost2 =
    RestoreRule<0, 0, R(0, 0), D(-1, -1), D(0, -1), Not(A(0, -1)), Not(R(-1, 0)), Not(D(0, 0)), R(0, 1)>;
using RestoreMost3 =
    RestoreRule<0, 0, R(0, 0), R(0, -1), Not(D(0, -1)), Not(R(-1, 0)), D(-1, 0), D(0, 0), Not(X(0, 0))>;
using RestoreMost4 =
    RestoreRule<0, 0, Not(R(0, 0)), D(0, 0), R(-1, -1), Not(D(0, -1)), R(-1, 0), Not(A(-1, 0)), D(1, 0)>;

// A pattern, the pixel that moves a sixth of the way, and the source pixel that it moves toward.
template <int kDx, int kDy, int kFromDx, int kFromDy, FlagTest... kTests>
struct SixthRule : Pattern<kTests...> {
    static constexpr int dx = kDx;
    static constexpr int dy = kDy;
    static constexpr int fromDx = kFromDx;
    static constexpr int fromDy = kFromDy;
};

// All that hold are applied, in this order: the right edge's corners, then the bottom edge's. The order matters, since
// both can change (1, 1).
using Sixth1 = SixthRule<0, -1, 0, 0, R(0, 0), D(0, -1), D(1, -1), Not(R(0, -1)), Not(X(-1, -1))>;
using Sixth2 = SixthRule<1, -1, 1, 0, R(0, 0), D(0, -1), D(1, -1), Not(R(0, -1)), Not(A(1, -1))>;
using Sixth3 = SixthRule<0, 1, 0, 0, R(0, 0), D(0, 0), D(1, 0), Not(R(0, 1)), Not(A(-1, 0))>;
using Sixth4 = SixthRule<1, 1, 1, 0, R(0, 0), D(0, 0), D(1, 0), Not(R(0, 1)), Not(X(1, 0))>;
using Sixth5 = SixthRule<-1, 0, 0, 0, D(0, 0), R(-1, 0), R(-1, 1), Not(D(-1, 0)), Not(X(-1, -1))>;
using Sixth6 = SixthRule<-1, 1, 0, 1, D(0, 0), R(-1, 0), R(-1, 1), Not(D(-1, 0)), Not(A(-1, 1))>;
using Sixth7 = SixthRule<1, 0, 0, 0, D(0, 0), R(0, 0), R(0, 1), Not(D(1, 0)), Not(A(0, -1))>;
using Sixth8 = SixthRule<1, 1, 0, 1, D(0, 0), R(0, 0), R(0, 1), Not(D(1, 0)), Not(X(0, 1))>;

// A straight piece of edge two pixels long stands at the pixel: diagonals may leave its ends.
using StraightRiser = Pattern<R(0, 0), R(0, 1), Not(D(0, 0)), Not(D(1, 0))>;
using StraightTread = Pattern<D(0, 0), D(-1, 0), Not(R(-1, 0)), Not(R(-1, 1))>;

}  // namespace stairmelt::inline STAIRMELT_SET
