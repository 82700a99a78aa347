// The fake host's delivery of pixels: what a filter asks for by rectangle and planes is copied into fresh buffers, and
// what it wrote is copied back when the host next advances.
//
// Each delivery has new addresses and other row bytes than the one before, with guarded padding behind the rows, and
// the old buffers are freed. A request that reaches beyond the image or its planes is refused: this host doesn't pad.
// Where host.checksPixels is false, the whole image is delivered where the document has it instead.
#pragma once

#include <cstdint>

#include "hostkit/document.h"
#include "hostkit/guarded_memory.h"

namespace stairmelt {

inline bool IsWithin(const VRect& inner, const VRect& outer) {
    return inner.top >= outer.top && inner.left >= outer.left && inner.bottom <= outer.bottom &&
           inner.right <= outer.right;
}

// One buffer handed to the filter. Nothing is held while `rect` is empty.
struct Delivery {
    const char* name;  // "input", "output" or "mask", for texts
    VRect rect{};
    int32_t loPlane = 0;
    int32_t pixelBytes = 0;  // of the planes from loPlane on that were asked for
    int32_t rowBytes = 0;    // padding included
    GuardedMemory memory{};
    uint8_t* inPlace = nullptr;  // instead of the memory: the document's own samples

    uint8_t* Data() const { return inPlace != nullptr ? inPlace : memory.Data(); }
};

struct FakePixels {
    Delivery input{"input"};
    Delivery output{"output"};
    Delivery mask{"mask"};
    int advances = 0;               // successful calls of advanceState by the filter
    int deliveries = 0;             // those and the host's own; varies the padding
    bool hasAdvanceFailed = false;  // in the selector that runs; a further call of advanceState is a fault then

    // Commits the output, then delivers what the record asks for. kFilterBadParameters for a request outside the
    // image, kMemFullErr where there is no room; then the filter has no buffers at all.
    OSErr Deliver();

    // Whether the record asks for anything, in the form of coordinates that the plug-in turned on.
    bool IsAnythingAsked() const;

    // Copies the output into the document's result, inside the selection where the host masks.
    void Commit();

    // Takes the buffers away from the filter, and reports what was written where it must not be.
    void Drop();

    // Reports stray writes around and within the buffers that are out.
    void Check() const;
};

// The record's advanceState.
OSErr AdvanceState();

}  // namespace stairmelt
