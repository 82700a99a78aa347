// The instruction sets for which the kernels are compiled. A set is a type that defines what a kernel's templates may
// use, and it is a part of the pixel format (pixel_format.h).
//
// Code that is compiled for several sets is in an inline namespace named after the set. Without it, the linker would
// merge functions of the same name and might keep the one that an older machine can't run.
#pragma once

#include <cstdint>

#ifdef __AVX2__
#define STAIRMELT_SET avx2
#else
#define STAIRMELT_SET baseline
#endif

namespace stairmelt {

inline namespace STAIRMELT_SET {

template <class Format>
struct SampleColors;
struct TwoWords;

// Available on every x86-64 machine. The other set, Avx2, is in avx2.h.
struct Baseline {
    using Words = TwoWords;
    static constexpr bool kHasVectors = false;  // wider than SSE2's
    template <class Format>
    using Colors = SampleColors<Format>;
    template <class Format>
    struct StrokeOf {};
};

}  // namespace STAIRMELT_SET

// True if this machine and its operating system support every instruction that files compiled for AVX2 may use.
bool HasAvx2();

}  // namespace stairmelt
