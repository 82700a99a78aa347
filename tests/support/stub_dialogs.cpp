#include "tests/support/stub_dialogs.h"

#include "ui/about_box.h"
#include "ui/parameter_dialog.h"

namespace stairmelt {

StubDialogs gStubDialogs;

void ShowAboutBox(intptr_t parentWindow) {
    ++gStubDialogs.aboutShown;
    gStubDialogs.aboutParent = parentWindow;
}

bool ShowParameterDialog() {
    ++gStubDialogs.shown;
    if (gStubDialogs.whileOpen) gStubDialogs.whileOpen();
    return gStubDialogs.isAccepted;
}

}  // namespace stairmelt
