// The records that a caller fills for a kernel, and the names of the kernels and of their results.
//
// Coordinates grow right and down; pixel (0, 0) is the top left one. The samples of a pixel are interleaved: the colour
// samples, then the opacity sample where the format has one. Buffers and records belong to the caller.
#pragma once

#include <cstdint>

namespace stairmelt {

// Names a pixel format: colour channels (1..4) << 24 | bits per sample (8, 16, 32) << 16 | opacity samples (0, 1) << 8.
using KernelKey = uint32_t;

constexpr KernelKey MakeKernelKey(uint32_t channels, uint32_t depth, uint32_t extra) {
    return channels << 24 | depth << 16 | extra << 8;
}

// One image buffer.
struct ImageView {
    int32_t width;      // pixels in a row
    int32_t height;     // rows
    uint8_t* base;      // first sample of pixel (0, 0); needs no alignment
    int32_t rowStride;  // bytes from one row to the next; the caller's, not derived from width
};

// The parameters of one kernel call. Needs to live only as long as the call.
struct KernelJob {
    int32_t colorThreshold;  // summed difference that counts as an edge, on the 8-bit scale; 0..255 from the dialog
    int32_t softness;        // length of the ramps in percent; 0..100 from the dialog
    int32_t bias;            // percent of cube in the weight curve; negative mirrors it; 0..100 from the dialog
    void* reserved;          // null; no kernel reads it
    KernelKey key;           // read by DispatchKernel (host/) only
    // Both views have one size. The source is only read. The destination holds the same pixels on entry, since the
    // edges are read from it, and only pixels inside the image are written. The two buffers don't overlap.
    const ImageView* source;
    const ImageView* destination;
    int32_t left, top, right, bottom;  // the host's filter rectangle; no kernel reads it
};

// Results of a kernel. The last two leave the destination as it was.
constexpr int32_t kKernelDone = 0;
constexpr int32_t kKernelParameterError = 0x5041524D;  // 'PARM': the views differ in size, or no kernel has the key
constexpr int32_t kKernelMemoryError = 0x214D454D;     // '!MEM': not enough memory for the flags

}  // namespace stairmelt
