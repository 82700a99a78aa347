// The processes of a batch. Each runs this program with its own instance of the plug-in: it reads a line for each
// picture, "IN\tOUT", and answers with a line (batch_answer.h), until its input ends. When the process that started it
// ends for any reason, the system ends it, too. On systems other than Windows, a worker is part of this process.
#pragma once

#include <memory>
#include <string>

#include "tools/arguments.h"
#include "tools/batch/batch_answer.h"
#include "tools/batch/batch_list.h"
#include "tools/filter/picture_filter.h"

namespace stairmelt {

// A worker as its parent process sees it.
class BatchWorker {
public:
    // Starts the process and passes it the values, the plug-in and the settings file. Throws ToolError. May be called
    // by several threads at once.
    explicit BatchWorker(const Arguments& arguments);
    ~BatchWorker();  // closes its input and waits until it has ended
    BatchWorker(const BatchWorker&) = delete;
    BatchWorker& operator=(const BatchWorker&) = delete;

    // Filters the picture in the worker and waits for the outcome.
    BatchAnswer Ask(const BatchItem& item);

    bool HasEnded() const { return hasEnded_; }  // usually because the plug-in has crashed

private:
    struct Process;
    std::unique_ptr<Process> process_;
    bool hasEnded_ = false;
};

// The worker's side. A failure is an answer, too, and its message begins with the name of the picture or its result.
BatchAnswer FilterItem(PictureFilter& filter, const BatchItem& item);

// Processes lines until the input ends. Then each worker stores the values: they are the same for all workers, and any
// worker may have failed on all its pictures.
void RunWorker(PictureFilter& filter);

}  // namespace stairmelt
