// The parameter dialog.
#pragma once

namespace stairmelt {

// Lets the user set the values in gParameterBlock. Returns false, with the block unchanged, if the user cancelled, the
// host has no suites or there is no memory for the dialog's state. A dialog that the system cannot create counts as
// accepted: the run continues with the current values.
bool ShowParameterDialog();

}  // namespace stairmelt
