#include <windows.h>

#include <array>
#include <mutex>

#include "tools/batch/batch_worker.h"
#include "tools/file_bytes.h"
#include "tools/system.h"

namespace stairmelt {
namespace {

// Quotes a word the way the receiving program's runtime parses it: backslashes are doubled only before a quotation
// mark.
std::wstring Quoted(const std::wstring& word) {
    std::wstring text = L"\"";
    size_t backslashes = 0;
    for (const wchar_t character : word) {
        if (character == L'"') text.append(backslashes + 1, L'\\');
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        text += character;
    }
    return text.append(backslashes, L'\\') + L'"';
}

std::wstring WorkerCommand(const Arguments& arguments) {
    std::wstring command = Quoted(ProgramPath().wstring()) + L" --worker";
    const auto add = [&](const wchar_t* option, const std::wstring& value) {
        command += L' ' + Quoted(option + (L'=' + value));
    };
    if (arguments.plugin) add(L"--plugin", arguments.plugin->wstring());
    if (arguments.settings) add(L"--settings", arguments.settings->wstring());
    if (arguments.threshold) add(L"--threshold", std::to_wstring(*arguments.threshold));
    if (arguments.softness) add(L"--softness", std::to_wstring(*arguments.softness));
    if (arguments.bias) add(L"--bias", std::to_wstring(*arguments.bias));
    return command;
}

// Closes its handle when it is destroyed.
class Owned {
public:
    explicit Owned(HANDLE handle = nullptr) : handle_(handle) {}
    ~Owned() { Close(); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    void Close() {
        if (handle_ != nullptr) CloseHandle(handle_);
        handle_ = nullptr;
    }
    HANDLE* Place() { return &handle_; }
    operator HANDLE() const { return handle_; }

private:
    HANDLE handle_;
};

// The system ends all processes in this job when it closes the job's handle at the end of this process.
HANDLE JobThatEndsWithUs() {
    static const HANDLE job = [] {
        const HANDLE created = CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(created, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
        return created;
    }();
    return job;
}

}  // namespace

struct BatchWorker::Process {
    Owned process, input, output;
    std::string unread;  // output of the process after the last complete line
};

BatchWorker::BatchWorker(const Arguments& arguments) : process_(std::make_unique<Process>()) {
    // A process inherits every handle that is inheritable when it starts. Another worker started at the same time would
    // keep this one's input open forever.
    static std::mutex gOneAtATime;
    const std::lock_guard lock(gOneAtATime);

    Owned theirInput, theirOutput;
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    if (!CreatePipe(theirInput.Place(), process_->input.Place(), &inheritable, 0) ||
        !CreatePipe(process_->output.Place(), theirOutput.Place(), &inheritable, 0))
        throw ToolError("can't start another process");
    SetHandleInformation(process_->input, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(process_->output, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = theirInput;
    startup.hStdOutput = theirOutput;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made = {};
    // A process group of its own keeps Ctrl+C away from it until it can ignore it.
    std::wstring command = WorkerCommand(arguments);
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP, nullptr, nullptr,
                        &startup, &made))
        throw ToolError("can't start another process");
    CloseHandle(made.hThread);
    *process_->process.Place() = made.hProcess;
    AssignProcessToJobObject(JobThatEndsWithUs(), made.hProcess);
}

BatchWorker::~BatchWorker() {
    process_->input.Close();
    WaitForSingleObject(process_->process, INFINITE);
}

BatchAnswer BatchWorker::Ask(const BatchItem& item) {
    const std::string question = PathText(item.in) + '\t' + PathText(item.out) + '\n';
    DWORD count = 0;
    hasEnded_ = !WriteFile(process_->input, question.data(), static_cast<DWORD>(question.size()), &count, nullptr);
    while (!hasEnded_) {
        if (const size_t end = process_->unread.find('\n'); end != std::string::npos) {
            std::string line = process_->unread.substr(0, end);
            process_->unread.erase(0, end + 1);
            if (line.ends_with('\r')) line.pop_back();
            // Skip whatever the plug-in itself prints.
            if (const std::optional<BatchAnswer> answer = ParseAnswer(line)) return *answer;
            continue;
        }
        std::array<char, 4096> piece;
        hasEnded_ = !ReadFile(process_->output, piece.data(), piece.size(), &count, nullptr) || count == 0;
        process_->unread.append(piece.data(), count);
    }
    return Failed(item.in, "the process that filtered it ended unexpectedly");
}

}  // namespace stairmelt
