// Until it is finished, the file is marked for deletion: Windows removes it when its handle is closed, even if the
// program is killed.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tools/retry.h"
#include "tools/tool_error.h"
#include "tools/unfinished_file.h"

namespace stairmelt {

namespace fs = std::filesystem;

struct UnfinishedFile::Handle {
    HANDLE handle;

    void SetToBeDeleted(bool isToBeDeleted) const {
        FILE_DISPOSITION_INFO disposition = {isToBeDeleted};
        SetFileInformationByHandle(handle, FileDispositionInfo, &disposition, sizeof(disposition));
    }
};

namespace {

// The full path of the file, with links resolved. Wine doesn't show links, but does report their targets.
fs::path FollowLinks(const fs::path& place) {
    constexpr DWORD kMaxPath = 32768;  // characters
    std::wstring target(kMaxPath, L'\0');
    DWORD length = 0;
    const HANDLE handle = CreateFileW(place.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        length = GetFinalPathNameByHandleW(handle, target.data(), kMaxPath, 0);  // fails on some drives
        CloseHandle(handle);
    }
    if (length == 0 || length > kMaxPath) return fs::absolute(place).make_preferred();
    target.resize(length);
    return target;
}

}  // namespace

UnfinishedFile::UnfinishedFile(const fs::path& place) : place_(FollowLinks(place)) {
    for (int i = 0;; ++i) {
        fs::path temporary = place_;
        temporary += ".unfinished" + (i == 0 ? "" : std::to_string(i));
        const HANDLE handle =
            CreateFileW(temporary.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        if (handle != INVALID_HANDLE_VALUE) {
            handle_ = std::unique_ptr<Handle>(new Handle{handle});
            handle_->SetToBeDeleted(true);
            return;
        }
        // Another process may be writing to the same file.
        constexpr int kMaxProcesses = 8;
        const DWORD error = GetLastError();
        if ((error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED) || i == kMaxProcesses)
            throw ToolError("can't be written: its directory is missing or not writable");
    }
}

UnfinishedFile::~UnfinishedFile() {
    if (handle_) CloseHandle(handle_->handle);
}

void UnfinishedFile::Write(std::span<const uint8_t> bytes) {
    constexpr size_t kMaxPiece = 1 << 30;  // WriteFile takes a 32-bit size
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kMaxPiece));
        if (!WriteFile(handle_->handle, bytes.data(), size, &written, nullptr) || written != size)
            throw ToolError("can't be written: the disk is full or failing");
        bytes = bytes.subspan(size);
    }
}

void UnfinishedFile::Finish() {
    const std::wstring& name = place_.native();
    std::vector<uint8_t> memory(sizeof(FILE_RENAME_INFO) + name.size() * sizeof(wchar_t));
    auto* const rename = reinterpret_cast<FILE_RENAME_INFO*>(memory.data());  // zeroed
    rename->ReplaceIfExists = TRUE;
    rename->FileNameLength = static_cast<DWORD>(name.size() * sizeof(wchar_t));
    std::memcpy(rename->FileName, name.data(), rename->FileNameLength);

    const auto renames = [&] {
        handle_->SetToBeDeleted(false);
        const auto size = static_cast<DWORD>(memory.size());
        if (SetFileInformationByHandle(handle_->handle, FileRenameInfo, rename, size)) return true;
        handle_->SetToBeDeleted(true);
        return false;
    };
    if (!RetryBriefly(renames)) throw ToolError("can't be replaced: it is in use or protected");
    CloseHandle(handle_->handle);
    handle_.reset();
}

}  // namespace stairmelt
