// The pieces every dialog callback of the library is built from. A callback is a plain switch over the
// messages its class handles, and each case composes these pieces:
//
//     INT_PTR CALLBACK f_UQMessageBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
//         static const wchar_t* const _sFunction_ = L"f_UQMessageBoxCallback";
//         switch (_uMsg) {
//         case WM_INITDIALOG:
//             return UQDialogProcedure::mf_initDialog<UQMessageBox>(
//                 _hDlg, _lParam, _sFunction_, NO_USER_DATA, INIT_FAILURE,
//                 [&](UQMessageBox& _box) { return _box.mf_onInitDialog(_hDlg); });
//         case WM_COMMAND:
//             return UQDialogProcedure::mf_forward<UQMessageBox>(
//                 _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
//                 [&](UQMessageBox& _box) { return _box.mf_onCommand(_wParam, _lParam); });
//         ...
//         }
//         return 0;
//     }
//
// - mf_storeOnInit keeps the init parameter (the dialog object) as the window's user data.
// - mf_fetch answers the object, or null after a LEVEL_E record of the callback's "No user data pointer ..."
//   literal; its own arguments fill the literal's placeholders (a panel's title, say).
// - mf_barrier runs a handler so that no exception leaves the callback: a UQErrno is logged at LEVEL_E
//   with the given text, whose last two placeholders are UQLog::TAB and the error's text (leading
//   arguments come first: the panel title of "Failure initializing panel '%s':\r\n%s%s"); anything else is
//   logged with the same text and "Unexpected exception". The answer is then 0.
// - mf_setMessageResult hands a notification's result to its sender through DWLP_MSGRESULT, as the
//   dialog manager expects of a dialog procedure (the procedure itself answers TRUE).
// - mf_clearUserData forgets the object on WM_NCDESTROY, so that a modeless panel's late messages find no
//   stale pointer.
#pragma once

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQToolkitReport.h"

#include <utility>
#include <vector>

class UQDialogProcedure {
public:
    // The text of a handler's failure where the class has none of its own: the message number, the
    // continuation indent and the error's text.
    static constexpr const wchar_t* HANDLER_FAILURE = L"Failure handling window message 0x%4.4x:\r\n%s%s";

    template <class T> static T* mf_storeOnInit(HWND _hDlg, LPARAM _lParam) noexcept {
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, _lParam);
        return reinterpret_cast<T*>(_lParam);
    }

    template <class T, class... A>
    static T* mf_fetch(HWND _hDlg, const wchar_t* _pszFunction, const wchar_t* _pszNoUserData,
                       const A&... _args) noexcept {
        T* pObject = reinterpret_cast<T*>(GetWindowLongPtrW(_hDlg, GWLP_USERDATA));
        if (pObject == nullptr)
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, _pszNoUserData, _args...);
        return pObject;
    }

    template <class F, class... A>
    static INT_PTR mf_barrier(const wchar_t* _pszFunction, const wchar_t* _pszFailure, F&& _handler,
                              const A&... _leadingArgs) noexcept {
        try {
            return static_cast<INT_PTR>(_handler());
        } catch (const UQErrno& e) {
            mf_implLogFailure(_pszFunction, _pszFailure, e, _leadingArgs...);
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFailure, _leadingArgs..., UQLog::TAB,
                             L"Unexpected exception");
        }
        return 0;
    }

    // WM_INITDIALOG: stores the object and answers its initialisation, behind a barrier with the class's
    // init-failure text. Without an object the "No user data pointer ..." literal is logged and 0 answered.
    template <class T, class F>
    static INT_PTR mf_initDialog(HWND _hDlg, LPARAM _lParam, const wchar_t* _pszFunction,
                                 const wchar_t* _pszNoUserData, const wchar_t* _pszInitFailure,
                                 F&& _handler) noexcept {
        T* pObject = mf_storeOnInit<T>(_hDlg, _lParam);
        if (pObject == nullptr) {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, _pszNoUserData);
            return 0;
        }
        return mf_barrier(_pszFunction, _pszInitFailure, [&] { return _handler(*pObject); });
    }

    // A later message: fetch-or-log, then the handler behind a barrier that names the message.
    template <class T, class F>
    static INT_PTR mf_forward(HWND _hDlg, UINT _uMsg, const wchar_t* _pszFunction,
                              const wchar_t* _pszNoUserData, F&& _handler) noexcept {
        T* pObject = mf_fetch<T>(_hDlg, _pszFunction, _pszNoUserData);
        if (pObject == nullptr)
            return 0;
        return mf_barrier(
            _pszFunction, HANDLER_FAILURE, [&] { return _handler(*pObject); }, static_cast<unsigned>(_uMsg));
    }

    // A modal dialog of the user's language module with the object as init parameter; answers the
    // dialog's end code. When the dialog cannot be created, a UQErrno::_E_::Gui with the system error is
    // logged at LEVEL_E with _pszFailure (UQLog::TAB, the error's text) and thrown.
    static INT_PTR mf_showModal(HWND _hParent, int _nTemplateId, DLGPROC _pfnCallback, void* _pObject,
                                const wchar_t* _pszFunction, const wchar_t* _pszFailure) {
        HMODULE hLanguage = UQLanguage::mf_getUserLanguageHandle();
        SetLastError(0);
        const INT_PTR nResult = DialogBoxParamW(hLanguage, MAKEINTRESOURCEW(_nTemplateId), _hParent,
                                                _pfnCallback, reinterpret_cast<LPARAM>(_pObject));
        if (nResult == -1) {
            const UQErrno error = UQToolkitReport::mf_systemError(UQErrno::_E_::Gui);
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFailure, UQLog::TAB, error.mf_toString());
            throw error;
        }
        return nResult;
    }

    // The handle a WM_CTLCOLOR* handler answers, as the dialog manager reads it.
    static INT_PTR mf_brushResult(HBRUSH _hBrush) noexcept { return reinterpret_cast<INT_PTR>(_hBrush); }

    static INT_PTR mf_setMessageResult(HWND _hDlg, LONG_PTR _lResult) noexcept {
        SetWindowLongPtrW(_hDlg, DWLP_MSGRESULT, _lResult);
        return TRUE;
    }

    static void mf_clearUserData(HWND _hDlg) noexcept { SetWindowLongPtrW(_hDlg, GWLP_USERDATA, 0); }

    // The dialog's window text, for a record that names the dialog; empty when it has none.
    static CString mf_windowText(HWND _hDlg) {
        CString sText;
        const int nLength = GetWindowTextLengthW(_hDlg);
        if (nLength > 0) {
            std::vector<wchar_t> buffer(static_cast<std::size_t>(nLength) + 1, L'\0');
            GetWindowTextW(_hDlg, buffer.data(), nLength + 1);
            sText = buffer.data();
        }
        return sText;
    }

private:
    template <class... A>
    static void mf_implLogFailure(const wchar_t* _pszFunction, const wchar_t* _pszFailure,
                                  const UQErrno& _error, const A&... _leadingArgs) noexcept {
        try {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFailure, _leadingArgs..., UQLog::TAB,
                             _error.mf_toString());
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFailure, _leadingArgs..., UQLog::TAB,
                             CString());
        }
    }
};
