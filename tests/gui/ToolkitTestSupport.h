// Real dialogs for the toolkit tests: the test dialog of toolkit_tests.rc, opened modeless, and the
// helpers that tell what the platform answers where Windows and Wine differ.
#pragma once

#include "ToolkitTestIds.h"
#include "support/LogCheck.h"

#include "guibase/toolkit/UQStatusBar.h"
#include "interfaces/korbase.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace toolkittest {

// The text of an error as the records carry it.
inline std::string errorText(const UQErrnoValue& _value, DWORD _dwError) {
    return utf8(UQErrno(UQErrnoData(_value), static_cast<std::uint32_t>(_dwError)).mf_toString());
}

// What GetDlgItem leaves as last error for an id that the dialog lacks: 1421 (ERROR_CONTROL_ID_NOT_FOUND)
// on Windows, 0 on Wine.
inline DWORD missingItemError(HWND _hDlg, int _nId) {
    SetLastError(0);
    GetDlgItem(_hDlg, _nId);
    return GetLastError();
}

// A window handle that names no window (a window that has been destroyed).
HWND destroyedWindow();

// Makes the common controls' window classes known; every test dialog needs them.
void initCommonControls();

// Handles every pending message of this thread.
void pumpMessages();

// A key pressed in a list view as the list hears it from the keyboard: Shift and Ctrl through the thread's
// keyboard state, which the list reads with GetKeyState.
void pressInList(HWND _hList, WPARAM _wKey, bool _bShift = false, bool _bCtrl = false);

// The selected rows of a list view, in order, item by item.
std::vector<int> selectedRows(HWND _hList);

// The test dialog (IDD_TOOLKIT_TEST) as a modeless dialog of this thread, shown; destroyed with the object.
class TestDialog {
public:
    TestDialog();
    ~TestDialog();
    TestDialog(const TestDialog&) = delete;
    TestDialog& operator=(const TestDialog&) = delete;

    HWND hwnd() const noexcept { return m_hDlg; }
    HWND item(int _nId) const { return GetDlgItem(m_hDlg, _nId); }

private:
    HWND m_hDlg;
};

// A list of texts written in place: TextList({L"a", L"b"}).
class TextList : public UQArray<CString> {
public:
    TextList(std::initializer_list<const wchar_t*> _texts) {
        for (const wchar_t* pszText : _texts)
            Add(pszText);
    }
};

// A dialog procedure that handles nothing, to learn what the platform answers for a dialog.
INT_PTR CALLBACK inertProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

// A window's text in UTF-8, and the text of a dialog's item.
std::string textOf(HWND _hWnd);
std::string itemText(HWND _hDlg, int _nId);

// The icon a static control shows (STM_GETICON).
HICON iconOf(HWND _hDlg, int _nId);

// An icon of the language module as the library loads it (shared, so the same handle comes back).
HICON languageIcon(WORD _wIconId, int _nSize);

// Whether two icons have the same size and pixels (a shared icon may come back as another handle).
bool sameIcon(HICON _hA, HICON _hB);

// A copy of an icon that outlives the window that shows it (a dialog destroys its icons with itself); null
// for null.
std::shared_ptr<HICON__> copyOfIcon(HICON _hIcon);

// The id of the control that has the focus, or 0.
int focusedId();

// Posts the keys of a text to a control as typing would deliver them (WM_CHAR each).
void typeText(HWND _hWnd, const wchar_t* _pszText);

// Posts a key press (down and up) to the control that has the focus.
void pressKey(WPARAM _vk);

// Resizes a window so that its client area is _nWidth pixels wide and _nHeight high.
void setClientSize(HWND _hWnd, int _nWidth, int _nHeight);

// A status bar item that shows a fixed name.
class NamedStatusItem : public UQStatusBarItem {
public:
    NamedStatusItem(unsigned long _ulWidth, const wchar_t* _pszName)
        : UQStatusBarItem(_ulWidth), m_sName(_pszName) {}
    CString mf_getName() const override { return m_sName; }

private:
    CString m_sName;
};

// The procedure of a dialog that hosts the UQStatusBar given as its creation parameter: the bar follows the
// dialog's size, draws its parts (an item that throws draws nothing) and hears of new system colours.
INT_PTR CALLBACK statusBarHostProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

} // namespace toolkittest
