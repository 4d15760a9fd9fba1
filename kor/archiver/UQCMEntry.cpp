#include "interfaces/korarchiver.h"

UQCMEntry::UQCMEntry(const CString& _sUNCPath, std::uint32_t _uVersion, const UQFileSize& _size,
                     const UQFileTime& _lastWriteTime)
    : m_sUNCPath(_sUNCPath), m_uVersion(_uVersion), m_size(_size), m_lastWriteTime(_lastWriteTime) {}

UQCMEntry::~UQCMEntry() = default;

CString UQCMEntry::mf_toShortString() const {
    CString s;
    s.Format(L"'%s' v%lu %s bytes %s %s", m_sUNCPath, m_uVersion, m_size.mf_toString(),
             UQNumberFormatter::mf_formatDate(m_lastWriteTime),
             UQNumberFormatter::mf_formatTime(m_lastWriteTime));
    return s;
}
