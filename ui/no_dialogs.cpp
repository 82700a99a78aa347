// Stands in for the dialogs in a build without them: asking for one goes on as if it couldn't be created.
#include "host/plugin_entry.h"
#include "ui/about_box.h"
#include "ui/parameter_dialog.h"

namespace stairmelt {

void ShowAboutBox(intptr_t) {}

bool ShowParameterDialog() { return gSPBasic != nullptr; }

}  // namespace stairmelt
