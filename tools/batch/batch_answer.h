// The outcome of one picture of a batch, which processes send as a line of text.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace stairmelt {

struct BatchAnswer {
    bool isSmoothed = false;
    std::string values;        // where it is smoothed: with which values, for the user
    size_t changedPixels = 0;  // where it is smoothed
    std::string words;         // why it isn't; where it is, what the user should know of it, as a rule nothing
};

// The outcome for a file that failed.
BatchAnswer Failed(const std::filesystem::path& file, const std::string& why);

// "smoothed\tvalues\t123\twords" or "failed\t\t\twords", without a line break: line breaks within become "; ".
std::string AnswerLine(const BatchAnswer& answer);

// Empty if the line isn't an answer.
std::optional<BatchAnswer> ParseAnswer(std::string_view line);

}  // namespace stairmelt
