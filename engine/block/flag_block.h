// The flags of a few blocks of pixels and of the rows around them, as vectors of words. Each word holds one block: bit
// k is column x + k - kGuardColumns of the block that begins at column x. The four bits on either side are neighbours,
// so that a test at an offset is a shift. Since every cell around the image reads as zero, testing all conditions at
// once gives the same result as testing them one by one.
//
// Words is a vector of two or four words (words_sse2.h, words_avx2.h) with the operators of one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "engine/block/flag_planes.h"
#include "engine/rules/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr uint64_t kBlockPixels = ((uint64_t{1} << kBlockColumns) - 1) << kGuardColumns;  // the block's own columns
static_assert(kBlockColumns % 8 == 0 && kBlockColumns + 2 * kReachColumns == 64);

template <class Words>
constexpr int kBlocksOf = sizeof(Words) / sizeof(uint64_t);

// The word of one block.
template <class Words>
uint64_t WordOf(const Words& words, int block) {
    return LoadWord(reinterpret_cast<const uint8_t*>(&words) + static_cast<size_t>(block) * sizeof(uint64_t));
}

template <class Words>
void SetWord(Words& words, int block, uint64_t word) {
    std::memcpy(reinterpret_cast<uint8_t*>(&words) + static_cast<size_t>(block) * sizeof word, &word, sizeof word);
}

// Where a block begins in the image.
struct BlockPlace {
    int32_t x, y;  // x is a multiple of kBlockColumns
};

template <class Words>
class FlagBlocks {
public:
    // Loads as many blocks as Words holds, each from its own place in the image.
    FlagBlocks(const FlagPlanes& planes, const BlockPlace* places) {
        const uint8_t* at[kBlocksOf<Words>];
        for (int i = 0; i < kBlocksOf<Words>; ++i)
            at[i] = planes.Row(kFlagR, places[i].y - kReachRows) + places[i].x / 8;
        ptrdiff_t offset = 0;
        for (auto& row : rows) {
            for (int plane = 0; plane < 4; ++plane) LoadBlocks(row[plane], at, offset + plane * planes.PlaneBytes());
            offset += planes.RowBytes();
        }
    }

    // A row of bits with that of column x + kDx at column x; meaningless beyond the block's own columns.
    template <int kDx>
    static Words Shifted(const Words& row) {
        static_assert(kDx >= -kReachColumns && kDx <= kReachColumns);
        Words shifted = row;
        if constexpr (kDx < 0) shifted = row << -kDx;
        if constexpr (kDx > 0) shifted = row >> kDx;
        return shifted;
    }

    // The pixels at which the test holds.
    template <FlagTest kTest>
    Words Where() const {
        static_assert(kTest.dy >= -kReachRows && kTest.dy <= kReachRows);
        const Words flags = Shifted<kTest.dx>(rows[kTest.dy + kReachRows][PlaneOf(kTest.flag)]);
        return kTest.wanted ? flags : ~flags;
    }

private:
    Words rows[2 * kReachRows + 1][4];
};

}  // namespace stairmelt::inline STAIRMELT_SET
