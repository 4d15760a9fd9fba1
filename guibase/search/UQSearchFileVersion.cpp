#include "guibase/search/UQSearchFileVersion.h"

#include "guibase/foundation/UQReport.h"

#include <new>

CString UQSearchFileVersion::m_asStatus[6];
int UQSearchFileVersion::m_bStatusInitialized = 0;

void* UQSearchFileVersion::operator new(std::size_t _nBytes) {
    return UQAllocation::mf_allocateOrThrow(_nBytes);
}

void UQSearchFileVersion::operator delete(void* _p) noexcept {
    UQAllocation::mf_free(_p);
}

UQSearchFileVersion::UQSearchFileVersion(const UQQueryData* _pQueryData)
    : m_pQueryData(_pQueryData), m_iStatus(-1) {
    static const wchar_t* const _sFunction_ = L"UQSearchFileVersion::UQSearchFileVersion";
    if (_pQueryData == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"NULL == _pQueryData");
    mf_implLoadStatusTexts();
    const int protectedOffset = _pQueryData->mf_isProtected() ? 1 : 0;
    // In this order, so that an event-based record is never expiring.
    if (_pQueryData->mf_isEventBased() && _pQueryData->mf_isDeletionStarted())
        m_iStatus = 4 + protectedOffset;
    else if (!_pQueryData->mf_isEventBased() && _pQueryData->mf_getExpiryTime().uFileTime != 0)
        m_iStatus = 2 + protectedOffset;
    else
        m_iStatus = 0 + protectedOffset;
}

void UQSearchFileVersion::mf_implLoadStatusTexts() {
    // Loaded once, by the first version made, or by a search list's close before its threads start.
    if (m_bStatusInitialized == 0) {
        static const unsigned NUMBERS[6] = {3102, 3104, 3530, 3532, 3343, 3345};
        for (int i = 0; i < 6; ++i)
            m_asStatus[i] = UQString(NUMBERS[i]).mf_getText();
        m_bStatusInitialized = 1;
    }
}

UQSearchFileVersion::~UQSearchFileVersion() {
    delete m_pQueryData;
}

int UQSearchFileVersion::mf_isDeleted() const {
    return m_pQueryData->mf_isEventBased() && m_pQueryData->mf_isDeletionStarted() ? 1 : 0;
}

int UQSearchFileVersion::mf_isExpiring() const {
    return !m_pQueryData->mf_isEventBased() && m_pQueryData->mf_getExpiryTime().uFileTime != 0 ? 1 : 0;
}

int UQSearchFileVersion::mf_isAvailable() const {
    if (m_pQueryData->mf_isEventBased())
        return m_pQueryData->mf_isDeletionStarted() ? 0 : 1;
    return m_pQueryData->mf_getExpiryTime().uFileTime == 0 ? 1 : 0;
}
