#include "hostkit/buffers.h"

#include <new>
#include <string>

#include "hostkit/call_log.h"
#include "hostkit/fake_host.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

BlockStore& BufferBlocks() { return CurrentHost().buffers.blocks; }

OSErr AllocateBuffer(int32_t size, BufferID* id) {
    Failures& failures = CurrentHost().failures;
    const bool fails = LogFallible("buffer.allocateProc " + std::to_string(size), &failures.bufferAllocate);
    if (!id || size < 0) return kParamErr;
    if (!failures.failedAllocateKeepsId) *id = nullptr;
    if (fails) return kMemFullErr;
    try {
        *id = reinterpret_cast<BufferID>(&BufferBlocks().Make(nullptr, static_cast<size_t>(size)).inner);
        return kNoErr;
    } catch (const std::bad_alloc&) {
        return kMemFullErr;
    }
}

Ptr LockBuffer(BufferID id, Boolean moveHigh) {
    const std::string line = "buffer.lockProc " + BufferBlocks().NameOf(id) + (moveHigh ? "" : " low");
    if (LogFallible(line, &CurrentHost().failures.bufferLock)) return nullptr;
    MovableBlock* block = BufferBlocks().Find(id, "buffer.lockProc");
    return block ? BufferBlocks().Lock(*block) : nullptr;
}

void UnlockBuffer(BufferID id) {
    LogCall("buffer.unlockProc " + BufferBlocks().NameOf(id));
    if (MovableBlock* block = BufferBlocks().Find(id, "buffer.unlockProc")) BufferBlocks().Unlock(*block);
}

void FreeBuffer(BufferID id) {
    LogCall("buffer.freeProc " + BufferBlocks().NameOf(id));
    if (MovableBlock* block = BufferBlocks().Find(id, "buffer.freeProc")) BufferBlocks().Dispose(*block);
}

}  // namespace

FakeBuffers::FakeBuffers() {
    FillSlots(procs);
    procs.bufferProcsVersion = 2;
    procs.numBufferProcs = 8;
    procs.allocateProc = AllocateBuffer;
    procs.lockProc = LockBuffer;
    procs.unlockProc = UnlockBuffer;
    procs.freeProc = FreeBuffer;
}

}  // namespace stairmelt
