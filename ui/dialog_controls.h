// The parameter dialog's controls: which belong together, and how values get into and out of them.
#pragma once

#include <windows.h>

#include <cstdint>

#include "ui/dialog_state.h"

namespace stairmelt {

// A parameter's slider and edit box, which show the same value.
struct ParameterControls {
    int sliderId, editId;
    int32_t min, max;
    int32_t ViewParams::*param;
};

constexpr int kParameterCount = 3;
extern const ParameterControls kParameterControls[kParameterCount];  // color threshold, softness, bias

// The row of a slider or an edit box; null for any other id.
const ParameterControls* ControlsOfSlider(int sliderId);
const ParameterControls* ControlsOfEdit(int editId);
// The row of the edit box that has the keyboard focus; null if none has.
const ParameterControls* ControlsWithFocus();

int32_t SliderPosition(HWND dialog, int sliderId);
void SetSliderPosition(HWND dialog, int sliderId, int32_t position);  // the slider limits it

// Prepares a slider and its edit box. The low bound is 0 whatever `min` says.
void SetupSlider(HWND dialog, int sliderId, int editId, int32_t min, int32_t max, int32_t value);

constexpr int32_t kNoPreviousValue = -1;

// Sets an edit box's text, and selects it on demand. With a previous value of 0 or more it also leaves one undo step
// back to that.
void SetEditValue(HWND dialog, int editId, int32_t value, bool selectAll, int32_t previousValue);

// The number in an edit box, read as far as it goes; 0 if there is none.
int32_t EditNumber(HWND dialog, int editId);

// Steps a parameter from its slider's position or its text: the slider limits the new number, and the edit box shows
// what came of it, selected.
void StepParameter(HWND dialog, const ParameterControls& controls, int32_t number);

// The positions of the three sliders.
ViewParams ReadSliders(HWND dialog);

}  // namespace stairmelt
