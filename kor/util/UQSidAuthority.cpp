#include "interfaces/korutil.h"

UQSidAuthority::UQSidAuthority(const CString& _sName, const CString& _sDisplayName, int _bMarked)
    : m_sName(_sName), m_sDisplayName(_sDisplayName), m_bMarked(_bMarked) {}

UQSidAuthority::~UQSidAuthority() = default;
