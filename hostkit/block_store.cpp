#include "hostkit/block_store.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "hostkit/calls.h"

namespace stairmelt {
namespace {

void TakeMemory(MovableBlock& block, GuardedMemory memory) {
    block.memory = std::move(memory);
    block.inner = reinterpret_cast<char*>(block.memory.Data());
}

void CheckGuardsOf(const MovableBlock& block) {
    if (!block.memory.IsIntact()) ReportFault("stray write beside " + block.name);
}

}  // namespace

MovableBlock& BlockStore::Make(const void* bytes, size_t size) {
    GuardedMemory memory(size);
    if (bytes && size) std::memcpy(memory.Data(), bytes, size);
    MovableBlock& block = made.emplace_back();
    block.name = std::string(kind) + " #" + std::to_string(made.size());
    TakeMemory(block, std::move(memory));
    return block;
}

MovableBlock* BlockStore::Find(const void* identity, const char* caller) {
    if (!identity) return nullptr;
    for (MovableBlock& block : made) {
        if (&block.inner != identity) continue;
        if (block.isLive) return &block;
        ReportFault(std::string(caller) + " of the disposed " + block.name);
        return nullptr;
    }
    ReportFault(std::string(caller) + " of an unknown " + kind);
    return nullptr;
}

std::string BlockStore::NameOf(const void* identity) const {
    if (!identity) return "null";
    for (size_t i = 0; i < made.size(); ++i)
        if (&made[i].inner == identity) return std::string("#").append(std::to_string(i + 1));
    return "unknown";
}

char* BlockStore::Lock(MovableBlock& block) {
    block.isLocked = true;
    return block.inner;
}

void BlockStore::Unlock(MovableBlock& block) {
    if (!block.isLocked) return;
    block.isLocked = false;
    Resize(block, block.memory.Size());
}

void BlockStore::Resize(MovableBlock& block, size_t size) {
    CheckGuardsOf(block);
    // The new memory is allocated before the old is freed, so that the address always changes.
    GuardedMemory moved(size);
    std::memcpy(moved.Data(), block.memory.Data(), std::min(size, block.memory.Size()));
    TakeMemory(block, std::move(moved));
}

void BlockStore::Dispose(MovableBlock& block) {
    CheckGuardsOf(block);
    block.isLive = false;
    block.isLocked = false;
    TakeMemory(block, GuardedMemory());
}

int BlockStore::CountLive() const {
    return static_cast<int>(std::count_if(made.begin(), made.end(), [](const MovableBlock& b) { return b.isLive; }));
}

int BlockStore::CountLocked() const {
    return static_cast<int>(std::count_if(made.begin(), made.end(), [](const MovableBlock& b) { return b.isLocked; }));
}

void BlockStore::CheckGuards() const {
    for (const MovableBlock& block : made) CheckGuardsOf(block);
}

}  // namespace stairmelt
