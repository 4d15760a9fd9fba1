// The dialog procedure that every dialog class of the library is driven by. A class's free callback
// (f_UQMessageBoxCallback, f_WizardDialogProcedure, ...) is one line:
//
//     namespace {
//     constexpr wchar_t kCallback[] = L"f_UQMessageBoxCallback";
//     constexpr wchar_t kInitFailure[] = L"Failure initializing message box:\r\n%s%s";
//     constexpr wchar_t kNoUserData[] = L"No user data pointer in message box panel";
//     }
//     INT_PTR CALLBACK f_UQMessageBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
//         return UQDialogProcedure<UQMessageBox, kCallback, kInitFailure, kNoUserData>::mf_dispatch(
//             _hDlg, _uMsg, _wParam, _lParam);
//     }
//
// and the dialog object's address is the init parameter of DialogBoxParamW or CreateDialogParamW.
//
// What the procedure does:
// - WM_INITDIALOG keeps the init parameter as the window's user data (GWLP_USERDATA) and answers the
//   object's initialisation; a UQErrno from it is logged at LEVEL_E under the callback's name with the
//   class's init-failure text (UQLog::TAB, the error's text), and the answer is 0.
// - Every later message that the class handles fetches the object from the user data first; without one
//   the class's "No user data pointer ..." text is logged at LEVEL_E (a %s in it gets the dialog's window
//   text) and the answer is 0.
// - WM_COMMAND answers the command handler's int, sign-extended; WM_CTLCOLORSTATIC, for classes that
//   colour static text, the handler's brush; WM_CLOSE lets the class end the dialog with its cancel
//   result; further messages only where the class asks for them. Anything else answers 0, so that the
//   dialog manager's default processing applies.
// - No exception leaves the procedure: a UQErrno or anything else thrown by a handler is logged and the
//   message answers 0.
//
// How the procedure reaches the object is UQDialogHandlers<T>: by default the members
//     INT_PTR mf_onInitDialog(HWND), int mf_onCommand(WPARAM, LPARAM), void mf_onClose(),
// and, where the class has them,
//     HBRUSH mf_onCtlColorStatic(WPARAM, LPARAM),
//     static int mf_handlesMessage(UINT) with INT_PTR mf_onMessage(HWND, UINT, WPARAM, LPARAM).
// A class whose handlers have other names (mf_implOnInitDialog, ...) specialises UQDialogHandlers.
#pragma once

#include "guibase/foundation/UQReport.h"

#include <type_traits>
#include <utility>
#include <vector>

namespace uqdialog {

template <class T, class = void> struct HasCtlColorStatic : std::false_type {};
template <class T>
struct HasCtlColorStatic<T, std::void_t<decltype(std::declval<T&>().mf_onCtlColorStatic(
                                std::declval<WPARAM>(), std::declval<LPARAM>()))>> : std::true_type {};

template <class T, class = void> struct HasMoreMessages : std::false_type {};
template <class T>
struct HasMoreMessages<
    T, std::void_t<decltype(T::mf_handlesMessage(std::declval<UINT>())),
                   decltype(std::declval<T&>().mf_onMessage(std::declval<HWND>(), std::declval<UINT>(),
                                                            std::declval<WPARAM>(), std::declval<LPARAM>()))>>
    : std::true_type {};

// The dialog's window text, for a record that names the dialog; empty when it has none.
inline CString windowText(HWND _hDlg) {
    CString sText;
    const int nLength = GetWindowTextLengthW(_hDlg);
    if (nLength > 0) {
        std::vector<wchar_t> buffer(static_cast<std::size_t>(nLength) + 1, L'\0');
        GetWindowTextW(_hDlg, buffer.data(), nLength + 1);
        sText = buffer.data();
    }
    return sText;
}

} // namespace uqdialog

template <class T> struct UQDialogHandlers {
    static const bool COLOURS_STATIC = uqdialog::HasCtlColorStatic<T>::value;
    static const bool MORE_MESSAGES = uqdialog::HasMoreMessages<T>::value;

    static INT_PTR mf_onInitDialog(T& _object, HWND _hDlg) { return _object.mf_onInitDialog(_hDlg); }
    static int mf_onCommand(T& _object, WPARAM _wParam, LPARAM _lParam) {
        return _object.mf_onCommand(_wParam, _lParam);
    }
    static void mf_onClose(T& _object) { _object.mf_onClose(); }

    template <class U = T> static HBRUSH mf_onCtlColorStatic(U& _object, WPARAM _wParam, LPARAM _lParam) {
        return _object.mf_onCtlColorStatic(_wParam, _lParam);
    }
    template <class U = T> static int mf_handlesMessage(UINT _uMsg) {
        if constexpr (uqdialog::HasMoreMessages<U>::value)
            return U::mf_handlesMessage(_uMsg);
        else
            return 0;
    }
    template <class U = T>
    static INT_PTR mf_onMessage(U& _object, HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
        return _object.mf_onMessage(_hDlg, _uMsg, _wParam, _lParam);
    }
};

