#include "tools/file_bytes.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <algorithm>
#include <cctype>
#include <fstream>
#include <system_error>

#include "tools/retry.h"
#include "tools/unfinished_file.h"

namespace stairmelt {

namespace fs = std::filesystem;

std::string PathText(const fs::path& path) {
    std::string readable;
    try {
        const std::u8string text = path.u8string();
        readable.assign(text.begin(), text.end());
    } catch (const std::system_error&) {
        // Windows allows unpaired surrogates in names, and they have no UTF-8 form.
        for (const auto character : path.native())
            readable += static_cast<uint32_t>(character) < 0x80 ? static_cast<char>(character) : '?';
    }
    return readable;
}

fs::path PathFromText(const std::string& text) { return std::u8string(text.begin(), text.end()); }

namespace {

bool IsDeviceName(std::string name) {
    for (char& character : name) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    for (const char* device : {"CON", "PRN", "AUX", "NUL"}) {
        if (name == device) return true;
    }
    return name.size() == 4 && (name.starts_with("COM") || name.starts_with("LPT")) && name[3] >= '1' && name[3] <= '9';
}

// Windows would report such a file as missing or open another one. Under Wine, files with such names exist.
void RequireWindowsName(const fs::path& path) {
    for (const fs::path& part : path.relative_path()) {
        const std::string name = PathText(part);
        if (name.empty() || name == "." || name == "..") continue;
        if (const size_t at = name.find_first_of("\"*?<>|:"); at != std::string::npos)
            throw ToolError("Windows doesn't allow " + name.substr(at, 1) + " in a file name");
        if (name.ends_with('.') || name.ends_with(' '))
            throw ToolError("Windows doesn't allow a file name that ends in a dot or a space");
        if (IsDeviceName(name.substr(0, name.find('.')))) throw ToolError("Windows reserves this name for a device");
    }
}

// True if a file isn't found because its folder can't be searched. On Windows, the runtime's error doesn't say so.
bool IsDenied([[maybe_unused]] const fs::path& path, [[maybe_unused]] const std::error_code& error) {
#ifdef _WIN32
    return GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES && GetLastError() == ERROR_ACCESS_DENIED;
#else
    return error == std::errc::permission_denied;
#endif
}

}  // namespace

Bytes LoadFile(const fs::path& path) {
    RequireWindowsName(path);
    std::error_code error;
    if (!fs::exists(path, error)) {
        if (IsDenied(path, error)) throw ToolError("you have no permission to open it");
        throw ToolError("there is no such file");
    }
    if (fs::is_directory(path, error)) throw ToolError("is a directory");
    std::ifstream file;
    const auto opens = [&] {
        file.open(path, std::ios::binary);
        return file.is_open();
    };
    if (!RetryBriefly(opens)) throw ToolError("can't be opened: no permission, or in use");
    const uintmax_t size = fs::file_size(path, error);
    if (error) throw ToolError("can't be read");
    Bytes bytes(static_cast<size_t>(size));
    // In pieces, since the Windows runtime can't read 2 GB at once.
    constexpr size_t kMaxPiece = 1 << 30;
    for (std::span<uint8_t> left = bytes; !left.empty();) {
        const std::span<uint8_t> piece = left.first(std::min(left.size(), kMaxPiece));
        file.read(reinterpret_cast<char*>(piece.data()), static_cast<std::streamsize>(piece.size()));
        if (static_cast<size_t>(file.gcount()) != piece.size()) throw ToolError("can't be read");
        left = left.subspan(piece.size());
    }
    return bytes;
}

void RequireReplaceable(const fs::path& path) {
    RequireWindowsName(path);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) throw ToolError("is a directory");
    if (fs::exists(status) && (status.permissions() & fs::perms::owner_write) == fs::perms::none)
        throw ToolError("is write-protected");
}

void StoreFile(const fs::path& path, std::span<const uint8_t> bytes) {
    RequireReplaceable(path);
    UnfinishedFile file(path);
    file.Write(bytes);
    file.Finish();
}

}  // namespace stairmelt
