// Tables of the host's routines, as far as they can be relied on.
//
// A table that lacks one of the routines called here counts as missing altogether: what is opened, locked or acquired
// could otherwise not be given back.
#pragma once

#include "host/filter_api.h"

namespace stairmelt {

// The table, or null where it or one of the routines isn't there.
template <class Table, class... Routines>
const Table* IfAllThere(const Table* table, Routines Table::*... routines) {
    return table != nullptr && ((table->*routines != nullptr) && ...) ? table : nullptr;
}

// The same with the routines that this plug-in calls.
inline const HandleProcs* Complete(const HandleProcs* procs) {
    using Table = HandleProcs;
    return IfAllThere(procs, &Table::newProc, &Table::disposeProc, &Table::lockProc, &Table::unlockProc);
}

inline const BufferProcs* Complete(const BufferProcs* procs) {
    using Table = BufferProcs;
    return IfAllThere(procs, &Table::allocateProc, &Table::lockProc, &Table::unlockProc, &Table::freeProc);
}

inline const ReadDescriptorProcs* Complete(const ReadDescriptorProcs* procs) {
    using Table = ReadDescriptorProcs;
    return IfAllThere(procs, &Table::openReadDescriptorProc, &Table::closeReadDescriptorProc, &Table::getKeyProc,
                      &Table::getIntegerProc);
}

inline const WriteDescriptorProcs* Complete(const WriteDescriptorProcs* procs) {
    using Table = WriteDescriptorProcs;
    return IfAllThere(procs, &Table::openWriteDescriptorProc, &Table::closeWriteDescriptorProc, &Table::putIntegerProc);
}

inline const SPBasicSuite* Complete(const SPBasicSuite* suite) {
    return IfAllThere(suite, &SPBasicSuite::AcquireSuite, &SPBasicSuite::ReleaseSuite);
}

inline const PSDescriptorRegistryProcs* Complete(const PSDescriptorRegistryProcs* suite) {
    return IfAllThere(suite, &PSDescriptorRegistryProcs::Register, &PSDescriptorRegistryProcs::Get);
}

inline const PSActionDescriptorProcs* Complete(const PSActionDescriptorProcs* suite) {
    using Table = PSActionDescriptorProcs;
    return IfAllThere(suite, &Table::Make, &Table::Free, &Table::HasKey, &Table::GetCount, &Table::PutInteger,
                      &Table::GetInteger);
}

}  // namespace stairmelt
