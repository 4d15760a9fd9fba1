#include "interfaces/korutil.h"

UQProgressEvent::UQProgressEvent(std::uint32_t _uAction, const CString& _sText, int _nCurObjects,
                                 int _nTotalObjects, std::int64_t _nCurData, std::int64_t _nTotalData)
    : UQEvent(UQEVENT_ID_PROGRESS), m_uAction(_uAction), m_sText(_sText), m_nCurObjects(_nCurObjects),
      m_nTotalObjects(_nTotalObjects), m_nCurData(_nCurData), m_nTotalData(_nTotalData) {}

UQProgressEvent::~UQProgressEvent() = default;

unsigned long UQProgressEvent::mf_calcCurDataPercent() const noexcept {
    if (m_nTotalData <= 0 || m_nCurData <= 0)
        return 0;
    if (m_nCurData >= m_nTotalData)
        return 100;
    // cur < total <= 2^63 - 1: cur * 100 may overflow 64 bits, so divide first where it would.
    const std::uint64_t cur = static_cast<std::uint64_t>(m_nCurData);
    const std::uint64_t total = static_cast<std::uint64_t>(m_nTotalData);
    if (cur <= UINT64_MAX / 100)
        return static_cast<unsigned long>(cur * 100 / total);
    return static_cast<unsigned long>(cur / (total / 100 + (total % 100 != 0 ? 1 : 0)));
}

CString UQProgressEvent::mf_toString() const {
    CString s;
    s.Format(L"ProgressEvent action=%lu text='%s' objects=%d/%d data=%I64d/%I64d", m_uAction, m_sText,
             m_nCurObjects, m_nTotalObjects, m_nCurData, m_nTotalData);
    return s;
}
