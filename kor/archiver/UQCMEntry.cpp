#include "interfaces/korarchiver.h"

UQCMEntry::UQCMEntry(const CString& uncPath, std::uint32_t version, const UQFileSize& size,
                     const UQFileTime& lastWriteTime)
    : m_sUNCPath(uncPath), m_uVersion(version), m_size(size), m_lastWriteTime(lastWriteTime) {}

UQCMEntry::~UQCMEntry() = default;

CString UQCMEntry::mf_toShortString() const {
    CString s;
    s.Format(L"'%s' v%lu %s bytes %s %s", m_sUNCPath, m_uVersion, m_size.mf_toString(),
             UQNumberFormatter::mf_formatDate(m_lastWriteTime),
             UQNumberFormatter::mf_formatTime(m_lastWriteTime));
    return s;
}
