// What the program says, in whole lines: a console shows what it is given piece by piece.
#pragma once

#include <string>

namespace stairmelt {

// At the program's start, before anything is said.
void PrepareMessages();

// "runfilter", or the name of the script that runs the tool: STAIRMELT_COMMAND in the environment.
std::string ProgramName();

// A line, or several, on the output.
void PrintLine(const std::string& text);

// A line on the error output, behind the program's name.
void PrintError(const std::string& text);

}  // namespace stairmelt
