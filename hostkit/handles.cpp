#include "hostkit/handles.h"

#include <new>
#include <string>

#include "hostkit/calls.h"
#include "hostkit/fake_host.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

BlockStore& HandleBlocks() { return CurrentHost().handles.blocks; }

Handle NewHandle(int32_t size) {
    if (FailureOf("newProc " + std::to_string(size)) || size < 0) return nullptr;
    try {
        return CurrentHost().handles.Make(nullptr, static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void DisposeHandle(Handle handle) {
    NoteCall("disposeProc " + HandleBlocks().NameOf(handle));
    if (MovableBlock* block = HandleBlocks().Find(handle, "disposeProc")) HandleBlocks().Dispose(*block);
}

Ptr LockHandle(Handle handle, Boolean moveHigh) {
    const std::string line = "lockProc " + HandleBlocks().NameOf(handle) + (moveHigh ? "" : " low");
    if (FailureOf(line)) return nullptr;
    MovableBlock* block = HandleBlocks().Find(handle, "lockProc");
    return block ? HandleBlocks().Lock(*block) : nullptr;
}

void UnlockHandle(Handle handle) {
    NoteCall("unlockProc " + HandleBlocks().NameOf(handle));
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
