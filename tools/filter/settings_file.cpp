#include "tools/filter/settings_file.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <span>
#include <system_error>

#include "tools/file_bytes.h"
#include "tools/text.h"

namespace stairmelt {
namespace {

bool IsLetterOrDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool IsPrintable(char c) { return static_cast<unsigned char>(c) >= ' ' && c != '\x7F'; }

std::optional<uint32_t> ParseKey(std::string_view text) {
    if (text.size() == 10 && text.starts_with("0x")) return ParseNumber<uint32_t>(text.substr(2), 16);
    if (text.size() != 4 || !std::ranges::all_of(text, IsLetterOrDigit)) return std::nullopt;
    uint32_t key = 0;
    for (char c : text) key = key << 8 | static_cast<unsigned char>(c);
    return key;
}

std::string FormatKey(uint32_t key) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(key >> shift & 0xFF);
    if (std::ranges::all_of(text, IsLetterOrDigit)) return text;
    char number[11];
    std::snprintf(number, sizeof(number), "0x%08X", static_cast<unsigned>(key));
    return number;
}

}  // namespace

Settings ParseSettings(std::string_view text) {
    Settings settings;
    StoredValues* values = nullptr;
    while (!text.empty()) {
        std::string_view line = TakeUntil(text, '\n');
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.starts_with('[')) {
            const bool whole = line.size() > 2 && line.ends_with(']') && std::ranges::all_of(line, IsPrintable);
            values = whole ? &settings[std::string(line.substr(1, line.size() - 2))] : nullptr;
            continue;
        }
        const size_t equals = line.find('=');
        if (values == nullptr || equals == std::string_view::npos) continue;
        const std::optional<uint32_t> key = ParseKey(line.substr(0, equals));
        const std::optional<int32_t> value = ParseNumber<int32_t>(line.substr(equals + 1));
        if (!key || !value) continue;
        std::erase_if(*values, [&](const auto& earlier) { return earlier.first == *key; });
        values->emplace_back(*key, *value);
    }
    return settings;
}

std::string FormatSettings(const Settings& settings) {
    std::string text;
    for (const auto& [name, values] : settings) {
        if (name.empty() || !std::ranges::all_of(name, IsPrintable)) continue;
        text += "[" + name + "]\n";
        for (const auto& [key, value] : values) text += FormatKey(key) + "=" + std::to_string(value) + "\n";
    }
    return text;
}

Settings LoadSettings(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return {};
    const Bytes bytes = LoadFile(path);
    return ParseSettings({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void StoreSettings(const std::filesystem::path& path, const Settings& settings) {
    const std::string text = FormatSettings(settings);
    StoreFile(path, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

}  // namespace stairmelt
