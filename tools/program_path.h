// The location of this program.
#pragma once

#include <filesystem>

namespace stairmelt {

std::filesystem::path ProgramPath();

}  // namespace stairmelt
