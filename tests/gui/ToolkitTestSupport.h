// Real dialogs for the toolkit tests: the test dialog of toolkit_tests.rc, opened modeless, and the
// helpers that tell what the platform answers where Windows and Wine differ.
#pragma once

#include "ToolkitTestIds.h"
#include "support/LogCheck.h"

#include "interfaces/korbase.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

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

// Resizes a window so that its client area is _nWidth pixels wide and _nHeight high.
void setClientSize(HWND _hWnd, int _nWidth, int _nHeight);

} // namespace toolkittest
