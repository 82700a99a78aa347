// For steps that another program may block for an instant: several of these tools may store their values in one file at
// once, and Windows refuses access to a file that is open elsewhere.
#pragma once

#include <chrono>
#include <thread>

namespace stairmelt {

// Calls attempt() until it returns true, for half a second at most; returns whether it did.
template <class Attempt>
bool RetryBriefly(Attempt attempt) {
    constexpr int kMostTries = 25;
    constexpr std::chrono::milliseconds kBetween(20);
    for (int tries = 1;; ++tries) {
        if (attempt()) return true;
        if (tries == kMostTries) return false;
        std::this_thread::sleep_for(kBetween);
    }
}

}  // namespace stairmelt
