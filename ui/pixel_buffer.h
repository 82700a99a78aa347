// A pixel buffer of the host's, allocated, locked and given back through the record's buffer routines.
#pragma once

#include <cstdint>

#include "host/filter_api.h"

namespace stairmelt {

// Locked for as long as it is held.
struct PixelBuffer {
    BufferID id = nullptr;      // null: nothing is held
    uint8_t* pixels = nullptr;  // null also where the host could not allocate or lock

    PixelBuffer() = default;
    PixelBuffer(const PixelBuffer&) = delete;
    PixelBuffer& operator=(const PixelBuffer&) = delete;
    ~PixelBuffer() { Release(); }

    // Gives back what is held and takes a new buffer of `bytes`, the host's 32-bit count. Where that isn't what is
    // `needed`, because the count has wrapped, the buffer has no pixels: nothing is written past its true size.
    void Reallocate(int32_t bytes, int64_t needed);

    void Release();
};

}  // namespace stairmelt
