#include "guibase/toolkit/UQSpinEdit.h"

#include "guibase/toolkit/UQToolkitReport.h"
#include "guibase/toolkit/UQWindow.h"

#include <commctrl.h>

int UQSpinEdit::mf_setRange(HWND _hWnd, long _nMin, long _nMax) {
    static const wchar_t* const _sFunction_ = L"UQSpinEdit::mf_setRange";
    // Copies, so that the records take values and not the class's constants.
    const long nLowest = MIN_VALUE;
    const long nHighest = MAX_VALUE;
    if (_nMin < nLowest) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_,
                         L"Set minimum value %ld to minimum spin control value %ld", _nMin, nLowest);
        _nMin = nLowest;
    }
    if (_nMax > nHighest) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_,
                         L"Set maximum value %ld to maximum spin control value %ld", _nMax, nHighest);
        _nMax = nHighest;
    }
    SendMessageW(_hWnd, UDM_SETRANGE32, static_cast<WPARAM>(_nMin), static_cast<LPARAM>(_nMax));
    return 1;
}

int UQSpinEdit::mf_setItemRange(HWND _hDlg, int _nId, long _nMin, long _nMax) {
    static const wchar_t* const _sFunction_ = L"UQSpinEdit::mf_setItemRange";
    HWND hItem = UQWindow::mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_setRange(hItem, _nMin, _nMax);
}
