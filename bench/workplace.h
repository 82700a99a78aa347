// A picture in memory and the job for smoothing it.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "bench/formats.h"
#include "engine/image.h"

namespace stairmelt {

// A picture that can be drawn whenever it is needed. Scenes with the same name are equal.
struct Scene {
    std::string name;
    int32_t width, height;  // pixels
    std::function<Canvas(int32_t width, int32_t height)> draw;
};

// Runs `work` once and returns the seconds it took.
template <class Work>
double SecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

class Workplace {
public:
    Workplace(const Scene& scene, const BenchFormat& format);
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    // Copies the source to the destination again, as a kernel expects, and returns the seconds.
    double Renew();

    const KernelJob& Job() const { return job_; }
    double FlaggedShare() const { return flaggedShare_; }
    double Megapixels() const { return source_.width * 1e-6 * source_.height; }

private:
    std::vector<uint8_t> picture_, result_;
    ImageView source_, destination_;
    KernelJob job_;
    double flaggedShare_;
};

}  // namespace stairmelt
