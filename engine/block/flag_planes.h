// The flags of all pixels as bits: for each row of pixels one row of bits for R, one for D, one for X and one for A.
// One instruction tests the same flag of up to 64 pixels.
//
// In a row of bits, column x is bit x + kGuardColumns, counted from the lowest bit of the row's first byte. Zero bits
// surround the image: a word of flags may begin at any x from -1 to the width, and y may be anything from -kGuardRows
// to height + kGuardRows - 1, so that readers need no bounds tests. Rows without flags are never written, and zeroed
// pages are handed out as they are touched: a flat part of a picture costs no memory traffic.
//
// When rows are built. Flags are read from the destination while it still equals the source, and the flags of row y
// depend on pixel rows y and y + 1. So a pixel row y may be changed only once Need(y) has been called. The planner
// keeps kRowsAhead rows built beyond the visited one, enough for whatever is tested and painted below it but walks and
// ramps: CountCells calls Need for the rows that a downward walk reads, and the painter for those that a downward ramp
// changes, unless it is cached and thus short.
//
// Units of columns:
//   4    group: in its first three columns the definition tests some diagonals only after other flags (cell_builder.h)
//   64   chunk: compared in all rows that are built together, and skipped where flat
//   16   part of a chunk, compared at a time; with AVX2 and without opacity it has 64 at depth 8, and 32 at depth 16
//   56   block: decided at a time in one word of 64 bits, with kReachColumns = 4 neighbours on either side; a multiple
//        of 8, so that it begins at a byte
//   57   window: a word begins at a byte; shifted by up to 7 bits, it keeps at least 57 columns
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "engine/block/bits.h"
#include "engine/rules/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr int kCacheLine = 64;  // bytes

constexpr int32_t kChunkColumns = 64;
constexpr int32_t kBlockColumns = 56;
constexpr int32_t kWindowColumns = 57;
constexpr int32_t kGuardColumns = kReachColumns;
constexpr int32_t kRowsAhead = 16;
constexpr int32_t kGuardRows = kReachRows + 1;  // a walk ends in the first row outside the image

// The index of a flag's plane among the four.
constexpr int PlaneOf(uint8_t flag) { return (flag >> 1) - (flag >> 3); }
static_assert(PlaneOf(kFlagR) == 0 && PlaneOf(kFlagD) == 1 && PlaneOf(kFlagX) == 2 && PlaneOf(kFlagA) == 3);

