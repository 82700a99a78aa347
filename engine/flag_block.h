// A block of 56 neighbouring pixels of a row with the flags around them, as words: bit k of a word is column x + k - 4
// of the block that begins at column x. The four bits on either side are there to be looked at from the pixels between
// them, so that an offset is a shift. Patterns are evaluated for all pixels of a block at once; since every cell around
// the image reads as zero, testing all conditions gives what testing them one by one does.
//
// Word is uint64_t, or a vector of such words with the same operators: then that many adjacent blocks.
#pragma once

#include <cstdint>
#include <cstring>

#include "engine/flag_pattern.h"
#include "engine/flag_planes.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr int32_t kBlockColumns = 56;
constexpr int32_t kBlockBytes = kBlockColumns / 8;
constexpr uint64_t kBlockPixels = 0x0FFFFFFFFFFFFFF0;  // the bits of the block's own pixels

inline uint64_t LoadWord(const uint8_t* at) {
    uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

inline bool IsZero(uint64_t word) { return word == 0; }

inline void LoadBlocks(uint64_t& word, const uint8_t* at) { word = LoadWord(at); }

// How many blocks a Word holds, and the word of one of them. A Word that stands in memory is an array of these.
template <class Word>
constexpr int kBlocksOf = sizeof(Word) / sizeof(uint64_t);

template <class Word>
uint64_t BlockOf(const Word& word, int block) {
    return LoadWord(reinterpret_cast<const uint8_t*>(&word) + static_cast<size_t>(block) * sizeof(uint64_t));
}

// A word with `pixels(block)` for each of its blocks.
template <class Word, class Pixels>
Word WordOf(Pixels pixels) {
    uint64_t blocks[kBlocksOf<Word>];
    for (int block = 0; block < kBlocksOf<Word>; ++block) blocks[block] = pixels(block);
    Word word;
    std::memcpy(&word, blocks, sizeof word);
    return word;
}

template <class Word>
class FlagBlock {
public:
    // x: the block's first column, a multiple of kBlockColumns.
    FlagBlock(const FlagPlanes& planes, int32_t x, int32_t y) {
        for (int dy = -kReach; dy <= kReach; ++dy) {
            for (int plane = 0; plane < 4; ++plane) {
                LoadBlocks(words[dy + kReach][plane], planes.Row(static_cast<uint8_t>(1 << plane), y + dy) + x / 8);
            }
        }
    }

    // Where the test holds.
    template <FlagTest kTest>
    Word Where() const {
        const Word& row = words[kTest.dy + kReach][PlaneOf(kTest.flag)];
        Word flags;
        if constexpr (kTest.dx < 0) {
            flags = row << -kTest.dx;
        } else if constexpr (kTest.dx > 0) {
            flags = row >> kTest.dx;
        } else {
            flags = row;
        }
        if constexpr (kTest.wanted) {
            return flags;
        } else {
            return ~flags;
        }
    }

    // Where all of the tests hold.
    template <FlagTest... kTests>
    Word WhereAll() const {
        return (Where<kTests>() & ...);
    }
    template <FlagTest... kTests>
    Word WhereAll(Pattern<kTests...>) const {
        return (Where<kTests>() & ...);
    }

private:
    static constexpr int kReach = 3;  // rows above and below
    Word words[2 * kReach + 1][4];
};

}  // namespace stairmelt::inline STAIRMELT_SET
