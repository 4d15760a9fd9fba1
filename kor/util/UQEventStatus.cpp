#include "interfaces/korutil.h"

UQEventStatus::UQEventStatus(const UQSeverity& severity, const CString& outcome)
    : m_severity(severity), m_sOutcome(outcome) {}

UQEventStatus::~UQEventStatus() = default;

CString UQEventStatus::mf_getOutcomeText() const {
    return m_sOutcome;
}
