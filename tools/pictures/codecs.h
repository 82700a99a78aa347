// One function for each library and direction, for picture_file.cpp. They throw ToolError.
#pragma once

#include <csetjmp>
#include <span>
#include <string>

#include "tools/pictures/picture.h"

namespace stairmelt {

void ReadPng(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture);
void ReadTiff(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture);
void ReadJpeg(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture);
Bytes WritePng(const Picture& picture);
Bytes WriteTiff(const Picture& picture);

// Allocates the samples once the other fields are set, if they are plausible for a file of that size.
void AllocateSamples(size_t fileSize, size_t maxSamples, Picture& picture);

// Ignores anything that isn't an orientation or an EXIF block.
void SetOrientation(uint32_t orientation, Picture& picture);
void SetExif(std::span<const uint8_t> block, Picture& picture);

[[noreturn]] void ThrowDamaged(const std::string& why);

#ifdef _MSC_VER
#pragma warning(disable : 4611)  // setjmp and destructors: see below
#endif

// Calls body(). Returns false if a C library left it by a longjmp to `jump`. At that time, neither body nor its callees
// may have objects that need to be destroyed.
template <class Body>
bool Completes(std::jmp_buf& jump, const Body& body) {
    // NOLINTNEXTLINE(cert-err52-cpp): the libraries' only way to report errors
    if (setjmp(jump) != 0) return false;
    body();
    return true;
}

}  // namespace stairmelt
