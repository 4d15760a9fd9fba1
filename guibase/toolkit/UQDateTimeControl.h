#pragma once

#include "interfaces/korbase.h"

// Date and time pickers with UQFileTime values (kept as given, no time-zone conversion). A date and a time
// picker can stand for one value: the date's day with the time's time of day. The item forms hand the
// looked-up handles on without testing them.
class KORGUIBASE_API UQDateTimeControl {
public:
    UQDateTimeControl() noexcept = default;
    UQDateTimeControl(const UQDateTimeControl&) noexcept = default;
    UQDateTimeControl& operator=(const UQDateTimeControl&) noexcept = default;
    ~UQDateTimeControl() = default;

    // 1 when the control holds a valid time.
    static int mf_get(HWND _hWnd, UQFileTime& _rTime);
    // The date's midnight plus the time's time of day; 1 only when both hold a valid time. A sum beyond the
    // largest file time throws UQErrno::_E_::Range.
    static int mf_get(HWND _hDateWnd, HWND _hTimeWnd, UQFileTime& _rTime);
    static int mf_getItem(HWND _hDlg, int _nId, UQFileTime& _rTime);
    static int mf_getItem(HWND _hDlg, int _nDateId, int _nTimeId, UQFileTime& _rTime);

    static int mf_set(HWND _hWnd, const UQFileTime& _time);
    // Sets both; the time control only when the date control took the value.
    static int mf_set(HWND _hDateWnd, HWND _hTimeWnd, const UQFileTime& _time);
    static int mf_setItem(HWND _hDlg, int _nId, const UQFileTime& _time);
    static int mf_setItem(HWND _hDlg, int _nDateId, int _nTimeId, const UQFileTime& _time);

    // The configured date or time pattern (UQNumberFormatter); the control's answer.
    static int mf_setDateFormat(HWND _hWnd);
    static int mf_setTimeFormat(HWND _hWnd);
    static int mf_setItemDateFormat(HWND _hDlg, int _nId);
    static int mf_setItemTimeFormat(HWND _hDlg, int _nId);
};
