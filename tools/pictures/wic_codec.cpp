#include "tools/pictures/wic_codec.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <objidl.h>
#include <wincodec.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

#include "tools/pictures/memory_stream.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

using Microsoft::WRL::ComPtr;

// Codecs take at most 4 GB at once, so rows go in bands of about this many bytes.
constexpr size_t kBandBytes = size_t{1} << 28;

struct FormatRow {
    const GUID* format;
    PixelLayout layout;
};

// The codecs' own premultiplied, floating-point and fixed-point formats are left out on purpose.
const FormatRow kFormats[] = {
    {&GUID_WICPixelFormatBlackWhite, PixelLayout::kGray1},
    {&GUID_WICPixelFormat2bppGray, PixelLayout::kGray2},
    {&GUID_WICPixelFormat4bppGray, PixelLayout::kGray4},
    {&GUID_WICPixelFormat8bppGray, PixelLayout::kGray8},
    {&GUID_WICPixelFormat16bppGray, PixelLayout::kGray16},
    {&GUID_WICPixelFormat24bppBGR, PixelLayout::kBgr24},
    {&GUID_WICPixelFormat24bppRGB, PixelLayout::kRgb24},
    {&GUID_WICPixelFormat32bppBGR, PixelLayout::kBgrx32},
    {&GUID_WICPixelFormat32bppBGRA, PixelLayout::kBgra32},
    {&GUID_WICPixelFormat32bppRGBA, PixelLayout::kRgba32},
    {&GUID_WICPixelFormat48bppRGB, PixelLayout::kRgb48},
    {&GUID_WICPixelFormat64bppRGBA, PixelLayout::kRgba64},
    {&GUID_WICPixelFormat1bppIndexed, PixelLayout::kIndexed1},
    {&GUID_WICPixelFormat2bppIndexed, PixelLayout::kIndexed2},
    {&GUID_WICPixelFormat4bppIndexed, PixelLayout::kIndexed4},
    {&GUID_WICPixelFormat8bppIndexed, PixelLayout::kIndexed8},
};

const GUID& ContainerOf(FileKind kind) {
    switch (kind) {
        case FileKind::kPng: return GUID_ContainerFormatPng;
        case FileKind::kTiff: return GUID_ContainerFormatTiff;
        case FileKind::kBmp: return GUID_ContainerFormatBmp;
        default: return GUID_ContainerFormatJpeg;
    }
}

void Require(HRESULT result, const char* what) {
    if (SUCCEEDED(result)) return;
    if (result == E_OUTOFMEMORY) throw ToolError("there isn't enough memory for the picture");
    char code[32];
    std::snprintf(code, sizeof(code), " (code %08lX)", static_cast<unsigned long>(result));
    throw ToolError(what + std::string(code));
}

// Made once, since looking it up takes longer than a small picture does. It goes with the process.
IWICImagingFactory* Factory() {
    static IWICImagingFactory* const kept = [] {
        IWICImagingFactory* factory = nullptr;
        Require(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                 reinterpret_cast<void**>(&factory)),
                "the Windows Imaging Component isn't there");
        return factory;
    }();
    return kept;
}

// 5 and 6 bits a channel, as some BMP files have, are spread over 8 by the codec itself.
ComPtr<IWICBitmapSource> SpreadShortPixels(ComPtr<IWICBitmapSource> source) {
    WICPixelFormatGUID format;
    Require(source->GetPixelFormat(&format), "the picture has no pixel format");
    if (format != GUID_WICPixelFormat16bppBGR555 && format != GUID_WICPixelFormat16bppBGR565) return source;
    ComPtr<IWICBitmapSource> spread;
    Require(WICConvertBitmapSource(GUID_WICPixelFormat24bppBGR, source.Get(), spread.GetAddressOf()),
            "the picture's pixels can't be converted");
    return spread;
}

