// The functions behind picture_file.cpp, one for each library and direction, and their common parts. They throw
// ToolError.
#pragma once

#include <array>
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

// Allocates the samples, after the other fields have been set. Refuses sizes that aren't plausible for the file's size.
void AllocateSamples(size_t fileSize, size_t maxSamples, Picture& picture);

// Ignores anything that isn't an orientation or an EXIF block.
void SetOrientation(uint32_t orientation, Picture& picture);
void SetExif(std::span<const uint8_t> block, Picture& picture);

[[noreturn]] void ThrowDamaged(const std::string& why);

#ifdef _MSC_VER
#pragma warning(disable : 4611)  // setjmp and destructors: see Do()
#endif

// A file in memory that a C library reads or writes, and what the library reports about it.
struct LibraryFile {
    std::span<const uint8_t> input{};  // empty when writing
    Bytes output{};
    size_t at = 0;                    // the offset of the next access in either
    std::array<char, 200> message{};  // the library's first message: later ones are consequences of the first
    bool isMemoryShort = false;
    std::jmp_buf jump{};

    // For callbacks, which can't throw. They return the number of bytes read, or written before memory ran out.
    size_t Read(uint8_t* to, size_t size);
    size_t Write(const uint8_t* from, size_t size);
    void Report(const char* text);
    [[noreturn]] void Leave(const char* text);  // ends the current Do()

    [[noreturn]] void Throw() const;  // with the reported message

    // Calls body(), which a callback may end by Leave(). Neither body nor the functions that it calls may have objects
    // with destructors.
    template <class Body>
    void Do(const Body& body) {
        // NOLINTNEXTLINE(cert-err52-cpp): the libraries have no other way to report errors
        if (setjmp(jump) != 0) Throw();
        body();
    }
};

}  // namespace stairmelt
