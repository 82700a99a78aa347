#include "tools/file_bytes.h"

#include <fstream>
#include <system_error>

#include "tools/tool_error.h"

namespace stairmelt {

namespace fs = std::filesystem;

namespace {

fs::path FreeNameBeside(const fs::path& path) {
    std::error_code error;
    for (int i = 0;; ++i) {
        fs::path beside = path;
        beside += ".new" + std::to_string(i);
        if (!fs::exists(beside, error)) return beside;
    }
}

}  // namespace

std::string PathText(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path PathFromText(const std::string& text) { return std::u8string(text.begin(), text.end()); }

Bytes LoadFile(const fs::path& path) {
    std::error_code error;
    if (!fs::exists(path, error)) throw ToolError("there is no such file");
    if (fs::is_directory(path, error)) throw ToolError("is a directory");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ToolError("can't be opened");
    const uintmax_t size = fs::file_size(path, error);
    if (error) throw ToolError("can't be read");
    Bytes bytes(static_cast<size_t>(size));
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (static_cast<size_t>(file.gcount()) != bytes.size()) throw ToolError("can't be read");
    return bytes;
}

void StoreFile(const fs::path& path, std::span<const uint8_t> bytes) {
    std::error_code error;
    if (fs::is_directory(path, error)) throw ToolError("is a directory");
    const fs::path beside = FreeNameBeside(path);
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    if (!file) throw ToolError("can't be written: its directory is missing or doesn't allow it");
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        fs::remove(beside, error);
        throw ToolError("can't be written: the disk is full or failing");
    }
    fs::rename(beside, path, error);
    if (error) {
        std::error_code ignored;
        fs::remove(beside, ignored);
        throw ToolError("can't be replaced: it is in use or protected");
    }
}

}  // namespace stairmelt
