#include "interfaces/korbase.h"

#include <atomic>
#include <mutex>

const UQLogData UQLogData::LEVEL_E(L'E', 1);
const UQLogData UQLogData::LEVEL_W(L'W', 2);
const UQLogData UQLogData::LEVEL_I(L'I', 3);
const UQLogData UQLogData::LEVEL_D(L'D', 4);
const UQLogData UQLogData::LEVEL_T(L'T', 5);
const UQLogData UQLogData::LEVEL_G(L'G', 6);

const wchar_t* const UQLog::TAB = L"    ";

namespace {

thread_local int t_languageSelected = 0;
std::atomic<UVLogSink*> g_sink{nullptr};

UVLogSink* productLog() noexcept {
    // Created on first use and kept for the life of the process: records may be written from static
    // destructors of other modules.
    static UVLogSink* s_sink = []() noexcept -> UVLogSink* {
        try {
            return new UQLogFileSink();
        } catch (...) {
            return nullptr;
        }
    }();
    return s_sink;
}

} // namespace

UVLogSink::~UVLogSink() = default;

void UQThreadContext::mf_setLoggingLanguage() noexcept {
    t_languageSelected = 1;
}

int UQThreadContext::mf_takeLoggingLanguageMark() noexcept {
    const int mark = t_languageSelected;
    t_languageSelected = 0;
    return mark;
}

void UQLog::mf_writeText(const UQLogData& _level, const wchar_t* _pszFunction,
                         const CString& _sText) noexcept {
    try {
        UQLogRecord record{&_level, _pszFunction != nullptr ? _pszFunction : L"",
                           _sText,  GetCurrentThreadId(),
                           {0, 0},  UQThreadContext::mf_takeLoggingLanguageMark()};
        GetSystemTimeAsFileTime(&record.ftTime);
        UVLogSink* sink = g_sink.load(std::memory_order_acquire);
        if (sink == nullptr)
            sink = productLog();
        if (sink != nullptr)
            sink->mf_write(record);
    } catch (...) {
        // The log is written from destructors and catch handlers: losing a record is all that may happen.
    }
}

UVLogSink* UQLog::mf_setSink(UVLogSink* _pSink) noexcept {
    return g_sink.exchange(_pSink, std::memory_order_acq_rel);
}
