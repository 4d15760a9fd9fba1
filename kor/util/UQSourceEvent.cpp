#include "interfaces/korutil.h"

UQSourceEvent::UQSourceEvent(const CString& _sDirectory, const CString& _sFileName,
                             const UQSeverity& _severity, const CString& _sOutcome)
    : UQEventStatus(_severity, _sOutcome), m_sDirectory(_sDirectory), m_sFileName(_sFileName) {}

UQSourceEvent::~UQSourceEvent() = default;

CString UQSourceEvent::mf_toString() const {
    CString s;
    s.Format(L"SourceEvent dir='%s' file='%s' outcome='%s'", m_sDirectory, m_sFileName, mf_getOutcomeText());
    return s;
}
