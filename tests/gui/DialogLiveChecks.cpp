#include "DialogLiveChecks.h"

#include "TemplateRules.h"

#include <commctrl.h>

#include <cwctype>
#include <map>

namespace livecheck {

namespace {

// The wizard frame's placeholder: an empty static under the panel, where the panel is put.
const int FRAME_PLACEHOLDER = 444;

bool isControlParent(HWND _hWnd) {
    return (GetWindowLongW(_hWnd, GWL_EXSTYLE) & WS_EX_CONTROLPARENT) != 0;
}

// Every window of the dialog that shows an access key: buttons and statics without SS_NOPREFIX.
void collectKeyed(HWND _hParent, std::vector<HWND>& _keyed) {
    for (HWND hChild = GetWindow(_hParent, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild))
            continue;
        if (isControlParent(hChild)) {
            collectKeyed(hChild, _keyed);
            continue;
        }
        const bool bStatic = isClass(hChild, L"Static");
        if ((bStatic && (GetWindowLongW(hChild, GWL_STYLE) & SS_NOPREFIX) == 0) || isClass(hChild, L"Button"))
            if (TemplateRules::accessKey(textOfWindow(hChild)) != 0)
                _keyed.push_back(hChild);
    }
}

// The visible controls of a dialog, through the panels it hosts.
void collectControls(HWND _hParent, std::vector<HWND>& _controls) {
    for (HWND hChild = GetWindow(_hParent, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild) || GetDlgCtrlID(hChild) == FRAME_PLACEHOLDER)
            continue;
        if (isControlParent(hChild))
            collectControls(hChild, _controls);
        else
            _controls.push_back(hChild);
    }
}

std::string utf8Text(const std::wstring& _text) {
    if (_text.empty())
        return std::string();
    const int nBytes = WideCharToMultiByte(CP_UTF8, 0, _text.c_str(), static_cast<int>(_text.size()), nullptr,
                                           0, nullptr, nullptr);
    std::string sText(static_cast<std::size_t>(nBytes > 0 ? nBytes : 0), '\0');
    if (nBytes > 0)
        WideCharToMultiByte(CP_UTF8, 0, _text.c_str(), static_cast<int>(_text.size()), &sText[0], nBytes,
                            nullptr, nullptr);
    return sText;
}

bool isGroupBox(HWND _hWnd) {
    return isClass(_hWnd, L"Button") && (GetWindowLongW(_hWnd, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}

// Notes the button whose command reaches the dialog, on its way to the dialog procedure.
LRESULT CALLBACK noteCommand(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam, UINT_PTR,
                             DWORD_PTR _dwData) {
    if (_uMsg == WM_COMMAND && HIWORD(_wParam) == BN_CLICKED)
        *reinterpret_cast<int*>(_dwData) = LOWORD(_wParam);
    return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
}

} // namespace

void press(HWND _hDlg, UINT _uMessage, WPARAM _wKey, bool _bShift) {
    BYTE keys[256];
    GetKeyboardState(keys);
    const BYTE bShiftBefore = keys[VK_SHIFT];
    keys[VK_SHIFT] = _bShift ? 0x80 : 0;
    SetKeyboardState(keys);
    HWND hTarget = GetFocus() != nullptr ? GetFocus() : _hDlg;
    const LPARAM lParam = _uMessage == WM_SYSCHAR ? (1 | (1 << 29)) : 1;
    MSG msg = {hTarget, _uMessage, _wKey, lParam, static_cast<DWORD>(GetMessageTime()), {0, 0}};
    if (!IsDialogMessageW(_hDlg, &msg)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    if (_uMessage == WM_KEYDOWN) {
        MSG up = {
            hTarget, WM_KEYUP, _wKey, static_cast<LPARAM>(0xC0000001u), static_cast<DWORD>(GetMessageTime()),
            {0, 0}};
        if (IsWindow(hTarget) && !IsDialogMessageW(_hDlg, &up))
            DispatchMessageW(&up);
    }
    keys[VK_SHIFT] = bShiftBefore;
    SetKeyboardState(keys);
}

void answerByKey(HWND _hBox, int _nButton) {
    const wchar_t key = TemplateRules::accessKey(textOfWindow(GetDlgItem(_hBox, _nButton)));
    if (key != 0)
        press(_hBox, WM_SYSCHAR, static_cast<WPARAM>(towlower(key)));
}

bool isClass(HWND _hWnd, const wchar_t* _pszClass) {
    wchar_t szClass[64] = {0};
    GetClassNameW(_hWnd, szClass, 64);
    return lstrcmpiW(szClass, _pszClass) == 0;
}

std::wstring textOfWindow(HWND _hWnd) {
    wchar_t szText[1024] = {0};
    GetWindowTextW(_hWnd, szText, 1024);
    return szText;
}

std::string idOf(HWND _hWnd) {
    return _hWnd == nullptr ? std::string("none") : std::to_string(GetDlgCtrlID(_hWnd));
}

std::string ids(const std::vector<HWND>& _windows) {
    std::string text;
    for (HWND hWnd : _windows)
        text += (text.empty() ? "" : " ") + idOf(hWnd);
    return text;
}

void collectTabStops(HWND _hParent, std::vector<HWND>& _stops) {
    for (HWND hChild = GetWindow(_hParent, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild) || !IsWindowEnabled(hChild))
            continue;
        if (isControlParent(hChild))
            collectTabStops(hChild, _stops);
        else if ((GetWindowLongW(hChild, GWL_STYLE) & WS_TABSTOP) != 0)
            _stops.push_back(hChild);
    }
}

HWND focusedStop(const std::vector<HWND>& _stops) {
    HWND hFocus = GetFocus();
    for (HWND hStop : _stops)
        if (hStop == hFocus || IsChild(hStop, hFocus))
            return hStop;
    return hFocus;
}

TabWalk walkTabStops(HWND _hDlg) {
    std::vector<HWND> stops;
    collectTabStops(_hDlg, stops);
    HWND hFirst = focusedStop(stops);
    std::vector<HWND> forward;
    std::vector<HWND> backward;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        press(_hDlg, WM_KEYDOWN, VK_TAB);
        forward.push_back(focusedStop(stops));
    }
    for (std::size_t i = 0; i < stops.size(); ++i) {
        press(_hDlg, WM_KEYDOWN, VK_TAB, true);
        backward.push_back(focusedStop(stops));
    }
    std::vector<HWND> expectedForward;
    std::vector<HWND> expectedBackward;
    std::size_t uStart = 0;
    while (uStart < stops.size() && stops[uStart] != hFirst)
        ++uStart;
    for (std::size_t i = 1; i <= stops.size() && uStart < stops.size(); ++i) {
        expectedForward.push_back(stops[(uStart + i) % stops.size()]);
        expectedBackward.push_back(stops[(uStart + stops.size() * 2 - i) % stops.size()]);
    }
    TabWalk walk;
    walk.sStops = ids(stops);
    walk.sFirst = idOf(hFirst);
    walk.sForward = ids(forward);
    walk.sBackward = ids(backward);
    walk.sExpectedForward = ids(expectedForward);
    walk.sExpectedBackward = ids(expectedBackward);
    return walk;
}

