#include "interfaces/korutil.h"

UQSourceEvent::UQSourceEvent(const CString& directory, const CString& fileName, const UQSeverity& severity,
                             const CString& outcome)
    : UQEventStatus(severity, outcome), m_sDirectory(directory), m_sFileName(fileName) {}

UQSourceEvent::~UQSourceEvent() = default;

CString UQSourceEvent::mf_toString() const {
    CString s;
    s.Format(L"SourceEvent dir='%s' file='%s' outcome='%s'", m_sDirectory, m_sFileName, mf_getOutcomeText());
    return s;
}
