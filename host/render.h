// The rendering selectors. The whole image goes through in one pass: Start asks for every pixel and every plane at
// once, shows the dialog where one is wanted, runs the kernel from the input buffer into the output buffer and says
// that it is done. There is no tiling, and a run can't be stopped once the kernel has begun.
//
// The selection is the host's business: kernels see and write the whole image, and the host blends the result back.
#pragma once

namespace stairmelt {

// Stores kFilterBadMode for an image that no kernel serves, kFilterBadParameters or kMemFullErr without its handles,
// the host's code of a failed advance, kUserCanceledErr from the dialog, or the low 16 bits of the kernel's result.
void DoStart();

// Nothing is left to do: empties the output rectangle, for a host that calls in spite of empty ones.
void DoContinue();

// Records and stores the values that were used. Stores a code as Start does without its handles.
void DoFinish();

}  // namespace stairmelt
