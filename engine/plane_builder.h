// Builds the flags of an image as bits: the one phase of a kernel that touches every pixel. The flags are those of
// cell_builder.h, which is the definition. Chunks of 64 columns are passed over where all their pixels are equal, and
// compared as a whole (edge_chunk.h) where not: most of a drawing is flat, and most of a photograph isn't.
#pragma once

#include <xmmintrin.h>

#include <cstdint>

#include "engine/cell_builder.h"
#include "engine/edge_chunk.h"
#include "engine/flag_planes.h"
#include "engine/image.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

// Takes the diagonals that the packed step doesn't test: those of a group's first three cells where no R or D is set in
// any cell of the group up to the next one.
inline void DropUntestedDiagonals(ChunkFlags& flags) {
    constexpr uint64_t kFirst = 0x1111111111111111, kSecond = kFirst << 1, kThird = kFirst << 2, kFourth = kFirst << 3;
    const uint64_t edges = flags.r | flags.d;
    const uint64_t here = edges | edges >> 1;  // of the cell or the next one
    const uint64_t tested = here | (edges << 1 & (kSecond | kThird)) | (edges << 2 & kThird) | kFourth;
    flags.x &= tested;
    flags.a &= tested;
}

template <class Format>
class PlaneBuilder final : public RowBuilder {
public:
    // Serves zeroed planes of the image's size, which is at least 1 by 1.
    PlaneBuilder(const ImageView& view, EdgeThreshold<Format> threshold, FlagPlanes& flagPlanes)
        : image(view), cells{view, threshold}, chunks(threshold), planes(flagPlanes) {}

    int32_t BuildTo(int32_t end) override {
        for (; nextRow < end; ++nextRow) {
            if (nextRow == image.height - 1) {
                BuildLastRow();
            } else {
                BuildRow(nextRow);
            }
        }
        return nextRow;
    }

private:
    void BuildRow(int32_t y) {
        const int32_t packedEnd = cells.PackedEnd();
        if (packedEnd >= kChunkColumns) {
            int32_t x = 0;
            uint8_t* isFlat = planes.ChunkNotes();
            for (; x + kChunkColumns <= packedEnd; x += kChunkColumns) BuildChunk(x, y, *isFlat++);
            // The last chunk ends with the last group. Where it overlaps the one before it finds the same flags.
            if (x < packedEnd) BuildChunk(packedEnd - kChunkColumns, y, *isFlat);
        } else {
            for (int32_t group = 0; group < packedEnd; group += 4) {
                const uint32_t word = cells.PackedStep(group, y);
                for (int k = 0; k < 4; ++k) SetCell(group + k, y, static_cast<uint8_t>(word >> (8 * k)));
            }
        }
        for (int32_t x = packedEnd; x < image.width - 1; ++x) SetCell(x, y, cells.PlainStep(x, y));
        SetCell(image.width - 1, y, cells.LastColumnStep(y));
    }

    void BuildLastRow() {
        for (int32_t x = 0; x < image.width - 1; ++x) SetCell(x, image.height - 1, cells.LastRowStep(x));
    }

    // isFlat: whether the chunk at (x, y) is; on return, whether the one below is. So each row is looked at once only.
    void BuildChunk(int32_t x, int32_t y, uint8_t& isFlat) {
        const uint8_t* const p = PixelAt<Format>(image, x, y);
        const uint8_t* const q = PixelAt<Format>(image, x, y + 1);
        if (y + 2 < image.height) {
            // The row after these two is on its way while they are compared.
            for (int32_t byte = 0; byte < kChunkColumns * Format::kPixelBytes; byte += kCacheLine) {
                _mm_prefetch(reinterpret_cast<const char*>(q + image.rowStride + byte), _MM_HINT_T0);
            }
        }
        const bool isFlatHere = y == 0 ? chunks.IsFlat(p) : isFlat != 0;
        isFlat = chunks.IsFlat(q);
        if (isFlatHere && isFlat && IsSamePixel<Format>(p, q)) return;
        ChunkFlags flags = chunks.Compare(p, q);
        DropUntestedDiagonals(flags);
        if ((flags.r | flags.d) != 0) {
            planes.MarkRow(y);
            planes.Set(kFlagR, x, y, flags.r);
            planes.Set(kFlagD, x, y, flags.d);
        }
        if ((flags.x | flags.a) != 0) {
            planes.Set(kFlagX, x, y, flags.x);
            planes.Set(kFlagA, x, y, flags.a);
        }
    }

    void SetCell(int32_t x, int32_t y, uint8_t cell) {
        if (cell != 0) planes.SetCell(x, y, cell);
    }

    static constexpr int32_t kCacheLine = 64;  // bytes

    const ImageView& image;
    const CellBuilder<Format> cells;
    const ChunkComparer<Format> chunks;
    FlagPlanes& planes;
    int32_t nextRow = 0;
};

}  // namespace stairmelt::inline STAIRMELT_SET
