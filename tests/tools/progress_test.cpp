#include "tools/batch/progress.h"

#include <gtest/gtest.h>

namespace stairmelt {
namespace {

TEST(Progress, TellsRateAndRestOfWhatTookTime) {
    EXPECT_EQ(ProgressBar({10, 4, 0, 1}, 2, 79), "[###############---------------] 5 of 10, 2.0 per second, 0:03 left");
    EXPECT_EQ(ProgressBar({100, 1, 49, 0}, 72, 79).substr(33), "50 of 100, 0.0 per second, 1:00:00 left");
    EXPECT_EQ(ProgressBar({10, 10, 0, 0}, 4, 79).substr(0, 42), "[##############################] 10 of 10,");
}

TEST(Progress, FitsIntoItsColumns) {
    const BatchCounts counts = {100000, 50000, 0, 0};
    for (size_t columns = 40; columns < 100; ++columns) EXPECT_LE(ProgressBar(counts, 1e5, columns).size(), columns);
}

TEST(Progress, SummaryNamesWhatThereIs) {
    EXPECT_EQ(BatchSummary({1000, 997, 1, 2}, 27.1),
              "1000 pictures: 997 smoothed, 1 skipped, 2 failed; 27.1 seconds, 36.8 per second");
    EXPECT_EQ(BatchSummary({1, 0, 0, 0}, 0.04), "1 picture: 0 smoothed, 1 left; 0.0 seconds");
}

}  // namespace
}  // namespace stairmelt
