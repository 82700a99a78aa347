// The instruction sets for which the kernels are compiled. A set is a type that says what a kernel's templates may use;
// it is a part of the pixel format (pixel_format.h).
//
// What several sets include stands in an inline namespace named after the set for which the file is compiled. Without
// it the linker would merge functions of one name, and might keep the one that an older machine can't run.
#pragma once

#include <cstdint>

#ifdef __AVX2__
#define STAIRMELT_SET avx2
#else
#define STAIRMELT_SET baseline
#endif

namespace stairmelt {

// What every x86-64 machine has. Avx2 is the other set, in avx2.h.
struct Baseline {
    static constexpr bool kHasVectors = false;  // wider than SSE2's (block/avx2.h)
};

// Whether this machine and its operating system have all that files compiled for AVX2 may use.
bool HasAvx2();

}  // namespace stairmelt
