#include "tools/batch/batch_list.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <algorithm>
#include <cctype>
#include <exception>
#include <map>
#include <set>
#include <system_error>

#include "tools/file_bytes.h"
#include "tools/pictures/picture_file.h"
#include "tools/text.h"

namespace stairmelt {

namespace fs = std::filesystem;

namespace {

// Gives equal results for names that the file system considers equal.
fs::path::string_type Folded(fs::path::string_type text) {
#ifdef _WIN32
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
#else
    for (char& character : text) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
#endif
    return text;
}

fs::path::string_type PlaceOf(const fs::path& path) {
    std::error_code error;
    const fs::path full = fs::weakly_canonical(path, error);
    return Folded((error ? fs::absolute(path, error).lexically_normal() : full).native());
}

// Both arguments are case-folded.
bool Matches(fs::path::string_type name, fs::path::string_type pattern) {
    size_t n = 0, p = 0;
    size_t star = fs::path::string_type::npos, resume = 0;  // the last star, and the end of its match so far
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++n;
            ++p;
        } else if (star != fs::path::string_type::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + static_cast<ptrdiff_t>(p), pattern.end(), [](auto c) { return c == '*'; });
}

std::vector<fs::path> FilesThatMatch(const fs::path& pattern) {
    const fs::path::string_type last = pattern.filename().native(), wanted = Folded(last);
    // Keeps the folder as the user typed it, including its slashes.
    const fs::path::string_type before = pattern.native().substr(0, pattern.native().size() - last.size());
    std::vector<fs::path> found;
    std::error_code error;
    const fs::path directory = pattern.has_parent_path() ? pattern.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path name = entry->path().filename();
        std::error_code unknown;
        if (!entry->is_directory(unknown) && Matches(Folded(name.native()), wanted))
            found.emplace_back(before + name.native());
    }
    std::sort(found.begin(), found.end());
    return found;
}

void Refuse(BatchItem& item, const std::string& why) { item.refusal = why; }

std::string WithoutOddBytes(std::string text) {
    for (char& character : text)
        if (static_cast<unsigned char>(character) - 0x20U >= 0x5FU) character = '?';
    return text;
}

bool IsPattern(const std::string& word) { return word.find_first_of("*?") != std::string::npos; }

fs::path ResultName(const fs::path& in) {
    const auto extension = Folded(in.extension().native());
    for (const char* jpeg : {".JPG", ".JPEG", ".JPE", ".JFIF"}) {
        if (extension == fs::path(jpeg).native())
            return in.filename().replace_extension(IsCmykJpeg(in) ? ".tif" : ".png");
    }
    return in.filename();
}

}  // namespace

std::vector<BatchItem> ListBatch(const std::vector<std::string>& words, const fs::path& directory) {
    std::vector<BatchItem> items;
    // The pictures, by their own paths and by those of their results.
    std::map<fs::path::string_type, const fs::path*> pictures, results;
    std::set<fs::path::string_type> listed;
    const auto add = [&](const fs::path& in) {
        if (listed.insert(PlaceOf(in)).second) items.push_back({in, directory / ResultName(in)});
    };
    for (const std::string& word : words) {
        fs::path path;
        try {
            path = PathFromText(word);
        } catch (const std::exception&) {
            items.push_back({PathFromText(WithoutOddBytes(word)), {}});
            Refuse(items.back(), "its name isn't UTF-8 text");
            continue;
        }
        if (!IsPattern(word)) {
            add(path);
            continue;
        }
        const std::vector<fs::path> found = FilesThatMatch(path);
        for (const fs::path& file : found) add(file);
        if (found.empty()) {
            items.push_back({path, {}});
            Refuse(items.back(), "no file matches");
        }
    }

    for (const BatchItem& item : items) pictures.emplace(PlaceOf(item.in), &item.in);
    for (BatchItem& item : items) {
        if (!item.refusal.empty()) continue;
        const auto place = PlaceOf(item.out);
        const auto picture = pictures.find(place);
        if (picture != pictures.end() && picture->second == &item.in)
            Refuse(item, "its result would overwrite the picture itself");
        else if (picture != pictures.end())
            Refuse(item, "its result would overwrite the picture " + PathText(*picture->second));
        else if (const auto [other, isNew] = results.emplace(place, &item.in); !isNew)
            Refuse(item, "its result would overwrite that of " + PathText(*other->second));
    }
    return items;
}

std::vector<std::string> LinesOf(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    constexpr std::string_view kBlanks = " \t\r";
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::string_view line = TakeUntil(text, '\n');
        const size_t last = line.find_last_not_of(kBlanks);
        if (last == std::string_view::npos) continue;
        std::string_view name = line.substr(0, last + 1);
        if (name.size() > 2 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
        lines.emplace_back(name);
    }
    return lines;
}

}  // namespace stairmelt
