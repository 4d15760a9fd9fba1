// The checks that the accessibility tests make on a live dialog, for any dialog opened by any program:
// keys delivered as the modal loop delivers them, the tab stops and the access keys, the default button,
// and whether each text fits its control and each control its dialog. The library's dialogs
// (test_DialogKeyboard.cpp, test_DialogTextFit.cpp) and korclient's windows (korclient_gui_tests) use them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace livecheck {

// One key press as the modal loop delivers it: IsDialogMessageW first, the window procedure otherwise.
// Shift is set through SetKeyboardState for the press only.
void press(HWND _hDlg, UINT _uMessage, WPARAM _wKey, bool _bShift = false);
// Presses the access key of button _nButton of _hBox (Alt+letter), as a user answers a question.
void answerByKey(HWND _hBox, int _nButton);

bool isClass(HWND _hWnd, const wchar_t* _pszClass);
std::wstring textOfWindow(HWND _hWnd);
// A window's control id ("none" for no window), and a list of them.
std::string idOf(HWND _hWnd);
std::string ids(const std::vector<HWND>& _windows);

// The visible, enabled tab stops of a dialog in tab order, through the panels it hosts (WS_EX_CONTROLPARENT).
void collectTabStops(HWND _hParent, std::vector<HWND>& _stops);
// The control of _stops that has the focus (a combo box's edit counts as the combo), else the focus itself.
HWND focusedStop(const std::vector<HWND>& _stops);

// Tab pressed once per tab stop, then Shift+Tab as often, with the ids read while the windows live (ids of
// gone windows are all 0 and would compare equal).
struct TabWalk {
    std::string sStops;
    std::string sFirst;
    std::string sForward;
    std::string sBackward;
    // From the first focus on: each following stop, wrapping round to the first focus; and backwards.
    std::string sExpectedForward;
    std::string sExpectedBackward;
};
TabWalk walkTabStops(HWND _hDlg);

// Two visible texts with the same access key, and labels whose Alt+key did not move the focus to the input
// after them ("label -> focus instead of input").
struct AccessKeys {
    std::vector<std::string> duplicates;
    std::vector<std::string> missed;
    int nLabels = 0;
};
AccessKeys checkAccessKeys(HWND _hDlg);

// The id DM_GETDEFID names, or 0.
int defaultButton(HWND _hDlg);
// Presses Enter and answers the id of the button whose BN_CLICKED reached the dialog, or -1.
int pressEnter(HWND _hDlg);

// What does not fit in control _hControl (its text with its own font against its client area), or "".
// Texts that show data (SS_NOPREFIX statics) are the caller's and are left out.
std::string misfit(HWND _hControl);
// Whether _hA lies over _hB by mistake: a group box holds the controls inside it, and a note over an empty
// list lies inside the list by design.
bool overlaps(HWND _hA, HWND _hB);
// One line per text that does not fit, control outside the dialog's client area, or two controls over each
// other; _rnTexts counts the texts looked at.
std::vector<std::string> layoutProblems(HWND _hDlg, int& _rnTexts);
// LOGPIXELSY of the screen: the system DPI the process started with.
UINT systemDpi();

} // namespace livecheck
