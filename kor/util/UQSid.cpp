#include "interfaces/korutil.h"

UQSid::UQSid(const CString& _sSidString, const CString& _sDisplayName)
    : m_sSidString(_sSidString), m_sDisplayName(_sDisplayName) {}

UQSid::~UQSid() = default;

CString UQSid::mf_getSidString() const {
    return m_sSidString;
}

const CString& UQSid::mf_getDisplayName() const noexcept {
    return m_sDisplayName;
}
