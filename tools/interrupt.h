// Ctrl+C (or Ctrl+Break) in the console.
#pragma once

namespace stairmelt {

constexpr int kInterruptedStatus = 130;  // as shells have it

// From now on it ends the program with kInterruptedStatus, where the system's own way may leave 0.
void EndOnInterrupt();

// The first one is only remembered, and the next one ends the program. After EndOnInterrupt.
void RememberFirstInterrupt();
bool IsInterrupted();

// It doesn't concern this process. After EndOnInterrupt.
void IgnoreInterrupts();

}  // namespace stairmelt
