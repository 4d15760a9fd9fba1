#include "HistorySource.h"

#include "SampleHistoryText.h"

#include <new>
#include <optional>
#include <system_error>
#include <thread>

namespace {

std::string sampleText() {
    return std::string(reinterpret_cast<const char*>(SAMPLE_HISTORY), SAMPLE_HISTORY_SIZE);
}

// The sample's search on its own thread, as UQHistorySearch runs a file's: whatever it throws is kept
// and thrown again on the waiting thread, nothing leaves the worker.
UQHistoryStore::Result searchSampleOnWorker(const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                                            UVReadProgress* _pProgress) {
    const std::string text = sampleText();
    const CString name(HistorySource::SAMPLE_NAME);
    UQHistoryStore::Result result;
    std::optional<UQErrno> error;
    auto run = [&]() noexcept {
        try {
            try {
                result = UQHistoryStore::mf_searchText(text, name, _query, _rSink, nullptr, _pProgress);
            } catch (const UQErrno& e) {
                error.emplace(e);
            } catch (const std::bad_alloc&) {
                error.emplace(UQErrno::_E_::Memory);
            } catch (CException* e) {
                const bool memory = dynamic_cast<CMemoryException*>(e) != nullptr;
                e->Delete();
                error.emplace(memory ? UQErrno::_E_::Memory : UQErrno::_E_::Internal);
            } catch (...) {
                error.emplace(UQErrno::_E_::Internal);
            }
        } catch (...) {
            // Keeping the error failed too: the result then tells of nothing found.
            result = UQHistoryStore::Result();
        }
    };
    std::thread worker;
    try {
        worker = std::thread(run);
    } catch (const std::system_error&) {
        throw UQErrno(UQErrno::_E_::System);
    }
    worker.join();
    if (error)
        throw UQErrno(*error);
    return result;
}

} // namespace

const wchar_t* const HistorySource::SAMPLE_NAME = L"history.txt";

HistorySource HistorySource::mf_sample() {
    return HistorySource(SAMPLE_NAME, 1);
}

HistorySource HistorySource::mf_file(const CString& _sFile) {
    return HistorySource(_sFile, 0);
}

UQHistoryStore::Result HistorySource::mf_search(const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                                                UVReadProgress* _pProgress) const {
    if (m_bSample)
        return searchSampleOnWorker(_query, _rSink, _pProgress);
    UQHistorySearch search(UQHistoryStore(m_sName), _query, _rSink, _pProgress);
    return search.mf_wait();
}
