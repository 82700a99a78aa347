// The flags of an edge map as bits: for each row of pixels one row of bits for R, one for D, one for X and one for A.
// Half the memory of the byte map, and one instruction looks at the same flag of up to 64 pixels. The flags are the
// same as those of an EdgeMap of the same picture.
//
// In a row of bits, column x is bit x + kGuardColumns, counted from the lowest bit of the row's first byte. Zero bits
// stand around the image: a flag may be read for x from -60 on to 60 beyond the width, and for y from -kGuardRows to
// height + kGuardRows - 1, so that no reader tests for the image's edge. Rows in which nothing is flagged are never
// written, and a map hands out zeroed pages as they are touched: a flat part of a picture costs no memory traffic.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "engine/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr int32_t kGuardColumns = 4;
constexpr int32_t kGuardRows = 4;
constexpr int kChunkColumns = 64;  // compared at a time; one word of flags

// The place of a flag's plane among the four.
constexpr int PlaneOf(uint8_t flag) { return std::countr_zero(flag); }

// Sets the flags of further rows when they are wanted.
class RowBuilder {
public:
    // Sets the flags of all rows below `end`, which is at most the height, and returns up to which row they are set
    // now.
    virtual int32_t BuildTo(int32_t end) = 0;

protected:
    ~RowBuilder() = default;
};

class FlagPlanes {
public:
    FlagPlanes() = default;
    ~FlagPlanes() { std::free(memory); }
    FlagPlanes(const FlagPlanes&) = delete;
    FlagPlanes& operator=(const FlagPlanes&) = delete;

    // Allocates zeroed planes, once in the object's life, for sides of at least 1. Returns false when the size can't be
    // had.
    bool Allocate(int32_t width, int32_t rowCount) {
        height = rowCount;
        const int64_t bitBytes = (static_cast<int64_t>(width) + kGuardColumns + 7) / 8;
        planeBytes = static_cast<ptrdiff_t>(bitBytes + kGuardBytes);
        rowBytes = 4 * planeBytes;
        const int64_t rows = static_cast<int64_t>(height) + 2 * kGuardRows;
        const int64_t planeMemory = rows * rowBytes + kGuardBytes + kTailBytes;  // below 2^62
        const int64_t chunks = static_cast<int64_t>(width) / kChunkColumns + 1;
        memory = std::calloc(static_cast<size_t>(planeMemory + height + chunks), 1);
        if (memory == nullptr) return false;
        uint8_t* const start = static_cast<uint8_t*>(memory);
        firstRow = start + kGuardBytes + kGuardRows * rowBytes;
        rowMarks = start + planeMemory;
        chunkNotes = rowMarks + height;
        return true;
    }

    // The byte with the bit of column -kGuardColumns.
    uint8_t* Row(uint8_t flag, int32_t y) { return firstRow + y * rowBytes + PlaneOf(flag) * planeBytes; }
    const uint8_t* Row(uint8_t flag, int32_t y) const { return firstRow + y * rowBytes + PlaneOf(flag) * planeBytes; }

    // From a row to the next one of the same plane.
    ptrdiff_t RowBytes() const { return rowBytes; }

    // Sets the flags of `count` columns from x on, a multiple of 4, in a plane's row: bit k of `bits` is column x + k.
    void Set(uint8_t flag, int32_t x, int32_t y, uint64_t bits) {
        const int32_t first = x + kGuardColumns;
        uint8_t* const at = Row(flag, y) + (first >> 3);
        const int shift = first & 7;
        uint64_t word;
        std::memcpy(&word, at, sizeof word);
        word |= bits << shift;
        std::memcpy(at, &word, sizeof word);
        if (shift != 0) at[8] = static_cast<uint8_t>(at[8] | bits >> (64 - shift));
    }

    // Sets the flags of the cell of one pixel.
    void SetCell(int32_t x, int32_t y, uint8_t cell) {
        for (const uint8_t flag : {kFlagR, kFlagD, kFlagX, kFlagA}) {
            if ((cell & flag) != 0) Set(flag, x, y, 1);
        }
        if ((cell & (kFlagR | kFlagD)) != 0) MarkRow(y);
    }

    // From here on rows are built as they are needed; without a builder all rows count as built.
    void BuildBy(RowBuilder& rowBuilder) {
        builder = &rowBuilder;
        builtRows = 0;
    }

    // Sees to it that the flags of row y are set, and of all above it. Rows beyond the image have none.
    void Need(int32_t y) {
        if (y >= builtRows) BuildMore(y);
    }

    bool IsBuilt(int32_t y) const { return y < builtRows; }

    // Whether the row has an R or a D: rows without are passed over by the scan.
    void MarkRow(int32_t y) { rowMarks[y] = 1; }
    bool IsMarked(int32_t y) const { return rowMarks[y] != 0; }

    // For the builder's own use: a byte for each kChunkColumns columns, the last ones included.
    uint8_t* ChunkNotes() { return chunkNotes; }

private:
    // Between two rows of bits, so that whole words may be read across a row's ends.
    static constexpr int64_t kGuardBytes = 8;
    // Behind the last row: four blocks are read at a time.
    static constexpr int64_t kTailBytes = 64;

    void BuildMore(int32_t y) {
        // A band of some rows at a time; all of the image where what is left is less.
        constexpr int32_t kBandRows = 8;
        builtRows = y < height - kBandRows ? builder->BuildTo(y + kBandRows) : builder->BuildTo(height);
        if (builtRows == height) builtRows = INT32_MAX;
    }

    RowBuilder* builder = nullptr;
    int32_t builtRows = INT32_MAX;
    int32_t height = 0;
    uint8_t* firstRow = nullptr;  // of plane R, row 0
    ptrdiff_t planeBytes = 0;     // from a plane's row to the next plane's
    ptrdiff_t rowBytes = 0;       // from a row to the next one of the same plane
    uint8_t* rowMarks = nullptr;  // one for each row of the image
    uint8_t* chunkNotes = nullptr;
    void* memory = nullptr;
};

// A pixel of the planes as the origin of offsets.
struct PlaneCursor {
    const FlagPlanes& planes;
    int32_t x, y;

    bool Holds(FlagTest test) const {
        const int32_t bit = x + test.dx + kGuardColumns;
        return ((planes.Row(test.flag, y + test.dy)[bit >> 3] >> (bit & 7) & 1) != 0) == test.wanted;
    }
    void Move(int dx, int dy) {
        x += dx;
        y += dy;
    }
};

inline PlaneCursor CursorAt(const FlagPlanes& planes, int32_t x, int32_t y) { return {planes, x, y}; }

}  // namespace stairmelt::inline STAIRMELT_SET
