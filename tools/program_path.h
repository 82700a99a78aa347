// Where this program itself lies.
#pragma once

#include <filesystem>

namespace stairmelt {

std::filesystem::path ProgramPath();

}  // namespace stairmelt
