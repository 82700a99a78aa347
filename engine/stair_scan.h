// The scan: visits every flagged pixel once, in row order, decides what kind of step it stands on, and sends ramps,
// fades, restores and single blends into the destination. All decisions rest on the edge map, which stays as the image
// was; a pixel that several visits touch is mixed several times, and the order of the scan fixes the result.
#pragma once

#include <cstdint>
#include <cstring>

#include "engine/diagonal_fades.h"
#include "engine/edge_map.h"
#include "engine/flag_pattern.h"
#include "engine/image.h"
#include "engine/isolated_pixel.h"
#include "engine/mix.h"
#include "engine/ramp.h"
#include "engine/ramp_walks.h"
#include "engine/restores.h"
#include "engine/run_scanners.h"
#include "engine/scan_patterns.h"
#include "engine/scan_weights.h"
#include "engine/step_shape.h"

namespace stairmelt {

// True if all four sides of the pixel are edges, or three of them, and the diagonals say that its colour doesn't go on
// past its corners.
inline bool IsLonePixelOrSpikeTip(const FlagCursor& at) {
    // A set corner flag means that the diagonal neighbour differs from the pixel.
    const bool nw = at.Holds(X(-1, -1));
    const bool se = at.Holds(X(0, 0));
    const bool ne = at.Holds(A(0, -1));
    const bool sw = at.Holds(A(-1, 0));

    const bool left = at.Holds(R(-1, 0));
    const bool right = at.Holds(R(0, 0));
    const bool top = at.Holds(D(0, -1));
    const bool bottom = at.Holds(D(0, 0));
    const int sides = left + right + top + bottom;
    if (sides == 4) return (se || nw) && (ne || sw);
    if (sides != 3 || (nw && se && ne && sw)) return false;
    // The tip of a spike: the two corners on the side away from its open one.
    if (!left) return ne && se;
    if (!right) return sw && nw;
    if (!top) return sw && se;
    return ne && nw;
}

// Measures and fades all four diagonals; returns whether any was faded. One that is doesn't stop the next.
template <class Format>
bool FadeDiagonals(const KernelJob& job, int32_t x, int32_t y, const EdgeMap& map, const Diagonal (&diagonals)[4]) {
    const FlagCursor at(map, x, y);
    bool faded = false;
    for (const Diagonal& diagonal : diagonals) {
        const int32_t n = MeasureDiagonal(at, diagonal);
        if (n < kShortestDiagonal) continue;
        FadeDiagonal<Format>(job, x, y, diagonal, n);
        faded = true;
    }
    return faded;
}

// At a pixel with flag R. A true result drops the scan's contact blends at this pixel.
template <class Format>
bool FadeDiagonalsFromRiser(const KernelJob& job, int32_t x, int32_t y, const EdgeMap& map) {
    return StraightRiser::Holds(FlagCursor(map, x, y)) && FadeDiagonals<Format>(job, x, y, map, kRiserDiagonals);
}

// At a pixel with flag D. The scan goes on in the same way whatever the result is.
template <class Format>
bool FadeDiagonalsFromTread(const KernelJob& job, int32_t x, int32_t y, const EdgeMap& map) {
    return StraightTread::Holds(FlagCursor(map, x, y)) && FadeDiagonals<Format>(job, x, y, map, kTreadDiagonals);
}

template <class Format>
struct StairScan {
    const KernelJob& job;
    const ImageView& source;
    const ImageView& destination;
    const EdgeMap& map;
    ScanWeights<Format> weights;

    void Run() {
        for (int32_t y = 0; y < destination.height; ++y) {
            const uint8_t* const row = map.CellAt(0, y);
            for (int32_t group = 0; group < destination.width; group += 4) {
                uint32_t fourCells;
                std::memcpy(&fourCells, row + group, 4);
                if (fourCells == 0) continue;
                for (int32_t x = group; x < group + 4; ++x) {  // a cell beyond the last column is zero
                    if (row[x] != 0) Visit(x, y);
                }
            }
        }
    }

    // What the stages of a visit tell each other.
    struct VisitState {
        bool hasRight;
        bool hasDown;
        bool tailRan;  // in any of the four directions
    };

    void Visit(int32_t x, int32_t y) {
        const FlagCursor at(map, x, y);
        VisitState visit{at.Holds(R(0, 0)), at.Holds(D(0, 0)), false};
        if (!visit.hasRight && !visit.hasDown) return;
        if (visit.hasRight) SmoothRightEdge(x, y, visit);
        if (visit.hasDown) SmoothDownEdge(x, y, visit);
        if (!visit.tailRan) AnalyseCorner(x, y);
        BlendOneSixth(x, y);
    }

