#include "hostkit/buffers.h"

#include <limits>
#include <new>
#include <string>

#include "hostkit/call_log.h"
#include "hostkit/fake_host.h"

namespace stairmelt {
namespace {

constexpr int64_t kFreeSpace = int64_t{1} << 32;  // bytes; what this host claims to have at any time

BlockStore& Blocks() { return CurrentHost().buffers.blocks; }

OSErr Allocate(const std::string& caller, int64_t size, BufferID* id) {
    Failures& failures = CurrentHost().failures;
    const bool fails = LogFallible(caller + " " + std::to_string(size), &failures.bufferAllocate);
    if (!id || size < 0) return kParamErr;
    if (!failures.failedAllocateKeepsId) *id = nullptr;
    if (fails) return kMemFullErr;
    try {
        *id = reinterpret_cast<BufferID>(&Blocks().Make(nullptr, static_cast<size_t>(size)).inner);
        return kNoErr;
    } catch (const std::bad_alloc&) {
        return kMemFullErr;
    }
}

OSErr AllocateBuffer(int32_t size, BufferID* id) { return Allocate("buffer.allocateProc", size, id); }

OSErr AllocateBuffer64(int64_t size, BufferID* id) { return Allocate("buffer.allocateProc64", size, id); }

Ptr LockBuffer(BufferID id, Boolean moveHigh) {
    const std::string line = "buffer.lockProc " + Blocks().NameOf(id) + (moveHigh ? "" : " low");
    if (LogFallible(line, &CurrentHost().failures.bufferLock)) return nullptr;
    MovableBlock* block = Blocks().Find(id, "buffer.lockProc");
    return block ? Blocks().Lock(*block, moveHigh != 0) : nullptr;
}

void UnlockBuffer(BufferID id) {
    LogCall("buffer.unlockProc " + Blocks().NameOf(id));
    if (MovableBlock* block = Blocks().Find(id, "buffer.unlockProc")) Blocks().Unlock(*block);
}

void FreeBuffer(BufferID id) {
    LogCall("buffer.freeProc " + Blocks().NameOf(id));
    if (MovableBlock* block = Blocks().Find(id, "buffer.freeProc")) Blocks().Dispose(*block);
}

int32_t BufferSpace() { return std::numeric_limits<int32_t>::max(); }

OSErr ReserveSpace(int32_t size) {
    return LogFallible("buffer.reserveProc " + std::to_string(size)) ? kMemFullErr : kNoErr;
}

int64_t BufferSpace64() { return kFreeSpace; }

}  // namespace

FakeBuffers::FakeBuffers() {
    procs.bufferProcsVersion = 2;
    procs.numBufferProcs = 8;
    procs.allocateProc = AllocateBuffer;
    procs.lockProc = LockBuffer;
    procs.unlockProc = UnlockBuffer;
    procs.freeProc = FreeBuffer;
    procs.spaceProc = BufferSpace;
    procs.reserveProc = ReserveSpace;
    procs.allocateProc64 = AllocateBuffer64;
    procs.spaceProc64 = BufferSpace64;
}

}  // namespace stairmelt
