// The phases of a kernel, one after the other. A kernel itself builds the flags while it scans.
#pragma once

#include "engine/image.h"

namespace stairmelt {

struct PhaseSeconds {
    double memory;  // allocating the flags, whose pages are first touched in the next phase
    double flags;   // comparing all pixels
    double plan;    // deciding and measuring
    double paint;   // changing the destination
};

// Runs the 8-bit RGB kernel for AVX2, which the machine must have (HasAvx2), phase after phase. The result is the
// kernel's.
PhaseSeconds MeasurePhases(const KernelJob& job);

}  // namespace stairmelt
