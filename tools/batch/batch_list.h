// Which pictures a batch filters, and where their results go.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace stairmelt {

struct BatchItem {
    std::filesystem::path in, out;  // `out` is empty where nothing is filtered
    std::string refusal = {};       // why it isn't filtered, for the user; empty as a rule
};

// The words are files and patterns, whose last part has * for any characters or ? for one, whatever their case. Each
// picture is listed once, in the order of the words; the matches of a pattern are sorted by name. Results keep their
// names and go to `directory`. JPEG files, which can't be written, become PNG, or TIFF if they have four inks. A result
// never replaces a picture of the list or another result.
std::vector<BatchItem> ListBatch(const std::vector<std::string>& words, const std::filesystem::path& directory);

// The lines of a text file that aren't empty, without a byte order mark, the blanks at their ends, and the quotation
// marks that stand around paths copied in the Explorer.
std::vector<std::string> LinesOf(std::string_view text);

}  // namespace stairmelt