template <class T, const wchar_t* CALLBACK_NAME, const wchar_t* INIT_FAILURE, const wchar_t* NO_USER_DATA,
          class H = UQDialogHandlers<T>>
class UQDialogProcedure {
public:
    static INT_PTR mf_dispatch(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) noexcept {
        static const wchar_t* const _sFunction_ = CALLBACK_NAME;
        if (_uMsg == WM_INITDIALOG)
            return mf_implInitDialog(_hDlg, _lParam);
        if (!mf_implHandles(_uMsg))
            return 0;
        T* pObject = reinterpret_cast<T*>(GetWindowLongPtrW(_hDlg, GWLP_USERDATA));
        if (pObject == nullptr) {
            mf_implLogNoUserData(_hDlg);
            return 0;
        }
        try {
            switch (_uMsg) {
            case WM_COMMAND:
                return static_cast<INT_PTR>(H::mf_onCommand(*pObject, _wParam, _lParam));
            case WM_CTLCOLORSTATIC:
                if constexpr (H::COLOURS_STATIC)
                    return reinterpret_cast<INT_PTR>(H::mf_onCtlColorStatic(*pObject, _wParam, _lParam));
                else
                    return 0;
            case WM_CLOSE:
                H::mf_onClose(*pObject);
                return 1;
            default:
                if constexpr (H::MORE_MESSAGES)
                    return H::mf_onMessage(*pObject, _hDlg, _uMsg, _wParam, _lParam);
                else
                    return 0;
            }
        } catch (const UQErrno& e) {
            mf_implLogFailure(_sFunction_, _uMsg, e);
        } catch (...) {
            mf_implLogUnexpected(_sFunction_, _uMsg);
        }
        return 0;
    }

private:
    static int mf_implHandles(UINT _uMsg) noexcept {
        if (_uMsg == WM_COMMAND || _uMsg == WM_CLOSE)
            return 1;
        if (_uMsg == WM_CTLCOLORSTATIC && H::COLOURS_STATIC)
            return 1;
        if constexpr (H::MORE_MESSAGES) {
            try {
                return H::mf_handlesMessage(_uMsg) ? 1 : 0;
            } catch (...) {
                return 0;
            }
        }
        return 0;
    }

    static INT_PTR mf_implInitDialog(HWND _hDlg, LPARAM _lParam) noexcept {
        static const wchar_t* const _sFunction_ = CALLBACK_NAME;
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, _lParam);
        T* pObject = reinterpret_cast<T*>(_lParam);
        if (pObject == nullptr) {
            mf_implLogNoUserData(_hDlg);
            return 0;
        }
        try {
            return H::mf_onInitDialog(*pObject, _hDlg);
        } catch (const UQErrno& e) {
            try {
                UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, INIT_FAILURE, UQLog::TAB, e.mf_toString());
            } catch (...) {
                UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, INIT_FAILURE, UQLog::TAB, CString());
            }
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, INIT_FAILURE, UQLog::TAB,
                             L"Unexpected exception");
        }
        return 0;
    }

    static void mf_implLogNoUserData(HWND _hDlg) noexcept {
        static const wchar_t* const _sFunction_ = CALLBACK_NAME;
        try {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, NO_USER_DATA, uqdialog::windowText(_hDlg));
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, NO_USER_DATA, CString());
        }
    }

    static void mf_implLogFailure(const wchar_t* _pszFunction, UINT _uMsg, const UQErrno& _error) noexcept {
        try {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction,
                             L"Failure handling window message 0x%4.4x:\r\n%s%s", _uMsg, UQLog::TAB,
                             _error.mf_toString());
        } catch (...) {
            mf_implLogUnexpected(_pszFunction, _uMsg);
        }
    }

    static void mf_implLogUnexpected(const wchar_t* _pszFunction, UINT _uMsg) noexcept {
        UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction,
                         L"Failure handling window message 0x%4.4x:\r\n%s%s", _uMsg, UQLog::TAB,
                         L"Unexpected exception");
    }
};
