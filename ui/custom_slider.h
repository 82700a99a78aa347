// The window class "CustomSlider": a horizontal slider with a buddy edit box.
//
// It handles the messages of a trackbar by number (TBM_GETPOS, TBM_GETRANGEMIN, TBM_GETRANGEMAX, TBM_SETPOS,
// TBM_SETRANGE; TBM_SETTICFREQ, TBM_SETPAGESIZE and TBM_SETLINESIZE do nothing) and starts at position 0 of 0..100. Set
// the range before the position: TBM_SETRANGE neither clamps nor redraws.
//
// A press and each mouse move of a drag send WM_HSCROLL (SB_THUMBPOSITION, the slider's handle) to the parent, which
// reads the position back. TBM_SETPOS sends nothing. When a drag ends, the buddy shows the position and one undo in it
// returns to the value before the drag.
//
// The slider never keeps the keyboard focus: it passes it to its buddy, and its thumb is black while the buddy has it.
#pragma once

#include <windows.h>

namespace stairmelt {

constexpr char kSliderClass[] = "CustomSlider";

// wParam: the buddy edit box. Sent once, before the position is set.
constexpr UINT CSM_SETBUDDY = 2024;
// Redraws the thumb, whose colour follows the focus.
constexpr UINT CSM_REDRAWTHUMB = 2025;

// Registers the class, once per process.
void RegisterSliderClass();

}  // namespace stairmelt
