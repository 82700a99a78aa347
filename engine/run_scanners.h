// Measures the straight runs of a stair on the edge map, by the rules of run_rules.h. The length of a run in pixels
// says how far a blend may reach. All of these read only the edge map, and every walk ends in its guard border at the
// latest.
#pragma once

#include <cstdint>

#include "engine/edge_map.h"

namespace stairmelt {

// Length of the run that leaves the riser on the right side of (x, y), going left or right; 0 for no run. A run of 3 or
// more counts only if a flag on the far side of the step confirms that the stair goes on the other way.
int32_t ScanRunLeft(int32_t x, int32_t y, const EdgeMap& map);
int32_t ScanRunRight(int32_t x, int32_t y, const EdgeMap& map);

// The same for the tread along the bottom of (x, y), going up or down.
int32_t ScanRunUp(int32_t x, int32_t y, const EdgeMap& map);
int32_t ScanRunDown(int32_t x, int32_t y, const EdgeMap& map);

// Length of the tail that meets the step at (x, y) end on; 0 for none. What goes beyond 5 pixels counts half.
int32_t MeasureTailLeft(int32_t x, int32_t y, const EdgeMap& map);
int32_t MeasureTailRight(int32_t x, int32_t y, const EdgeMap& map);
int32_t MeasureTailUp(int32_t x, int32_t y, const EdgeMap& map);
int32_t MeasureTailDown(int32_t x, int32_t y, const EdgeMap& map);

}  // namespace stairmelt
