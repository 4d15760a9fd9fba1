#pragma once

#include "interfaces/korarchiver.h"

#include <string>

// Where korfiles search reads the history: a store file, or the sample store built into the program
// (kor/archiver/sample/history.txt), so that the search works without any file beside it.
class HistorySource {
public:
    // The name that the sample's malformed records would be reported under.
    static const wchar_t* const SAMPLE_NAME;

    static HistorySource mf_sample();
    static HistorySource mf_file(const CString& _sFile);

    // Searches on a worker thread of its own and waits for it: a file through UQHistorySearch, the
    // sample through UQHistoryStore::mf_searchText; the sink is called on that thread. Answers the
    // search's result or throws the UQErrno it ended with (_E_::File for a store that cannot be read).
    // _pProgress, if given, hears on that thread how far the reading has come.
    UQHistoryStore::Result mf_search(const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                                     UVReadProgress* _pProgress = nullptr) const;

    const CString& mf_getName() const noexcept { return m_sName; }
    int mf_isSample() const noexcept { return m_bSample; }

private:
    HistorySource(const CString& _sName, int _bSample) : m_sName(_sName), m_bSample(_bSample) {}

    CString m_sName;
    int m_bSample;
};
