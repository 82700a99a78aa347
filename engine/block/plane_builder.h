// Builds the flags of an image as bits: the one phase of a kernel that touches every pixel. The flags are those of
// cell_builder.h, which is the definition. Chunks whose pixels are all equal are skipped, others are compared part by
// part, without the flat parts.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/block/flag_planes.h"
#include "engine/block/part_row.h"
#include "engine/block/words_sse2.h"
#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/cell_builder.h"

namespace stairmelt::inline STAIRMELT_SET {

// Clears the diagonals that the packed step doesn't test: those of a group's first three cells where neither the cell,
// nor an earlier one of its group, nor the next one has an R or a D.
inline void ClearUntestedDiagonals(ChunkFlags& flags) {
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
    // Rows per band. Wide pixels have fewer, since a chunk's rows and those fetched ahead share the fastest cache.
    static constexpr int32_t kBandRows = Format::kPixelBytes < 12 ? 16 : 8;

    // For zeroed planes of the image's size, which is at least 1 by 1.
    PlaneBuilder(const ImageView& view, EdgeThreshold<Format> threshold, FlagPlanes& flagPlanes)
        : image(view), cells{view, threshold}, planes(flagPlanes) {}

    void BuildTo(int32_t end) override {
        const int32_t endOfBand = end < image.height ? end : image.height - 1;
        const int32_t packedEnd = cells.PackedEnd();
        const bool hasChunks = packedEnd >= kChunkColumns;
        if (hasChunks) BuildChunksBest(endOfBand);
        for (; nextRow < endOfBand; ++nextRow) {
            for (int32_t x = hasChunks ? packedEnd : 0; x < packedEnd; x += 4) {
                SetCells(x, nextRow, cells.PackedStep(x, nextRow));
            }
            for (int32_t x = packedEnd; x < image.width - 1; ++x) SetCells(x, nextRow, cells.PlainStep(x, nextRow));
            SetCells(image.width - 1, nextRow, cells.LastColumnStep(nextRow));
        }
        if (end < image.height) return;
        for (int32_t x = 0; x < image.width - 1; ++x) SetCells(x, image.height - 1, cells.LastRowStep(x));
    }

private:
    // Uses the instruction set's own rows if it has any and they support the threshold.
    void BuildChunksBest(int32_t end) {
        if constexpr (Format::kComparesChunks) {
            using OwnRow = typename Format::InstructionSet::template Row<Format>;
            if (OwnRow::Supports(cells.threshold)) return BuildChunks<OwnRow>(end);
        }
        BuildChunks<PartRow<Format>>(end);
    }

    // Chunk by chunk, each from the first row to the last one, so that each row of a band is loaded and laid out once.
    template <class Row>
    void BuildChunks(int32_t end) {
        const int32_t packedEnd = cells.PackedEnd();
        int32_t x = 0;
        for (; x + kChunkColumns <= packedEnd; x += kChunkColumns) BuildChunk<Row>(x, end);
        // The last chunk ends with the last group. Where it overlaps the one before it finds the same flags.
        if (x < packedEnd) BuildChunk<Row>(packedEnd - kChunkColumns, end);
    }

    template <class Row>
    void BuildChunk(int32_t x, int32_t end) {
        constexpr int kPartBytes = Row::kColumns * Format::kPixelBytes, kParts = kChunkColumns / Row::kColumns;
        using WidestWords = typename Format::InstructionSet::Words;
        using Words = std::conditional_t<kPartBytes % sizeof(WidestWords) == 0, WidestWords, TwoWords>;
        Row rows[kParts][2];         // by part and by the parity of the row
        Words changes[2][kParts];    // by the parity and by part
        int32_t loadedRows[kParts];  // the lower row that each part holds; -1: none
        for (int32_t& loaded : loadedRows) loaded = -1;
        // A part's changes are zero if its pixels and the one after them all have the same bits.
        const auto findChanges = [&](int32_t y, const uint8_t* at) {
            Words any{};
            for (Words& found : changes[y & 1]) {
                found = Words{};
                for (const uint8_t* const partEnd = at + kPartBytes; at < partEnd; at += sizeof(Words)) {
                    Words here, next;
                    LoadWords(here, at);
                    LoadWords(next, at + Format::kPixelBytes);
                    found = found | (here ^ next);
                }
                any = any | found;
            }
            return any;
        };
        // Equal pixels never differ, whatever the format, as long as the threshold isn't negative.
        const bool skipsFlat = cells.threshold >= 0;
        // The rows of the chunk after the next are fetched ahead: the processor sees no pattern in such short pieces.
        constexpr int kChunkBytes = kChunkColumns * Format::kPixelBytes;
        const ptrdiff_t ahead = x + 3 * kChunkColumns <= image.width ? 2 * kChunkBytes : 0;
        const uint8_t* p = PixelAt<Format>(image, x, nextRow);
        Words above = findChanges(nextRow, p);
        for (int32_t y = nextRow; y < end; ++y) {
            const uint8_t* const q = p + image.rowStride;
            for (int i = 0; i < kChunkBytes; i += kCacheLine)
                _mm_prefetch(reinterpret_cast<const char*>(q + ahead + i), _MM_HINT_T0);
            const Words below = findChanges(y + 1, q);
            if (!skipsFlat || !IsZero(above | below) || !IsSamePixel(p, q)) {
                ChunkFlags flags{};
                for (int part = 0; part < kParts; ++part) {
                    const uint8_t* const pPart = p + part * kPartBytes;
                    const uint8_t* const qPart = q + part * kPartBytes;
                    if (skipsFlat && IsZero(changes[0][part] | changes[1][part]) && IsSamePixel(pPart, qPart)) continue;
                    if (loadedRows[part] != y) rows[part][y & 1].Load(pPart);
                    rows[part][(y + 1) & 1].Load(qPart);
                    loadedRows[part] = y + 1;
                    const ChunkFlags found = Row::Compare(rows[part][y & 1], rows[part][(y + 1) & 1], cells.threshold);
                    const int offset = part * Row::kColumns;
                    flags.r |= found.r << offset;
                    flags.d |= found.d << offset;
                    flags.x |= found.x << offset;
                    flags.a |= found.a << offset;
                }
                ClearUntestedDiagonals(flags);
                SetFlags(x, y, flags);
            }
            p = q;
            above = below;
        }
    }

    static bool IsSamePixel(const uint8_t* p, const uint8_t* q) { return std::memcmp(p, q, Format::kPixelBytes) == 0; }

    void SetFlags(int32_t x, int32_t y, const ChunkFlags& flags) {
        if ((flags.r | flags.d | flags.x | flags.a) == 0) return;
        if ((flags.r | flags.d) != 0) planes.MarkRow(y);
        planes.Set(x, y, {flags.r, flags.d, flags.x, flags.a});
    }

    // One cell, or a packed word of four.
    void SetCells(int32_t x, int32_t y, uint32_t word) {
        for (; word != 0; word >>= 8, ++x) {
            const auto bit = [&](uint8_t flag) { return static_cast<uint64_t>((word & flag) != 0); };
            SetFlags(x, y, {bit(kFlagR), bit(kFlagD), bit(kFlagX), bit(kFlagA)});
        }
    }

    const ImageView& image;
    const CellBuilder<Format> cells;
    FlagPlanes& planes;
    int32_t nextRow = 0;
};

}  // namespace stairmelt::inline STAIRMELT_SET