AccessKeys checkAccessKeys(HWND _hDlg) {
    AccessKeys result;
    std::vector<HWND> keyed;
    collectKeyed(_hDlg, keyed);
    std::map<wchar_t, HWND> owners;
    for (HWND hWnd : keyed) {
        const wchar_t key = TemplateRules::accessKey(textOfWindow(hWnd));
        if (owners.count(key) != 0)
            result.duplicates.push_back(idOf(owners[key]) + " and " + idOf(hWnd));
        owners[key] = hWnd;
    }
    // A label hands its key on to the next control in tab order.
    std::vector<HWND> stops;
    collectTabStops(_hDlg, stops);
    for (HWND hWnd : keyed) {
        if (!isClass(hWnd, L"Static"))
            continue;
        HWND hNext = GetWindow(hWnd, GW_HWNDNEXT);
        while (hNext != nullptr &&
               (!IsWindowVisible(hNext) || (GetWindowLongW(hNext, GWL_STYLE) & WS_TABSTOP) == 0))
            hNext = GetWindow(hNext, GW_HWNDNEXT);
        if (hNext == nullptr || !IsWindowEnabled(hNext))
            continue;
        ++result.nLabels;
        press(_hDlg, WM_SYSCHAR, static_cast<WPARAM>(towlower(TemplateRules::accessKey(textOfWindow(hWnd)))));
        if (focusedStop(stops) != hNext)
            result.missed.push_back(idOf(hWnd) + " -> " + idOf(focusedStop(stops)) + " instead of " +
                                    idOf(hNext));
    }
    return result;
}

int defaultButton(HWND _hDlg) {
    const LRESULT lDefault = SendMessageW(_hDlg, DM_GETDEFID, 0, 0);
    return HIWORD(lDefault) == DC_HASDEFID ? LOWORD(lDefault) : 0;
}

int pressEnter(HWND _hDlg) {
    int nPressed = -1;
    // The command Enter sends is caught on its way to the dialog procedure.
    SetWindowSubclass(_hDlg, noteCommand, 1, reinterpret_cast<DWORD_PTR>(&nPressed));
    press(_hDlg, WM_KEYDOWN, VK_RETURN);
    if (IsWindow(_hDlg))
        RemoveWindowSubclass(_hDlg, noteCommand, 1);
    return nPressed;
}

