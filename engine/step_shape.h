// What the flags around a step say about its surroundings: how far a run's ramp may reach, and whether the pixel stands
// alone. Reads only the edge map.
#pragma once

#include <cstdint>

#include "engine/edge_map.h"
#include "engine/flag_pattern.h"

namespace stairmelt {

enum class RunDirection { kLeft, kRight, kUp, kDown };

// The softness of the stair ramp that leaves the step at (x, y) along a run of n pixels, at whose far end a run of
// farRun pixels stands. Where the next step is shorter than this one, the edge is turning and the softness grows, where
// it is longer, it falls; it may come out zero or negative. farRun 0 gives the plain softness.
int32_t RunSoftness(int32_t softness, int32_t n, int32_t farRun, RunDirection direction, int32_t x, int32_t y,
                    int32_t width, int32_t height, const EdgeMap& map);

// True if all four sides of the pixel are edges, or three of them, and the diagonals say that its colour doesn't go on
// past its corners.
bool IsLonePixelOrSpikeTip(const FlagCursor& at);

}  // namespace stairmelt
