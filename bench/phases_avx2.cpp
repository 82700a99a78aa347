// Compiled for AVX2, like the kernels whose phases it times.
#include <chrono>

#include "bench/phases.h"
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"

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
    PlaneBuilder<Format> builder(image, DeriveEdgeThreshold<Format>(job.colorThreshold), planes);
    planes.BuildBy(builder, builder.kBandRows);
    for (int32_t y = 0; y < image.height; ++y) planes.Need(y);
    const auto built = Clock::now();
    struct Discard final : ActionSink {
        void Perform(const Action*, int, const RunPair*) override {}
    } discard;
    PlanVisits(image.width, image.height, planes, discard);
    const auto planned = Clock::now();
    Painter<Format> painter(job, DeriveScanWeights<Format>(job), planes);
    PlanVisits(image.width, image.height, planes, painter);
    const double plan = seconds(planned - built);
    return {seconds(allocated - start), seconds(built - allocated), plan, seconds(Clock::now() - planned) - plan};
}

}  // namespace stairmelt
