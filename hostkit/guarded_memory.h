// Memory with guard zones on both sides, filled with a pattern that reveals stray writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace stairmelt {

// Fills fresh memory, so that no code works by luck because a block happens to be zero.
constexpr uint8_t kFillPattern = 0xA5;

// Under the address sanitizer there are no zones: its own start right at the block and reveal stray reads, too.
#if defined(__SANITIZE_ADDRESS__)
constexpr size_t kGuardBytes = 0;
#elif defined(__has_feature)
constexpr size_t kGuardBytes = __has_feature(address_sanitizer) ? 0 : 64;
#else
constexpr size_t kGuardBytes = 64;
#endif

// True if every byte of the range is kFillPattern.
bool HoldsPattern(const uint8_t* bytes, size_t size);

class GuardedMemory {
public:
    GuardedMemory() = default;
    // Throws std::bad_alloc.
    explicit GuardedMemory(size_t size);

    uint8_t* Data() const { return block_ ? block_.get() + kGuardBytes : nullptr; }
    size_t Size() const { return size_; }
    bool IsIntact() const;  // whether both zones are unchanged

private:
    std::unique_ptr<uint8_t[]> block_;
    size_t size_ = 0;
};

}  // namespace stairmelt
