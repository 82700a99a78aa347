// The processes of a batch. Each is this program again, with a plug-in of its own: it reads a line for each picture,
// "IN\tOUT", and answers with a line (batch_answer.h), until its input ends. When the process that started it ends
// for any reason, the system ends it, too. On other systems than Windows a worker is part of this process.
#pragma once

#include <memory>
#include <string>

#include "tools/arguments.h"
#include "tools/batch/batch_answer.h"
#include "tools/batch/batch_list.h"
#include "tools/filter/picture_filter.h"

namespace stairmelt {

// A worker, as seen by the process that started it.
class BatchWorker {
public:
    // Starts the process, which gets the values and the files' names of `arguments`. Throws ToolError. May be called by
    // several threads.
    explicit BatchWorker(const Arguments& arguments);
    ~BatchWorker();  // ends its input and waits until it has ended
    BatchWorker(const BatchWorker&) = delete;
    BatchWorker& operator=(const BatchWorker&) = delete;

    // Filters the picture in the worker and waits for the outcome.
    BatchAnswer Ask(const BatchItem& item);

    bool HasEnded() const { return hasEnded_; }  // it is of no more use: the plug-in has crashed, as a rule

private:
    struct Process;
    std::unique_ptr<Process> process_;
    bool hasEnded_ = false;
};

// The worker's own parts. A failure is an answer, too; it always names the picture or its result.
BatchAnswer FilterItem(PictureFilter& filter, const BatchItem& item);

// Answers all questions. Each stores the values at its end: they are the same for all workers, and any of them may have
// failed on all its pictures.
void RunWorker(PictureFilter& filter);

}  // namespace stairmelt
