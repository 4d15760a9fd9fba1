#include "MigrationListing.h"

#include "guibase/foundation/UQReport.h"

#include <algorithm>
#include <utility>

namespace {

// The reader's entries, kept until the whole listing is read.
class EntryCollector : public UVListingFileReader {
public:
    struct Entry {
        std::uint32_t uLine;
        CString sPath;
        std::uint32_t uVersion;
        CString sResult;
        UQSeverity severity;
    };

    void mf_onMigrationEntry(std::uint32_t _uNumber, const UQFileTime&, const CString& _sPath,
                             std::uint32_t _uVersion, const CString& _sResult,
                             const UQSeverity& _severity) override {
        m_entries.push_back(Entry{_uNumber, _sPath, _uVersion, _sResult, _severity});
    }

    std::vector<Entry> m_entries;
};

} // namespace

std::vector<UQErrno> MigrationListing::mf_read(const std::string& _sText, const CString& _sName,
                                               UVReadProgress* _pProgress) {
    static const wchar_t* const _sFunction_ = L"MigrationListing::mf_read";
    EntryCollector collector;
    UQListingReader::Result result = UQListingReader::mf_readText(_sText, _sName, collector, _pProgress);
    // Ordinal, as the list's halving search compares; stable, so the first line of a path comes first.
    std::stable_sort(collector.m_entries.begin(), collector.m_entries.end(),
                     [](const EntryCollector::Entry& _a, const EntryCollector::Entry& _b) {
                         return _a.sPath.Compare(_b.sPath) < 0;
                     });
    for (const EntryCollector::Entry& entry : collector.m_entries) {
        try {
            m_list.mf_onMigrationEntry(entry.uLine, UQFileTime(0), entry.sPath, entry.uVersion, entry.sResult,
                                       entry.severity);
        } catch (const UQErrno& e) {
            CString detail;
            detail.Format(L"%s:%lu: entry refused: %s", _sName, entry.uLine, e.mf_toString());
            result.errors.push_back(UQErrno(e.mf_getData(), detail));
            UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Listing line skipped: %s", detail);
        }
    }
    collector.m_entries = std::vector<EntryCollector::Entry>();
    m_list.mf_close();
    // Newest first: the ranges string then reads upwards and the newest version is the selected one.
    m_list.mf_sortVersions(0);
    return std::move(result.errors);
}

void MigrationListing::mf_getItems(UQFileListItem::Array& _rItems, const Filter& _filter,
                                   FileListOrder::Key _key, int _bAscending) {
    _rItems.RemoveAll();
    // Information, warning and error are the green, yellow and red of the list's severity tests.
    m_list.mf_getList(_rItems, _filter.bSkipStubFiles, _filter.bSkipInformation, _filter.bSkipWarning,
                      _filter.bSkipError);
    FileListOrder::mf_sort(_rItems, _key, _bAscending);
}
