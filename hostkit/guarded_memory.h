// Memory with guard zones on both sides, filled with a pattern, so that a stray write shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace stairmelt {

// Fresh memory holds this in every byte, so that nobody gets along with a block that happens to be zero.
constexpr uint8_t kFillPattern = 0xA5;

// Under the address sanitizer there are no zones: its own begin right at the block and show stray reads as well.
#if defined(__SANITIZE_ADDRESS__)
constexpr size_t kGuardBytes = 0;
#elif defined(__has_feature)
constexpr size_t kGuardBytes = __has_feature(address_sanitizer) ? 0 : 64;
#else
constexpr size_t kGuardBytes = 64;
#endif

// True when every byte of the range holds kFillPattern.
bool HoldsPattern(const uint8_t* bytes, size_t size);

class GuardedMemory {
public:
    GuardedMemory() = default;
    // Throws std::bad_alloc where there is no room.
    explicit GuardedMemory(size_t size);

    uint8_t* Data() const { return block_ ? block_.get() + kGuardBytes : nullptr; }
    size_t Size() const { return size_; }
    bool IsIntact() const;  // whether both zones hold what they held at first

private:
    std::unique_ptr<uint8_t[]> block_;
    size_t size_ = 0;
};

}  // namespace stairmelt
