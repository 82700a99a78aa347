#include "ui/pixel_buffer.h"

#include "host/usable_table.h"
#include "host/plugin_entry.h"

namespace stairmelt {

void PixelBuffer::Reallocate(int32_t bytes, int64_t needed) {
    Release();
    const BufferProcs* const procs = UsableOrNull(gFilterRecord->bufferProcs);
    if (procs == nullptr) return;
    BufferID allocated = nullptr;
    if (procs->allocateProc(bytes, &allocated) != kNoErr || allocated == nullptr) return;
    id = allocated;
    constexpr Boolean kMoveHigh = 1;
    uint8_t* const locked = reinterpret_cast<uint8_t*>(procs->lockProc(id, kMoveHigh));
    if (bytes >= 0 && bytes == needed) pixels = locked;
}

void PixelBuffer::Release() {
    const BufferProcs* const procs = UsableOrNull(gFilterRecord->bufferProcs);
    if (id != nullptr && procs != nullptr) {
        procs->unlockProc(id);
        procs->freeProc(id);
    }
    id = nullptr;
    pixels = nullptr;
}

}  // namespace stairmelt
