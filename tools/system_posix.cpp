#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "tools/system.h"

namespace stairmelt {
namespace {

std::atomic<bool> gRemembersFirst = false, gIsInterrupted = false;  // lock-free, as required in a signal handler

void OnInterrupt(int) {
    if (gIsInterrupted.exchange(true) || !gRemembersFirst) _exit(kInterruptedStatus);
}

}  // namespace

void PrepareSystem() { signal(SIGINT, OnInterrupt); }
void RememberFirstInterrupt() { gRemembersFirst = true; }
bool IsInterrupted() { return gIsInterrupted; }
void PrepareWorker() { signal(SIGINT, SIG_IGN); }

std::vector<std::string> CommandLineWords(int count, char** words) { return {words + 1, words + count}; }

std::filesystem::path ProgramPath() { return std::filesystem::read_symlink("/proc/self/exe"); }

std::filesystem::path SettingsFolder() {
    const char* const home = std::getenv("HOME");
    return home != nullptr ? std::filesystem::path(home) / ".config/stairmelt" : ProgramPath().parent_path();
}

size_t TerminalColumns() { return 0; }  // render farms log the output, so there is no progress bar

void RequireSupported(const Arguments& arguments) {
    if (arguments.about || arguments.dialog || arguments.plugin || arguments.jobs != 1)
        throw UsageError("--about, --dialog, --plugin and --jobs are options of runfilter.exe only");
}

}  // namespace stairmelt
