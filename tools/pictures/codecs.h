// One function for each library and direction, for picture_file.cpp, and what they share. They throw ToolError.
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

// Allocates the samples once the other fields are set, if they are plausible for a file of that size.
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
    std::span<const uint8_t> input{};  // empty where a file is written
    Bytes output{};
    size_t at = 0;                    // where in either the next access is
    std::array<char, 200> message{};  // the library's first words: the later ones are consequences
    bool isMemoryShort = false;
    std::jmp_buf jump{};

    // For callbacks, which can't throw. They return the bytes that were there, or for which there was memory.
    size_t Read(uint8_t* to, size_t size);
    size_t Write(const uint8_t* from, size_t size);
    void Report(const char* words);
    [[noreturn]] void Leave(const char* words);  // ends the current Do()

    [[noreturn]] void Throw() const;  // what was reported

    // Calls body(), which a callback may end by Leave(). Neither body nor its callees may have objects that need to be
    // destroyed.
    template <class Body>
    void Do(const Body& body) {
        // NOLINTNEXTLINE(cert-err52-cpp): the libraries' only way to report errors
        if (setjmp(jump) != 0) Throw();
        body();
    }
};

}  // namespace stairmelt
