// Filters many pictures in one or more processes, each of which loads the plug-in once. A picture that fails, even by
// crashing the plug-in, is reported on the error output, and the remaining ones are still processed.
#pragma once

#include "tools/arguments.h"
#include "tools/batch/progress.h"

namespace stairmelt {

struct BatchResult {
    BatchCounts counts;
    bool isInterrupted = false;  // by the user; what was in work then is finished, and the rest left
};

// `arguments` lists all files. Prints a progress bar on a terminal, or else a line for each picture, and then a
// summary. Throws ToolError if no picture can be processed at all.
BatchResult RunBatch(const Arguments& arguments);

}  // namespace stairmelt
