// Scripted answers in place of the dialogs, where ui/ isn't linked.
#pragma once

#include <cstdint>
#include <functional>

namespace stairmelt {

struct StubDialogs {
    bool isAccepted = true;           // what the parameter dialog answers
    std::function<void()> whileOpen;  // what the user does before that
    int shown = 0;                    // parameter dialogs so far
    int aboutShown = 0;
    intptr_t aboutParent = 0;  // of the last about box
};

extern StubDialogs gStubDialogs;

}  // namespace stairmelt
