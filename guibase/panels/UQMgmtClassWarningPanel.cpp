#include "guibase/panels/UQMgmtClassWarningPanel.h"

#include "guibase/foundation/UQReport.h"

namespace {

const unsigned TEXT_TITLE = 3943;
const unsigned TEXT_HOLD_NOTE = 4529;
const wchar_t* const VALUE_NAME = L"BackendEntryProtection";

} // namespace

UQMgmtClassWarningPanel::UQMgmtClassWarningPanel() : m_ulBackendEntryProtection(PROTECTION_NONE) {
    static const wchar_t* const _sFunction_ = L"UQMgmtClassWarningPanel::UQMgmtClassWarningPanel";
    const CString sKey = UQPath::mf_appendDirectory(UQRegistry::mf_getRegistryRoot(CString()), L"Options");
    DWORD dwValue = PROTECTION_NONE;
    try {
        UQRegistry::mf_getOrSetValue(VALUE_NAME, dwValue, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure reading registry key '%s\\%s':\r\n%s%s\r\n%sAssuming default: %lu", sKey,
                         VALUE_NAME, UQLog::TAB, e.mf_toString(), UQLog::TAB, PROTECTION_NONE);
        m_ulBackendEntryProtection = PROTECTION_NONE;
        // The text says otherwise, but a panel that cannot tell the method is not built.
        throw;
    }
    switch (dwValue) {
    case PROTECTION_NONE:
        UQReport::mf_log(UQLogData::LEVEL_T, _sFunction_,
                         L"Backend entry protection method is not enabled (default)");
        break;
    case PROTECTION_HOLD:
        UQReport::mf_log(UQLogData::LEVEL_I, _sFunction_, L"Backend entry protection method is hold");
        m_ulBackendEntryProtection = PROTECTION_HOLD;
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Unknown value for registry key '%s\\%s':\r\n%s'%ul'\r\n%sAssuming default: %lu",
                         sKey, VALUE_NAME, UQLog::TAB, static_cast<unsigned long>(dwValue), UQLog::TAB,
                         PROTECTION_NONE);
        break;
    }
}

UQMgmtClassWarningPanel::~UQMgmtClassWarningPanel() = default;

int UQMgmtClassWarningPanel::mf_isBackendEntryProtection() const noexcept {
    return m_ulBackendEntryProtection == PROTECTION_HOLD ? 1 : 0;
}

void UQMgmtClassWarningPanel::mf_setMessage(const CString& _sComment, const UQSeverity& _severity,
                                            const CString& _sRetainInit, const CString& _sRetainVers) {
    CString sMessage = _sComment;
    UQSeverity severity = _severity;
    if (mf_isBackendEntryProtection() &&
        (_sRetainInit.Compare(L"EVENT") == 0 || _sRetainVers.Find(L"(NOLIMIT)") < 0)) {
        sMessage += L"\r\n";
        sMessage += UQString(TEXT_HOLD_NOTE).mf_getText();
        severity = UQSeverity::Info;
    }
    UQMessagePanel::mf_setMessage(severity, UQString(TEXT_TITLE).mf_getText(), sMessage);
}
