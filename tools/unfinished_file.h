// A file that is written under a temporary name and renamed once it is finished. An unfinished file is deleted, on
// Windows even if the program is killed. A symbolic link stays a link, and its target is replaced. Functions throw
// ToolError.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace stairmelt {

class UnfinishedFile {
public:
    // The temporary name is `place` with a suffix. Overwrites a file of that name: a program that was killed between
    // the last two system calls of Finish has left it.
    explicit UnfinishedFile(const std::filesystem::path& place);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    void Write(std::span<const uint8_t> bytes);
    void Finish();  // renames it to `place`, replacing a file there; nothing may be written afterwards

private:
    struct Handle;
    std::filesystem::path place_;
    std::unique_ptr<Handle> handle_;  // null once finished
};

}  // namespace stairmelt
