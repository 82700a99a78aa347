#include "tools/batch/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace stairmelt {
namespace {

std::string Rounded(double value) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.1f", value);
    return text;
}

// 0 if no picture has been smoothed yet.
double PicturesPerSecond(const BatchCounts& counts, double seconds) {
    return seconds > 0 ? static_cast<double>(counts.smoothed) / seconds : 0;
}

std::string ClockText(double seconds) {
    const auto whole = static_cast<long long>(std::ceil(std::min(seconds, 1e9)));
    char text[64];
    if (whole < 3600)
        std::snprintf(text, sizeof(text), "%lld:%02lld", whole / 60, whole % 60);
    else
        std::snprintf(text, sizeof(text), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

}  // namespace

std::string ProgressBar(const BatchCounts& counts, double seconds, size_t columns) {
    constexpr size_t kMaxCells = 30;
    std::string text = std::to_string(counts.Ended()) + " of " + std::to_string(counts.total);
    if (const double rate = PicturesPerSecond(counts, seconds); rate > 0) {
        text += ", " + Rounded(rate) + " per second";
        text += ", " + ClockText(static_cast<double>(counts.total - counts.Ended()) / rate) + " left";
    }
    constexpr size_t kFrame = 3;  // two brackets and a space
    if (text.size() + kFrame >= columns) return text.substr(0, columns);
    const size_t cells = std::min(kMaxCells, columns - text.size() - kFrame);
    const size_t full = counts.total == 0 ? cells : cells * counts.Ended() / counts.total;
    std::string bar = "[";
    bar.append(full, '#').append(cells - full, '-').append("] ");
    return bar + text;
}

std::string BatchSummary(const BatchCounts& counts, double seconds) {
    std::string text = std::to_string(counts.total) + (counts.total == 1 ? " picture: " : " pictures: ");
    text += std::to_string(counts.smoothed) + " smoothed";
    if (counts.skipped != 0) text += ", " + std::to_string(counts.skipped) + " skipped";
    if (counts.failed != 0) text += ", " + std::to_string(counts.failed) + " failed";
    if (const size_t left = counts.total - counts.Ended()) text += ", " + std::to_string(left) + " left";
    text += "; " + Rounded(seconds) + " seconds";
    if (const double rate = PicturesPerSecond(counts, seconds); rate > 0) text += ", " + Rounded(rate) + " per second";
    return text;
}

}  // namespace stairmelt
