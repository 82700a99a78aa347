#include "tools/filter/picture_filter.h"

#include <system_error>

#include "tools/file_bytes.h"
#include "tools/messages.h"
#include "tools/pictures/picture_file.h"

namespace stairmelt {

namespace fs = std::filesystem;

PictureFilter::PictureFilter(const fs::path& plugin, const fs::path& settings, const FilterRequest& request)
    : pluginPath_(plugin),
      settingsPath_(settings),
      request_(request),
      plugin_(With(plugin, [&] { return PluginLibrary(plugin); })),
      loaded_(With(settings, [&] { return LoadSettings(settings); })),
      settings_(loaded_) {}

FilterReport PictureFilter::Filter(const fs::path& in, const fs::path& out,
                                   const std::function<void(const Picture&)>& onRead) {
    With(out, [&] {
        std::error_code error;
        if (fs::equivalent(in, out, error)) throw ToolError("is the input file, which would be overwritten");
        RequireReplaceable(out);
    });
    // Read the picture first: in a batch, the result is named after the picture, and a message about an unreadable
    // format should name the picture.
    Picture picture = With(in, [&] { return ReadPicture(in); });
    const FileKind kind = With(out, [&] { return KindToWrite(out); });
    With(out, [&] { RequireWritable(picture, kind); });
    if (onRead) onRead(picture);
    host_.faults.clear();  // the previous picture's
    FilterReport report =
        With(pluginPath_.filename(), [&] { return RunFilterOn(host_, plugin_.entry(), request_, picture, settings_); });
    isBeyondDialog_ = !RangeText(report).empty();
    if (picture.morePages) report.notes.push_back("only the first of its pictures is read");
    With(out, [&] { StoreFile(out, EncodePicture(picture, kind)); });
    return report;
}

void PictureFilter::Remember() {
    if (settings_ == loaded_ || isBeyondDialog_) return;
    try {
        std::error_code error;  // ignored, since StoreSettings then fails, too
        if (settingsPath_.has_parent_path()) fs::create_directories(settingsPath_.parent_path(), error);
        StoreSettings(settingsPath_, settings_);
        loaded_ = settings_;
    } catch (const ToolError& error) {
        PrintError(PathText(settingsPath_) + ": " + error.what());
    }
}

}  // namespace stairmelt
