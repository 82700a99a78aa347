// Reads and writes whole files. A file is written under a temporary name and then renamed, so that it is never
// half-written, even if the tool is killed. Functions throw ToolError.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "tools/byte_order.h"
#include "tools/tool_error.h"

namespace stairmelt {

// Converts a path to and from UTF-8.
std::string PathText(const std::filesystem::path& path);
std::filesystem::path PathFromText(const std::string& text);

// Runs a step that concerns one file. The message of a failure begins with the file's name.
template <class Step>
auto With(const std::filesystem::path& file, Step step) {
    try {
        return step();
    } catch (const ToolError& error) {
        throw ToolError(PathText(file) + ": " + error.what());
    }
}

Bytes LoadFile(const std::filesystem::path& path);

// Throws if the file exists and must not be replaced; call it before any other work.
void RequireReplaceable(const std::filesystem::path& path);

// Creates or replaces the file. On failure it is unchanged, and no temporary file remains.
void StoreFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

}  // namespace stairmelt
