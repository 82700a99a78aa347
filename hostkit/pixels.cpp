#include "hostkit/pixels.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "hostkit/calls.h"
#include "hostkit/fake_host.h"

namespace stairmelt {
namespace {

constexpr uint8_t kSelected = 255;

bool IsEmpty(const VRect& rect) { return rect.top >= rect.bottom || rect.left >= rect.right; }

VRect Intersection(const VRect& a, const VRect& b) {
    return {std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom), std::min(a.right, b.right)};
}

VRect Widened(const Rect& rect) { return {rect.top, rect.left, rect.bottom, rect.right}; }

struct Requests {
    VRect input, output, mask;
};

// In the form of coordinates in use: the plug-in turns the 32-bit one on.
Requests ReadRequests() {
    const FilterRecord& record = CurrentHost().record;
    const BigDocumentStruct* big = record.bigDocumentData;
    if (big && big->PluginUsing32BitCoordinates) return {big->inRect32, big->outRect32, big->maskRect32};
    return {Widened(record.inRect), Widened(record.outRect), Widened(record.maskRect)};
}

// Bytes per row without the padding.
size_t SpanOf(const Delivery& delivery) {
    return static_cast<size_t>(delivery.pixelBytes) * static_cast<size_t>(delivery.rect.right - delivery.rect.left);
}

uint8_t* RowOf(const Delivery& delivery, int32_t y) {
    return delivery.Data() + static_cast<size_t>(y - delivery.rect.top) * static_cast<size_t>(delivery.rowBytes);
}

// The offset of pixel (x, y) in the document's samples, at the first plane of this delivery.
size_t OffsetInDocument(const FakeDocument& document, const Delivery& delivery, int32_t x, int32_t y) {
    return static_cast<size_t>(y) * document.RowBytes() + static_cast<size_t>(x) * document.PixelBytes() +
           static_cast<size_t>(delivery.loPlane) * static_cast<size_t>(document.SampleBytes());
}

// Calls `visit(to, from, bytes)` for each run of bytes inside `rect` that is contiguous in both the document and the
// delivery. The first argument is an offset in the document's samples.
template <class Visit>
void VisitRuns(const FakeDocument& document, const Delivery& delivery, const VRect& rect, Visit visit) {
    const size_t pixelBytes = document.PixelBytes();
    const auto deliveredBytes = static_cast<size_t>(delivery.pixelBytes);
    const VRect part = Intersection(delivery.rect, rect);
    if (IsEmpty(part)) return;
    const auto columns = static_cast<size_t>(part.right - part.left);
    for (int32_t y = part.top; y < part.bottom; ++y) {
        size_t offset = OffsetInDocument(document, delivery, part.left, y);
        uint8_t* delivered = RowOf(delivery, y) + static_cast<size_t>(part.left - delivery.rect.left) * deliveredBytes;
        if (deliveredBytes == pixelBytes) {
            visit(offset, delivered, columns * pixelBytes);
            continue;
        }
        for (size_t x = 0; x < columns; ++x) {
            visit(offset, delivered, deliveredBytes);
            offset += pixelBytes;
            delivered += deliveredBytes;
        }
    }
}

// A buffer for the rectangle. Its last row has no padding, so that the sanitizer detects a read beyond it.
Delivery Allocate(const char* name, const VRect& rect, int loPlane, int pixelBytes, int padding) {
    Delivery delivery{name, rect, loPlane, pixelBytes};
    const size_t span = SpanOf(delivery);
    const size_t rowBytes = span + static_cast<size_t>(padding);
    if (rowBytes > static_cast<size_t>(std::numeric_limits<int32_t>::max())) throw std::bad_alloc();
    delivery.rowBytes = static_cast<int32_t>(rowBytes);
    delivery.memory = GuardedMemory(static_cast<size_t>(rect.bottom - rect.top - 1) * rowBytes + span);
    return delivery;
}

// The whole image, in the document's own samples.
Delivery InPlace(const char* name, const FakeDocument& document, std::vector<uint8_t>& samples) {
    Delivery delivery{name, document.Bounds(), 0, static_cast<int32_t>(document.PixelBytes())};
    delivery.rowBytes = static_cast<int32_t>(document.RowBytes());
    delivery.inPlace = samples.data();
    return delivery;
}

void FillFromSource(const FakeDocument& document, const Delivery& delivery) {
    if (delivery.inPlace != nullptr) return;
    VisitRuns(document, delivery, delivery.rect, [&](size_t offset, uint8_t* delivered, size_t bytes) {
        std::memcpy(delivered, document.source.data() + offset, bytes);
    });
}

void FillMask(const FakeDocument& document, const Delivery& delivery) {
    const VRect selected = document.selection.value_or(document.Bounds());
    for (int32_t y = delivery.rect.top; y < delivery.rect.bottom; ++y)
        for (int32_t x = delivery.rect.left; x < delivery.rect.right; ++x)
            RowOf(delivery, y)[x - delivery.rect.left] = IsWithin({y, x, y + 1, x + 1}, selected) ? kSelected : 0;
}

// Sets the buffers' addresses and steps in the record: null and 0 for those that the filter doesn't have.
void Announce(const FakePixels& pixels, FilterRecord& record) {
    const int32_t sampleBytes = CurrentHost().document.SampleBytes();
    record.inData = pixels.input.Data();
    record.inRowBytes = pixels.input.rowBytes;
    record.inColumnBytes = pixels.input.pixelBytes;
    record.inPlaneBytes = sampleBytes;
    record.outData = pixels.output.Data();
    record.outRowBytes = pixels.output.rowBytes;
    record.outColumnBytes = pixels.output.pixelBytes;
    record.outPlaneBytes = sampleBytes;
    record.maskData = pixels.mask.Data();
    record.maskRowBytes = pixels.mask.rowBytes;
}

void CheckPadding(const Delivery& delivery) {
    if (IsEmpty(delivery.rect) || delivery.inPlace != nullptr) return;
    if (!delivery.memory.IsIntact()) ReportFault(std::string("stray write beside the ") + delivery.name + " buffer");
    const size_t span = SpanOf(delivery);
    for (int32_t y = delivery.rect.top; y < delivery.rect.bottom - 1; ++y) {
        if (HoldsPattern(RowOf(delivery, y) + span, static_cast<size_t>(delivery.rowBytes) - span)) continue;
        ReportFault(std::string("stray write in the padding of the ") + delivery.name + " buffer, row " +
                    std::to_string(y));
        return;
    }
}

void CheckInput(const FakeDocument& document, const Delivery& input) {
    if (input.inPlace != nullptr) return;
    bool isIntact = true;
    VisitRuns(document, input, input.rect, [&](size_t offset, const uint8_t* delivered, size_t bytes) {
        isIntact = isIntact && std::memcmp(delivered, document.source.data() + offset, bytes) == 0;
    });
    if (!isIntact) ReportFault("write into the input buffer");
}

OSErr Advance(FakeHost& host) {
    if (const OSErr failure = FailureOf("advanceState", kUserCanceledErr)) return failure;
    return host.onAdvance ? host.onAdvance() : host.pixels.Deliver();
}

}  // namespace

