#include "tools/pictures/exif.h"

#include <algorithm>

namespace stairmelt {
namespace {

constexpr size_t kEntrySize = 12, kHeaderSize = 8;
constexpr uint16_t kText = 2, kShort = 3, kLong = 4, kInteroperabilityTag = 40965;

// Bytes of a value, by the entry's type; 0 for a type that isn't known.
size_t ValueSize(uint16_t type) {
    constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < std::size(kSizes) ? kSizes[type] : 0;
}

bool IsPointer(uint16_t tag) { return tag == kExifTag || tag == kGpsTag || tag == kInteroperabilityTag; }

class Reader {
public:
    explicit Reader(std::span<const uint8_t> bytes, bool bigEndian)
        : bytes_(bytes), left_(bytes.size()), bigEndian_(bigEndian) {}

    // `level` counts the directories above this one: some point at themselves.
    std::vector<ExifEntry> Directory(size_t at, int level) {
        std::vector<ExifEntry> entries;
        if (at > bytes_.size() || bytes_.size() - at < 2) return entries;
        size_t count = Number<uint16_t>(at);
        for (at += 2; count > 0 && bytes_.size() - at >= kEntrySize; --count, at += kEntrySize) {
            ExifEntry entry = {Number<uint16_t>(at), Number<uint16_t>(at + 2), Number<uint32_t>(at + 4), {}, {}};
            if (IsPointer(entry.tag)) {
                if (level < 2) entry.directory = Directory(Number<uint32_t>(at + 8), level + 1);
                if (!entry.directory.empty()) entries.push_back(std::move(entry));
                continue;
            }
            const uint64_t size = uint64_t{entry.count} * ValueSize(entry.type);
            const size_t from = size <= 4 ? at + 8 : Number<uint32_t>(at + 8);
            // All values together are no more than the bytes that there are, unless they overlap.
            if (size == 0 || size > left_ || from > bytes_.size() || size > bytes_.size() - from) continue;
            left_ -= static_cast<size_t>(size);
            const std::span<const uint8_t> data = bytes_.subspan(from, static_cast<size_t>(size));
            entry.data.assign(data.begin(), data.end());
            entries.push_back(std::move(entry));
        }
        std::ranges::stable_sort(entries, {}, &ExifEntry::tag);
        return entries;
    }

    template <class T>
    T Number(size_t at) const {
        return GetNumber<T>(&bytes_[at], bigEndian_);
    }

private:
    std::span<const uint8_t> bytes_;
    size_t left_;
    bool bigEndian_;
};

}  // namespace

Exif ReadExif(std::span<const uint8_t> bytes) {
    Exif exif;
    if (bytes.size() < kHeaderSize || bytes[0] != bytes[1] || (bytes[0] != 'I' && bytes[0] != 'M')) return exif;
    exif.bigEndian = bytes[0] == 'M';
    Reader reader(bytes, exif.bigEndian);
    if (reader.Number<uint16_t>(2) == 42) exif.entries = reader.Directory(reader.Number<uint32_t>(4), 0);
    return exif;
}

uint32_t AppendDirectory(Bytes& to, const std::vector<ExifEntry>& entries, bool bigEndian) {
    const auto even = [&] {
        to.resize((to.size() + 1) & ~size_t{1});
        return static_cast<uint32_t>(to.size());
    };
    const uint32_t start = even();
    to.resize(start + 2 + entries.size() * kEntrySize + 4);  // the last four: no further directory
    PutNumber(&to[start], static_cast<uint16_t>(entries.size()), bigEndian);
    size_t at = start + 2;
    for (const ExifEntry& entry : entries) {
        const bool isPointer = !entry.directory.empty();
        PutNumber(&to[at], entry.tag, bigEndian);
        PutNumber(&to[at + 2], isPointer ? kLong : entry.type, bigEndian);
        PutNumber(&to[at + 4], isPointer ? uint32_t{1} : entry.count, bigEndian);
        if (isPointer) {
            const uint32_t offset = AppendDirectory(to, entry.directory, bigEndian);
            PutNumber(&to[at + 8], offset, bigEndian);
        } else if (entry.data.size() <= 4) {
            std::ranges::copy(entry.data, &to[at + 8]);
        } else {
            const uint32_t offset = even();  // before the address is taken: the bytes may move
            PutNumber(&to[at + 8], offset, bigEndian);
            to.insert(to.end(), entry.data.begin(), entry.data.end());
        }
        at += kEntrySize;
    }
    return start;
}

Bytes ExifBlock(const Exif& exif, uint16_t orientation) {
    std::vector<ExifEntry> entries = exif.entries;
    if (orientation != 1) {
        Bytes value(2);
        PutNumber(value.data(), orientation, exif.bigEndian);
        const auto place = std::ranges::upper_bound(entries, kOrientationTag, {}, &ExifEntry::tag);
        entries.insert(place, {kOrientationTag, kShort, 1, value, {}});
    }
    if (entries.empty()) return {};
    const char letter = exif.bigEndian ? 'M' : 'I';
    Bytes block(kHeaderSize, static_cast<uint8_t>(letter));
    PutNumber(&block[2], uint16_t{42}, exif.bigEndian);
    PutNumber(&block[4], static_cast<uint32_t>(kHeaderSize), exif.bigEndian);
    AppendDirectory(block, entries, exif.bigEndian);
    return block;
}

uint16_t TakeOrientation(Exif& exif) {
    uint16_t orientation = 1;
    for (const ExifEntry& entry : exif.entries) {
        if (entry.tag == kOrientationTag && entry.type == kShort)
            orientation = GetNumber<uint16_t>(entry.data.data(), exif.bigEndian);
    }
    std::erase_if(exif.entries, [](const ExifEntry& entry) { return entry.tag == kOrientationTag; });
    return orientation >= 1 && orientation <= 8 ? orientation : uint16_t{1};
}

std::string ExifText(const Exif& exif, uint16_t tag) {
    const auto entry = std::ranges::find(exif.entries, tag, &ExifEntry::tag);
    if (entry == exif.entries.end() || entry->type != kText) return {};
    return {entry->data.begin(), std::ranges::find(entry->data, uint8_t{0})};
}

}  // namespace stairmelt
