// Identifiers of the dialogs, their controls and the banner. Plain macros, since resource scripts use them, too.
#ifndef STAIRMELT_RESOURCES_RESOURCE_IDS_H
#define STAIRMELT_RESOURCES_RESOURCE_IDS_H

#define IDD_PARAMETERS 101
#define IDD_ABOUT 103
#define IDB_BANNER 103

// Parameter dialog. OK is the system's number 1. Cancel isn't the system's number 2, which Escape and Close send, since
// it turns into Reset.
#define IDC_THRESHOLD_SLIDER 1002
#define IDC_SOFTNESS_SLIDER 1003
#define IDC_THRESHOLD_EDIT 1004
#define IDC_SOFTNESS_EDIT 1005
#define IDC_BIAS_SLIDER 1006
#define IDC_BIAS_EDIT 1007
#define IDC_ZOOM_OUT 1009
#define IDC_ZOOM_IN 1010
#define IDC_ZOOM_LABEL 1011
#define IDC_CANCEL_RESET 1016
#define IDC_FOCUS_PARKING 1017  // an empty text that takes the keyboard focus out of the edit boxes

// About box.
#define IDC_ABOUT_BANNER 1012
#define IDC_ABOUT_VERSION 1014
#define IDC_ABOUT_COPYRIGHT 1015

#endif
