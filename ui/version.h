// The version that the about box shows.
#pragma once

namespace stairmelt {

constexpr int kVersionMajor = 1;
constexpr int kVersionMinor = 0;
constexpr int kVersionRevision = 2;
constexpr char kVersionEdition[] = " (DEMO)";
constexpr int kVersionBuild = 16;

}  // namespace stairmelt
