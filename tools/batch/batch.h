// Filters many pictures in one or more processes, each of which loads the plug-in once. A picture that fails, even by
// crashing the plug-in, is reported on the error output, and the remaining ones are still processed.
#pragma once

#include "tools/arguments.h"
#include "tools/batch/progress.h"

namespace stairmelt {

struct BatchResult {
    BatchCounts counts;
    bool isInterrupted = false;  // by the user; pictures in progress are finished, the remaining ones aren't processed
};

// `arguments` must name the plug-in and the settings file. Prints a progress bar on a terminal, otherwise a line for
// each picture, and then a summary. Throws ToolError if no picture can be processed at all.
BatchResult RunBatch(const Arguments& arguments);

}  // namespace stairmelt
