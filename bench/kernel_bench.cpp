// Times the kernels on one thread. A benchmark's name is GROUP/PICTURE/WHAT. The groups are
//
//   rgb8      six pictures of 24 megapixels in 8-bit RGB: copying, reading, every form of the kernel, and its phases
//   formats   all 24 formats, on the cartoon
//
// Before each run, the picture is copied to the destination. The run's time excludes the copy, whose own time is in the
// counter `copy`: a reference measured at the same moment. Other counters are `megapixels`, and `flagged`, the share of
// pixels with an edge on their right or lower side.
#include <benchmark/benchmark.h>
#include <emmintrin.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/formats.h"
#include "bench/phases.h"
#include "bench/pictures.h"
#include "bench/workplace.h"
#include "engine/instruction_set.h"

namespace stairmelt {

namespace {

// An operation on a picture. It measures its own time, so that preparations don't count.
struct Measurement {
    std::string name;
    std::function<double(Workplace& place)> seconds;
};

// Reads every pixel into four independent sums, so that memory is the limit.
__m128i SumOfWords(const ImageView& image) {
    const size_t bytes = static_cast<size_t>(image.rowStride) * static_cast<size_t>(image.height);
    __m128i sums[4] = {};
    for (size_t i = 0; i + sizeof sums <= bytes; i += sizeof sums) {
        const auto* const words = reinterpret_cast<const __m128i*>(image.base + i);
        for (int k = 0; k < 4; ++k) sums[k] = _mm_add_epi64(sums[k], _mm_loadu_si128(words + k));
    }
    return _mm_add_epi64(_mm_add_epi64(sums[0], sums[1]), _mm_add_epi64(sums[2], sums[3]));
}

const Measurement kCopy = {"copy", [](Workplace& place) { return place.Renew(); }};
const Measurement kRead = {"read", [](Workplace& place) {
                               return SecondsOf([&] { benchmark::DoNotOptimize(SumOfWords(*place.Job().source)); });
                           }};

Measurement RunOf(const KernelForm& form) {
    return {form.name, [kernel = form.kernel](Workplace& place) {
                return SecondsOf([&] { benchmark::DoNotOptimize(kernel(place.Job())); });
            }};
}

// All measurements on the pictures of the group rgb8.
std::vector<Measurement> EverythingOn(const BenchFormat& format) {
    std::vector<Measurement> measurements = {kCopy, kRead};
    for (const KernelForm& form : format.forms) measurements.push_back(RunOf(form));
    if (HasAvx2()) {
        measurements.push_back({"memory", [](Workplace& place) { return MeasurePhases(place.Job()).memory; }});
        measurements.push_back({"flags", [](Workplace& place) { return MeasurePhases(place.Job()).flags; }});
        measurements.push_back({"plan", [](Workplace& place) { return MeasurePhases(place.Job()).plan; }});
        measurements.push_back({"paint", [](Workplace& place) { return MeasurePhases(place.Job()).paint; }});
    }
    return measurements;
}

// Keeps the last workplace, since benchmarks on the same picture follow each other, but only that one: two large
// pictures might not fit into memory.
class Workshop {
public:
    Workplace& PlaceFor(const Scene& scene, const BenchFormat& format) {
        const std::string name = scene.name + " " + std::to_string(scene.width) + " " + format.name;
        if (name != name_) {
            place_ = nullptr;
            place_ = std::make_unique<Workplace>(scene, format);
            name_ = name;
        }
        return *place_;
    }

private:
    std::string name_;
    std::unique_ptr<Workplace> place_;
};

class Plan {
public:
    void Add(const std::string& group, const Scene& scene, const BenchFormat& format,
             const std::vector<Measurement>& measurements, const std::string& picture) {
        for (const Measurement& measurement : measurements) {
            const std::string name = group + "/" + picture + "/" + measurement.name;
            const auto run = [this, scene, &format, measurement](benchmark::State& state) {
                Run(state, workshop_.PlaceFor(scene, format), measurement);
            };
            benchmark::RegisterBenchmark(name.c_str(), run)
                ->UseManualTime()
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        }
    }

private:
    static void Run(benchmark::State& state, Workplace& place, const Measurement& measurement) {
        double copy = 0;  // seconds
        for (auto _ : state) {
            copy += place.Renew();
            state.SetIterationTime(measurement.seconds(place));
        }
        state.counters["copy"] = copy * 1e3 / static_cast<double>(state.iterations());  // milliseconds, like the times
        state.counters["megapixels"] = place.Megapixels();
        state.counters["flagged"] = place.FlaggedShare();
    }

    Workshop workshop_;
};

// Three columns to two rows: 24 megapixels are 6000 x 4000.
Scene SceneOf(const PictureKind& kind) {
    return {kind.name, 6000, 4000, [&kind](int32_t width, int32_t height) { return DrawPicture(kind, width, height); }};
}

void PlanAll(Plan& plan) {
    const BenchFormat& rgb8 = FindFormat("C3D8");
    const PictureKind& cartoon = FindPicture("cartoon");

    for (const PictureKind& kind : kPictures) {
        plan.Add("rgb8", SceneOf(kind), rgb8, EverythingOn(rgb8), kind.name);
    }
    for (const BenchFormat& format : kFormats) {
        plan.Add("formats", SceneOf(cartoon), format, {RunOf(format.forms.front())}, format.name);
    }
}

}  // namespace

}  // namespace stairmelt

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    stairmelt::Plan plan;
    stairmelt::PlanAll(plan);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
