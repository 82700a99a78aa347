#include "engine/step_shape.h"

#include "engine/arith.h"
#include "engine/run_scanners.h"

namespace stairmelt {

namespace {

constexpr int32_t kWithinBlockPercent = 10;
constexpr int32_t kBesideBlockPercent = 36;

// A 45-degree step may belong to a dot of 2 by 2 pixels, or lie one row or column off one. 0 if it does neither, else
// the percentage of the softness that is left.
int32_t DotPercent(RunDirection direction, int32_t x, int32_t y, int32_t width, int32_t height, const EdgeMap& map) {
    struct Row {
        BlockSide side;
        int32_t besideX, besideY;  // from the step to the next row or column
    };
    constexpr Row kRows[] = {
        {BlockSide::kLeftOfRiser, 0, 1},
        {BlockSide::kRightOfRiser, 0, 1},
        {BlockSide::kAboveTread, 1, 0},
        {BlockSide::kBelowTread, 1, 0},
    };
    const Row& row = kRows[static_cast<int>(direction)];
    if (CornerTest(row.side, x, y, width, height, map)) return kWithinBlockPercent;
    if (CornerTest(row.side, x + row.besideX, y + row.besideY, width, height, map)) return kBesideBlockPercent;
    if (CornerTest(row.side, x - row.besideX, y - row.besideY, width, height, map)) return kBesideBlockPercent;
    return 0;
}

}  // namespace

int32_t RunSoftness(int32_t softness, int32_t n, int32_t farRun, RunDirection direction, int32_t x, int32_t y,
                    int32_t width, int32_t height, const EdgeMap& map) {
    if (farRun == 0) return softness;
    if (n == 1 && farRun == 1) {
        const int32_t percent = DotPercent(direction, x, y, width, height, map);
        if (percent != 0) return WrapMul(softness, percent) / 100;
    }
    // Between two runs of one length this is softness / 1.4: at 70 percent the ramps from the two ends just meet.
    const int32_t excess = WrapSub(WrapMul(2, n), farRun);
    return QuotientOrZero(WrapMul(WrapMul(excess, softness), 100), WrapMul(140, n));
}

bool IsLonePixelOrSpikeTip(const FlagCursor& at) {
    // A set corner flag means that the diagonal neighbour differs from the pixel.
    const bool nw = Holds(at, X(-1, -1));
    const bool se = Holds(at, X(0, 0));
    const bool ne = Holds(at, A(0, -1));
    const bool sw = Holds(at, A(-1, 0));

    const bool left = Holds(at, R(-1, 0));
    const bool right = Holds(at, R(0, 0));
    const bool top = Holds(at, D(0, -1));
    const bool bottom = Holds(at, D(0, 0));
    const int sides = left + right + top + bottom;
    if (sides == 4) return (se || nw) && (ne || sw);
    if (sides != 3 || (nw && se && ne && sw)) return false;
    // The tip of a spike: the two corners on the side away from its open one.
    if (!left) return ne && se;
    if (!right) return sw && nw;
    if (!top) return sw && se;
    return ne && nw;
}

}  // namespace stairmelt
