// EXIF data: directories of tagged values, as in a TIFF file. PNG and JPEG hold them as a block that begins like a TIFF
// file; in a TIFF file they hang from its own directory.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/byte_order.h"

namespace stairmelt {

struct ExifEntry {
    uint16_t tag, type;
    uint32_t count;                    // values, not bytes
    Bytes data;                        // in the byte order of all
    std::vector<ExifEntry> directory;  // where the entry points at another directory; `data` is empty then
};

struct Exif {
    bool bigEndian = false;
    std::vector<ExifEntry> entries;  // ascending by tag
};

constexpr uint16_t kOrientationTag = 274, kExifTag = 34665, kGpsTag = 34853;

// The first directory of a block or of a TIFF file of the common kind, and those that it points at. Entries that don't
// lie within the bytes are left out; damaged data gives no entries.
Exif ReadExif(std::span<const uint8_t> bytes);

// Appends a directory, and behind it what it points at, to what becomes a block or a TIFF file. Returns its offset.
uint32_t AppendDirectory(Bytes& to, const std::vector<ExifEntry>& entries, bool bigEndian);

// The whole block, with the orientation. Empty where there is nothing to say.
Bytes ExifBlock(const Exif& exif, uint16_t orientation);

// Removes the orientation from the entries. 1 where it isn't among them or makes no sense.
uint16_t TakeOrientation(Exif& exif);

// The text of an entry, empty where there is none.
std::string ExifText(const Exif& exif, uint16_t tag);

}  // namespace stairmelt
