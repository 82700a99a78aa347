#include "tools/arguments.h"

#include <utility>

#include "tools/file_bytes.h"
#include "tools/text.h"

namespace stairmelt {
namespace {

int32_t ParseValue(const std::string& option, const std::string& word) {
    const std::optional<int32_t> value = ParseNumber<int32_t>(word);
    if (!value) throw UsageError(option + " needs a 32-bit whole number, not " + word);
    return *value;
}

int32_t ParseCount(const std::string& option, const std::string& word, int32_t max) {
    const int32_t count = ParseValue(option, word);
    if (count < 1 || count > max)
        throw UsageError(option + " needs a number from 1 to " + std::to_string(max) + ", not " + word);
    return count;
}

// Checks the files against the options for single pictures and those for batches.
void TakeFiles(std::vector<std::string> files, bool isForMany, Arguments& arguments) {
    if (!arguments.outDirectory) {
        if (isForMany) throw UsageError("--jobs, --skip-existing and --files need a directory given with --out");
        if (files.size() != 2) throw UsageError("an input and an output file are needed");
        arguments.in = PathFromText(files[0]);
        arguments.out = PathFromText(files[1]);
        return;
    }
    if (arguments.dialog || arguments.repeat) throw UsageError("--dialog and --repeat can't be combined with --out");
    if (files.empty() && arguments.lists.empty()) throw UsageError("no pictures given");
    arguments.files = std::move(files);
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    Arguments arguments;
    std::vector<std::string> files;
    bool optionsEnded = false, isForMany = false;
    for (size_t i = 0; i < words.size(); ++i) {
        std::string word = words[i];
        std::optional<std::string> attached;  // the text after an option's equals sign
        if (const size_t equals = word.find('=');
            !optionsEnded && word.starts_with("--") && equals != std::string::npos) {
            attached = word.substr(equals + 1);
            word.resize(equals);
        }
        const auto next = [&] {
            if (attached) return *std::exchange(attached, std::nullopt);
            if (i + 1 == words.size() || words[i + 1].starts_with("--")) throw UsageError(word + " needs a value");
            return words[++i];
        };
        if (optionsEnded || !word.starts_with("-")) {
            files.push_back(word);
        } else if (word == "--") {
            optionsEnded = true;
        } else if (word == "--plugin") {
            arguments.plugin = PathFromText(next());
        } else if (word == "--settings") {
            arguments.settings = PathFromText(next());
        } else if (word == "--threshold") {
            arguments.threshold = ParseValue(word, next());
        } else if (word == "--softness") {
            arguments.softness = ParseValue(word, next());
        } else if (word == "--bias") {
            arguments.bias = ParseValue(word, next());
        } else if (word == "--repeat") {
            arguments.repeat = ParseCount(word, next(), kMaxRuns);
        } else if (word == "--out") {
            arguments.outDirectory = PathFromText(next());
        } else if (word == "--jobs") {
            arguments.jobs = ParseCount(word, next(), kMaxJobs);
            isForMany = true;
        } else if (word == "--skip-existing") {
            arguments.skipExisting = isForMany = true;
        } else if (word == "--files") {
            arguments.lists.push_back(PathFromText(next()));
            isForMany = true;
        } else if (word == "--worker") {
            arguments.isWorker = true;
        } else if (word == "--dialog") {
            arguments.dialog = true;
        } else if (word == "--about") {
            arguments.about = true;
        } else if (word == "--help" || word == "-h") {
            arguments.help = true;
        } else if (word == "--version") {
            arguments.version = true;
        } else {
            throw UsageError("unknown option " + word);
        }
        if (attached) throw UsageError(word + " takes no value");
    }
    if (arguments.help || arguments.version || arguments.isWorker) return arguments;
    if (arguments.about && (!files.empty() || arguments.outDirectory)) throw UsageError("the about box takes no files");
    if (arguments.about) return arguments;
    if (arguments.dialog && arguments.repeat) throw UsageError("--dialog and --repeat can't be combined");
    TakeFiles(std::move(files), isForMany, arguments);
    return arguments;
}

}  // namespace stairmelt
