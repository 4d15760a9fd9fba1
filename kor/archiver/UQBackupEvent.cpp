#include "interfaces/korarchiver.h"

UQBackupEvent::UQBackupEvent(const CString& _sPath, const UQSeverity& _severity, const CString& _sOutcome)
    : UQEventStatus(_severity, _sOutcome), m_sPath(_sPath) {}

UQBackupEvent::~UQBackupEvent() = default;

CString UQBackupEvent::mf_toString() const {
    CString s;
    s.Format(L"BackupEvent path='%s' outcome='%s'", m_sPath, mf_getOutcomeText());
    return s;
}
