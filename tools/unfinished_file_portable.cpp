// The program itself deletes the file. If it is killed, the file stays.
#include <fstream>
#include <random>
#include <system_error>

#include "tools/tool_error.h"
#include "tools/unfinished_file.h"

namespace stairmelt {

namespace fs = std::filesystem;

struct UnfinishedFile::Handle {
    fs::path path;
    std::ofstream stream;
};

UnfinishedFile::UnfinishedFile(const fs::path& place) : place_(place), handle_(std::make_unique<Handle>()) {
    std::error_code error;
    for (int links = 0; links < 40 && fs::is_symlink(place_, error); ++links)
        place_ = place_.parent_path() / fs::read_symlink(place_, error);  // even if its target is missing
    handle_->path = place_;
    // Another node of a farm may be writing to the same place.
    handle_->path += ".unfinished" + std::to_string(std::random_device()());
    handle_->stream.open(handle_->path, std::ios::binary | std::ios::trunc);
    if (!handle_->stream) throw ToolError("can't be written: its directory is missing or not writable");
}

UnfinishedFile::~UnfinishedFile() {
    if (!handle_) return;
    handle_->stream.close();
    std::error_code ignored;
    fs::remove(handle_->path, ignored);
}

void UnfinishedFile::Write(std::span<const uint8_t> bytes) {
    handle_->stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    handle_->stream.flush();
    if (!handle_->stream) throw ToolError("can't be written: the disk is full or failing");
}

void UnfinishedFile::Finish() {
    handle_->stream.close();
    std::error_code error;
    fs::rename(handle_->path, place_, error);
    if (error) throw ToolError("can't be replaced: it is in use or protected");
    handle_.reset();
}

}  // namespace stairmelt
