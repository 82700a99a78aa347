// The rendering selectors. The whole image is processed in one pass: Start requests all pixels and planes at once,
// shows the dialog if one is wanted, runs the kernel from the input buffer into the output buffer and reports full
// progress. There is no tiling, and a run can't be cancelled once the kernel has begun.
//
// Kernels read and write the whole image. The host applies the selection when it blends the result back.
#pragma once

namespace stairmelt {

// Stores kFilterBadMode for an unsupported image, kFilterBadParameters or kMemFullErr if its handles are missing,
// the host's code of a failed advance, kUserCanceledErr from the dialog, or the low 16 bits of the kernel's result.
void DoStart();

// Only empties the output rectangle, for hosts that send Continue although the rectangles are empty.
void DoContinue();

// Records and stores the values used. Missing handles give the same result as in Start.
void DoFinish();

}  // namespace stairmelt
