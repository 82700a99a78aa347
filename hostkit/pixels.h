// The fake host's delivery of pixels: the rectangle and planes that a filter requests are copied into fresh buffers,
// and its output is copied back at the next advance.
//
// Each delivery uses new addresses and different row bytes, with guarded padding after each row, and frees the previous
// buffers. A request beyond the image or its planes is refused: this host doesn't pad. If host.checksPixels is false
// and there is no selection, a request for the whole image gets the document's own samples instead of a copy.
#pragma once

#include <cstdint>

#include "hostkit/document.h"
#include "hostkit/guarded_memory.h"

namespace stairmelt {

inline bool IsWithin(const VRect& inner, const VRect& outer) {
    return inner.top >= outer.top && inner.left >= outer.left && inner.bottom <= outer.bottom &&
           inner.right <= outer.right;
}

// One buffer lent to the filter; none while `rect` is empty.
struct Delivery {
    const char* name;  // "input", "output" or "mask", for messages
    VRect rect{};
    int32_t loPlane = 0;
    int32_t pixelBytes = 0;  // of the requested planes, the first of which is loPlane
    int32_t rowBytes = 0;    // padding included
    GuardedMemory memory{};
    uint8_t* inPlace = nullptr;  // the document's own samples, used in place of `memory`

    uint8_t* Data() const { return inPlace != nullptr ? inPlace : memory.Data(); }
};

struct FakePixels {
    Delivery input{"input"};
    Delivery output{"output"};
    Delivery mask{"mask"};
    int advances = 0;               // the filter's successful calls of advanceState
    int deliveries = 0;             // those and the host's own; varies the padding
    bool hasAdvanceFailed = false;  // in the current selector, where calling advanceState again would be a fault

    // Commits the output, then delivers what the record requests. Returns kFilterBadParameters for a request outside
    // the image and kMemFullErr if memory runs out; the filter then has no buffers at all.
    OSErr Deliver();

    // Whether the record requests anything, in the form of coordinates that the plug-in has selected.
    bool IsAnythingAsked() const;

    // Copies the output into the document's result, limited to the selection if the host masks.
    void Commit();

    // Takes the buffers away from the filter and reports stray writes.
    void Drop();

    // Reports stray writes around and within the buffers that the filter has.
    void Check() const;
};

// The record's advanceState.
OSErr AdvanceState();

}  // namespace stairmelt