    void SmoothRightEdge(int32_t x, int32_t y, VisitState& visit) {
        bool leftDone = true;
        if (const int32_t n = ScanRunLeft(x, y, map); n != 0) {
            const int32_t k = x - n - 1;
            const int32_t farRun = k >= 0 ? ScanRunRight(k, y, map) : 0;
            RampLeft<Format>(source, destination, x, y, Stair(n, farRun, RunDirection::kLeft, x, y));
        } else if (const int32_t tail = MeasureTailLeft(x, y, map); tail != 0) {
            RampLeft<Format>(source, destination, x, y, Tail(tail));
            visit.tailRan = true;
        } else {
            leftDone = false;
        }

        bool rightDone = true;
        if (const int32_t n = ScanRunRight(x, y, map); n != 0) {
            const int32_t k = x + n + 1;
            const int32_t farRun = k < destination.width ? ScanRunLeft(k, y, map) : 0;
            RampRight<Format>(source, destination, x, y, Stair(n, farRun, RunDirection::kRight, x, y));
        } else if (const int32_t tail = MeasureTailRight(x, y, map); tail != 0) {
            RampRight<Format>(source, destination, x, y, Tail(tail));
            visit.tailRan = true;
        } else {
            rightDone = false;
        }

        if (!FadeDiagonalsFromRiser<Format>(job, x, y, map)) BlendContact(x, y, leftDone, rightDone);
        RestoreAfterRight<Format>(source, destination, x, y, map);
    }

    // Softens a step that no ramp has softened on one or both of its sides. Left out where diagonals of both directions
    // cut the step.
    void BlendContact(int32_t x, int32_t y, bool leftDone, bool rightDone) {
        const FlagCursor at(map, x, y);
        if ((at.Holds(A(0, 0)) || at.Holds(A(0, -1))) && (at.Holds(X(0, 0)) || at.Holds(X(0, -1)))) return;
        if (!rightDone) Blend(x + 1, y, x, y, weights.cornerWeight);
        if (!leftDone) Blend(x, y, x + 1, y, weights.cornerWeight);
    }

    // Keeps no done flags and makes no contact blends: the two edges are unlike on purpose.
    void SmoothDownEdge(int32_t x, int32_t y, VisitState& visit) {
        if (const int32_t n = y >= 1 ? ScanRunUp(x, y, map) : 0; n != 0) {
            const int32_t k = y - n - 1;
            const int32_t farRun = k >= 0 ? ScanRunDown(x, k, map) : 0;
            RampUp<Format>(source, destination, x, y, Stair(n, farRun, RunDirection::kUp, x, y));
        } else if (const int32_t tail = MeasureTailUp(x, y, map); tail != 0) {
            RampUp<Format>(source, destination, x, y, Tail(tail));
            visit.tailRan = true;
        }

        if (const int32_t n = ScanRunDown(x, y, map); n != 0) {
            const int32_t k = y + n + 1;
            const int32_t farRun = k < destination.height ? ScanRunUp(x, k, map) : 0;
            RampDown<Format>(source, destination, x, y, Stair(n, farRun, RunDirection::kDown, x, y));
        } else if (const int32_t tail = MeasureTailDown(x, y, map); tail != 0) {
            RampDown<Format>(source, destination, x, y, Tail(tail));
            visit.tailRan = true;
        }

        FadeDiagonalsFromTread<Format>(job, x, y, map);
        RestoreAfterDown<Format>(source, destination, x, y, map);
        if (visit.hasRight) RestoreAfterCorner<Format>(source, destination, x, y, map);
    }

    // Averages a lone pixel or the tip of a spike, or else takes a pixel beside a corner most of the way back.
    void AnalyseCorner(int32_t x, int32_t y) {
        const FlagCursor at(map, x, y);
        if (IsLonePixelOrSpikeTip(at)) {
            AverageIsolatedPixel<Format>(source, destination, x, y, weights.neighbourWeight);
            return;
        }
        if (x < destination.width - 3 && y > 2 && RestoreMost1::Holds(at)) {
            RestorePixel<Format>(source, destination, x + RestoreMost1::dx, y + RestoreMost1::dy,
                                 Format::kThreeQuarters);
        } else if (RestoreMost2::Holds(at) || RestoreMost3::Holds(at) || RestoreMost4::Holds(at)) {
            // Column 0 stays as it is.
            if (x != 0) RestorePixel<Format>(source, destination, x, y, Format::kThreeQuarters);
        }
    }

    // Smooths the corners at the ends of a step.
    void BlendOneSixth(int32_t x, int32_t y) {
        BlendEach<Sixth1, Sixth2, Sixth3, Sixth4, Sixth5, Sixth6, Sixth7, Sixth8>(x, y);
    }

    template <class... Rules>
    void BlendEach(int32_t x, int32_t y) {
        const FlagCursor at(map, x, y);
        const auto blendIf = [&]<class Rule>(Rule) {
            if (!Rule::Holds(at)) return;
            Blend(x + Rule::dx, y + Rule::dy, x + Rule::fromDx, y + Rule::fromDy, Format::kOneSixth);
        };
        (blendIf(Rules{}), ...);
    }

    RampOf<Format> Stair(int32_t n, int32_t farRun, RunDirection direction, int32_t x, int32_t y) const {
        const int32_t softness =
            RunSoftness(job.softness, n, farRun, direction, x, y, destination.width, destination.height, map);
        return StairRamp<typename Format::Weights>(softness, n, job.bias);
    }

    RampOf<Format> Tail(int32_t n) const {
        return TailRamp<typename Format::Weights>(job.softness, n, weights.tailBias);
    }

    // Moves destination (x, y) toward source (fromX, fromY).
    void Blend(int32_t x, int32_t y, int32_t fromX, int32_t fromY, typename Format::Weight weight) {
        MixPixelAt<Format>(PixelAt<Format>(destination, x, y),
                           LoadToward<Format>(PixelAt<Format>(source, fromX, fromY)), weight);
    }
};

}  // namespace stairmelt
