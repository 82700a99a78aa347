#include "ui/dialog_controls.h"

#include <commctrl.h>

#include <cstdio>
#include <cstdlib>

#include "resources/resource_ids.h"
#include "ui/custom_slider.h"

namespace stairmelt {

const ParameterControls kParameterControls[kParameterCount] = {
    {IDC_THRESHOLD_SLIDER, IDC_THRESHOLD_EDIT, 0, 255, &ViewParams::colorThreshold},
    {IDC_SOFTNESS_SLIDER, IDC_SOFTNESS_EDIT, 0, 100, &ViewParams::softness},
    {IDC_BIAS_SLIDER, IDC_BIAS_EDIT, 0, 100, &ViewParams::bias},
};

namespace {

struct NumberText {
    char characters[12];  // the longest number with its sign and terminator

    explicit NumberText(int32_t value) { std::snprintf(characters, sizeof characters, "%d", static_cast<int>(value)); }
};

void SetEditText(HWND dialog, int editId, int32_t value) {
    SetDlgItemTextA(dialog, editId, NumberText(value).characters);
}

}  // namespace

const ParameterControls* ControlsOfSlider(int sliderId) {
    for (const ParameterControls& controls : kParameterControls) {
        if (controls.sliderId == sliderId) return &controls;
    }
    return nullptr;
}

const ParameterControls* ControlsOfEdit(int editId) {
    for (const ParameterControls& controls : kParameterControls) {
        if (controls.editId == editId) return &controls;
    }
    return nullptr;
}

const ParameterControls* ControlsWithFocus() { return ControlsOfEdit(GetDlgCtrlID(GetFocus())); }

int32_t SliderPosition(HWND dialog, int sliderId) {
    return static_cast<int32_t>(SendDlgItemMessageA(dialog, sliderId, TBM_GETPOS, 0, 0));
}

void SetSliderPosition(HWND dialog, int sliderId, int32_t position) {
    SendDlgItemMessageA(dialog, sliderId, TBM_SETPOS, 1, position);
}

void SetupSlider(HWND dialog, int sliderId, int editId, int32_t, int32_t max, int32_t value) {
    if (const HWND slider = GetDlgItem(dialog, sliderId)) {
        SendMessageA(slider, TBM_SETRANGE, 1, MAKELPARAM(0, max));
        SendMessageA(slider, TBM_SETTICFREQ, 100, 0);
        SendMessageA(slider, TBM_SETPAGESIZE, 1, 0);
        SendMessageA(slider, TBM_SETLINESIZE, 1, 0);
        SendMessageA(slider, CSM_SETBUDDY, reinterpret_cast<WPARAM>(GetDlgItem(dialog, editId)), 0);
        SendMessageA(slider, TBM_SETPOS, 1, value);
    }
    SetEditText(dialog, editId, value);
}

void SetEditValue(HWND dialog, int editId, int32_t value, bool selectAll, int32_t previousValue) {
    if (!selectAll || previousValue < 0) {
        SetEditText(dialog, editId, value);
        if (selectAll) SendDlgItemMessageA(dialog, editId, EM_SETSEL, 0, -1);
        return;
    }
    // An edit box can only undo a replaced selection, so the old text is set first and then replaced.
    SetEditText(dialog, editId, previousValue);
    const NumberText text(value);
    SendDlgItemMessageA(dialog, editId, EM_SETSEL, 0, -1);
    SendDlgItemMessageA(dialog, editId, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.characters));
    SendDlgItemMessageA(dialog, editId, EM_SETSEL, 0, -1);
}

int32_t EditNumber(HWND dialog, int editId) {
    char text[256] = "";
    GetDlgItemTextA(dialog, editId, text, sizeof text);
    // Reads like atoi, but a number out of range is clamped instead of undefined.
    return static_cast<int32_t>(std::strtol(text, nullptr, 10));
}

void StepParameter(HWND dialog, const ParameterControls& controls, int32_t number) {
    SetSliderPosition(dialog, controls.sliderId, number);
    SetEditValue(dialog, controls.editId, SliderPosition(dialog, controls.sliderId), true, kNoPreviousValue);
}

ViewParams ReadSliders(HWND dialog) {
    ViewParams params = {};
    for (const ParameterControls& controls : kParameterControls) {
        params.*controls.param = SliderPosition(dialog, controls.sliderId);
    }
    return params;
}

}  // namespace stairmelt
