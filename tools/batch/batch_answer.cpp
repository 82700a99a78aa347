#include "tools/batch/batch_answer.h"

#include <algorithm>

#include "tools/file_bytes.h"
#include "tools/text.h"

namespace stairmelt {
namespace {

constexpr std::string_view kSmoothed = "smoothed", kFailed = "failed";

std::string InOneLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const std::string_view part = TakeUntil(text, '\n');
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
    return line + '\t' + InOneLine(answer.message);
}

std::optional<BatchAnswer> ParseAnswer(std::string_view line) {
    if (std::ranges::count(line, '\t') < 3) return std::nullopt;
    const std::string_view kind = TakeUntil(line, '\t'), values = TakeUntil(line, '\t'), number = TakeUntil(line, '\t');
    BatchAnswer answer = {kind == kSmoothed, std::string(values), 0, std::string(line)};
    if (!answer.isSmoothed) return kind == kFailed && number.empty() ? std::optional(answer) : std::nullopt;
    const std::optional<size_t> changed = ParseNumber<size_t>(number);
    if (!changed) return std::nullopt;
    answer.changedPixels = *changed;
    return answer;
}

}  // namespace stairmelt
