// The progress of a batch, in words and as a bar.
#pragma once

#include <cstddef>
#include <string>

namespace stairmelt {

struct BatchCounts {
    size_t total = 0;
    size_t smoothed = 0, skipped = 0, failed = 0;  // together at most `total`

    size_t Ended() const { return smoothed + skipped + failed; }
};

// "[#####-----] 412 of 1000, 37.2 per second, 0:16 left" in at most `columns` characters, at least 40: the bar is
// shortened first. `seconds` is the elapsed time. Rate and remaining time are based on the smoothed pictures and are
// omitted until there is one.
std::string ProgressBar(const BatchCounts& counts, double seconds, size_t columns);

// "1000 pictures: 997 smoothed, 1 skipped, 2 failed; 27.1 seconds, 36.8 per second"
std::string BatchSummary(const BatchCounts& counts, double seconds);

}  // namespace stairmelt
