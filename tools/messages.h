// The program's messages, written in whole lines: a console would show parts as they arrive.
#pragma once

#include <string>

namespace stairmelt {

// "runfilter", or the name of the script that runs the tool: STAIRMELT_COMMAND in the environment.
std::string ProgramName();

// Prints one or more lines to the standard output.
void PrintLine(const std::string& text);

// Prints a line to the error output, after the program's name.
void PrintError(const std::string& text);

// Call it in a catch block: describes the caught exception in one line of UTF-8.
std::string DescribeException();

}  // namespace stairmelt
