#include "tools/pictures/tiff_directory.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

size_t ValueSize(TiffType type) {
    switch (static_cast<uint16_t>(type)) {
        case 3:  // short
        case 8:  // signed short
            return 2;
        case 4:   // long
        case 9:   // signed long
        case 11:  // float
        case 13:  // offset of a directory
            return 4;
        case 5:   // rational
        case 10:  // signed rational
        case 12:  // double
            return 8;
        default: return 1;
    }
}

}  // namespace

const TiffDirectory::Entry* TiffDirectory::Find(TiffTag tag) const {
    const auto found = std::ranges::find(entries, tag, &Entry::tag);
    return found == entries.end() ? nullptr : &*found;
}

std::vector<uint32_t> TiffDirectory::Numbers(TiffTag tag, std::vector<uint32_t> otherwise) const {
    const Entry* entry = Find(tag);
    if (entry == nullptr) return otherwise;
    std::vector<uint32_t> values;
    const size_t size = ValueSize(entry->type);
    for (size_t at = 0; at + size <= entry->data.size(); at += size) {
        switch (entry->type) {
            case TiffType::kByte: values.push_back(entry->data[at]); break;
            case TiffType::kShort: values.push_back(GetNumber<uint16_t>(&entry->data[at], bigEndian)); break;
            case TiffType::kLong: values.push_back(GetNumber<uint32_t>(&entry->data[at], bigEndian)); break;
            default: throw ToolError("the TIFF file is damaged: a tag has an odd type");
        }
    }
    return values;
}

uint32_t TiffDirectory::Number(TiffTag tag, uint32_t otherwise) const {
    const std::vector<uint32_t> values = Numbers(tag);
    return values.empty() ? otherwise : values[0];
}

double TiffDirectory::Rational(TiffTag tag) const {
    const Entry* entry = Find(tag);
    if (entry == nullptr || entry->type != TiffType::kRational || entry->data.size() < 8) return 0;
    const uint32_t divisor = GetNumber<uint32_t>(&entry->data[4], bigEndian);
    return divisor == 0 ? 0 : static_cast<double>(GetNumber<uint32_t>(&entry->data[0], bigEndian)) / divisor;
}

void TiffDirectory::SetNumbers(TiffTag tag, TiffType type, const std::vector<uint32_t>& values) {
    Entry entry{tag, type, static_cast<uint32_t>(values.size()), {}};
    for (uint32_t value : values) {
        if (type == TiffType::kShort) {
            AppendNumber(entry.data, static_cast<uint16_t>(value), bigEndian);
        } else {
            AppendNumber(entry.data, value, bigEndian);
        }
    }
    entries.push_back(std::move(entry));
}

void TiffDirectory::SetRational(TiffTag tag, double value) {
    // Whole numbers stay readable, the others keep four digits.
    const uint32_t divisor = value == std::floor(value) || value > 400000 ? 1 : 10000;
    Entry entry{tag, TiffType::kRational, 1, {}};
    AppendNumber(entry.data, static_cast<uint32_t>(std::llround(value * divisor)), bigEndian);
    AppendNumber(entry.data, divisor, bigEndian);
    entries.push_back(std::move(entry));
}

void TiffDirectory::SetBytes(TiffTag tag, std::span<const uint8_t> bytes) {
    entries.push_back(
        {tag, TiffType::kUndefined, static_cast<uint32_t>(bytes.size()), Bytes(bytes.begin(), bytes.end())});
}

void TiffDirectory::CopyFrom(const TiffDirectory& other, TiffTag tag) {
    if (const Entry* entry = other.Find(tag)) entries.push_back(*entry);
}

TiffDirectory ReadTiffDirectory(std::span<const uint8_t> file) {
    const ToolError damaged("the TIFF file is damaged: its tags don't lie within it");
    TiffDirectory directory;
    if (file.size() < 8) throw damaged;
    directory.bigEndian = file[0] == 'M';
    const auto number16 = [&](size_t at) { return GetNumber<uint16_t>(&file[at], directory.bigEndian); };
    const auto number32 = [&](size_t at) { return GetNumber<uint32_t>(&file[at], directory.bigEndian); };
    size_t at = number32(4);
    if (at < 8 || at > file.size() - 2) throw damaged;
    const size_t count = number16(at);
    at += 2;
    if (count * 12 + 4 > file.size() - at) throw damaged;
    for (size_t i = 0; i < count; ++i, at += 12) {
        TiffDirectory::Entry entry{TiffTag{number16(at)}, TiffType{number16(at + 2)}, number32(at + 4), {}};
        const uint64_t size = uint64_t{entry.count} * ValueSize(entry.type);
        const size_t from = size <= 4 ? at + 8 : number32(at + 8);
        if (from > file.size() || size > file.size() - from) throw damaged;
        entry.data.assign(&file[0] + from, &file[0] + from + static_cast<size_t>(size));
        directory.entries.push_back(std::move(entry));
    }
    directory.hasNext = number32(at) != 0;
    return directory;
}

void AppendTiffDirectory(Bytes& file, TiffDirectory directory) {
    std::ranges::stable_sort(directory.entries, {}, &TiffDirectory::Entry::tag);
    const bool bigEndian = directory.bigEndian;
    const size_t start = (file.size() + 1) & ~size_t{1};  // a directory begins at an even offset
    size_t dataAt = start + 2 + directory.entries.size() * 12 + 4;
    Bytes block, data;
    AppendNumber(block, static_cast<uint16_t>(directory.entries.size()), bigEndian);
    for (const TiffDirectory::Entry& entry : directory.entries) {
        AppendNumber(block, static_cast<uint16_t>(entry.tag), bigEndian);
        AppendNumber(block, static_cast<uint16_t>(entry.type), bigEndian);
        AppendNumber(block, entry.count, bigEndian);
        if (entry.data.size() <= 4) {
            block.insert(block.end(), entry.data.begin(), entry.data.end());
            block.resize(block.size() + 4 - entry.data.size());
        } else {
            AppendNumber(block, static_cast<uint32_t>(dataAt + data.size()), bigEndian);
            data.insert(data.end(), entry.data.begin(), entry.data.end());
            data.resize((data.size() + 1) & ~size_t{1});
        }
    }
    block.resize(block.size() + 4);  // no next directory
    if (dataAt + data.size() > std::numeric_limits<uint32_t>::max()) {
        throw ToolError("the picture is too large for a TIFF file, which ends at 4 GB");
    }
    file.resize(start);
    file.insert(file.end(), block.begin(), block.end());
    file.insert(file.end(), data.begin(), data.end());
    PutNumber(&file[4], static_cast<uint32_t>(start), bigEndian);
}

}  // namespace stairmelt
