#include "interfaces/korutil.h"

UQEventStatus::UQEventStatus(const UQSeverity& _severity, const CString& _sOutcome)
    : m_severity(_severity), m_sOutcome(_sOutcome) {}

UQEventStatus::~UQEventStatus() = default;

CString UQEventStatus::mf_getOutcomeText() const {
    return m_sOutcome;
}
