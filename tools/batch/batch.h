// Many pictures, filtered by one or more processes, each of which loads the plug-in once. A picture that fails is told
// on the error output, and the others go on, be it that the plug-in crashes on it.
#pragma once

#include "tools/arguments.h"
#include "tools/batch/progress.h"

namespace stairmelt {

struct BatchResult {
    BatchCounts counts;
    bool isInterrupted = false;  // by the user; what was in work then is finished, and the rest left
};

// `arguments` has all files by name. Prints a bar on a terminal and a line for each picture elsewhere, and a summary.
// Throws ToolError where nothing can be done at all.
BatchResult RunBatch(const Arguments& arguments);

}  // namespace stairmelt
