// Whole files in and out. A file is written beside its place and renamed, so that it is there as before or complete,
// never in part, even where the tool is killed. Functions throw ToolError.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "tools/byte_order.h"
#include "tools/tool_error.h"

namespace stairmelt {

// A path for the user to read, in UTF-8, and from UTF-8.
std::string PathText(const std::filesystem::path& path);
std::filesystem::path PathFromText(const std::string& text);

// Runs a step that has to do with one file, whose name goes before the message of a failure.
template <class Step>
auto With(const std::filesystem::path& file, Step step) {
    try {
        return step();
    } catch (const ToolError& error) {
        throw ToolError(PathText(file) + ": " + error.what());
    }
}

Bytes LoadFile(const std::filesystem::path& path);

// Throws when there is a file that mustn't be replaced; to be asked before any work is done.
void RequireReplaceable(const std::filesystem::path& path);

// Creates the file or takes its place. On failure the file is as it was and nothing is left beside it.
void StoreFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

}  // namespace stairmelt
