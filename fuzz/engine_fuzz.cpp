// Fuzzes the kernels: any format, size, stride, alignment, parameters and samples. Every form of the kernel has to give
// the plain form's result, to write nothing but the destination's pixels, and to answer as its header says.
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "engine/kernel_sets.h"
#include "fuzz/byte_source.h"
#include "fuzz/drawn_picture.h"
#include "fuzz/report.h"
#include "fuzz/same_samples.h"
#include "tests/support/kernel_list.h"

// Lets an edge map that doesn't fit into memory be refused, as the allocator does, and sooner than it does.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=1024"; }

namespace stairmelt {

namespace {

constexpr int kMaxPixels = 4096;  // keeps ramps without end affordable

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

// An image in a block that ends with its last pixel, so that the address sanitizer sees a read or write behind it.
class ExactImage {
public:
    ExactImage(const KernelCase& format, Size imageSize, ByteSource& bytes) : size_(imageSize) {
        if (imageSize.HasPixels()) {
            rowBytes_ = static_cast<size_t>(imageSize.width) * static_cast<size_t>(format.PixelBytes());
            rows_ = static_cast<size_t>(imageSize.height);
        }
        const uint8_t form = bytes.Byte();
        fill_ = bytes.Byte();
        lead_ = form % 16;
        const int padding = form / 16 % 4 == 3 ? bytes.Below(4096) : form / 16;
        stride_ = static_cast<int32_t>(rowBytes_) + padding;
        const size_t length = rows_ == 0 ? 0 : (rows_ - 1) * static_cast<size_t>(stride_) + rowBytes_;
        memory_ = std::vector<uint8_t>(lead_ + length, fill_);
        memory_.shrink_to_fit();
        // Nobody steps from a lone row to the next.
        if (rows_ <= 1) stride_ = bytes.Wild();
        isBottomUp_ = rows_ > 1 && form >= 224;
        hasBase_ = rows_ > 0 || form % 2 != 0;
    }
    ExactImage(const ExactImage&) = delete;
    ExactImage& operator=(const ExactImage&) = delete;

    ImageView View() {
        uint8_t* const base = !hasBase_ ? nullptr : rows_ == 0 ? memory_.data() + lead_ : Row(memory_, 0);
        return {size_.width, size_.height, base, isBottomUp_ ? -stride_ : stride_};
    }

    // Takes tightly packed pixels.
    void SetPixels(const std::vector<uint8_t>& pixels) {
        for (size_t y = 0; y < rows_; ++y) std::memcpy(Row(memory_, y), pixels.data() + y * rowBytes_, rowBytes_);
        atFirst_ = memory_;
    }

    std::vector<uint8_t> Pixels() {
        std::vector<uint8_t> pixels(rows_ * rowBytes_);
        for (size_t y = 0; y < rows_; ++y) std::memcpy(pixels.data() + y * rowBytes_, Row(memory_, y), rowBytes_);
        return pixels;
    }

    bool IsUntouched() const { return memory_ == atFirst_; }

    bool IsPaddingUntouched() {
        std::vector<uint8_t> expected = atFirst_;
        for (size_t y = 0; y < rows_; ++y) std::memcpy(Row(expected, y), Row(memory_, y), rowBytes_);
        return memory_ == expected;
    }

private:
    uint8_t* Row(std::vector<uint8_t>& memory, size_t y) const {
        return memory.data() + lead_ + (isBottomUp_ ? rows_ - 1 - y : y) * static_cast<size_t>(stride_);
    }

    Size size_;
    size_t rowBytes_ = 0, rows_ = 0;
    size_t lead_ = 0;  // bytes before the first row
    int32_t stride_ = 0;
    uint8_t fill_ = 0;  // of what isn't pixels
    bool isBottomUp_ = false, hasBase_ = true;
    std::vector<uint8_t> memory_, atFirst_;
};

KernelJob ReadParameters(const KernelCase& format, ByteSource& bytes) {
    KernelJob job{};
    job.key = format.Key();
    const uint8_t wild = bytes.Byte();  // one bit for each value
    const bool isTame = wild % 4 != 0;  // three of four jobs are those of a dialog
    job.colorThreshold = isTame || (wild & 4) == 0 ? bytes.Byte() : bytes.Wild();
    job.softness = isTame || (wild & 8) == 0 ? bytes.Below(101) : bytes.Wild();
    job.bias = isTame || (wild & 16) == 0 ? bytes.Below(101) : bytes.Wild();
    return job;
}

// One form of the kernel on the picture, in buffers of its own.
std::vector<uint8_t> Run(const char* name, Kernel kernel, const KernelCase& format, KernelJob job, Size size,
                         const std::vector<uint8_t>& pixels, ByteSource& bytes) {
    const std::string where =
        std::string(name) + " " + format.name + ", " + std::to_string(size.width) + "x" + std::to_string(size.height);
    ExactImage source(format, size, bytes), destination(format, size, bytes);
    source.SetPixels(pixels);
    destination.SetPixels(pixels);
    const ImageView from = source.View(), to = destination.View();
    job.source = &from;
    job.destination = &to;
    const int32_t result = kernel(job);
    Require(source.IsUntouched(), where + ": write into the source");
    Require(destination.IsPaddingUntouched(), where + ": write into the padding");
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
    const size_t at = FirstDifference(format.depth, wanted, got);
    if (at == kNoDifference) return;
    const size_t width = static_cast<size_t>(size.width), pixelBytes = static_cast<size_t>(format.PixelBytes());
    const size_t pixel = at / pixelBytes, sample = at % pixelBytes / static_cast<size_t>(format.SampleBytes());
    Fail(std::string(name) + " " + format.name + " differs from plain: " + std::to_string(size.width) + "x" +
         std::to_string(size.height) + ", threshold " + std::to_string(job.colorThreshold) + ", softness " +
         std::to_string(job.softness) + ", bias " + std::to_string(job.bias) + ", pixel (" +
         std::to_string(pixel % width) + ", " + std::to_string(pixel / width) + ") sample " + std::to_string(sample));
}

void RunCase(ByteSource bytes) {
    const KernelCase& format = kAllKernels[bytes.Byte() % std::size(kAllKernels)];
    const KernelJob job = ReadParameters(format, bytes);
    const Size size = ReadSize(bytes);
    // The layouts stand before the picture, which takes all the bytes that it gets.
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
