// Fuzzes the reading of picture files. A picture that can be read is written in each format that can hold it and read
// again, with the same samples; any other file has to end in a message.
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

#include "fuzz/report.h"
#include "tools/byte_order.h"
#include "tools/pictures/picture_file.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

constexpr size_t kMaxSamples = size_t{1} << 22;  // bytes; more would only take longer

void CheckRoundTrip(const Picture& picture, FileKind kind) {
    try {
        RequireWritable(picture, kind);
    } catch (const ToolError&) {
        return;
    }
    const Picture same = DecodePicture(EncodePicture(picture, kind));
    Require(same.width == picture.width && same.height == picture.height && same.colors == picture.colors &&
                same.depth == picture.depth && same.hasAlpha == picture.hasAlpha && same.samples == picture.samples,
            "samples differ after writing and reading");
    Require(same.orientation == picture.orientation, "the orientation differs");
    Require(same.exif == picture.exif || kind == FileKind::kTiff || picture.exif.empty(), "the EXIF block differs");
}

// Corrects the checksums of a PNG's chunks: readers stop at a wrong one.
void RepairSums(uint8_t* file, size_t size) {
    constexpr size_t kSignature = 8, kFrame = 12;  // a chunk's length, name and sum
    for (size_t at = kSignature; at + kFrame <= size;) {
        const size_t length = GetNumber<uint32_t>(file + at, true);
        if (length > size - at - kFrame) return;
        const uLong sum = crc32(0, file + at + 4, static_cast<uInt>(length + 4));
        PutNumber(file + at + 8 + length, static_cast<uint32_t>(sum), true);
        at += length + kFrame;
    }
}

}  // namespace
}  // namespace stairmelt

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (size > 0 && data[0] == 0x89 && seed % 8 != 0) stairmelt::RepairSums(data, size);
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace stairmelt;
    try {
        const Picture picture = DecodePicture({data, size}, kMaxSamples);
        CheckRoundTrip(picture, FileKind::kPng);
        CheckRoundTrip(picture, FileKind::kTiff);
    } catch (const ToolError& error) {
        Require(error.what()[0] != '\0', "a failure without a message");
    } catch (const std::bad_alloc&) {
        // The size in its header takes more memory than allowed here.
    }
    return 0;
}
