#include "host/render.h"

#include <cstdint>

#include "engine/image.h"
#include "host/coordinates.h"
#include "host/image_class.h"
#include "host/kernel_dispatch.h"
#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "ui/parameter_dialog.h"

namespace stairmelt {

namespace {

constexpr VRect kEmptyRect = {0, 0, 0, 0};

int16_t LastPlane() { return static_cast<int16_t>(gFilterRecord->planes - 1); }

// Has the host deliver the requested areas and stores its code. Returns whether it succeeded.
bool Advance() {
    const AdvanceStateProc advance = gFilterRecord->advanceState;
    *gResult = advance != nullptr ? advance() : kFilterBadParameters;
    return *gResult == kNoErr;
}

// Runs the kernel over the buffers that the last advance delivered.
int32_t RunKernel(KernelKey key, const VPoint& size) {
    uint8_t* const inData = static_cast<uint8_t*>(gFilterRecord->inData);
    uint8_t* const outData = static_cast<uint8_t*>(gFilterRecord->outData);
    const bool hasPixels = size.h > 0 && size.v > 0;
    if (hasPixels && (inData == nullptr || outData == nullptr)) return kKernelParameterError;

    const ImageView source = {size.h, size.v, inData, gFilterRecord->inRowBytes};
    const ImageView destination = {size.h, size.v, outData, gFilterRecord->outRowBytes};
    const VRect rect = FilterRect();
    return DispatchKernel({
        .colorThreshold = gParameterBlock->colorThreshold,
        .softness = gParameterBlock->softness,
        .bias = gParameterBlock->bias,
        .reserved = nullptr,
        .key = key,
        .source = &source,
        .destination = &destination,
        .left = rect.left,
        .top = rect.top,
        .right = rect.right,
        .bottom = rect.bottom,
    });
}

}  // namespace

void DoStart() {
    const KernelKey key = ClassifyImage();
    if (key == kUnsupportedImage) {
        *gResult = kFilterBadMode;
        return;
    }
    if (!LockHandles()) return;

    LoadStoredParameters();
    const VPoint size = ImageSize();
    const VRect wholeImage = {0, 0, size.v, size.h};
    SetInputRect(wholeImage);
    gFilterRecord->inLoPlane = 0;
    gFilterRecord->inHiPlane = LastPlane();

    // A malformed script doesn't fail the run: the advance replaces this code.
    if (ReadScriptParameters() != kNoErr) *gResult = kReadErr;

    if (*gShowDialog != 0) {
        if (!Advance()) return;  // the preview reads the input
        if (!ShowParameterDialog()) {
            *gResult = kUserCanceledErr;
            return;
        }
    }
    *gShowDialog = 0;

    SetOutputRect(wholeImage);
    gFilterRecord->outLoPlane = 0;
    gFilterRecord->outHiPlane = LastPlane();
    if (!Advance()) return;

    try {
        *gResult = static_cast<int16_t>(RunKernel(key, size));
    } catch (int32_t code) {
        // Kernels return their errors, and nothing throws this today. The handler ensures that the rest of the selector
        // always runs: the host waits for full progress and for empty rectangles.
        *gResult = static_cast<int16_t>(code);
    }
    if (gFilterRecord->progressProc != nullptr) gFilterRecord->progressProc(1, 1);
    SetInputRect(kEmptyRect);
    SetOutputRect(kEmptyRect);
}

void DoContinue() { SetOutputRect(kEmptyRect); }

void DoFinish() {
    LockHandles();
    if (gParameterBlock == nullptr) return;
    WriteScriptParameters();
    SaveStoredParameters();
}

}  // namespace stairmelt
