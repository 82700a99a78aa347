// Times the phases of a kernel, one after the other. The kernel itself builds the flags while it scans.
#pragma once

#include "engine/image.h"

namespace stairmelt {

struct PhaseSeconds {
    double memory;  // allocating the flags, whose pages are first touched in the next phase
    double flags;   // comparing all pixels
    double plan;    // deciding and measuring
    double paint;   // changing the destination
};

// Runs the 8-bit RGB kernel for AVX2 phase by phase, with the same result. The machine must support it (HasAvx2).
PhaseSeconds MeasurePhases(const KernelJob& job);

}  // namespace stairmelt
