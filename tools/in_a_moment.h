// For what another program may be in the way of for an instant: several of these tools at once remember their values in
// one file, and Windows refuses a file that somebody else has open at that time.
#pragma once

#include <chrono>
#include <thread>

namespace stairmelt {

// Calls attempt() until it returns true, for half a second at most; returns whether it did.
template <class Attempt>
bool SucceedsInAMoment(Attempt attempt) {
    constexpr int kMostTries = 25;
    constexpr std::chrono::milliseconds kBetween(20);
    for (int tries = 1;; ++tries) {
        if (attempt()) return true;
        if (tries == kMostTries) return false;
        std::this_thread::sleep_for(kBetween);
    }
}

}  // namespace stairmelt
