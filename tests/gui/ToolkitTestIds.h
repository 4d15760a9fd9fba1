// Resource numbers of the toolkit tests' own dialog and menu.
#pragma once

#define IDD_TOOLKIT_TEST 100
#define IDD_PROBE 101
#define IDR_TEST_MENU 200

#define IDC_STATIC_ICON 1001
#define IDC_LABEL 1002
#define IDC_EDIT 1003
#define IDC_CHECK 1004
#define IDC_CHECK3 1005
#define IDC_SPIN_EDIT 1006
#define IDC_SPIN 1007
#define IDC_DATE 1008
#define IDC_TIME 1009
#define IDC_DATE_NONE 1010
#define IDC_COMBO 1011
#define IDC_LIST 1012
#define IDC_NOTE 1013
#define IDC_PROBE_TEXT 1020
// An id that no control of the dialogs has.
#define IDC_MISSING 4242

#define IDM_OPEN 2001
#define IDM_SAVE 2002
#define IDM_EXIT 2003
#define IDM_WRAP 2004
#define IDM_FONT 2005
#define IDM_HELP 2006
#define IDM_BITMAP 2007

// Dialogs that embed a message panel: with all three of its items, and with the message item alone.
#define IDD_MESSAGE_PANEL 102
#define IDD_MESSAGE_PANEL_PARTIAL 103

// A dialog that holds a status bar, and the menu of the bar's context menus.
#define IDD_STATUS_BAR 104
#define IDR_STATUS_MENUS 201
#define IDM_STATUS_REFRESH 2101
#define IDM_STATUS_DETAILS 2102
#define IDM_STATUS_SERVER 2201

// A progress dialog without a status text: only Cancel and the button that ends it with 1.
#define IDD_PROGRESS_NO_STATUS 105
