// Reads JPEG files with libjpeg-turbo.
#include <cstdio>
// After cstdio, whose types they use.
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "tools/pictures/codecs.h"
#include "tools/pictures/picture_file.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

using namespace std::string_view_literals;

constexpr int kExifMarker = JPEG_APP0 + 1, kProfileMarker = JPEG_APP0 + 2;

struct JpegFile : LibraryFile {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};

    JpegFile() {
        jpeg.err = jpeg_std_error(&errors);
        jpeg.client_data = this;
        errors.error_exit = OnError;
        errors.emit_message = OnWarning;
    }
    // Reads everything before the pixels.
    explicit JpegFile(std::span<const uint8_t> bytes) : JpegFile() {
        input = bytes;
        Do([&] {
            jpeg_create_decompress(&jpeg);
            jpeg_mem_src(&jpeg, input.data(), static_cast<unsigned long>(input.size()));
            constexpr unsigned kWhole = 0xFFFF;
            for (const int marker : {JPEG_COM, kExifMarker, kProfileMarker}) jpeg_save_markers(&jpeg, marker, kWhole);
            jpeg_read_header(&jpeg, TRUE);
        });
    }
    ~JpegFile() { jpeg_destroy_decompress(&jpeg); }
    JpegFile(const JpegFile&) = delete;
    JpegFile& operator=(const JpegFile&) = delete;

    [[noreturn]] static void OnError(j_common_ptr jpeg) {
        char message[JMSG_LENGTH_MAX];
        jpeg->err->format_message(jpeg, message);
        static_cast<JpegFile*>(jpeg->client_data)->Leave(message);
    }
    // The library only warns about missing pixels and makes some up.
    static void OnWarning(j_common_ptr jpeg, int level) {
        constexpr int kFatal[] = {JWRN_HIT_MARKER, JWRN_HUFF_BAD_CODE, JWRN_JPEG_EOF, JWRN_MUST_RESYNC};
        if (level < 0 && std::ranges::find(kFatal, jpeg->err->msg_code) != std::end(kFatal)) OnError(jpeg);
    }

    bool IsCmyk() const { return jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK; }
};

void ReadMarkers(JpegFile& file, Picture& picture) {
    for (const jpeg_marker_struct* marker = file.jpeg.marker_list; marker != nullptr; marker = marker->next) {
        constexpr std::string_view kExif = "Exif\0\0"sv, kXmp = "http://ns.adobe.com/xap/1.0/\0"sv;
        const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
        if (marker->marker == JPEG_COM) {
            picture.texts.push_back({"Comment", std::string(data)});
            std::erase(picture.texts.back().text, '\0');
        } else if (data.starts_with(kExif)) {
            SetExif({marker->data + kExif.size(), data.size() - kExif.size()}, picture);
        } else if (data.starts_with(kXmp)) {
            picture.texts.push_back({kXmpKeyword, std::string(data.substr(kXmp.size()))});
        }
    }
    JOCTET* profile = nullptr;
    unsigned size = 0;
    file.Do([&] { jpeg_read_icc_profile(&file.jpeg, &profile, &size); });
    if (profile != nullptr) picture.profile.assign(profile, profile + size);
    std::free(profile);  // NOLINT(cppcoreguidelines-no-malloc): the library's

    constexpr double kToInches[] = {0, 1, 2.54};  // by the unit: none, inch, centimetre
    if (file.jpeg.saw_JFIF_marker == 0 || file.jpeg.density_unit >= std::size(kToInches)) return;
    picture.dpiX = file.jpeg.X_density * kToInches[file.jpeg.density_unit];
    picture.dpiY = file.jpeg.Y_density * kToInches[file.jpeg.density_unit];
}

}  // namespace

void ReadJpeg(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture) {
    JpegFile file(bytes);
    jpeg_decompress_struct& jpeg = file.jpeg;
    if (jpeg.jpeg_color_space != JCS_GRAYSCALE) jpeg.out_color_space = file.IsCmyk() ? JCS_CMYK : JCS_RGB;
    file.Do([&] { jpeg_start_decompress(&jpeg); });
    picture.width = static_cast<int32_t>(jpeg.output_width);
    picture.height = static_cast<int32_t>(jpeg.output_height);
    picture.colors = jpeg.output_components;
    picture.depth = 8;
    ReadMarkers(file, picture);
    AllocateSamples(bytes.size(), maxSamples, picture);
    file.Do([&] {
        while (jpeg.output_scanline < jpeg.output_height) {
            JSAMPROW row = picture.Row(jpeg.output_scanline);
            jpeg_read_scanlines(&jpeg, &row, 1);
        }
        jpeg_finish_decompress(&jpeg);
    });
    // With this marker, the four inks are stored inverted.
    if (picture.colors == 4 && jpeg.saw_Adobe_marker)
        for (uint8_t& sample : picture.samples) sample = static_cast<uint8_t>(255 - sample);
}

bool IsCmykJpeg(const std::filesystem::path& path) {
    constexpr size_t kHeader = size_t{1} << 20;  // includes profile and preview
    Bytes head(kHeader);
    std::ifstream stream(path, std::ios::binary);
    stream.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(stream.gcount()));
    try {
        return JpegFile(head).IsCmyk();
    } catch (const ToolError&) {
        return false;
    }
}

}  // namespace stairmelt
