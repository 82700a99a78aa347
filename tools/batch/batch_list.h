// The pictures of a batch and the files for their results.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace stairmelt {

struct BatchItem {
    std::filesystem::path in, out;  // `out` is empty if the picture is refused
    std::string refusal = {};       // why it can't be filtered, for the user; usually empty
};

// The words are files and patterns. A pattern has * for any characters or ? for a single one in its last part, and
// ignores case. Each picture is listed once, in the order of the words, and the matches of a pattern are sorted by
// name. Results are named like their pictures and go to `directory`. JPEG can't be written: such pictures become PNG,
// or TIFF with four inks. A result never replaces a picture of the list or another result.
std::vector<BatchItem> ListBatch(const std::vector<std::string>& words, const std::filesystem::path& directory);

// The non-empty lines of a text file, without a byte order mark, blanks at both ends, and the quotation marks that
// Explorer puts around copied paths.
std::vector<std::string> LinesOf(std::string_view text);

}  // namespace stairmelt
