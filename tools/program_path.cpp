#include "tools/program_path.h"

#include <windows.h>

#include <string>

namespace stairmelt {

std::filesystem::path ProgramPath() {
    std::wstring program(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
        if (length < program.size()) {
            program.resize(length);
            return program;
        }
        program.resize(program.size() * 2);
    }
}

}  // namespace stairmelt
