#include "hostkit/handles.h"

#include <new>
#include <string>

#include "hostkit/call_log.h"
#include "hostkit/fake_host.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

BlockStore& HandleBlocks() { return CurrentHost().handles.blocks; }

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
    LogCall("disposeProc " + HandleBlocks().NameOf(handle));
    if (MovableBlock* block = HandleBlocks().Find(handle, "disposeProc")) HandleBlocks().Dispose(*block);
}

Ptr LockHandle(Handle handle, Boolean moveHigh) {
    const std::string line = "lockProc " + HandleBlocks().NameOf(handle) + (moveHigh ? "" : " low");
    if (LogFallible(line, &CurrentHost().failures.lockProc)) return nullptr;
    MovableBlock* block = HandleBlocks().Find(handle, "lockProc");
    return block ? HandleBlocks().Lock(*block) : nullptr;
}

void UnlockHandle(Handle handle) {
    LogCall("unlockProc " + HandleBlocks().NameOf(handle));
    if (MovableBlock* block = HandleBlocks().Find(handle, "unlockProc")) HandleBlocks().Unlock(*block);
}

}  // namespace

FakeHandles::FakeHandles() {
    FillSlots(procs);
    procs.handleProcsVersion = 1;
    procs.numHandleProcs = 8;
    procs.newProc = NewHandle;
    procs.disposeProc = DisposeHandle;
    procs.lockProc = LockHandle;
    procs.unlockProc = UnlockHandle;
}

}  // namespace stairmelt
