// The program's other dependencies on the system, with one implementation for each system.
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
constexpr int kInterruptedStatus = 130;  // the convention of shells

// From now on, the first interrupt is only recorded; a second one ends the program.
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

// The width of the standard output if it is a terminal, otherwise 0.
size_t TerminalColumns();

// Throws UsageError or ToolError if this system doesn't support what the user requests. Without a display, the dialog
// would fail silently and the picture would be filtered with other values.
void RequireSupported(const Arguments& arguments);

}  // namespace stairmelt
