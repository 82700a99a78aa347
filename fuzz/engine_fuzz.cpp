// Fuzzes the kernels: any format, size, stride, alignment, parameters and samples. Every form of a kernel has to give
// the plain form's result, write only the destination's pixels, and return the codes that its header describes.
#include <iterator>
#include <string>
#include <vector>

#include "engine/kernel_sets.h"
#include "fuzz/byte_source.h"
#include "fuzz/drawn_picture.h"
#include "fuzz/report.h"
#include "tests/support/guarded_image.h"
#include "tests/support/kernel_list.h"
#include "tests/support/same_pixels.h"

// Limits the memory for the edge map, so that a huge one is refused as the allocator would, only earlier.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=1024"; }

namespace stairmelt {

namespace {

constexpr int kMaxPixels = 4096;  // limits the time that endless ramps take

struct Size {
    int32_t width, height;

    bool HasPixels() const { return width > 0 && height > 0; }
};

Size ReadSize(ByteSource& bytes) {
    const int kind = bytes.Below(16);
    const int a = bytes.Between(1, 400), b = bytes.Between(1, 200);
    switch (kind) {
        case 0: return {1, b};
        case 1: return {a, 1};
        case 2: return {a % 3, b % 40};
        case 3: return {-a, b};
        case 4: return {a, -b};
        case 5: return {bytes.OneIn(2) ? 0 : bytes.Wild() | INT32_MIN, bytes.OneIn(2) ? 0 : bytes.Wild() | INT32_MIN};
        case 6: return {a, 1 + b % (1 + kMaxPixels / a)};
        case 7: return {1 + a % (1 + kMaxPixels / b), b};
        case 8:
            if (bytes.OneIn(8)) return {INT32_MAX - a, INT32_MAX - b};  // no memory holds its edge map
            break;
    }
    return {1 + a % 70, 1 + b % 40};
}

// Without a tail, so that the address sanitizer reports an access beyond the last pixel.
ImageLayout ReadLayout(ByteSource& bytes) {
    const uint8_t form = bytes.Byte();
    ImageLayout layout;
    layout.fill = bytes.Byte();
    layout.lead = form % 16;
    layout.tail = 0;
    layout.padding = form / 16 % 4 == 3 ? bytes.Below(4096) : form / 16;
    layout.isBottomUp = form >= 224;
    return layout;
}

// An image as a host may describe it: the stride of a single row and the address of an empty image can be anything.
ImageView ViewOf(const GuardedImage& image, ByteSource& bytes) {
    ImageView view = image.view;
    const int32_t rows = view.width > 0 ? view.height : 0;
    if (rows <= 1) view.rowStride = bytes.Wild();
    if (rows <= 0 && bytes.OneIn(2)) view.base = nullptr;
    return view;
}

KernelJob ReadParameters(const KernelCase& format, ByteSource& bytes) {
    KernelJob job{};
    job.key = format.Key();
    const uint8_t wild = bytes.Byte();  // one bit for each value
    const bool isTame = wild % 4 != 0;  // three of four jobs have values that the dialog can set
    job.colorThreshold = isTame || (wild & 4) == 0 ? bytes.Byte() : bytes.Wild();
    job.softness = isTame || (wild & 8) == 0 ? bytes.Below(101) : bytes.Wild();
    job.bias = isTame || (wild & 16) == 0 ? bytes.Below(101) : bytes.Wild();
    return job;
}

// Runs one form of the kernel on the picture, in separate buffers.
std::vector<uint8_t> Run(const char* name, Kernel kernel, const KernelCase& format, KernelJob job, Size size,
                         const std::vector<uint8_t>& pixels, ByteSource& bytes) {
    const std::string where =
        std::string(name) + " " + format.name + ", " + std::to_string(size.width) + "x" + std::to_string(size.height);
    GuardedImage source(format, size.width, size.height, pixels, ReadLayout(bytes));
    GuardedImage destination(format, size.width, size.height, pixels, ReadLayout(bytes));
    const ImageView from = ViewOf(source, bytes), to = ViewOf(destination, bytes);
    job.source = &from;
    job.destination = &to;
    const int32_t result = kernel(job);
    Require(source.IsUntouched(), where + ": write into the source");
    Require(destination.AreGuardsUntouched(), where + ": write beside the pixels");
    if (size.HasPixels() && size.width < INT32_MAX / 2)
        Require(result == kKernelDone, where + ": result " + std::to_string(result));
    else
        Require(result == kKernelDone || result == kKernelMemoryError, where + ": result " + std::to_string(result));
    return destination.Pixels();
}

// Views that differ in size are refused.
void CheckRefusal(const KernelCase& format, KernelJob job, ByteSource& bytes) {
    const Size size = ReadSize(bytes);
    const ImageView from = {size.width, size.height, nullptr, 0};
    const ImageView to = {bytes.OneIn(2) ? size.width : size.width ^ 1, size.height ^ 1, nullptr, 0};
    job.source = &from;
    job.destination = &to;
    Require(format.kernel(job) == kKernelParameterError, std::string(format.name) + ": views of different sizes");
}

void Compare(const char* name, const KernelCase& format, const KernelJob& job, Size size,
             const std::vector<uint8_t>& wanted, const std::vector<uint8_t>& got) {
    const std::string difference = FirstDifference(format, size.width, wanted, got);
    if (difference.empty()) return;
    Fail(std::string(name) + " " + format.name + " differs from plain: " + std::to_string(size.width) + "x" +
         std::to_string(size.height) + ", threshold " + std::to_string(job.colorThreshold) + ", softness " +
         std::to_string(job.softness) + ", bias " + std::to_string(job.bias) + ", " + difference);
}

void RunCase(ByteSource bytes) {
    const KernelCase& format = kAllKernels[bytes.Byte() % std::size(kAllKernels)];
    const KernelJob job = ReadParameters(format, bytes);
    const Size size = ReadSize(bytes);
    // Read the layouts before the picture, which takes all remaining bytes.
    uint8_t layouts[32];
    for (uint8_t& byte : layouts) byte = bytes.Byte();
    const bool isHuge = size.HasPixels() && size.width > INT32_MAX / 2;
    if (isHuge) {
        const ImageView view = {size.width, size.height, nullptr, 0};
        KernelJob refused = job;
        refused.source = refused.destination = &view;
        Require(format.kernel(refused) == kKernelMemoryError, std::string(format.name) + ": edge map beyond memory");
        return;
    }
    if (!size.HasPixels()) CheckRefusal(format, job, bytes);

    const std::vector<uint8_t> pixels = DrawPicture(format, size.width, size.height, bytes);
    ByteSource layout(layouts, sizeof(layouts));
    const std::vector<uint8_t> wanted =
        Run("plain", kPlainKernels.Get(format.channels, format.depth, format.extra), format, job, size, pixels, layout);
    const std::vector<uint8_t> named = Run("named", format.kernel, format, job, size, pixels, layout);
    Compare("named", format, job, size, wanted, named);
    if (!size.HasPixels()) return;
    for (const KernelSet* set : {&kBaselineKernels, &kAvx2Kernels}) {
        if (!set->runsHere()) continue;
        const Kernel kernel = set->Get(format.channels, format.depth, format.extra);
        Compare(set->name, format, job, size, wanted, Run(set->name, kernel, format, job, size, pixels, layout));
    }
}

}  // namespace

}  // namespace stairmelt

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    stairmelt::RunCase({data, size});
    return 0;
}
