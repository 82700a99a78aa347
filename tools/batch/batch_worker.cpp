#include "tools/batch/batch_worker.h"

#include <cstdio>
#include <iostream>

#include "tools/file_bytes.h"
#include "tools/messages.h"
#include "tools/system.h"

namespace stairmelt {

BatchAnswer FilterItem(PictureFilter& filter, const BatchItem& item) {
    try {
        const FilterReport report = filter.Filter(item.in, item.out);
        const std::string range = RangeText(report);
        BatchAnswer answer = {true, ValueText(report), report.changedPixels, {}};
        if (!range.empty()) answer.values += "\nnot remembered: " + range;
        for (const std::string& note : report.notes) answer.message += note + '\n';
        if (!report.faults.empty()) answer.message += "the plug-in breaks the host's rules: " + report.faults;
        return answer;
    } catch (...) {
        const std::string message = DescribeException();
        const bool hasName = message.starts_with(PathText(item.in)) || message.starts_with(PathText(item.out));
        return hasName ? BatchAnswer{false, {}, 0, message} : Failed(item.in, message);
    }
}

#ifndef _WIN32  // for Windows, see batch_process.cpp

struct BatchWorker::Process {
    PictureFilter filter;
};

BatchWorker::BatchWorker(const Arguments& arguments)
    : process_(new Process{{*arguments.plugin, *arguments.settings, arguments.Request()}}) {}
BatchWorker::~BatchWorker() { process_->filter.Remember(); }

// Converts the answer to a line and back, so that messages are the same as from a process.
BatchAnswer BatchWorker::Ask(const BatchItem& item) {
    return *ParseAnswer(AnswerLine(FilterItem(process_->filter, item)));
}

#endif

void RunWorker(PictureFilter& filter) {
    PrepareWorker();
    std::string line;
    while (std::getline(std::cin, line)) {
        const size_t tab = line.find('\t');
        if (tab == std::string::npos) continue;
        const BatchItem item = {PathFromText(line.substr(0, tab)), PathFromText(line.substr(tab + 1))};
        std::printf("%s\n", AnswerLine(FilterItem(filter, item)).c_str());
        std::fflush(stdout);
    }
    filter.Remember();
}

}  // namespace stairmelt
