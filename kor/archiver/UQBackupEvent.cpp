#include "interfaces/korarchiver.h"

UQBackupEvent::UQBackupEvent(const CString& path, const UQSeverity& severity, const CString& outcome)
    : UQEventStatus(severity, outcome), m_sPath(path) {}

UQBackupEvent::~UQBackupEvent() = default;

CString UQBackupEvent::mf_toString() const {
    CString s;
    s.Format(L"BackupEvent path='%s' outcome='%s'", m_sPath, mf_getOutcomeText());
    return s;
}
