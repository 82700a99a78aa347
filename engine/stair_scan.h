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
#include "engine/step_shape.h"

namespace stairmelt {

// What a kernel derives from the job before it touches a pixel.
template <class Format>
struct ScanWeights {
    int32_t tailBias;                         // a third of the job's bias: a tail bends less than a stair
    typename Format::Weight neighbourWeight;  // of each neighbour in the isolated pixel average
    typename Format::Weight cornerWeight;     // of the contact blends
};

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
        VisitState visit{Holds(at, R(0, 0)), Holds(at, D(0, 0)), false};
        if (!visit.hasRight && !visit.hasDown) return;
        if (visit.hasRight) SmoothRightEdge(x, y, visit);
        if (visit.hasDown) SmoothDownEdge(x, y, visit);
        if (!visit.tailRan) AnalyseCorner(x, y, visit);
        BlendOneSixth(x, y, visit);
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
        if (Any<A(0, 0), A(0, -1)>(at) && Any<X(0, 0), X(0, -1)>(at)) return;
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
    void AnalyseCorner(int32_t x, int32_t y, const VisitState& visit) {
        const FlagCursor at(map, x, y);
        if (IsLonePixelOrSpikeTip(at)) {
            AverageIsolatedPixel<Format>(source, destination, x, y, weights.neighbourWeight);
            return;
        }
        // The place to take back, as an offset from the pixel.
        int dx = 0;
        int dy = 0;
        if (visit.hasRight) {
            if (x < destination.width - 3 && y > 2 &&
                All<Not(X(0, -2)), D(1, -2), D(2, -2), R(0, -1), Not(D(1, -1)), Not(R(1, -1))>(at)) {
                dx = 1;
                dy = -1;
            } else if (!All<D(-1, -1), D(0, -1), Not(A(0, -1)), Not(R(-1, 0)), Not(D(0, 0)), R(0, 1)>(at) &&
                       !All<R(0, -1), Not(D(0, -1)), Not(R(-1, 0)), D(-1, 0), D(0, 0), Not(X(0, 0))>(at)) {
                return;
            }
        } else if (!All<R(-1, -1), Not(D(0, -1)), R(-1, 0), Not(A(-1, 0)), D(1, 0)>(at)) {
            return;
        }
        // Column 0 stays as it is, whichever pattern stands there.
        if (x + dx != 0) RestorePixel<Format>(source, destination, x + dx, y + dy, Format::kThreeQuarters);
    }

    // Smooths the corners at the ends of a step. The order matters, since both edges can change (x + 1, y + 1).
    void BlendOneSixth(int32_t x, int32_t y, const VisitState& visit) {
        const FlagCursor at(map, x, y);
        if (visit.hasRight) {
            if (All<D(0, -1), D(1, -1), Not(R(0, -1))>(at)) {
                if (!Holds(at, X(-1, -1))) Blend(x, y - 1, x, y, Format::kOneSixth);
                if (!Holds(at, A(1, -1))) Blend(x + 1, y - 1, x + 1, y, Format::kOneSixth);
            }
            if (All<D(0, 0), D(1, 0), Not(R(0, 1))>(at)) {
                if (!Holds(at, A(-1, 0))) Blend(x, y + 1, x, y, Format::kOneSixth);
                if (!Holds(at, X(1, 0))) Blend(x + 1, y + 1, x + 1, y, Format::kOneSixth);
            }
        }
        if (visit.hasDown) {
            if (All<R(-1, 0), R(-1, 1), Not(D(-1, 0))>(at)) {
                if (!Holds(at, X(-1, -1))) Blend(x - 1, y, x, y, Format::kOneSixth);
                if (!Holds(at, A(-1, 1))) Blend(x - 1, y + 1, x, y + 1, Format::kOneSixth);
            }
            if (All<R(0, 0), R(0, 1), Not(D(1, 0))>(at)) {
                if (!Holds(at, A(0, -1))) Blend(x + 1, y, x, y, Format::kOneSixth);
                if (!Holds(at, X(0, 1))) Blend(x + 1, y + 1, x, y + 1, Format::kOneSixth);
            }
        }
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
        MixPixelAt<Format>(PixelAt<Format>(destination, x, y), Load<Format>(PixelAt<Format>(source, fromX, fromY)),
                           weight);
    }
};

}  // namespace stairmelt
