// Slots for routines that a filter has no reason to call: calling one is a fault.
#pragma once

#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "host/filter_api.h"
#include "hostkit/calls.h"

namespace stairmelt {

// Can be called through any routine's type, since it takes no arguments and the caller cleans up the stack.
inline void ReportUncalled() { ReportFault("call of a routine that a filter has no need for"); }

template <class Routine>
Routine Uncalled() {
    const UnusedSlot routine = ReportUncalled;
    Routine slot;
    static_assert(sizeof(slot) == sizeof(routine));
    std::memcpy(&slot, &routine, sizeof(slot));
    return slot;
}

// Fills the whole table, including its version and count; the caller then sets the members that exist.
template <class Table>
void FillSlots(Table& table) {
    static_assert(std::is_trivially_copyable_v<Table> && sizeof(Table) % sizeof(UnusedSlot) == 0);
    UnusedSlot slots[sizeof(Table) / sizeof(UnusedSlot)];
    std::fill(std::begin(slots), std::end(slots), ReportUncalled);
    std::memcpy(&table, slots, sizeof(slots));
}

}  // namespace stairmelt
