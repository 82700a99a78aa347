#include "bench/workplace.h"

#include <cstring>

namespace stairmelt {

Workplace::Workplace(const Scene& scene, const BenchFormat& format)
    : picture_(format.convert(scene.draw(scene.width, scene.height))),
      result_(picture_),
      source_{scene.width, scene.height, picture_.data(), scene.width * format.pixelBytes},
      destination_{scene.width, scene.height, result_.data(), scene.width * format.pixelBytes},
      job_{kBenchThreshold, 70, 0, nullptr, 0, &source_, &destination_, 0, 0, scene.height, scene.width},
      flaggedShare_(format.flaggedShare(source_)) {}

double Workplace::Renew() {
    return SecondsOf([this] { std::memcpy(result_.data(), picture_.data(), picture_.size()); });
}

}  // namespace stairmelt
