#include "tools/batch/batch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <mutex>
#include <system_error>
#include <thread>

#include "tools/batch/batch_list.h"
#include "tools/batch/batch_worker.h"
#include "tools/file_bytes.h"
#include "tools/messages.h"
#include "tools/system.h"

namespace stairmelt {
namespace {

namespace fs = std::filesystem;

// The user's view of the batch. Several threads report their pictures to it.
class BatchScreen {
public:
    explicit BatchScreen(size_t total) { counts_.total = total; }

    void Report(const BatchItem& item, const BatchAnswer& answer) {
        const std::lock_guard lock(mutex_);
        if (!answer.values.empty() && !hasValues_) {
            hasValues_ = true;  // all pictures have the same ones
            ClearBar();
            stairmelt::PrintLine(answer.values);
        }
        ++(answer.isSmoothed ? counts_.smoothed : counts_.failed);
        const std::string name = PathText(item.in);
        if (!answer.isSmoothed) {
            PrintError(answer.message);
            PrintLine(name + " failed");
        } else {
            if (!answer.message.empty()) PrintError(name + ": " + answer.message);
            PrintLine(name + ", " + std::to_string(answer.changedPixels) + " pixels changed");
        }
        DrawBar(false);
    }

    void ReportSkipped(const BatchItem& item) {
        const std::lock_guard lock(mutex_);
        ++counts_.skipped;
        PrintLine(PathText(item.in) + " skipped");
        DrawBar(false);
    }

    BatchCounts Close() {
        DrawBar(true);
        if (isTerminal_) std::printf("\n");
        stairmelt::PrintLine(BatchSummary(counts_, Seconds()));
        return counts_;
    }

private:
    using Clock = std::chrono::steady_clock;

    double Seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

    void PrintLine(const std::string& text) const {
        if (isTerminal_) return;
        std::printf("%zu of %zu: %s\n", counts_.Ended(), counts_.total, text.c_str());
        std::fflush(stdout);
    }

    void PrintError(const std::string& text) {
        ClearBar();
        stairmelt::PrintError(text);
    }

    void ClearBar() {
        if (!isTerminal_) return;
        std::printf("\r%*s\r", static_cast<int>(columns_), "");
        std::fflush(stdout);
        lastDrawn_ = {};
    }

    void DrawBar(bool isLast) {
        if (!isTerminal_) return;
        // Terminals are slow, and more often would be unreadable.
        constexpr std::chrono::milliseconds kBetweenBars(100);
        const Clock::time_point now = Clock::now();
        if (!isLast && now - lastDrawn_ < kBetweenBars) return;
        lastDrawn_ = now;
        std::string bar = ProgressBar(counts_, Seconds(), columns_);
        bar.resize(columns_, ' ');  // overwrites the end of a longer one
        std::printf("\r%s", bar.c_str());
        std::fflush(stdout);
    }

    std::mutex mutex_;
    BatchCounts counts_;
    bool hasValues_ = false;
    const bool isTerminal_ = TerminalColumns() != 0;
    // Writing to the last column may start a new line on some terminals.
    const size_t columns_ = std::max<size_t>(TerminalColumns(), 41) - 1;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawn_ = {};
};

// The remaining pictures, shared by several threads.
class WorkList {
public:
    explicit WorkList(std::vector<BatchItem> items) : items_(std::move(items)) {}

    size_t size() const { return items_.size(); }
    // Null if none remains, or after an interrupt.
    const BatchItem* Next() {
        if (IsInterrupted()) return nullptr;
        const size_t index = next_++;
        return index < items_.size() ? &items_[index] : nullptr;
    }

private:
    std::vector<BatchItem> items_;
    std::atomic<size_t> next_ = 0;
};

// Filters a picture in a worker process, which is started on demand and again after a crash. Empty if an interrupt
// ended the process before it was ready to handle one.
std::optional<BatchAnswer> Ask(std::unique_ptr<BatchWorker>& worker, const BatchItem& item,
                               const Arguments& arguments) {
    try {
        if (worker == nullptr || worker->HasEnded()) worker = std::make_unique<BatchWorker>(arguments);
        const BatchAnswer answer = worker->Ask(item);
        if (worker->HasEnded() && IsInterrupted()) return std::nullopt;
        return answer;
    } catch (...) {
        return Failed(item.in, DescribeException());
    }
}

// The thread that feeds one process.
void FilterByWorker(WorkList& work, BatchScreen& screen, const Arguments& arguments) {
    std::unique_ptr<BatchWorker> worker;
    while (const BatchItem* item = work.Next()) {
        std::error_code error;
        if (!item->refusal.empty())
            screen.Report(*item, Failed(item->in, item->refusal));
        else if (arguments.skipExisting && fs::exists(item->out, error))
            screen.ReportSkipped(*item);
        else if (const std::optional<BatchAnswer> answer = Ask(worker, *item, arguments))
            screen.Report(*item, *answer);
    }
}

std::string ReadInput() { return {std::istreambuf_iterator<char>(std::cin), {}}; }

std::string TextOf(const fs::path& file) {
    const Bytes bytes = LoadFile(file);
    return {bytes.begin(), bytes.end()};
}

std::vector<std::string> FilesOf(const Arguments& arguments) {
    std::vector<std::string> words = arguments.files;
    for (const fs::path& list : arguments.lists) {
        const std::string text = With(list, [&] { return list == "-" ? ReadInput() : TextOf(list); });
        const std::vector<std::string> lines = LinesOf(text);
        words.insert(words.end(), lines.begin(), lines.end());
    }
    if (words.empty()) throw ToolError("the list is empty");
    return words;
}

// Loads plug-in and settings once, so that a failure is reported only once and not for each picture.
void RequireFilter(const Arguments& arguments) {
    const PictureFilter filter(*arguments.plugin, *arguments.settings, arguments.Request());
}

void RunWorkers(WorkList& work, BatchScreen& screen, const Arguments& arguments) {
    std::vector<std::jthread> threads;
    try {
        for (int32_t i = 0; i < arguments.jobs; ++i)
            threads.emplace_back([&] { FilterByWorker(work, screen, arguments); });
    } catch (const std::system_error&) {
        // The system has no more threads; continue with those already started.
        if (threads.empty()) throw ToolError("can't start another process");
    }
}

}  // namespace

BatchResult RunBatch(const Arguments& arguments) {
    const std::vector<std::string> words = FilesOf(arguments);
    const fs::path& directory = *arguments.outDirectory;
    std::error_code error;
    fs::create_directories(directory, error);
    if (!fs::is_directory(directory, error)) throw ToolError(PathText(directory) + ": can't be created");

    WorkList work(ListBatch(words, directory));
    RequireFilter(arguments);
    RememberFirstInterrupt();
    BatchScreen screen(work.size());
    RunWorkers(work, screen, arguments);
    const BatchCounts counts = screen.Close();
    return {counts, IsInterrupted() && counts.Ended() < counts.total};
}

}  // namespace stairmelt
