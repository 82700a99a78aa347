// A filter that changes nothing, and crashes on pictures of a certain width.
#include "host/filter_api.h"

namespace {

constexpr int kBadWidth = 13;
volatile int* volatile gNowhere = nullptr;

}  // namespace

extern "C" __declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t*, int16_t*) {
    if (selector != stairmelt::kFilterSelectorStart) return;
    const auto* const filter = static_cast<stairmelt::FilterRecord*>(record);
    if (filter->imageSize.h == kBadWidth) *gNowhere = 1;
}
