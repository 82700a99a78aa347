// A text file with the values that plug-ins store with the host between runs:
//
//   [name under which a plug-in registered its values]
//   Thsh=10
//
// A key is four letters or digits, or 0x and eight hexadecimal digits. Invalid lines are skipped.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "hostkit/registry.h"

namespace stairmelt {

using Settings = std::map<std::string, StoredValues>;  // by the name that the plug-in registers

Settings ParseSettings(std::string_view text);

// Names that don't fit on one line are omitted.
std::string FormatSettings(const Settings& settings);

// Returns no settings for a missing file or one that isn't text. Throws ToolError if the file can't be read.
Settings LoadSettings(const std::filesystem::path& path);

// On failure, throws ToolError and leaves the file unchanged.
void StoreSettings(const std::filesystem::path& path, const Settings& settings);

}  // namespace stairmelt