PixelLayout LayoutOf(IWICBitmapSource* source) {
    WICPixelFormatGUID format;
    Require(source->GetPixelFormat(&format), "the picture has no pixel format");
    const auto row = std::ranges::find_if(kFormats, [&](const FormatRow& r) { return *r.format == format; });
    if (row != std::end(kFormats)) return row->layout;
    if (format == GUID_WICPixelFormat32bppCMYK)
        throw ToolError("pictures in CMYK are only read from TIFF files without JPEG compression");
    throw ToolError("the picture's pixel format isn't supported");
}

std::vector<uint32_t> PaletteOf(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame) {
    ComPtr<IWICPalette> palette;
    UINT count = 0;
    Require(factory->CreatePalette(palette.GetAddressOf()), "no palette can be made");
    Require(frame->CopyPalette(palette.Get()), "the picture's palette is missing");
    Require(palette->GetColorCount(&count), "the picture's palette is missing");
    std::vector<WICColor> colors(count);
    Require(palette->GetColors(count, colors.data(), &count), "the picture's palette is missing");
    return {colors.begin(), colors.begin() + count};
}

// The ICC profile, or nothing: a codec that has no notion of profiles says so by failing.
Bytes ProfileOf(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame) {
    UINT count = 0, filled = 0;
    if (FAILED(frame->GetColorContexts(0, nullptr, &count)) || count == 0) return {};
    std::vector<ComPtr<IWICColorContext>> contexts(count);
    std::vector<IWICColorContext*> pointers;
    for (ComPtr<IWICColorContext>& context : contexts) {
        if (FAILED(factory->CreateColorContext(context.GetAddressOf()))) return {};
        pointers.push_back(context.Get());
    }
    if (FAILED(frame->GetColorContexts(count, pointers.data(), &filled))) return {};
    for (UINT i = 0; i < std::min(count, filled); ++i) {
        WICColorContextType type = WICColorContextUninitialized;
        UINT size = 0;
        if (FAILED(contexts[i]->GetType(&type)) || type != WICColorContextProfile) continue;
        if (FAILED(contexts[i]->GetProfileBytes(0, nullptr, &size)) || size == 0) continue;
        Bytes profile(size);
        if (SUCCEEDED(contexts[i]->GetProfileBytes(size, profile.data(), &size))) return profile;
    }
    return {};
}

// An encoder without the option does without.
void SetOption(IPropertyBag2* options, const wchar_t* name, uint8_t value) {
    std::wstring writableName = name;
    PROPBAG2 property{};
    property.pstrName = writableName.data();
    VARIANT variant{};
    variant.vt = VT_UI1;
    variant.bVal = value;
    options->Write(1, &property, &variant);
}

}  // namespace

CodecImage DecodeImage(FileKind kind, std::span<const uint8_t> file) {
    constexpr char kDamaged[] = "the file is damaged or of a kind that this system doesn't read";
    if (file.size() > std::numeric_limits<DWORD>::max()) throw ToolError("files of 4 GB and more aren't supported");
    IWICImagingFactory* const factory = Factory();
    ComPtr<IWICStream> stream;
    Require(factory->CreateStream(stream.GetAddressOf()), "no stream can be made");
    // A stream for reading: nothing is written there.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    Require(stream->InitializeFromMemory(const_cast<BYTE*>(file.data()), static_cast<DWORD>(file.size())),
            "no stream can be made");
    ComPtr<IWICBitmapDecoder> decoder;
    Require(factory->CreateDecoder(ContainerOf(kind), nullptr, decoder.GetAddressOf()),
            "no decoder for this kind of file");
    Require(decoder->Initialize(stream.Get(), WICDecodeMetadataCacheOnDemand), kDamaged);
    ComPtr<IWICBitmapFrameDecode> frame;
    Require(decoder->GetFrame(0, frame.GetAddressOf()), kDamaged);

    CodecImage image;
    UINT width = 0, height = 0;
    Require(frame->GetSize(&width, &height), kDamaged);
    constexpr UINT kMost = std::numeric_limits<int32_t>::max();
    if (width == 0 || height == 0 || width > kMost || height > kMost) throw ToolError(kDamaged);
    image.width = static_cast<int32_t>(width);
    image.height = static_cast<int32_t>(height);
    if (FAILED(frame->GetResolution(&image.dpiX, &image.dpiY))) image.dpiX = image.dpiY = 0;
    const ComPtr<IWICBitmapSource> source = SpreadShortPixels(frame);
    image.layout = LayoutOf(source.Get());
    if (image.layout >= PixelLayout::kIndexed1) image.palette = PaletteOf(factory, frame.Get());
    image.profile = ProfileOf(factory, frame.Get());

    const size_t rowBytes = RowBytes(image.layout, image.width);
    if (rowBytes > kMost) throw ToolError("the picture is too wide");
    image.rows.resize(rowBytes * height);
    const UINT bandRows = static_cast<UINT>(std::max<size_t>(1, kBandBytes / rowBytes));
    for (UINT y = 0; y < height; y += bandRows) {
        const UINT rows = std::min(bandRows, height - y);
        const WICRect band = {0, static_cast<INT>(y), static_cast<INT>(width), static_cast<INT>(rows)};
        Require(source->CopyPixels(&band, static_cast<UINT>(rowBytes), static_cast<UINT>(rowBytes * rows),
                                   &image.rows[rowBytes * y]),
                kDamaged);
    }
    return image;
}

