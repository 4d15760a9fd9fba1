#include "interfaces/korbase_testing.h"

#include <mutex>

struct UQLogCapture::Impl {
    mutable std::mutex mutex;
    std::vector<Entry> entries;
};

UQLogCapture::UQLogCapture() : m_pImpl(new Impl), m_pPrevious(UQLog::mf_setSink(this)) {}

UQLogCapture::~UQLogCapture() {
    UQLog::mf_setSink(m_pPrevious);
}

void UQLogCapture::mf_write(const UQLogRecord& _record) noexcept {
    try {
        Entry e{_record.pLevel->mf_getLetter(), CString(_record.pszFunction), _record.sText,
                _record.dwThreadId, _record.bLanguageSelected};
        std::lock_guard<std::mutex> lock(m_pImpl->mutex);
        m_pImpl->entries.push_back(std::move(e));
    } catch (...) {
    }
}

std::vector<UQLogCapture::Entry> UQLogCapture::mf_getEntries() const {
    std::lock_guard<std::mutex> lock(m_pImpl->mutex);
    return m_pImpl->entries;
}

void UQLogCapture::mf_clear() {
    std::lock_guard<std::mutex> lock(m_pImpl->mutex);
    m_pImpl->entries.clear();
}
