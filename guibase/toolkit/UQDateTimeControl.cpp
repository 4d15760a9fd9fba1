#include "guibase/toolkit/UQDateTimeControl.h"

#include "guibase/toolkit/UQWindow.h"

#include <commctrl.h>

int UQDateTimeControl::mf_get(HWND _hWnd, UQFileTime& _rTime) {
    SYSTEMTIME st;
    ZeroMemory(&st, sizeof st);
    const LRESULT nAnswer = SendMessageW(_hWnd, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&st));
    FILETIME ft = _rTime.mf_getFileTime();
    if (SystemTimeToFileTime(&st, &ft))
        _rTime = UQFileTime(ft);
    return nAnswer == GDT_VALID ? 1 : 0;
}

int UQDateTimeControl::mf_get(HWND _hDateWnd, HWND _hTimeWnd, UQFileTime& _rTime) {
    UQFileTime date;
    UQFileTime time;
    const int bDate = mf_get(_hDateWnd, date);
    const int bTime = mf_get(_hTimeWnd, time);
    const std::uint64_t uDay = UQFileTime::TICKS_PER_DAY;
    const UQFileTime midnight(date.mf_getValue() / uDay * uDay);
    const UQFileTime timeOfDay(time.mf_getValue() % uDay);
    _rTime = midnight + timeOfDay;
    return bDate && bTime ? 1 : 0;
}

int UQDateTimeControl::mf_getItem(HWND _hDlg, int _nId, UQFileTime& _rTime) {
    return mf_get(UQWindow::mf_getItem(_hDlg, _nId), _rTime);
}

int UQDateTimeControl::mf_getItem(HWND _hDlg, int _nDateId, int _nTimeId, UQFileTime& _rTime) {
    HWND hDate = UQWindow::mf_getItem(_hDlg, _nDateId);
    HWND hTime = UQWindow::mf_getItem(_hDlg, _nTimeId);
    return mf_get(hDate, hTime, _rTime);
}

int UQDateTimeControl::mf_set(HWND _hWnd, const UQFileTime& _time) {
    const FILETIME ft = _time.mf_getFileTime();
    SYSTEMTIME st;
    ZeroMemory(&st, sizeof st);
    if (!FileTimeToSystemTime(&ft, &st))
        return 0;
    return SendMessageW(_hWnd, DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&st)) > 0 ? 1 : 0;
}

int UQDateTimeControl::mf_set(HWND _hDateWnd, HWND _hTimeWnd, const UQFileTime& _time) {
    if (!mf_set(_hDateWnd, _time))
        return 0;
    return mf_set(_hTimeWnd, _time);
}

int UQDateTimeControl::mf_setItem(HWND _hDlg, int _nId, const UQFileTime& _time) {
    return mf_set(UQWindow::mf_getItem(_hDlg, _nId), _time);
}

int UQDateTimeControl::mf_setItem(HWND _hDlg, int _nDateId, int _nTimeId, const UQFileTime& _time) {
    HWND hDate = UQWindow::mf_getItem(_hDlg, _nDateId);
    HWND hTime = UQWindow::mf_getItem(_hDlg, _nTimeId);
    return mf_set(hDate, hTime, _time);
}

int UQDateTimeControl::mf_setDateFormat(HWND _hWnd) {
    const CString sFormat = UQNumberFormatter::mf_getConfiguredDateFormat();
    return static_cast<int>(
        SendMessageW(_hWnd, DTM_SETFORMATW, 0, reinterpret_cast<LPARAM>(sFormat.GetString())));
}

int UQDateTimeControl::mf_setTimeFormat(HWND _hWnd) {
    const CString sFormat = UQNumberFormatter::mf_getConfiguredTimeFormat();
    return static_cast<int>(
        SendMessageW(_hWnd, DTM_SETFORMATW, 0, reinterpret_cast<LPARAM>(sFormat.GetString())));
}

int UQDateTimeControl::mf_setItemDateFormat(HWND _hDlg, int _nId) {
    return mf_setDateFormat(UQWindow::mf_getItem(_hDlg, _nId));
}

int UQDateTimeControl::mf_setItemTimeFormat(HWND _hDlg, int _nId) {
    return mf_setTimeFormat(UQWindow::mf_getItem(_hDlg, _nId));
}
