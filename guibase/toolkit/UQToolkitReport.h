// The failure records that the toolkit's helper classes share.
#pragma once

#include "guibase/foundation/UQReport.h"

class UQToolkitReport {
public:
    // The error of a Win32 call that has just failed: the category with GetLastError().
    static UQErrno mf_systemError(const UQErrnoValue& _value) { return UQReport::mf_systemError(_value); }

    // An item form whose item is missing: "Failure getting item with id=%d:\r\n%s%s" at LEVEL_E under the
    // item form's own name, with the last error that the item lookup left.
    static void mf_logMissingItem(const wchar_t* _pszFunction, int _nId) noexcept {
        try {
            UQReport::mf_logWrapped(mf_systemError(UQErrno::_E_::ItemNotFound), _pszFunction,
                                    L"Failure getting item with id=%d:\r\n%s%s", _nId);
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Failure getting item with id=%d", _nId);
        }
    }

    // The same on one line, as the edit and combo box item forms word it: "Failure getting item with
    // id=%d: %s".
    static void mf_logMissingItemOnOneLine(const wchar_t* _pszFunction, int _nId) noexcept {
        try {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Failure getting item with id=%d: %s", _nId,
                             mf_systemError(UQErrno::_E_::ItemNotFound).mf_toString());
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Failure getting item with id=%d", _nId);
        }
    }
};
