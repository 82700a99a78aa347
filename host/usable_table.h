// Tables of the host's routines, if they are usable.
//
// A table that lacks one of the routines called here counts as missing altogether: otherwise, what is opened, locked or
// acquired might not be given back.
#pragma once

#include "host/filter_api.h"

namespace stairmelt {

// The table, or null if it or one of the routines is null.
template <class Table, class... Routines>
const Table* IfAllPresent(const Table* table, Routines Table::*... routines) {
    return table != nullptr && ((table->*routines != nullptr) && ...) ? table : nullptr;
}

// The same, with the routines that this plug-in calls.
inline const HandleProcs* UsableOrNull(const HandleProcs* procs) {
    using Table = HandleProcs;
    return IfAllPresent(procs, &Table::newProc, &Table::disposeProc, &Table::lockProc, &Table::unlockProc);
}

inline const BufferProcs* UsableOrNull(const BufferProcs* procs) {
    using Table = BufferProcs;
    return IfAllPresent(procs, &Table::allocateProc, &Table::lockProc, &Table::unlockProc, &Table::freeProc);
}

inline const ReadDescriptorProcs* UsableOrNull(const ReadDescriptorProcs* procs) {
    using Table = ReadDescriptorProcs;
    return IfAllPresent(procs, &Table::openReadDescriptorProc, &Table::closeReadDescriptorProc, &Table::getKeyProc,
                        &Table::getIntegerProc);
}

inline const WriteDescriptorProcs* UsableOrNull(const WriteDescriptorProcs* procs) {
    using Table = WriteDescriptorProcs;
    return IfAllPresent(procs, &Table::openWriteDescriptorProc, &Table::closeWriteDescriptorProc,
                        &Table::putIntegerProc);
}

inline const SPBasicSuite* UsableOrNull(const SPBasicSuite* suite) {
    return IfAllPresent(suite, &SPBasicSuite::AcquireSuite, &SPBasicSuite::ReleaseSuite);
}

inline const PSDescriptorRegistryProcs* UsableOrNull(const PSDescriptorRegistryProcs* suite) {
    return IfAllPresent(suite, &PSDescriptorRegistryProcs::Register, &PSDescriptorRegistryProcs::Get);
}

inline const PSActionDescriptorProcs* UsableOrNull(const PSActionDescriptorProcs* suite) {
    using Table = PSActionDescriptorProcs;
    return IfAllPresent(suite, &Table::Make, &Table::Free, &Table::HasKey, &Table::GetCount, &Table::PutInteger,
                        &Table::GetInteger);
}

}  // namespace stairmelt
