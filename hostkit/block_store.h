// The blocks behind handles and buffer ids. They move whenever they are unlocked, so that a pointer kept beyond the
// unlock is stale at once.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "hostkit/guarded_memory.h"

namespace stairmelt {

// The address of `inner` is the block's identity. A disposed block keeps its record, without its memory, so that
// identities are never reused and a second disposal is detected.
struct MovableBlock {
    char* inner = nullptr;  // the data's address; changes at each unlock, null once disposed of
    GuardedMemory memory;
    std::string name;  // "handle #1": numbered in the order of creation
    bool isLive = true;
    bool isLocked = false;  // one unlock undoes any number of locks
};

struct BlockStore {
    const char* kind;               // "handle" or "buffer", for messages
    std::deque<MovableBlock> made;  // every block ever made; number n is at index n - 1

    // A new block, filled with the bytes, or with the pattern when there are none. Throws std::bad_alloc.
    MovableBlock& Make(const void* bytes, size_t size);

    // The live block with this identity. Any other identity gives null and, unless it is null itself, a fault.
    MovableBlock* Find(const void* identity, const char* caller);

    // "#1", or "null" or "unknown".
    std::string NameOf(const void* identity) const;

    // Pins the block and returns its address.
    char* Lock(MovableBlock& block);

    // Undoes all locks and moves a block that was locked.
    void Unlock(MovableBlock& block);

    // Gives the block a new size and address and keeps as much of its contents as fits. Throws std::bad_alloc.
    void Resize(MovableBlock& block, size_t size);

    // Frees the memory.
    void Dispose(MovableBlock& block);

    int CountLive() const;
    int CountLocked() const;

    // Reports writes beside live blocks.
    void CheckGuards() const;
};

}  // namespace stairmelt
