// A file that is written under a temporary name and renamed once it is finished. If the program ends before, even by
// being killed, the file is deleted: on Windows, the system does so. A symbolic link stays a link, and its target is
// replaced. Functions throw ToolError.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace stairmelt {

class UnfinishedFile {
public:
    // Named like `place` with a suffix. Overwrites a file of that name left by a program that was killed between the
    // last two steps of Finish, each of which is a single system call.
    explicit UnfinishedFile(const std::filesystem::path& place);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    void Write(std::span<const uint8_t> bytes);
    void Finish();  // in its place from now on, where another file may have been; nothing is written after it

private:
    struct Handle;  // the system's
    std::filesystem::path place_;
    std::unique_ptr<Handle> handle_;  // null once finished
};

}  // namespace stairmelt
