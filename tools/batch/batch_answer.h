// The outcome of one picture of a batch, which processes send as a line of text.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace stairmelt {

struct BatchAnswer {
    bool isSmoothed = false;
    std::string values;        // of a smoothed picture: the values used, for the user
    size_t changedPixels = 0;  // of a smoothed picture
    std::string message;       // why it failed; of a smoothed picture: what the user should know, usually empty
};

// The outcome for a file that failed.
BatchAnswer Failed(const std::filesystem::path& file, const std::string& why);

// "smoothed\tvalues\t123\tmessage" or "failed\t\t\tmessage". Line breaks within it become "; ".
std::string AnswerLine(const BatchAnswer& answer);

// Empty if the line isn't an answer.
std::optional<BatchAnswer> ParseAnswer(std::string_view line);

}  // namespace stairmelt