std::string misfit(HWND _hControl) {
    const std::wstring text = textOfWindow(_hControl);
    const LONG lStyle = GetWindowLongW(_hControl, GWL_STYLE);
    const bool bStatic = isClass(_hControl, L"Static");
    const bool bButton = isClass(_hControl, L"Button");
    if (text.empty() || (!bStatic && !bButton))
        return "";
    const LONG lType = bButton ? (lStyle & BS_TYPEMASK) : (lStyle & SS_TYPEMASK);
    if (bButton && lType == BS_GROUPBOX)
        return "";
    if (bStatic && lType != SS_LEFT && lType != SS_CENTER && lType != SS_RIGHT && lType != SS_SIMPLE &&
        lType != SS_LEFTNOWORDWRAP)
        return "";
    // Texts that show data (a message, a path) are the caller's, and wrap or scroll as their control does.
    if (bStatic && (lStyle & SS_NOPREFIX) != 0)
        return "";
    RECT rcClient;
    GetClientRect(_hControl, &rcClient);
    HDC hDC = GetDC(_hControl);
    HGDIOBJ hOld = SelectObject(hDC, reinterpret_cast<HFONT>(SendMessageW(_hControl, WM_GETFONT, 0, 0)));
    int nAvailable = rcClient.right;
    if (bButton && lType != BS_PUSHBUTTON && lType != BS_DEFPUSHBUTTON)
        nAvailable -= GetSystemMetrics(SM_CXMENUCHECK) + GetSystemMetrics(SM_CXEDGE); // the box and its gap
    else if (bButton)
        nAvailable -= 2 * (GetSystemMetrics(SM_CXEDGE) + 1); // the frame and the focus rectangle
    RECT rcText = {0, 0, nAvailable, 0};
    const bool bWraps = bStatic && lType != SS_LEFTNOWORDWRAP && lType != SS_SIMPLE;
    DrawTextW(hDC, text.c_str(), static_cast<int>(text.size()), &rcText,
              DT_CALCRECT | (bWraps ? DT_WORDBREAK : DT_SINGLELINE));
    SelectObject(hDC, hOld);
    ReleaseDC(_hControl, hDC);
    const std::string sText = "\"" + utf8Text(text) + "\"";
    if (rcText.right > nAvailable)
        return sText + " needs " + std::to_string(rcText.right) + " px, has " + std::to_string(nAvailable);
    if (rcText.bottom > rcClient.bottom)
        return sText + " needs " + std::to_string(rcText.bottom) + " px high, has " +
               std::to_string(rcClient.bottom);
    return "";
}

bool overlaps(HWND _hA, HWND _hB) {
    RECT rcA;
    RECT rcB;
    RECT rcBoth;
    GetWindowRect(_hA, &rcA);
    GetWindowRect(_hB, &rcB);
    if (isGroupBox(_hA) || isGroupBox(_hB) || !IntersectRect(&rcBoth, &rcA, &rcB))
        return false;
    if (isClass(_hA, L"Static") && isClass(_hB, WC_LISTVIEWW) && EqualRect(&rcBoth, &rcA))
        return false;
    return !(isClass(_hB, L"Static") && isClass(_hA, WC_LISTVIEWW) && EqualRect(&rcBoth, &rcB));
}

std::vector<std::string> layoutProblems(HWND _hDlg, int& _rnTexts) {
    std::vector<std::string> problems;
    std::vector<HWND> controls;
    collectControls(_hDlg, controls);
    RECT rcDialog;
    GetClientRect(_hDlg, &rcDialog);
    MapWindowPoints(_hDlg, nullptr, reinterpret_cast<POINT*>(&rcDialog), 2);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const int nId = GetDlgCtrlID(controls[i]);
        const std::string sMisfit = misfit(controls[i]);
        if (!textOfWindow(controls[i]).empty())
            ++_rnTexts;
        if (!sMisfit.empty())
            problems.push_back("control " + std::to_string(nId) + ": text does not fit: " + sMisfit);
        RECT rcControl;
        GetWindowRect(controls[i], &rcControl);
        RECT rcInside;
        if (!IntersectRect(&rcInside, &rcControl, &rcDialog) || !EqualRect(&rcInside, &rcControl))
            problems.push_back("control " + std::to_string(nId) + ": outside the dialog");
        for (std::size_t j = i + 1; j < controls.size(); ++j)
            if (overlaps(controls[i], controls[j]))
                problems.push_back("control " + std::to_string(nId) + ": lies over control " +
                                   std::to_string(GetDlgCtrlID(controls[j])));
    }
    return problems;
}

UINT systemDpi() {
    HDC hScreen = GetDC(nullptr);
    const UINT uDpi = static_cast<UINT>(GetDeviceCaps(hScreen, LOGPIXELSY));
    ReleaseDC(nullptr, hScreen);
    return uDpi;
}

} // namespace livecheck
