#include "tools/batch/batch_answer.h"

#include <array>
#include <charconv>

#include "tools/file_bytes.h"

namespace stairmelt {
namespace {

constexpr std::string_view kSmoothed = "smoothed", kFailed = "failed";

std::string InOneLine(std::string_view words) {
    std::string line;
    while (!words.empty()) {
        const std::string_view part = words.substr(0, words.find('\n'));
        words.remove_prefix(part.size() < words.size() ? part.size() + 1 : part.size());
        if (!line.empty() && !part.empty()) line += "; ";
        line += part;
    }
    return line;
}

}  // namespace

BatchAnswer Failed(const std::filesystem::path& file, const std::string& why) {
    return {false, {}, 0, PathText(file) + ": " + why};
}

std::string AnswerLine(const BatchAnswer& answer) {
    std::string line(answer.isSmoothed ? kSmoothed : kFailed);
    line += '\t' + InOneLine(answer.values) + '\t';
    if (answer.isSmoothed) line += std::to_string(answer.changedPixels);
    return line + '\t' + InOneLine(answer.words);
}

std::optional<BatchAnswer> ParseAnswer(std::string_view line) {
    std::array<std::string_view, 4> parts;
    for (std::string_view& part : parts) {
        const bool isLast = &part == &parts.back();
        const size_t end = isLast ? line.size() : line.find('\t');
        if (end == std::string_view::npos) return std::nullopt;
        part = line.substr(0, end);
        line.remove_prefix(isLast ? end : end + 1);
    }
    const auto [kind, values, number, words] = parts;
    BatchAnswer answer = {kind == kSmoothed, std::string(values), 0, std::string(words)};
    if (!answer.isSmoothed) return kind == kFailed && number.empty() ? std::optional(answer) : std::nullopt;
    const char* end = number.data() + number.size();
    const auto [stopped, error] = std::from_chars(number.data(), end, answer.changedPixels);
    return error == std::errc() && stopped == end ? std::optional(answer) : std::nullopt;
}

}  // namespace stairmelt