bool FakePixels::IsAnythingAsked() const {
    const Requests requests = ReadRequests();
    return !IsEmpty(requests.input) || !IsEmpty(requests.output) || !IsEmpty(requests.mask);
}

OSErr FakePixels::Deliver() {
    FakeHost& host = CurrentHost();
    FakeDocument& document = host.document;
    FilterRecord& record = host.record;
    Commit();
    Check();
    // Keep the old buffers until the new ones exist, so that the addresses always change.
    const Delivery old[] = {std::exchange(input, Delivery{input.name}), std::exchange(output, Delivery{output.name}),
                            std::exchange(mask, Delivery{mask.name})};
    Drop();

    Requests requests = ReadRequests();
    // The mask of a floating selection is delivered unrequested, since the filter's preview may show it.
    if (document.isFloating && IsEmpty(requests.mask)) requests.mask = document.Bounds();
    struct Wanted {
        Delivery& delivery;
        const VRect& rect;
        int loPlane, hiPlane, planes, sampleBytes;
        std::vector<uint8_t>* samples;  // the document's, if they can be delivered in place
    };
    const Wanted wanted[] = {
        {input, requests.input, record.inLoPlane, record.inHiPlane, document.planes, document.SampleBytes(),
         &document.source},
        {output, requests.output, record.outLoPlane, record.outHiPlane, document.planes, document.SampleBytes(),
         &document.result},
        {mask, requests.mask, 0, 0, 1, 1, nullptr},
    };
    for (const Wanted& want : wanted) {
        if (IsEmpty(want.rect)) continue;
        if (!IsWithin(want.rect, document.Bounds()) || want.loPlane < 0 || want.loPlane > want.hiPlane ||
            want.hiPlane >= want.planes)
            return kFilterBadParameters;
    }
    ++deliveries;
    // Padding is a whole number of samples, so that rows may still be read as arrays of samples. It differs from
    // delivery to delivery and from input to output.
    int padding = 3 + 2 * (deliveries % 5);
    try {
        for (const Wanted& want : wanted) {
            padding += 4;
            if (IsEmpty(want.rect)) continue;
            const bool isWhole = want.samples != nullptr && IsWithin(document.Bounds(), want.rect) &&
                                 want.hiPlane - want.loPlane + 1 == want.planes;
            if (isWhole && !host.checksPixels && !document.selection) {
                want.delivery = InPlace(want.delivery.name, document, *want.samples);
                continue;
            }
            want.delivery = Allocate(want.delivery.name, want.rect, want.loPlane,
                                     (want.hiPlane - want.loPlane + 1) * want.sampleBytes, padding * want.sampleBytes);
        }
    } catch (const std::bad_alloc&) {
        Drop();
        return kMemFullErr;
    }
    FillFromSource(document, input);
    FillFromSource(document, output);  // a filter may write only what it changes
    FillMask(document, mask);
    Announce(*this, record);
    return kNoErr;
}

void FakePixels::Commit() {
    FakeHost& host = CurrentHost();
    FakeDocument& document = host.document;
    if (output.inPlace != nullptr) return;
    const bool isMasked = host.record.autoMask && document.selection;
    VisitRuns(document, output, isMasked ? *document.selection : document.Bounds(),
              [&](size_t offset, const uint8_t* delivered, size_t bytes) {
                  std::memcpy(document.result.data() + offset, delivered, bytes);
              });
}

void FakePixels::Drop() {
    Check();
    for (Delivery* delivery : {&input, &output, &mask}) *delivery = Delivery{delivery->name};
    Announce(*this, CurrentHost().record);
}

void FakePixels::Check() const {
    CheckPadding(input);
    CheckPadding(output);
    CheckPadding(mask);
    CheckInput(CurrentHost().document, input);
}

OSErr AdvanceState() {
    FakeHost& host = CurrentHost();
    if (host.pixels.hasAdvanceFailed) ReportFault("advanceState again, after it failed in this selector");
    const OSErr result = Advance(host);
    if (result == kNoErr) ++host.pixels.advances;
    host.pixels.hasAdvanceFailed = result != kNoErr;
    return result;
}

}  // namespace stairmelt
