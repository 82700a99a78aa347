// Compiled for AVX2, as the kernels that it takes apart.
#include <chrono>

#include "bench/phases.h"
#include "engine/avx2.h"
#include "engine/block_kernel.h"

namespace stairmelt {

PhaseSeconds MeasurePhases(const KernelJob& job) {
    using Format = PixelFormat<Depth8, 3, 0, Avx2>;
    using Clock = std::chrono::steady_clock;
    const auto seconds = [](Clock::duration time) { return std::chrono::duration<double>(time).count(); };
    const ImageView& image = *job.destination;
    const auto start = Clock::now();
    FlagPlanes planes;
    if (!planes.Allocate(image.width, image.height)) return {};
    const auto allocated = Clock::now();
    PlaneBuilder<Format>(image, DeriveEdgeThreshold<Format>(job.colorThreshold), planes).BuildTo(image.height);
    const auto built = Clock::now();
    BlockScan<Format>(job, planes, DeriveScanWeights<Format>(job)).Run();
    return {seconds(allocated - start), seconds(built - allocated), seconds(Clock::now() - built)};
}

}  // namespace stairmelt
