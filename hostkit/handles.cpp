#include "hostkit/handles.h"

#include <new>
#include <string>

#include "hostkit/call_log.h"
#include "hostkit/fake_host.h"

namespace stairmelt {
namespace {

BlockStore& Blocks() { return CurrentHost().handles.blocks; }

Handle NewHandle(int32_t size) {
    const bool fails = LogFallible("newProc " + std::to_string(size), &CurrentHost().failures.newProc);
    if (fails || size < 0) return nullptr;
    try {
        return CurrentHost().handles.Make(nullptr, static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void DisposeHandle(Handle handle) {
    LogCall("disposeProc " + Blocks().NameOf(handle));
    if (MovableBlock* block = Blocks().Find(handle, "disposeProc")) Blocks().Dispose(*block);
}

int32_t GetHandleSize(Handle handle) {
    LogCall("getSizeProc " + Blocks().NameOf(handle));
    const MovableBlock* block = Blocks().Find(handle, "getSizeProc");
    return block ? static_cast<int32_t>(block->memory.Size()) : 0;
}

OSErr SetHandleSize(Handle handle, int32_t size) {
    const bool fails = LogFallible("setSizeProc " + Blocks().NameOf(handle) + " " + std::to_string(size));
    if (fails) return kMemFullErr;
    MovableBlock* block = Blocks().Find(handle, "setSizeProc");
    if (!block) return kNilHandleErr;
    if (size < 0) return kParamErr;
    if (block->isLocked) return kMemFullErr;  // a locked block has to stay where it is
    try {
        Blocks().Resize(*block, static_cast<size_t>(size));
        return kNoErr;
    } catch (const std::bad_alloc&) {
        return kMemFullErr;
    }
}

Ptr LockHandle(Handle handle, Boolean moveHigh) {
    const std::string line = "lockProc " + Blocks().NameOf(handle) + (moveHigh ? "" : " low");
    if (LogFallible(line, &CurrentHost().failures.lockProc)) return nullptr;
    MovableBlock* block = Blocks().Find(handle, "lockProc");
    return block ? Blocks().Lock(*block, moveHigh != 0) : nullptr;
}

void UnlockHandle(Handle handle) {
    LogCall("unlockProc " + Blocks().NameOf(handle));
    if (MovableBlock* block = Blocks().Find(handle, "unlockProc")) Blocks().Unlock(*block);
}

void RecoverSpace(int32_t size) { LogCall("recoverSpaceProc " + std::to_string(size)); }

}  // namespace

FakeHandles::FakeHandles() {
    procs.handleProcsVersion = 1;
    procs.numHandleProcs = 8;
    procs.newProc = NewHandle;
    procs.disposeProc = DisposeHandle;
    procs.getSizeProc = GetHandleSize;
    procs.setSizeProc = SetHandleSize;
    procs.lockProc = LockHandle;
    procs.unlockProc = UnlockHandle;
    procs.recoverSpaceProc = RecoverSpace;
    procs.disposeRegularHandleProc = DisposeHandle;
}

}  // namespace stairmelt
