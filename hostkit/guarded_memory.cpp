#include "hostkit/guarded_memory.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace stairmelt {

bool HoldsPattern(const uint8_t* bytes, size_t size) {
    return std::all_of(bytes, bytes + size, [](uint8_t byte) { return byte == kFillPattern; });
}

GuardedMemory::GuardedMemory(size_t size) : size_(size) {
    // An array may take at most half the address space. Requesting more would throw a different exception.
    if (size > static_cast<size_t>(std::numeric_limits<ptrdiff_t>::max()) - 2 * kGuardBytes) throw std::bad_alloc();
    block_.reset(new uint8_t[size + 2 * kGuardBytes]);
    std::memset(block_.get(), kFillPattern, size + 2 * kGuardBytes);
}

bool GuardedMemory::IsIntact() const {
    return !block_ || (HoldsPattern(block_.get(), kGuardBytes) && HoldsPattern(Data() + size_, kGuardBytes));
}

}  // namespace stairmelt
