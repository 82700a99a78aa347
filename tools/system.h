// What the program needs of the system besides files and the plug-in: one implementation for each system.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/arguments.h"

namespace stairmelt {

// Call it at the start of main, with main's arguments. Ctrl+C (or Ctrl+Break) ends the program with
// kInterruptedStatus from then on; by default the status might be 0.
void PrepareSystem();
constexpr int kInterruptedStatus = 130;  // as shells have it

// The first interrupt is only recorded from now on, the next one ends the program.
void RememberFirstInterrupt();
bool IsInterrupted();

// From now on, this process ignores interrupts, and a crash shows no error box and starts no debugger: the process that
// started it handles both.
void PrepareWorker();

// The words after the program's name, in UTF-8.
std::vector<std::string> CommandLineWords(int count, char** words);

std::filesystem::path ProgramPath();

// A folder that every user may write to, wherever the program is installed; if there is none, the program's own.
std::filesystem::path SettingsFolder();

// Width of the output if it is a terminal, else 0.
size_t TerminalColumns();

// Throws UsageError or ToolError if what the user asks for can't be had on this system. Without a display, the dialog
// would fail silently and the picture would be filtered with other values.
void RequireSupported(const Arguments& arguments);

}  // namespace stairmelt