Bytes EncodeImage(FileKind kind, const CodecImage& image, bool plainRows) {
    constexpr char kFailed[] = "the picture can't be encoded";
    IWICImagingFactory* const factory = Factory();
    const size_t rowBytes = RowBytes(image.layout, image.width);
    if (rowBytes > static_cast<size_t>(std::numeric_limits<int32_t>::max())) throw ToolError("the picture is too wide");
    ComPtr<MemoryStream> stream;
    stream.Attach(new MemoryStream);
    ComPtr<IWICBitmapEncoder> encoder;
    Require(factory->CreateEncoder(ContainerOf(kind), nullptr, encoder.GetAddressOf()),
            "no encoder for this kind of file");
    Require(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache), kFailed);
    ComPtr<IWICBitmapFrameEncode> frame;
    ComPtr<IPropertyBag2> options;
    Require(encoder->CreateNewFrame(frame.GetAddressOf(), options.GetAddressOf()), kFailed);
    if (kind == FileKind::kTiff) SetOption(options.Get(), L"TiffCompressionMethod", WICTiffCompressionNone);
    if (kind == FileKind::kPng && plainRows) SetOption(options.Get(), L"FilterOption", WICPngFilterNone);
    Require(frame->Initialize(options.Get()), kFailed);
    Require(frame->SetSize(static_cast<UINT>(image.width), static_cast<UINT>(image.height)), kFailed);
    if (image.dpiX > 0 && image.dpiY > 0) Require(frame->SetResolution(image.dpiX, image.dpiY), kFailed);
    const GUID& wanted = *kFormats[static_cast<size_t>(image.layout)].format;
    WICPixelFormatGUID format = wanted;
    Require(frame->SetPixelFormat(&format), kFailed);
    if (format != wanted) throw ToolError("this system's encoder can't keep the picture's channels in such a file");
    if (!image.palette.empty()) {
        ComPtr<IWICPalette> palette;
        std::vector<WICColor> colors(image.palette.begin(), image.palette.end());
        Require(factory->CreatePalette(palette.GetAddressOf()), kFailed);
        Require(palette->InitializeCustom(colors.data(), static_cast<UINT>(colors.size())), kFailed);
        Require(frame->SetPalette(palette.Get()), kFailed);
    }
    const UINT height = static_cast<UINT>(image.height);
    const UINT bandRows = static_cast<UINT>(std::max<size_t>(1, kBandBytes / rowBytes));
    for (UINT y = 0; y < height; y += bandRows) {
        const UINT rows = std::min(bandRows, height - y);
        Require(frame->WritePixels(rows, static_cast<UINT>(rowBytes), static_cast<UINT>(rowBytes * rows),
                                   // It only reads them. NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
                                   const_cast<BYTE*>(&image.rows[rowBytes * y])),
                kFailed);
    }
    Require(frame->Commit(), kFailed);
    Require(encoder->Commit(), kFailed);
    return stream->TakeBytes();
}

}  // namespace stairmelt
