// Ctrl+C (or Ctrl+Break) in the console.
#pragma once

namespace stairmelt {

constexpr int kInterruptedStatus = 130;  // as shells have it

// From now on, it ends the program with kInterruptedStatus; by default the status might be 0.
void EndOnInterrupt();

// The first one is only recorded, the next one ends the program. Call it after EndOnInterrupt.
void RememberFirstInterrupt();
bool IsInterrupted();

// This process ignores it. Call it after EndOnInterrupt.
void IgnoreInterrupts();

}  // namespace stairmelt
