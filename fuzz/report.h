// Reports failed checks of the fuzzers.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace stairmelt {

// Ends the program; libFuzzer then writes the input to a file.
[[noreturn]] inline void Fail(const std::string& what) {
    std::fprintf(stderr, "check failed: %s\n", what.c_str());
    std::abort();
}

inline void Require(bool holds, const std::string& what) {
    if (!holds) Fail(what);
}

}  // namespace stairmelt
