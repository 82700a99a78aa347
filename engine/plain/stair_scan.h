// The scan: visits every flagged pixel once, in row order, determines the kind of edge there, and applies ramps, fades,
// restores and single blends to the destination. All decisions depend on the edge map alone, which keeps the
// state of the unchanged image. A pixel that several visits change is mixed several times, and the order of the scan
// fixes the result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "engine/image.h"
#include "engine/plain/edge_map.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/flag_pattern.h"
#include "engine/rules/isolated_pixel.h"
#include "engine/rules/mix.h"
#include "engine/rules/ramp.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"
#include "engine/rules/scan_weights.h"
#include "engine/rules/visit_rules.h"
#include "engine/rules/walks.h"

namespace stairmelt {

template <class Format>
struct StairScan {
    const KernelJob& job;
    const EdgeMap& map;
    ScanWeights<Format> weights;

    void Run() {
        for (int32_t y = 0; y < job.destination->height; ++y) {
            const uint8_t* const row = map.CellAt(0, y);
            for (int32_t group = 0; group < job.destination->width; group += 4) {
                uint32_t fourCells;
                std::memcpy(&fourCells, row + group, 4);
                if (fourCells == 0) continue;
                for (int32_t x = group; x < group + 4; ++x) {  // a cell beyond the last column is zero
                    if (row[x] != 0) Visit(x, y);
                }
            }
        }
    }

    void Visit(int32_t x, int32_t y) {
        const FlagCursor at = CursorAt(map, x, y);
        const bool hasRight = at.Holds(R(0, 0)), hasDown = at.Holds(D(0, 0));
        if (!hasRight && !hasDown) return;
        bool tailRan = false;  // in any of the four directions
        if (hasRight) SmoothRightEdge(x, y, tailRan);
        if (hasDown) SmoothDownEdge(x, y, hasRight, tailRan);
        if (!tailRan) AnalyseCorner(x, y);
        BlendAll<Sixth1, Sixth2, Sixth3, Sixth4, Sixth5, Sixth6, Sixth7, Sixth8>(x, y);
    }

    void SmoothRightEdge(int32_t x, int32_t y, bool& tailRan) {
        const bool leftDone = SmoothRun<RunDirection::kLeft>(x, y, tailRan);
        const bool rightDone = SmoothRun<RunDirection::kRight>(x, y, tailRan);
        const bool faded = StraightRiser::Holds(CursorAt(map, x, y)) && FadeDiagonals<kRiserDiagonals>(x, y);
        if (!faded && !IsRightEdgeCut(CursorAt(map, x, y))) {
            if (!rightDone) Apply(kContactRight, x, y);
            if (!leftDone) Apply(kContactLeft, x, y);
        }
        BlendFirst<RestoreRight1, RestoreRight2, RestoreRight3>(x, y);
    }

    // Makes no contact blends: the two edges are deliberately treated differently.
    void SmoothDownEdge(int32_t x, int32_t y, bool hasRight, bool& tailRan) {
        SmoothRun<RunDirection::kUp>(x, y, tailRan);
        SmoothRun<RunDirection::kDown>(x, y, tailRan);
        if (StraightTread::Holds(CursorAt(map, x, y))) FadeDiagonals<kTreadDiagonals>(x, y);
        BlendFirst<RestoreDown1, RestoreDown2, RestoreDown3>(x, y);
        if (hasRight) BlendFirst<RestoreCorner1, RestoreCorner2>(x, y);
    }

    // Averages a lone pixel or the tip of a spike; otherwise restores most of a pixel beside a corner.
    void AnalyseCorner(int32_t x, int32_t y) {
        if (IsLonePixelOrSpikeTip(CursorAt(map, x, y))) {
            AverageIsolatedPixel<Format>(job, x, y, weights.neighbourWeight);
        } else if (x < job.destination->width - kBesideLastColumns && y > kBelowFirstRows &&
                   BlendFirst<RestoreMost1>(x, y)) {
            return;
        } else if (x != 0) {
            BlendFirst<RestoreMost2, RestoreMost3, RestoreMost4>(x, y);
        }
    }

    // Measures one direction of an edge and runs a stair or tail ramp there. Returns whether one ran.
    template <RunDirection kDirection>
    bool SmoothRun(int32_t x, int32_t y, bool& tailRan) {
        using Weights = typename Format::Weights;
        constexpr int dx = kRulesOf<kDirection>.forth.dx, dy = kRulesOf<kDirection>.forth.dy;
        const int32_t width = job.destination->width, height = job.destination->height;
        const FlagCursor at = CursorAt(map, x, y);
        RunPair run = MeasureRun<kDirection>(at, RoomFrom(x, y, dx, dy, width, height));
        if (run.length != 0) {
            if (MayTouchDot(run)) run.farLength = FarLengthAtDot(kDirection, x, y, width, height, map);
            PaintRun<Format>(job, dx, dy, x, y,
                             StairRamp<Weights>(RunSoftness(job.softness, run), run.length, job.bias));
            return true;
        }
        const int32_t tail = TailLength<kDirection>(at);
        if (tail == 0) return false;
        PaintRun<Format>(job, dx, dy, x, y, TailRamp<Weights>(job.softness, tail, weights.tailBias));
        tailRan = true;
        return true;
    }

    // Measures and fades all four diagonals; returns whether any was faded. Several of them can be faded.
    template <const Diagonal (&kDiagonals)[4]>
    bool FadeDiagonals(int32_t x, int32_t y) {
        const bool faded[] = {FadeDiagonal<kDiagonals[0]>(x, y), FadeDiagonal<kDiagonals[1]>(x, y),
                              FadeDiagonal<kDiagonals[2]>(x, y), FadeDiagonal<kDiagonals[3]>(x, y)};
        return faded[0] || faded[1] || faded[2] || faded[3];
    }

    template <Diagonal kDiagonal>
    bool FadeDiagonal(int32_t x, int32_t y) {
        const int32_t n = DiagonalLength<kDiagonal>(CursorAt(map, x, y));
        if (n < kShortestDiagonal) return false;
        using Weights = typename Format::Weights;
        PaintFade<Format>(job, kDiagonal, x, y, FadeRamp<Weights>(Weights::kThird, job.softness, n, job.bias),
                          FadeRamp<Weights>(Weights::kHalf, job.softness, n, job.bias));
        return true;
    }

    // Makes the blend of the first rule that holds; returns whether one did.
    template <class... Rules>
    bool BlendFirst(int32_t x, int32_t y) {
        return (BlendIf<Rules>(x, y) || ...);
    }
    template <class... Rules>
    void BlendAll(int32_t x, int32_t y) {
        (BlendIf<Rules>(x, y), ...);
    }
    template <class Rule>
    bool BlendIf(int32_t x, int32_t y) {
        if (!Rule::Holds(CursorAt(map, x, y))) return false;
        Apply(Rule::kBlend, x, y);
        return true;
    }

    void Apply(const Blend& blend, int32_t x, int32_t y) {
        const auto blendWeights = BlendWeightsOf<typename Format::Weights>(weights.cornerWeight);
        MixPixelAt<Format>(job, x + blend.dx, y + blend.dy, x + blend.fromDx, y + blend.fromDy,
                           blendWeights[static_cast<size_t>(blend.weight)]);
    }
};

}  // namespace stairmelt
