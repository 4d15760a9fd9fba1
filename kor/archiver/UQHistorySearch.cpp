#include "interfaces/korarchiver.h"

#include <new>
#include <optional>
#include <system_error>
#include <thread>

namespace {

template <class... A>
void logError(const wchar_t* function, const wchar_t* format, const A&... args) noexcept {
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(UQLogData::LEVEL_E, function, format, args...);
}

} // namespace

struct UQHistorySearch::Impl {
    Impl(const UQHistoryStore& store, const UQHistoryQuery& query, UVQueryDataSink& sink,
         UVReadProgress* progress)
        : store(store), query(query), sink(sink), progress(progress) {}

    // The thread's whole life: whatever the search throws is kept for mf_wait, nothing leaves the thread.
    void run() noexcept {
        static const wchar_t* const _sFunction_ = L"UQHistorySearch::mf_implRun";
        try {
            try {
                result = store.mf_search(query, sink, &cancel, progress);
            } catch (const UQErrno& e) {
                // Logged where it arose.
                error.emplace(e);
            } catch (const std::bad_alloc&) {
                logError(_sFunction_, L"No memory for the history search of '%s'", store.mf_getFile());
                error.emplace(UQErrno::_E_::Memory);
            } catch (CException* e) {
                const bool memory = dynamic_cast<CMemoryException*>(e) != nullptr;
                e->Delete();
                logError(_sFunction_,
                         memory ? L"No memory for the history search of '%s'"
                                : L"Unexpected exception in the history search of '%s'",
                         store.mf_getFile());
                error.emplace(memory ? UQErrno::_E_::Memory : UQErrno::_E_::Internal);
            } catch (...) {
                logError(_sFunction_, L"Unexpected exception in the history search of '%s'",
                         store.mf_getFile());
                error.emplace(UQErrno::_E_::Internal);
            }
        } catch (...) {
            // Even keeping the error failed; the search still must not take the process down.
            result = UQHistoryStore::Result();
        }
    }

    UQHistoryStore store;
    UQHistoryQuery query;
    UVQueryDataSink& sink;
    UVReadProgress* progress;
    UQCancelSwitch cancel;
    UQHistoryStore::Result result;
    std::optional<UQErrno> error;
    std::thread thread;
};

UQHistorySearch::UQHistorySearch(const UQHistoryStore& store, const UQHistoryQuery& query,
                                 UVQueryDataSink& sink, UVReadProgress* progress)
    : m_pImpl(new Impl(store, query, sink, progress)) {
    static const wchar_t* const _sFunction_ = L"UQHistorySearch::UQHistorySearch";
    try {
        m_pImpl->thread = std::thread(&Impl::run, m_pImpl);
    } catch (const std::system_error& e) {
        logError(_sFunction_, L"Failure starting the history search thread: %s", e.what());
        delete m_pImpl;
        throw UQErrno(UQErrno::_E_::System);
    }
}

UQHistorySearch::~UQHistorySearch() {
    if (m_pImpl->thread.joinable()) {
        m_pImpl->cancel.mf_implTryCancel();
        m_pImpl->thread.join();
    }
    delete m_pImpl;
}

void UQHistorySearch::mf_cancel() noexcept {
    m_pImpl->cancel.mf_implTryCancel();
}

UQHistoryStore::Result UQHistorySearch::mf_wait() {
    if (m_pImpl->thread.joinable())
        m_pImpl->thread.join();
    if (m_pImpl->error)
        throw UQErrno(*m_pImpl->error);
    return m_pImpl->result;
}
