// Reading texts.
#pragma once

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace stairmelt {

// The whole of the text as a number; hexadecimal without a prefix. Nothing where it isn't one, or doesn't fit.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text, int base = 10) {
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value, base);
    return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

// Takes the part in front of the first `end` off the text, and the end with it. All of it where there is none.
inline std::string_view TakeUntil(std::string_view& text, char end) {
    const std::string_view part = text.substr(0, text.find(end));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

}  // namespace stairmelt
