// The five settings, the block that holds them, and the three ways in which values enter and leave: the handle that the
// host keeps for the run, the persistent store in the host's registry, and the descriptor of a script.
//
// Parameters resets the block. Start merges the stored values, then the script's, then the dialog's. Finish records and
// stores the values used. Scripts set and record only the three values of the picture; the dialog's position is only in
// the store. Values read from either aren't checked against their ranges.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/filter_api.h"

namespace stairmelt {

// Stored in a host handle.
struct ParameterBlock {
    int32_t colorThreshold;  // difference that counts as an edge; 0..255 from the dialog
    int32_t softness;        // percent; 0..100 from the dialog
    int32_t bias;            // percent of cube in the falloff; 0..100 from the dialog
    int32_t windowPosX;      // screen position of the dialog in pixels; -1 to centre it
    int32_t windowPosY;
};
static_assert(sizeof(ParameterBlock) == 20);

struct Parameter {
    DescriptorKeyID key;
    int32_t ParameterBlock::*field;
    int32_t defaultValue;
    bool isScripted;  // whether scripts set and record it
};

// In the order of the block, of the key list and of the store.
constexpr Parameter kParameters[] = {
    {FourCharCode("Thsh"), &ParameterBlock::colorThreshold, 10, true},
    {FourCharCode("Sftn"), &ParameterBlock::softness, 70, true},
    {FourCharCode("Bias"), &ParameterBlock::bias, 0, true},
    {FourCharCode("PDPX"), &ParameterBlock::windowPosX, -1, false},
    {FourCharCode("PDPY"), &ParameterBlock::windowPosY, -1, false},
};

// All of these work on the globals of plugin_entry.h; the last four expect gParameterBlock, and ReadScriptParameters
// gShowDialog too.

// The Parameters selector. Creates missing handles, locks both, and sets the defaults and the flag byte, even in an
// existing block. If a handle can't be created or locked, stores kMemFullErr and sets nothing.
void DoParameters();

// Reads the persistent store into the block. If nothing is stored or a suite is missing, the block is unchanged; if a
// key is missing, its field and the following ones are. Returns 0, the host's code or kErrPlugInHostInsufficient.
int32_t LoadStoredParameters();

// Writes all five values to the persistent store. Returns as LoadStoredParameters does.
int32_t SaveStoredParameters();

// Reads a script's values into the block, disposes of the script's descriptor, and sets the flag byte to what the
// script says about the dialog. Without a script descriptor nothing changes. Returns 0 or the host's code.
int16_t ReadScriptParameters();

// Records the values used, which the host keeps as a script.
void WriteScriptParameters();

}  // namespace stairmelt
