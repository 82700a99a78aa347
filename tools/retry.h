// Retries a step that another program may block for a moment: several instances of this tool may store their values in
// the same file, and Windows refuses access to a file that is open elsewhere.
#pragma once

#include <chrono>
#include <thread>

namespace stairmelt {

// Calls attempt() until it returns true, but for at most half a second. Returns whether it succeeded.
template <class Attempt>
bool RetryBriefly(Attempt attempt) {
    constexpr int kMaxTries = 25;
    constexpr std::chrono::milliseconds kBetween(20);
    for (int tries = 1;; ++tries) {
        if (attempt()) return true;
        if (tries == kMaxTries) return false;
        std::this_thread::sleep_for(kBetween);
    }
}

}  // namespace stairmelt
