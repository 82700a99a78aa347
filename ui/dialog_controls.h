// The parameter dialog's controls: which ones belong together, and how to read and set their values.
#pragma once

#include <windows.h>

#include <cstdint>

#include "ui/dialog_state.h"

namespace stairmelt {

// The slider and edit box of one parameter; both show the same value.
struct ParameterControls {
    int sliderId, editId;
    int32_t min, max;
    int32_t ViewParams::*param;
};

constexpr int kParameterCount = 3;
extern const ParameterControls kParameterControls[kParameterCount];  // color threshold, softness, bias

// The parameter of a slider or an edit box; null for any other id.
const ParameterControls* ControlsOfSlider(int sliderId);
const ParameterControls* ControlsOfEdit(int editId);
// The parameter whose edit box has the keyboard focus; null if none has.
const ParameterControls* ControlsWithFocus();

int32_t SliderPosition(HWND dialog, int sliderId);
void SetSliderPosition(HWND dialog, int sliderId, int32_t position);  // the slider clamps it

// Initialises a slider and its edit box. The lower bound is always 0, whatever `min` says.
void SetupSlider(HWND dialog, int sliderId, int editId, int32_t min, int32_t max, int32_t value);

constexpr int32_t kNoPreviousValue = -1;

// Sets an edit box's text and, on request, selects it. With a selection and a previous value of 0 or more, one undo
// returns to that value.
void SetEditValue(HWND dialog, int editId, int32_t value, bool selectAll, int32_t previousValue);

// The number at the start of an edit box's text, or 0 if there is none.
int32_t EditNumber(HWND dialog, int editId);

// Sets a parameter to a number stepped from its slider or its text: the slider clamps it, and the edit box shows the
// result, selected.
void StepParameter(HWND dialog, const ParameterControls& controls, int32_t number);

// The positions of the three sliders.
ViewParams ReadSliders(HWND dialog);

}  // namespace stairmelt
