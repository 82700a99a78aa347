#include "tools/pictures/exif.h"

#include <algorithm>

namespace stairmelt {
namespace {

constexpr size_t kEntrySize = 12, kHeaderSize = 8;
constexpr uint16_t kText = 2, kInteroperabilityTag = 40965;
constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};  // bytes of a value, by the entry's type

bool IsPointer(uint16_t tag) { return tag == kExifTag || tag == kGpsTag || tag == kInteroperabilityTag; }

uint32_t ExtendToEven(Bytes& bytes) {
    bytes.resize((bytes.size() + 1) & ~size_t{1});
    return static_cast<uint32_t>(bytes.size());
}

}  // namespace

ExifReader::ExifReader(std::span<const uint8_t> bytes) : bytes_(bytes) {
    if (bytes.size() < kHeaderSize || bytes[0] != bytes[1] || (bytes[0] != 'I' && bytes[0] != 'M')) return;
    bigEndian_ = bytes[0] == 'M';
    if (At<uint16_t>(2) == 42) first_ = Directory(At<uint32_t>(4));
}

std::vector<ExifReader::Entry> ExifReader::Directory(size_t at) const {
    std::vector<Entry> entries;
    if (at > bytes_.size() || bytes_.size() - at < 2) return entries;
    size_t count = At<uint16_t>(at);
    for (at += 2; count > 0 && bytes_.size() - at >= kEntrySize; --count, at += kEntrySize) {
        Entry entry{.tag = At<uint16_t>(at), .type = At<uint16_t>(at + 2), .count = At<uint32_t>(at + 4)};
        const uint64_t size = entry.type < std::size(kSizes) ? uint64_t{entry.count} * kSizes[entry.type] : 0;
        const size_t from = size <= 4 ? at + 8 : At<uint32_t>(at + 8);
        if (size == 0 || from > bytes_.size() || size > bytes_.size() - from) continue;
        entry.data = bytes_.subspan(from, static_cast<size_t>(size));
        entries.push_back(entry);
    }
    return entries;
}

ExifReader::Entry ExifReader::Find(uint16_t tag) const {
    const auto entry = std::ranges::find(first_, tag, &Entry::tag);
    return entry == first_.end() ? Entry{} : *entry;
}

uint32_t ExifReader::NumberOf(const Entry& entry) const {
    if (entry.data.size() == 2) return GetNumber<uint16_t>(entry.data.data(), bigEndian_);
    return entry.data.size() == 4 ? GetNumber<uint32_t>(entry.data.data(), bigEndian_) : 0;
}

uint32_t ExifReader::Number(uint16_t tag) const { return NumberOf(Find(tag)); }

std::string ExifReader::Text(uint16_t tag) const {
    const Entry entry = Find(tag);
    if (entry.type != kText) return {};
    return {entry.data.begin(), std::ranges::find(entry.data, uint8_t{0})};
}

// Appends a directory, followed by its values and the directories that it points at. Returns its offset. In damaged
// files, directories may point at themselves and values may overlap: `level` is the depth of nesting, and `left` the
// number of bytes that values may still take.
uint32_t ExifReader::Copy(const std::vector<Entry>& entries, int level, size_t& left, Bytes& to) const {
    constexpr int kMaxLevel = 2;
    const uint32_t start = ExtendToEven(to);
    to.resize(start + 2 + entries.size() * kEntrySize + 4);  // the last four: no further directory
    size_t at = start + 2;
    for (const Entry& entry : entries) {
        if (entry.data.size() > left || (IsPointer(entry.tag) && level == kMaxLevel)) continue;
        left -= entry.data.size();
        PutNumber(&to[at], entry.tag, bigEndian_);
        PutNumber(&to[at + 2], entry.type, bigEndian_);
        PutNumber(&to[at + 4], entry.count, bigEndian_);
        if (IsPointer(entry.tag)) {
            const uint32_t offset = Copy(Directory(NumberOf(entry)), level + 1, left, to);
            PutNumber(&to[at + 8], offset, bigEndian_);
        } else if (entry.data.size() > 4) {
            const uint32_t offset = ExtendToEven(to);
            PutNumber(&to[at + 8], offset, bigEndian_);
            to.insert(to.end(), entry.data.begin(), entry.data.end());
        } else {
            std::ranges::copy(entry.data, &to[at + 8]);
        }
        at += kEntrySize;
    }
    PutNumber(&to[start], static_cast<uint16_t>((at - start - 2) / kEntrySize), bigEndian_);
    return start;
}

Bytes ExifReader::MakeBlock() const {
    std::vector<Entry> entries = first_;
    std::erase_if(entries, [](const Entry& entry) { return entry.tag != kOrientationTag && !IsPointer(entry.tag); });
    if (entries.empty()) return {};
    Bytes block(bytes_.begin(), bytes_.begin() + kHeaderSize);
    PutNumber(&block[4], static_cast<uint32_t>(kHeaderSize), bigEndian_);
    size_t left = bytes_.size();
    Copy(entries, 0, left, block);
    return block;
}

}  // namespace stairmelt
