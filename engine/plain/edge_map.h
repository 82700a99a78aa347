// One byte of flags for each pixel, which tell which neighbours it differs from. Every decision of the plain form
// depends on these bytes; only BuildEdgeMap writes them.
//
// Cells are in rows of `stride` bytes with a zeroed guard border around the image: a cell (x, y) may be read for x
// from -4 to stride - 5, which is at least width, and for y from -1 to height. Walks and patterns read the border
// instead of testing bounds: a zero cell stops every walk. As the stride is a multiple of 4, four cells from a column
// that is a multiple of 4 may be read as one word.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "engine/rules/flag_pattern.h"

namespace stairmelt {

class EdgeMap {
public:
    EdgeMap() = default;
    ~EdgeMap() { std::free(memory); }
    EdgeMap(const EdgeMap&) = delete;
    EdgeMap& operator=(const EdgeMap&) = delete;

    // Allocates a zeroed map; called once. Returns false if memory is short; the map is then empty. Sizes below 1 are
    // valid: a map without pixels consists of two guard rows.
    bool Allocate(int32_t width, int32_t height) {
        constexpr int64_t kLeftGuard = 4;   // cells; keeps column 0 aligned to a word
        constexpr int64_t kRightGuard = 1;  // cells; the minimum
        constexpr int64_t kGuardRows = 2;   // one above, one below
        const int64_t rowWords = (width + kLeftGuard + kRightGuard + 3) / 4;
        if (rowWords < 0 || rowWords > INT32_MAX / 4 || height + kGuardRows < 0) return false;
        const bool hasPixels = width >= 1 && height >= 1;
        // Below 2^61: rowWords is below 2^29.
        const int64_t wordCount = rowWords * (hasPixels ? height + kGuardRows : kGuardRows);
        static_assert(sizeof(size_t) == sizeof wordCount);

        // calloc hands out zeroed pages as they are touched, so that flat parts of an image cost no memory traffic.
        memory = std::calloc(static_cast<size_t>(wordCount), 4);
        if (memory == nullptr) return false;
        stride = static_cast<int32_t>(rowWords * 4);
        cells = static_cast<uint8_t*>(memory) + stride + kLeftGuard;
        return true;
    }

    uint8_t* CellAt(int32_t x, int32_t y) { return cells + static_cast<ptrdiff_t>(y) * stride + x; }
    const uint8_t* CellAt(int32_t x, int32_t y) const { return cells + static_cast<ptrdiff_t>(y) * stride + x; }

    int32_t stride = 0;        // bytes from one row of cells to the next
    uint8_t* cells = nullptr;  // the cell of pixel (0, 0)

private:
    void* memory = nullptr;
};

// A cell of an EdgeMap as the origin of offsets.
struct FlagCursor {
    const uint8_t* cell;
    ptrdiff_t stride;

    bool Holds(FlagTest test) const { return ((cell[test.dy * stride + test.dx] & test.flag) != 0) == test.wanted; }
    template <FlagTest kTest>
    uint32_t Where() const {
        return Holds(kTest);
    }
    void Move(int32_t dx, int32_t dy) { cell += dy * stride + dx; }

    // The number of cells, from (fromX, fromY) on in steps of (kDx, kDy), at which all tests hold.
    template <int kDx, int kDy, FlagTest... kTests>
    int32_t CountCells(int32_t fromX, int32_t fromY) const {
        FlagCursor at = *this;
        at.Move(fromX, fromY);
        int32_t n = 0;
        for (; (at.Holds(kTests) && ...); ++n) at.Move(kDx, kDy);
        return n;
    }
};

inline FlagCursor CursorAt(const EdgeMap& map, int32_t x, int32_t y) { return {map.CellAt(x, y), map.stride}; }

}  // namespace stairmelt
