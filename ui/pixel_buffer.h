// A pixel buffer owned by the host: allocated, locked and freed through the filter record's buffer routines.
#pragma once

#include <cstdint>

#include "host/filter_api.h"

namespace stairmelt {

// Locked as long as it is held.
struct PixelBuffer {
    BufferID id = nullptr;      // null if nothing is held
    uint8_t* pixels = nullptr;  // also null if the host could not allocate or lock it

    PixelBuffer() = default;
    PixelBuffer(const PixelBuffer&) = delete;
    PixelBuffer& operator=(const PixelBuffer&) = delete;
    ~PixelBuffer() { Release(); }

    // Releases what is held and allocates `bytes`, a 32-bit count as the host takes it. If the count has wrapped and
    // differs from what is `needed`, `pixels` stays null, so that nothing is written past the buffer's true size.
    void Reallocate(int32_t bytes, int64_t needed);

    void Release();
};

}  // namespace stairmelt
