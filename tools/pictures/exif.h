// EXIF data: directories of tagged values in the layout of a TIFF file. PNG and JPEG files store them in a block that
// begins like a TIFF file. In a TIFF file, its own directory points at them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/byte_order.h"

namespace stairmelt {

constexpr uint16_t kOrientationTag = 274, kExifTag = 34665, kGpsTag = 34853;

// Reads a block or a TIFF file, which must outlive the reader. BigTIFF and everything else count as empty. Values
// outside the bytes are skipped.
class ExifReader {
public:
    explicit ExifReader(std::span<const uint8_t> bytes);

    bool IsEmpty() const { return first_.empty(); }
    bool IsBigEndian() const { return bigEndian_; }

    // Values of the first directory: a number, which may be the offset of another directory, or a text. 0 or "" if the
    // tag is missing.
    uint32_t Number(uint16_t tag) const;
    std::string Text(uint16_t tag) const;

    // A block with the orientation and the EXIF and GPS directories. Empty if there are none.
    Bytes MakeBlock() const;

private:
    struct Entry {
        uint16_t tag = 0, type = 0;
        uint32_t count = 0;               // values, not bytes
        std::span<const uint8_t> data{};  // empty if the tag is missing
    };
    template <class T>
    T At(size_t at) const {
        return GetNumber<T>(&bytes_[at], bigEndian_);
    }
    std::vector<Entry> Directory(size_t at) const;
    Entry Find(uint16_t tag) const;
    uint32_t NumberOf(const Entry& entry) const;
    uint32_t Copy(const std::vector<Entry>& entries, int level, size_t& left, Bytes& to) const;

    std::span<const uint8_t> bytes_;
    bool bigEndian_ = false;
    std::vector<Entry> first_;
};

}  // namespace stairmelt
