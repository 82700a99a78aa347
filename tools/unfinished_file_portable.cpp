// For tests on other systems: the program itself deletes the file.
#include <fstream>
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
    if (const fs::path target = fs::canonical(place, error); !error) place_ = target;
    handle_->path = place_;
    handle_->path += ".unfinished";
    handle_->stream.open(handle_->path, std::ios::binary | std::ios::trunc);
    if (!handle_->stream) throw ToolError("can't be written: its directory is missing or doesn't allow it");
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
