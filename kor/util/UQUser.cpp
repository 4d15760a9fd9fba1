#include "interfaces/korutil.h"

UQUser::UQUser(const CString& _sSidString, const CString& _sDisplayName, const CString& _sSecondText)
    : UQSid(_sSidString, _sDisplayName), m_sSecondText(_sSecondText) {}

UQUser::~UQUser() = default;
