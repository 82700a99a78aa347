// Times of the kernels on one thread. A benchmark's name is GROUP/PICTURE/WHAT, and its groups are
//
//   rgb8      six pictures of 24 megapixels in 8-bit RGB: copying, reading, every form of the kernel, and its phases
//   formats   all 24 formats, on the cartoon
//   growth    the cartoon from 1 to 100 megapixels
//   share     pictures of which a part is blank
//   crop      a picture of the preview's size
//   worst     the pictures that the kernels find hardest
//
// The destination becomes a copy of the picture before each run. That copy isn't part of the run's time; its own is in
// the counter `copy`, so that each benchmark has a measure taken in the same seconds as itself. Further counters:
// `megapixels`, and `flagged`, the share of the pixels with an edge on their right or lower side.
#include <benchmark/benchmark.h>
#include <emmintrin.h>

#include <algorithm>
#include <cmath>
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

// Something to be timed on a picture. It takes the time itself, so that it can prepare what shouldn't count.
struct Measurement {
    std::string name;
    std::function<double(Workplace& place)> seconds;
};

// Reads every pixel and does as little with it as can be: four sums that don't wait for each other, so that the memory
// sets the pace.
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

// All that is measured on the pictures of the group rgb8.
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

// Keeps the workplace used last: benchmarks on one picture follow each other, and two large ones needn't fit into
// memory.
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
        constexpr double kPixelsForEachRepetition = 24e6;
        const double pixels = static_cast<double>(scene.width) * scene.height;
        const auto iterations = std::clamp<int64_t>(std::lround(kPixelsForEachRepetition / pixels), 1, 30);
        for (const Measurement& measurement : measurements) {
            const std::string name = group + "/" + picture + "/" + measurement.name;
            const auto run = [this, scene, &format, measurement](benchmark::State& state) {
                Run(state, workshop_.PlaceFor(scene, format), measurement);
            };
            benchmark::RegisterBenchmark(name.c_str(), run)
                ->UseManualTime()
                ->Iterations(iterations)
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

Scene SceneOf(const PictureKind& kind, int32_t width, int32_t height) {
    return {kind.name, width, height, [&kind](int32_t w, int32_t h) { return DrawPicture(kind, w, h); }};
}

// Three columns to two rows: 24 megapixels are 6000 x 4000.
Scene SceneOf(const PictureKind& kind, int megapixels) {
    const double pixels = megapixels * 1e6;
    const double width = std::round(std::sqrt(pixels * 1.5));
    return SceneOf(kind, static_cast<int32_t>(width), static_cast<int32_t>(std::round(pixels / width)));
}

// A picture of which `percent` remains.
Scene PartlyBlank(const PictureKind& kind, int megapixels, int percent) {
    Scene scene = SceneOf(kind, megapixels);
    scene.name += std::to_string(percent);
    scene.draw = [&kind, percent](int32_t width, int32_t height) {
        Canvas canvas = DrawPicture(kind, width, height);
        BlankTiles(canvas, percent);
        return canvas;
    };
    return scene;
}

void PlanAll(Plan& plan) {
    constexpr int kMegapixels = 24;
    const BenchFormat& rgb8 = FindFormat("C3D8");
    const std::vector<Measurement> fast = {RunOf(rgb8.forms.front())};
    const PictureKind& cartoon = FindPicture("cartoon");

    for (const PictureKind& kind : kPictures) {
        plan.Add("rgb8", SceneOf(kind, kMegapixels), rgb8, EverythingOn(rgb8), kind.name);
    }
    for (const BenchFormat& format : kFormats) {
        plan.Add("formats", SceneOf(cartoon, kMegapixels), format, {RunOf(format.forms.front())}, format.name);
    }
    for (const int megapixels : {1, 4, 10, 24, 50, 100}) {
        plan.Add("growth", SceneOf(cartoon, megapixels), rgb8, fast, std::to_string(megapixels));
    }
    for (const std::string name : {"cartoon", "noise"}) {
        for (const int percent : {0, 5, 10, 25, 50, 75, 100}) {
            plan.Add("share", PartlyBlank(FindPicture(name), kMegapixels, percent), rgb8, fast,
                     name + "_" + std::to_string(percent));
        }
    }
    for (const PictureKind& kind : kPictures) {
        plan.Add("crop", SceneOf(kind, 980, 740), rgb8, EverythingOn(rgb8), kind.name);
    }
    for (const PictureKind& kind : kWorstPictures) {
        plan.Add("worst", SceneOf(kind, kMegapixels), rgb8, fast, kind.name);
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
