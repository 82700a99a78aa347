// A file that is written beside its place and takes it when it is finished. Otherwise it goes away, however the program
// ends: on Windows it is the system that deletes it. Functions throw ToolError.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace stairmelt {

class UnfinishedFile {
public:
    // Beside `place`, with something behind its name. A file that is left over from a program that ended between the
    // last two steps of Finish, each a single call of the system, is taken over.
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
