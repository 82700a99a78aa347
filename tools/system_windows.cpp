#include <windows.h>
// After windows.h, whose types it uses.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <atomic>
#include <cstdlib>

#include "tools/file_bytes.h"
#include "tools/messages.h"
#include "tools/system.h"

namespace stairmelt {
namespace {

enum class Attitude { kEnd, kRemember, kIgnore };

std::atomic<Attitude> gAttitude = Attitude::kEnd;
std::atomic<bool> gIsInterrupted = false;
UINT gCodePage = 0;  // the console's, to be restored

// Called on a system thread.
BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    const bool isFirst = !gIsInterrupted.exchange(true);
    const Attitude attitude = gAttitude;
    if (attitude == Attitude::kEnd || (attitude == Attitude::kRemember && !isFirst)) {
        // End at once: a regular exit could wait for a lock that another thread holds.
        TerminateProcess(GetCurrentProcess(), kInterruptedStatus);
    }
    return TRUE;
}

LONG WINAPI EndAtOnce(EXCEPTION_POINTERS* crash) {
    TerminateProcess(GetCurrentProcess(), crash->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void PrepareSystem() {
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    // A plug-in that can't be loaded is reported in one line instead of a message box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    gCodePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    if (gCodePage != 0) std::atexit([] { SetConsoleOutputCP(gCodePage); });
    // Scripts on Linux expect lines to end with a line feed alone.
    for (const int stream : {1, 2}) _setmode(stream, ProgramName() == "runfilter" ? _O_TEXT : _O_BINARY);
}

void RememberFirstInterrupt() { gAttitude = Attitude::kRemember; }
bool IsInterrupted() { return gIsInterrupted; }

void PrepareWorker() {
    gAttitude = Attitude::kIgnore;
    SetErrorMode(GetErrorMode() | SEM_NOGPFAULTERRORBOX);
    SetUnhandledExceptionFilter(EndAtOnce);
}

// The arguments of main are in the system's code page, which can't hold all names.
std::vector<std::string> CommandLineWords(int, char**) {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i) texts.push_back(PathText(words[i]));
    LocalFree(words);
    return texts;
}

std::filesystem::path ProgramPath() {
    constexpr DWORD kMaxPath = 32768;  // characters
    std::wstring program(kMaxPath, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), kMaxPath));
    return program;
}

std::filesystem::path SettingsFolder() {
    const wchar_t* const folder = _wgetenv(L"APPDATA");
    return folder != nullptr ? std::filesystem::path(folder) / "stairmelt" : ProgramPath().parent_path();
}

size_t TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    return GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) ? static_cast<size_t>(info.dwSize.X) : 0;
}

void RequireSupported(const Arguments& arguments) {
    if (!arguments.about && !arguments.dialog) return;
    const HWND window = CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (window == nullptr) throw ToolError("a dialog needs a display, and there is none");
    DestroyWindow(window);
}

}  // namespace stairmelt
