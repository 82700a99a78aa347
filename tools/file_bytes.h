// Whole files in and out. A file is written beside its place and renamed, so that it is there as before or complete,
// never in part. Functions throw ToolError.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "tools/byte_order.h"

namespace stairmelt {

// A path for the user to read, in UTF-8, and from UTF-8.
std::string PathText(const std::filesystem::path& path);
std::filesystem::path PathFromText(const std::string& text);

Bytes LoadFile(const std::filesystem::path& path);

// Creates the file or takes its place. On failure the file is as it was and nothing is left beside it.
void StoreFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

}  // namespace stairmelt
