#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

#include <new>
#include <optional>
#include <system_error>
#include <thread>

struct UQHistorySearch::Impl {
    Impl(const UQHistoryStore& _store, const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
         UVReadProgress* _pProgress)
        : store(_store), query(_query), sink(_rSink), progress(_pProgress) {}

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
                UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                    L"No memory for the history search of '%s'", store.mf_getFile());
                error.emplace(UQErrno::_E_::Memory);
            } catch (CException* e) {
                const bool memory = dynamic_cast<CMemoryException*>(e) != nullptr;
                e->Delete();
                UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                    memory ? L"No memory for the history search of '%s'"
                                           : L"Unexpected exception in the history search of '%s'",
                                    store.mf_getFile());
                error.emplace(memory ? UQErrno::_E_::Memory : UQErrno::_E_::Internal);
            } catch (...) {
                UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                    L"Unexpected exception in the history search of '%s'",
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

UQHistorySearch::UQHistorySearch(const UQHistoryStore& _store, const UQHistoryQuery& _query,
                                 UVQueryDataSink& _rSink, UVReadProgress* _pProgress)
    : m_pImpl(new Impl(_store, _query, _rSink, _pProgress)) {
    static const wchar_t* const _sFunction_ = L"UQHistorySearch::UQHistorySearch";
    try {
        m_pImpl->thread = std::thread(&Impl::run, m_pImpl.get());
    } catch (const std::system_error& e) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                            L"Failure starting the history search thread: %s", e.what());
        throw UQErrno(UQErrno::_E_::System);
    }
}

UQHistorySearch::~UQHistorySearch() {
    if (m_pImpl->thread.joinable()) {
        m_pImpl->cancel.mf_implTryCancel();
        m_pImpl->thread.join();
    }
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
