// Replaces libFuzzer, so that any compiler can build the fuzzers: NAME_replay INPUT_OR_FOLDER [RUNS]. Runs every input
// and RUNS mutations of them, the same ones every time. An input that ends the program is kept in NAME_replay.input in
// the current folder.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed);

namespace {

using Input = std::vector<uint8_t>;

stairmelt::SeededRandom gRandom(1);

int Below(size_t bound) { return gRandom.Below(static_cast<int>(bound)); }

Input ReadInput(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

// Changes up to four bytes, and sometimes truncates the input or repeats a part of it.
extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize) {
    if (size == 0) return 0;
    if (Below(8) == 0) size = static_cast<size_t>(Below(size)) + 1;
    if (Below(8) == 0 && size < maxSize) {
        const size_t more = std::min(maxSize - size, size);
        std::copy_n(data, more, data + size);
        size += more;
    }
    for (int changes = 1 + Below(4); changes > 0; --changes) data[Below(size)] = static_cast<uint8_t>(gRandom.Next());
    return size;
}

#ifndef STAIRMELT_OWN_MUTATOR
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned) {
    return LLVMFuzzerMutate(data, size, maxSize);
}
#endif

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    std::vector<std::filesystem::path> paths = {argv[1]};
    if (std::filesystem::is_directory(paths[0])) {
        paths.assign(std::filesystem::directory_iterator(paths[0]), {});
        std::sort(paths.begin(), paths.end());
    }
    std::vector<Input> inputs;
    std::transform(paths.begin(), paths.end(), std::back_inserter(inputs), ReadInput);
    const std::filesystem::path last = std::filesystem::path(argv[0]).filename().string() + ".input";
    const size_t runs = inputs.size() + static_cast<size_t>(argc > 2 ? std::atoi(argv[2]) : 0);
    for (size_t run = 0; run < runs; ++run) {
        Input input = run < inputs.size() ? inputs[run] : inputs[static_cast<size_t>(Below(inputs.size()))];
        if (run >= inputs.size()) {
            const size_t size = input.size();
            input.resize(size + 64);
            input.resize(LLVMFuzzerCustomMutator(input.data(), size, input.size(), gRandom.Next()));
        }
        std::ofstream(last, std::ios::binary).write(reinterpret_cast<const char*>(input.data()), std::ssize(input));
        // A copy of the exact size, so that the address sanitizer detects a read beyond its end.
        const Input exact(input.begin(), input.end());
        LLVMFuzzerTestOneInput(exact.data(), exact.size());
    }
    std::filesystem::remove(last);
    std::printf("%zu inputs run, none failed\n", runs);
}
