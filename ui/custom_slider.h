// The window class "CustomSlider": a horizontal slider that is tied to an edit box, its buddy.
//
// Answers the messages of a trackbar by number (TBM_GETPOS, TBM_GETRANGEMIN, TBM_GETRANGEMAX, TBM_SETPOS, TBM_SETRANGE;
// TBM_SETTICFREQ, TBM_SETPAGESIZE and TBM_SETLINESIZE do nothing) and starts with position 0 in 0..100. Range first,
// then position: setting the range moves nothing.
//
// A press and each mouse move of a drag send WM_HSCROLL (SB_THUMBPOSITION, the slider's handle) to the parent, which
// reads the position back. TBM_SETPOS sends nothing. A drag ends with the buddy showing the position, with one undo
// step back to where the drag began.
//
// The slider never keeps the keyboard focus: it hands it to its buddy, and draws its thumb black while the buddy has
// it.
#pragma once

#include <windows.h>

namespace stairmelt {

constexpr char kSliderClass[] = "CustomSlider";

// wParam: the edit box. Set once, before the position.
constexpr UINT CSM_SETBUDDY = 2024;
// Redraws the thumb, whose colour follows the focus.
constexpr UINT CSM_REDRAWTHUMB = 2025;

// Registers the class, once in a process.
void RegisterSliderClass();

}  // namespace stairmelt
