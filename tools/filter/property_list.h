// A plug-in's PIPL resource: what it tells the host about itself before any of its code runs.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace stairmelt {

// The entry point's name for 64-bit Windows. Throws ToolError when the list is damaged, isn't a filter's, or has no
// such entry.
std::string EntryPointName(std::span<const uint8_t> list);

}  // namespace stairmelt
