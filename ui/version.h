// The version that the about box shows.
#pragma once

#include "resources/version_numbers.h"

namespace stairmelt {

constexpr int kVersionMajor = VERSION_MAJOR;
constexpr int kVersionMinor = VERSION_MINOR;
constexpr int kVersionRevision = VERSION_REVISION;
constexpr char kVersionEdition[] = " (DEMO)";
constexpr int kVersionBuild = VERSION_BUILD;

}  // namespace stairmelt
