#include "interfaces/korbase.h"

CString UQFileSize::mf_toString() const {
    CString s;
    s.Format(L"%I64d", m_nBytes);
    return s;
}

CString UQFileSize::mf_toDisplayString() const {
    static const wchar_t* const UNITS[] = {L"KB", L"MB", L"GB", L"TB"};
    // The magnitude as unsigned, so that the smallest value has one too.
    const std::uint64_t bytes = m_nBytes < 0
                                    ? static_cast<std::uint64_t>(0) - static_cast<std::uint64_t>(m_nBytes)
                                    : static_cast<std::uint64_t>(m_nBytes);
    const wchar_t* const sign = m_nBytes < 0 ? L"-" : L"";
    CString s;
    if (bytes < 1024) {
        s.Format(bytes == 1 ? L"%s%I64u Byte" : L"%s%I64u Bytes", sign, bytes);
        return s;
    }
    int unit = 0;
    std::uint64_t divisor = 1024;
    while (unit < 3 && bytes / divisor >= 1024) {
        divisor *= 1024;
        ++unit;
    }
    // Tenths, rounded half up, without overflowing for the largest sizes.
    std::uint64_t tenths = bytes / divisor * 10 + ((bytes % divisor) * 10 + divisor / 2) / divisor;
    if (tenths >= 10240 && unit < 3) {
        // 1023.95 KB and above round to 1024.0 KB, which is shown as 1.0 MB.
        divisor *= 1024;
        ++unit;
        tenths = bytes / divisor * 10 + ((bytes % divisor) * 10 + divisor / 2) / divisor;
    }
    s.Format(L"%s%I64u.%I64u %s", sign, tenths / 10, tenths % 10, UNITS[unit]);
    return s;
}
