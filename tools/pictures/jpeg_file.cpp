// JPEG files, by libjpeg-turbo. They are only read.
#include <cstdio>
// After cstdio, whose types they use.
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>

#include "tools/pictures/codecs.h"
#include "tools/pictures/picture_file.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

using namespace std::string_view_literals;

constexpr int kExifMarker = JPEG_APP0 + 1, kProfileMarker = JPEG_APP0 + 2;

struct JpegFile {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    std::jmp_buf jump{};
    std::array<char, JMSG_LENGTH_MAX> message{};
    JOCTET* profile = nullptr;

    JpegFile() {
        jpeg.err = jpeg_std_error(&errors);
        jpeg.client_data = this;
        errors.error_exit = OnError;
        errors.emit_message = OnWarning;
    }
    ~JpegFile() {
        jpeg_destroy_decompress(&jpeg);
        std::free(profile);  // NOLINT(cppcoreguidelines-no-malloc): the library's
    }
    JpegFile(const JpegFile&) = delete;
    JpegFile& operator=(const JpegFile&) = delete;

    static void OnError(j_common_ptr jpeg) {
        auto* const file = static_cast<JpegFile*>(jpeg->client_data);
        jpeg->err->format_message(jpeg, file->message.data());
        std::longjmp(file->jump, 1);  // NOLINT(cert-err52-cpp)
    }
    // Where pixels are missing, the library makes some up and only warns.
    static void OnWarning(j_common_ptr jpeg, int level) {
        constexpr int kFatal[] = {JWRN_HIT_MARKER, JWRN_HUFF_BAD_CODE, JWRN_JPEG_EOF, JWRN_MUST_RESYNC};
        if (level < 0 && std::ranges::find(kFatal, jpeg->err->msg_code) != std::end(kFatal)) OnError(jpeg);
    }

    template <class Body>
    void Do(const Body& body) {
        if (!Completes(jump, body)) ThrowDamaged(message.data());
    }
};

// What stands behind the label of a marker that begins with it.
std::span<const uint8_t> Behind(std::string_view label, const jpeg_marker_struct& marker) {
    const std::span<const uint8_t> data(marker.data, marker.data_length);
    const bool fits = data.size() > label.size() && std::memcmp(data.data(), label.data(), label.size()) == 0;
    return fits ? data.subspan(label.size()) : std::span<const uint8_t>();
}

void ReadMarkers(JpegFile& file, Picture& picture) {
    for (const jpeg_marker_struct* marker = file.jpeg.marker_list; marker != nullptr; marker = marker->next) {
        const std::span<const uint8_t> exif = Behind("Exif\0\0"sv, *marker);
        const std::span<const uint8_t> xmp = Behind("http://ns.adobe.com/xap/1.0/\0"sv, *marker);
        if (marker->marker == JPEG_COM) {
            std::string text(reinterpret_cast<const char*>(marker->data), marker->data_length);
            std::erase(text, '\0');
            picture.texts.push_back({"Comment", std::move(text)});
        } else if (marker->marker == kExifMarker && !exif.empty()) {
            picture.exif = ReadExif(exif);
        } else if (marker->marker == kExifMarker && !xmp.empty()) {
            picture.xmp.assign(xmp.begin(), xmp.end());
        }
    }
    picture.orientation = TakeOrientation(picture.exif);
    unsigned size = 0;
    file.Do([&] {
        if (jpeg_read_icc_profile(&file.jpeg, &file.profile, &size) == 0) size = 0;
    });
    if (size != 0) picture.profile.assign(file.profile, file.profile + size);

    constexpr double kCentimetresPerInch = 2.54;
    const double scale = file.jpeg.density_unit == 1 ? 1 : file.jpeg.density_unit == 2 ? kCentimetresPerInch : 0;
    picture.dpiX = file.jpeg.saw_JFIF_marker ? file.jpeg.X_density * scale : 0;
    picture.dpiY = file.jpeg.saw_JFIF_marker ? file.jpeg.Y_density * scale : 0;
}

}  // namespace

void ReadJpeg(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture) {
    JpegFile file;
    jpeg_decompress_struct& jpeg = file.jpeg;
    file.Do([&] {
        jpeg_create_decompress(&jpeg);
        jpeg_mem_src(&jpeg, bytes.data(), static_cast<unsigned long>(bytes.size()));
        constexpr unsigned kWhole = 0xFFFF;
        for (const int marker : {JPEG_COM, kExifMarker, kProfileMarker}) jpeg_save_markers(&jpeg, marker, kWhole);
        jpeg_read_header(&jpeg, TRUE);
        const bool isCmyk = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
        if (jpeg.jpeg_color_space != JCS_GRAYSCALE) jpeg.out_color_space = isCmyk ? JCS_CMYK : JCS_RGB;
        jpeg_start_decompress(&jpeg);
    });
    picture.width = static_cast<int32_t>(jpeg.output_width);
    picture.height = static_cast<int32_t>(jpeg.output_height);
    picture.colors = jpeg.output_components;
    picture.depth = 8;
    ReadMarkers(file, picture);
    AllocateSamples(bytes.size(), maxSamples, picture);
    file.Do([&] {
        while (jpeg.output_scanline < jpeg.output_height) {
            JSAMPROW row = &picture.samples[jpeg.output_scanline * picture.RowBytes()];
            jpeg_read_scanlines(&jpeg, &row, 1);
        }
        jpeg_finish_decompress(&jpeg);
    });
    // With this marker, four inks are stored as what is left of white.
    if (picture.colors == 4 && jpeg.saw_Adobe_marker)
        for (uint8_t& sample : picture.samples) sample = static_cast<uint8_t>(255 - sample);
}

bool IsCmykJpeg(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::array<uint8_t, 10>
        head{};  // the beginning of a marker: its code, its length, and where it opens a frame, that
    const auto read = [&](size_t size) {
        return static_cast<bool>(file.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(size)));
    };
    if (!read(2) || head[0] != 0xFF || head[1] != 0xD8) return false;
    while (read(4) && head[0] == 0xFF) {
        const auto length = GetNumber<uint16_t>(&head[2], true);
        const uint8_t code = head[1];
        const bool opensFrame = code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
        if (opensFrame) return read(6) && head[5] == 4;
        if (code == 0xDA || length < 2) return false;
        file.seekg(length - 2, std::ios::cur);
    }
    return false;
}

}  // namespace stairmelt
