// What plug-ins leave with the host from one run to the next, kept in a text file:
//
//   [name under which a plug-in registered its values]
//   Thsh=10
//
// A key is four letters or digits, or 0x and eight hexadecimal digits. Lines that make no sense are passed over, and
// the sound ones around them still count.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "hostkit/registry.h"

namespace stairmelt {

using Settings = std::map<std::string, StoredValues>;  // by the name that the plug-in registers

Settings ParseSettings(std::string_view text);

// Names that don't fit into a line of their own are left out.
std::string FormatSettings(const Settings& settings);

// No file, or one that isn't text, gives no settings. Throws ToolError when there is one that can't be read.
Settings LoadSettings(const std::filesystem::path& path);

// Throws ToolError, with the file as it was.
void StoreSettings(const std::filesystem::path& path, const Settings& settings);

}  // namespace stairmelt
