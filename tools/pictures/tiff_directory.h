// The tag directory of a TIFF file: reading the first one, and appending another that takes its place.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tools/byte_order.h"

namespace stairmelt {

enum class TiffTag : uint16_t {
    kWidth = 256,
    kHeight = 257,
    kBitsPerSample = 258,
    kCompression = 259,
    kPhotometric = 262,
    kFillOrder = 266,
    kStripOffsets = 273,
    kOrientation = 274,
    kSamplesPerPixel = 277,
    kRowsPerStrip = 278,
    kStripByteCounts = 279,
    kXResolution = 282,
    kYResolution = 283,
    kPlanarConfiguration = 284,
    kResolutionUnit = 296,
    kPredictor = 317,
    kTileWidth = 322,
    kTileHeight = 323,
    kTileOffsets = 324,
    kTileByteCounts = 325,
    kExtraSamples = 338,
    kSampleFormat = 339,
    kProfile = 34675,
};

enum class TiffType : uint16_t { kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7 };

struct TiffDirectory {
    struct Entry {
        TiffTag tag;
        TiffType type;
        uint32_t count;  // values, not bytes
        Bytes data;      // in the file's byte order
    };
    bool bigEndian = false;
    bool hasNext = false;  // another picture follows in the file
    std::vector<Entry> entries;

    const Entry* Find(TiffTag tag) const;
    // All values of a tag of type byte, short or long; `otherwise` when the tag isn't there.
    std::vector<uint32_t> Numbers(TiffTag tag, std::vector<uint32_t> otherwise = {}) const;
    uint32_t Number(TiffTag tag, uint32_t otherwise) const;  // the first of them
    double Rational(TiffTag tag) const;                      // 0 when it isn't there or makes no sense

    void SetNumbers(TiffTag tag, TiffType type, const std::vector<uint32_t>& values);
    void SetRational(TiffTag tag, double value);
    void SetBytes(TiffTag tag, std::span<const uint8_t> bytes);  // as type undefined
    void CopyFrom(const TiffDirectory& other, TiffTag tag);      // nothing when `other` lacks the tag
};

// The first directory of a file. Throws ToolError when it isn't whole.
TiffDirectory ReadTiffDirectory(std::span<const uint8_t> file);

// Puts the directory behind the file's end and lets the header point at it, as the only one. What stood in the file
// stays where it is, so that offsets into it hold.
void AppendTiffDirectory(Bytes& file, TiffDirectory directory);

}  // namespace stairmelt