inline uint64_t LoadWord(const uint8_t* at) {
    uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// Builds the flags of further rows on demand.
class RowBuilder {
public:
    // Sets the flags of rows 0 to `end` - 1; `end` is at most the height.
    virtual void BuildTo(int32_t end) = 0;

protected:
    ~RowBuilder() = default;
};

class FlagPlanes {
public:
    FlagPlanes() = default;
    ~FlagPlanes() { std::free(memory); }
    FlagPlanes(const FlagPlanes&) = delete;
    FlagPlanes& operator=(const FlagPlanes&) = delete;

    // Allocates zeroed planes for sides of at least 1; called once. Returns false if memory is short.
    bool Allocate(int32_t width, int32_t rowCount) {
        height = rowCount;
        const int64_t bitBytes = (static_cast<int64_t>(width) + kGuardColumns + 7) / 8;
        planeBytes = static_cast<ptrdiff_t>(bitBytes + kGuardBytes);
        rowBytes = 4 * planeBytes;
        const int64_t rows = static_cast<int64_t>(height) + 2 * kGuardRows;
        const int64_t planeMemory = rows * rowBytes + kGuardBytes;  // below 2^62
        memory = std::calloc(static_cast<size_t>(planeMemory + height), 1);
        if (memory == nullptr) return false;
        uint8_t* const start = static_cast<uint8_t*>(memory);
        firstRow = start + kGuardBytes + kGuardRows * rowBytes;
        rowMarks = start + planeMemory;
        return true;
    }

    // The byte with the bit of column -kGuardColumns.
    uint8_t* Row(uint8_t flag, int32_t y) const { return firstRow + y * rowBytes + PlaneOf(flag) * planeBytes; }

    // From a row to the next one of the same plane, and from a plane's row to the next plane's.
    ptrdiff_t RowBytes() const { return rowBytes; }
    ptrdiff_t PlaneBytes() const { return planeBytes; }

    // Sets flags of the columns from x on in row y: bit k of bits[plane] is column x + k.
    void Set(int32_t x, int32_t y, const uint64_t (&bits)[4]) {
        const int32_t first = x + kGuardColumns;
        const int shift = first & 7;
        uint8_t* at = Row(kFlagR, y) + (first >> 3);
        for (const uint64_t flags : bits) {
            const uint64_t word = LoadWord(at) | flags << shift;
            std::memcpy(at, &word, sizeof word);
            at[8] = static_cast<uint8_t>(at[8] | flags >> 1 >> (63 - shift));
            static_assert(4 * kGuardRows * kGuardBytes >= kCacheLine);  // what is prefetched is in the same memory
            // Flags are likely to be set soon farther to the right, where the memory isn't in the cache yet.
            _mm_prefetch(reinterpret_cast<const char*>(at + kCacheLine), _MM_HINT_T0);
            at += planeBytes;
        }
    }

    // Rows are built by `rowBuilder` as they are needed, at least `rowsAtOnce` at a time, 1 or more; fewer at the end.
    void BuildBy(RowBuilder& rowBuilder, int32_t rowsAtOnce) {
        builder = &rowBuilder;
        bandRows = rowsAtOnce;
        builtRows = 0;
    }

    // Ensures that the flags of row y and of all rows above it are built. Rows beyond the image have none.
    void Need(int32_t y) {
        if (y >= builtRows) BuildMore(y);
    }

    // Whether the row has an R or a D: the scan skips rows without.
    void MarkRow(int32_t y) { rowMarks[y] = 1; }
    bool IsMarked(int32_t y) const { return rowMarks[y] != 0; }

private:
    // Between two rows of bits, so that whole words may be read across a row's ends.
    static constexpr int64_t kGuardBytes = 8;

    void BuildMore(int32_t y) {
        const int32_t end = y < height - bandRows ? y + bandRows : height;
        builder->BuildTo(end);
        builtRows = end == height ? INT32_MAX : end;
    }

    RowBuilder* builder = nullptr;
    int32_t bandRows = 0;
    int32_t builtRows = INT32_MAX;
    int32_t height = 0;
    uint8_t* firstRow = nullptr;  // of plane R, row 0
    ptrdiff_t planeBytes = 0;
    ptrdiff_t rowBytes = 0;
    uint8_t* rowMarks = nullptr;  // one for each row of the image
    void* memory = nullptr;
};

// A pixel of the planes as the origin of offsets. Counting downward ensures that the rows it reads are built.
struct PlaneCursor {
    FlagPlanes& planes;
    const uint8_t* row;  // of plane R
    int32_t x, y;

    bool Holds(FlagTest test) const { return Bit(test) != 0; }
    template <FlagTest kTest>
    uint32_t Where() const {
        return Bit(kTest);
    }
    void Move(int32_t dx, int32_t dy) {
        x += dx;
        y += dy;
        row += dy * planes.RowBytes();
    }

    // The number of cells, from (fromX, fromY) on in steps of (kDx, kDy), at which all tests hold.
    template <int kDx, int kDy, FlagTest... kTests>
    int32_t CountCells(int32_t fromX, int32_t fromY) const {
        PlaneCursor at = *this;
        at.Move(fromX, fromY);
        int32_t n = 0;
        if constexpr (kDy == 0) {
            for (int32_t inWindow = kWindowColumns; inWindow == kWindowColumns; at.Move(kDx * kWindowColumns, 0)) {
                const uint64_t cells = (at.CellsAlong<kDx>(kTests) & ...);
                inWindow = kDx > 0 ? TrailingOnes(cells, kWindowColumns) : LeadingOnes(cells, kWindowColumns);
                n += inWindow;
            }
        } else {
            for (; ((at.TestAround(kTests) & ...) >> (at.x & 7) & 1) != 0; ++n) {
                at.Move(kDx, kDy);
                if constexpr (kDy > 0) planes.Need(at.y + kReachRows);
            }
        }
        return n;
    }

    // A row of kWindowColumns cells: to the right (kDx 1) bit k is column x + k, to the left bit 63 - k is column x -
    // k.
    template <int kDx>
    uint64_t CellsAlong(FlagTest test) const {
        const int32_t bit = x + test.dx + kGuardColumns;
        const uint8_t* const at = PlaneRow(test) + (bit >> 3);
        const uint64_t flags = kDx > 0 ? LoadWord(at) >> (bit & 7) : LoadWord(at - 7) << (7 - (bit & 7));
        return test.wanted ? flags : ~flags;
    }

private:
    const uint8_t* PlaneRow(FlagTest test) const {
        return row + test.dy * planes.RowBytes() + PlaneOf(test.flag) * planes.PlaneBytes();
    }

    // Whether the test holds at 16 columns of a row, all within reach among them: bit x & 7 is the cursor's.
    uint32_t TestAround(FlagTest test) const {
        static_assert(kGuardColumns == kReachColumns && 7 + 2 * kReachColumns < 16);
        uint16_t flags;
        std::memcpy(&flags, PlaneRow(test) + (x >> 3), sizeof flags);
        const uint32_t fromTest = static_cast<uint32_t>(flags) >> (test.dx + kReachColumns);
        return test.wanted ? fromTest : ~fromTest;
    }
    uint32_t Bit(FlagTest test) const { return TestAround(test) >> (x & 7) & 1; }
};

inline PlaneCursor CursorAt(FlagPlanes& planes, int32_t x, int32_t y) { return {planes, planes.Row(kFlagR, y), x, y}; }

}  // namespace stairmelt::inline STAIRMELT_SET
