// Parsing text.
#pragma once

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace stairmelt {

// The whole text as a number; hexadecimal has no prefix. Empty if it isn't one or doesn't fit.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text, int base = 10) {
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value, base);
    return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

// Returns the part of the text before the first `end`, or the whole text if there is none, and removes it and that
// `end` from the text.
inline std::string_view TakeUntil(std::string_view& text, char end) {
    const std::string_view part = text.substr(0, text.find(end));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

}  // namespace stairmelt
