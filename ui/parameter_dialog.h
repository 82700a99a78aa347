// The parameter dialog.
#pragma once

namespace stairmelt {

// Lets the user set the values in gParameterBlock. Returns false if the user cancelled, or if the host has no suites;
// the block is then as it was. A dialog that can't be created counts as accepted: the run goes on with the values as
// they stand.
bool ShowParameterDialog();

}  // namespace stairmelt
