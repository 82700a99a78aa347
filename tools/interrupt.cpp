#include "tools/interrupt.h"

#include <windows.h>

#include <atomic>

namespace stairmelt {
namespace {

enum class Attitude { kEnd, kRemember, kIgnore };

std::atomic<Attitude> gAttitude = Attitude::kEnd;
std::atomic<bool> gIsInterrupted = false;

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

}  // namespace

void EndOnInterrupt() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }
void RememberFirstInterrupt() { gAttitude = Attitude::kRemember; }
bool IsInterrupted() { return gIsInterrupted; }
void IgnoreInterrupts() { gAttitude = Attitude::kIgnore; }

}  // namespace stairmelt
