// Filling a table of routines of which only some exist.
#pragma once

#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "host/filter_api.h"

namespace stairmelt {

// Puts `routine` in every slot of the table, its head of version and count included; the caller then sets what is
// known. The routine can be called through any member's type, since it takes nothing and its caller cleans the stack.
template <class Table>
void FillSlots(Table& table, UnusedSlot routine) {
    static_assert(std::is_trivially_copyable_v<Table> && sizeof(Table) % sizeof(UnusedSlot) == 0);
    UnusedSlot slots[sizeof(Table) / sizeof(UnusedSlot)];
    std::fill(std::begin(slots), std::end(slots), routine);
    std::memcpy(&table, slots, sizeof(slots));
}

}  // namespace stairmelt
