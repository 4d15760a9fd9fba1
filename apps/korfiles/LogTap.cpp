#include "LogTap.h"

namespace {

// Whether a registry operation's record tells of a missing key or value, in the words of UQRegistry's
// failures (docs/registry.md): "Value 'Name' not found in 'HKLM\Key'", "Key 'HKLM\Key' not found (value
// 'Name')".
bool isMissing(const CString& _sText) {
    return (_sText.Left(7) == L"Value '" && _sText.Find(L"' not found in '") > 0) ||
           (_sText.Left(5) == L"Key '" && _sText.Find(L"' not found (") > 0);
}

bool isRegistryOperation(const wchar_t* _pszFunction) {
    return _pszFunction != nullptr && CString(_pszFunction).Left(12) == L"UQRegistry::";
}

} // namespace

LogTap::LogTap() : m_pProductLog(new UQLogFileSink()), m_pPrevious(nullptr), m_bFailure(false) {
    m_pPrevious = UQLog::mf_setSink(this);
    // The file is opened by the first record only, so keeping an unused one costs nothing.
    if (m_pPrevious != nullptr)
        m_pProductLog.reset();
}

LogTap::~LogTap() {
    UQLog::mf_setSink(m_pPrevious);
}

void LogTap::mf_write(const UQLogRecord& _record) noexcept {
    if (m_pPrevious != nullptr)
        m_pPrevious->mf_write(_record);
    else if (m_pProductLog)
        m_pProductLog->mf_write(_record);
    if (_record.pLevel == nullptr || _record.pLevel->mf_getLetter() != L'E')
        return;
    try {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_bFailure = true;
        m_sFailure.Empty();
        CString line = _record.sText.Mid(_record.sText.ReverseFind(L'\n') + 1);
        line.TrimLeft();
        line.TrimRight();
        m_sFailure = line;
        if (m_sStoreFailure.IsEmpty() && isRegistryOperation(_record.pszFunction) &&
            !isMissing(_record.sText))
            m_sStoreFailure = _record.sText;
    } catch (...) {
        // Out of memory: the failure has counted, only its words are lost.
    }
}

void LogTap::mf_mark() noexcept {
    try {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_bFailure = false;
        m_sFailure.Empty();
        m_sStoreFailure.Empty();
    } catch (...) {
        // std::mutex::lock does not fail on the platforms built for.
    }
}

bool LogTap::mf_hasFailure() const noexcept {
    try {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_bFailure;
    } catch (...) {
        return true;
    }
}

CString LogTap::mf_getFailure() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_sFailure;
}

CString LogTap::mf_getStoreFailure() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_sStoreFailure;
}
