// korclient's throughput against the platform's own limits, each pair in one run (windows, under Wine):
//   migrate   N files into the server folder (stored, recorded, stub in place; every step flushed)
//             against CopyFileW of the same N files (the faster of a copy before and one after migrating);
//   retrieve  the N versions into a new folder (each written under a temporary name, hash checked, named)
//             against the same CopyFileW;
//   search    from pressing Search in the window to its filled list, over a generated history of R records,
//             against the store's own read of those records plus a bare list view told of the same rows
//             (the fastest way), and for reading, the same list filled row by row.
// Prints files (or records) per second and the ratios; exit code 1 when a goal is missed.
//   korclient_bench.exe [FILES (10000)] [RECORDS (1000000)]
#include "KorClientIds.h"
#include "UQClientSample.h"
#include "UQClientWindow.h"
#include "UQDialogScript.h"
#include "UQMigration.h"
#include "UQRetrieval.h"

#include "guibase/settings/UQGuiRegistry.h"
#include "interfaces/korarchiver.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

const double FILE_GOAL = 2.0;
const double SEARCH_GOAL = 1.5;
const wchar_t* const ROOT = L"C:\\korclient-bench";

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point _start) {
    return std::chrono::duration<double>(Clock::now() - _start).count();
}

// N files of 1 to 16 KiB in 100 folders.
std::vector<std::wstring> makeFiles(const std::wstring& _sFolder, int _nFiles) {
    std::vector<std::wstring> relatives;
    std::string sContent;
    std::uint32_t uState = 12345;
    for (int i = 0; i < _nFiles; ++i) {
        const std::wstring sFolder = L"folder " + std::to_wstring(i % 100);
        const std::wstring sRelative = sFolder + L"\\file " + std::to_wstring(i) + L".dat";
        if (i < 100) {
            std::wstring sWhy;
            UQSafeFile::mf_createFolders(_sFolder, sFolder, sWhy);
        }
        sContent.resize(1024 + (uState % 15360));
        for (char& ch : sContent) {
            uState ^= uState << 13;
            uState ^= uState >> 17;
            uState ^= uState << 5;
            ch = static_cast<char>(uState);
        }
        const UQFileHandle file(CreateFileW(UQSafeFile::mf_long(_sFolder + L"\\" + sRelative).c_str(),
                                            GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                            nullptr));
        // On disk before any side is timed, so that no side pays for writing back what came before it.
        if (file && UQSafeFile::mf_writeAll(file.mf_get(), sContent.data(), sContent.size()) == 0)
            FlushFileBuffers(file.mf_get());
        relatives.push_back(sRelative);
    }
    return relatives;
}

double copyFiles(const std::wstring& _sFrom, const std::wstring& _sTo, bool _bFlush,
                 const std::vector<std::wstring>& _files) {
    const Clock::time_point start = Clock::now();
    CreateDirectoryW(UQSafeFile::mf_long(_sTo).c_str(), nullptr);
    for (int i = 0; i < 100; ++i)
        CreateDirectoryW(UQSafeFile::mf_long(_sTo + L"\\folder " + std::to_wstring(i)).c_str(), nullptr);
    for (const std::wstring& sFile : _files) {
        CopyFileW(UQSafeFile::mf_long(_sFrom + L"\\" + sFile).c_str(),
                  UQSafeFile::mf_long(_sTo + L"\\" + sFile).c_str(), TRUE);
        if (_bFlush) {
            // The copy made durable, as migration makes each step durable.
            const UQFileHandle copy(CreateFileW(UQSafeFile::mf_long(_sTo + L"\\" + sFile).c_str(),
                                                GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                                FILE_ATTRIBUTE_NORMAL, nullptr));
            FlushFileBuffers(copy.mf_get());
        }
    }
    const double dSeconds = secondsSince(start);
    if (!_bFlush)
        for (const std::wstring& sFile : _files) {
            // Untimed: what the copy left to be written back would otherwise slow the side after it.
            const UQFileHandle copy(CreateFileW(UQSafeFile::mf_long(_sTo + L"\\" + sFile).c_str(),
                                                GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                                FILE_ATTRIBUTE_NORMAL, nullptr));
            FlushFileBuffers(copy.mf_get());
        }
    return dSeconds;
}

// The limit of the search, as the search list benchmark's limit does it with plain containers: the store
// read into a vector of plain records, sorted by path and version and grouped into files, then the rows the
// window shows (one per file, five texts each) put into a bare list view. _bRowByRow: the list holds every
// row's texts, inserted one by one; otherwise the fastest way: a list without rows of its own
// (LVS_OWNERDATA) told the number of rows, and the texts made for the rows it has room for.
struct PlainRecord {
    CString sPath;
    std::uint32_t uVersion;
};

class CollectingSink : public UVQueryDataSink {
public:
    void mf_onQueryData(const UQQueryData& _data) override {
        m_records.push_back({_data.mf_getPath().mf_getPath(), _data.mf_getVersion()});
    }
    std::vector<PlainRecord> m_records;
};

double searchLimit(const std::wstring& _sStore, bool _bRowByRow, std::uint64_t& _ruRecords, int& _rnRows) {
    const Clock::time_point start = Clock::now();
    CollectingSink sink;
    UQHistoryStore(CString(_sStore.c_str())).mf_search(UQHistoryQuery(), sink);
    std::vector<PlainRecord>& records = sink.m_records;
    _ruRecords = records.size();
    std::sort(records.begin(), records.end(), [](const PlainRecord& _a, const PlainRecord& _b) {
        const int nOrder = _a.sPath.CompareNoCase(_b.sPath);
        return nOrder != 0 ? nOrder < 0 : _a.uVersion < _b.uVersion;
    });
    std::vector<const PlainRecord*> latest;
    for (std::size_t i = 0; i < records.size(); ++i)
        if (i + 1 == records.size() || records[i].sPath.CompareNoCase(records[i + 1].sPath) != 0)
            latest.push_back(&records[i]);
    _rnRows = static_cast<int>(latest.size());
    HWND hList =
        CreateWindowExW(0, WC_LISTVIEWW, L"", WS_POPUP | LVS_REPORT | (_bRowByRow ? 0 : LVS_OWNERDATA), 0, 0,
                        600, 400, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    for (int nColumn = 0; nColumn < 5; ++nColumn) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.cx = nColumn == 0 ? 300 : 60;
        column.pszText = const_cast<wchar_t*>(L"Column");
        SendMessageW(hList, LVM_INSERTCOLUMNW, static_cast<WPARAM>(nColumn),
                     reinterpret_cast<LPARAM>(&column));
    }
    SendMessageW(hList, WM_SETREDRAW, FALSE, 0);
    SendMessageW(hList, LVM_SETITEMCOUNT, latest.size(), 0);
    const std::size_t nTexts =
        _bRowByRow
            ? latest.size()
            : std::min<std::size_t>(latest.size(),
                                    static_cast<std::size_t>(SendMessageW(hList, LVM_GETCOUNTPERPAGE, 0, 0)));
    std::size_t nTextLength = 0;
    for (std::size_t i = 0; i < nTexts; ++i) {
        const std::wstring sVersion = std::to_wstring(latest[i]->uVersion);
        const wchar_t* const TEXTS[] = {latest[i]->sPath.GetString(), sVersion.c_str(), L"Available", L"No",
                                        L"No"};
        if (!_bRowByRow) {
            for (const wchar_t* pszText : TEXTS)
                nTextLength += wcslen(pszText);
            continue;
        }
        LVITEMW row{};
        row.mask = LVIF_TEXT | LVIF_PARAM;
        row.iItem = static_cast<int>(i);
        row.pszText = const_cast<wchar_t*>(TEXTS[0]);
        row.lParam = reinterpret_cast<LPARAM>(latest[i]);
        const int nRow =
            static_cast<int>(SendMessageW(hList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row)));
        for (int nColumn = 1; nColumn < 5; ++nColumn) {
            LVITEMW cell{};
            cell.iSubItem = nColumn;
            cell.pszText = const_cast<wchar_t*>(TEXTS[nColumn]);
            SendMessageW(hList, LVM_SETITEMTEXTW, static_cast<WPARAM>(nRow), reinterpret_cast<LPARAM>(&cell));
        }
    }
    SendMessageW(hList, WM_SETREDRAW, TRUE, 0);
    const double dSeconds = secondsSince(start);
    // The texts' length is used, so that making them is not left out by the compiler.
    if (SendMessageW(hList, LVM_GETITEMCOUNT, 0, 0) != static_cast<LRESULT>(latest.size()) ||
        (!_bRowByRow && nTexts > 0 && nTextLength == 0))
        std::printf("search limit: the list does not show the rows\n");
    DestroyWindow(hList);
    return dSeconds;
}

// The window: from the click on Search to the filled list.
double searchWindow(const std::wstring& _sServer, int& _rnShown) {
    UQClientWindow window(_sServer, std::wstring(ROOT) + L"\\files");
    UQDialogScript script(600000);
    Clock::time_point clicked;
    double dSeconds = -1;
    script.mf_then(L"search", [&] {
        if (HWND hTip = UQDialogScript::mf_findDialog(L"Tip")) {
            UQDialogScript::mf_click(hTip, IDC_INFORMATION_OK);
            return false;
        }
        HWND hMain = window.mf_getHandle();
        if (hMain == nullptr || !IsWindowVisible(hMain) || !IsWindowEnabled(hMain))
            return false;
        // Every record, whatever pattern an earlier run of the program left remembered.
        UQDialogScript::mf_type(GetDlgItem(hMain, IDC_MAIN_PATTERN), L"*");
        clicked = Clock::now();
        UQDialogScript::mf_click(hMain, IDC_MAIN_SEARCH);
        return true;
    });
    script.mf_then(L"filled", [&] {
        HWND hMain = window.mf_getHandle();
        if (!IsWindowEnabled(hMain) || window.mf_getShownCount() == 0)
            return false;
        dSeconds = secondsSince(clicked);
        _rnShown = window.mf_getShownCount();
        PostMessageW(hMain, WM_CLOSE, 0, 0);
        return true;
    });
    window.mf_show();
    for (const std::wstring& sFailure : script.mf_getFailures())
        std::printf("search: %ls\n", sFailure.c_str());
    return dSeconds;
}

bool judge(const char* _pszWhat, double _dSide, double _dLimit, double _dGoal) {
    const double dRatio = _dSide / _dLimit;
    const bool bMet = dRatio <= _dGoal;
    std::printf("%-9s ratio %.2fx (goal at most %.1fx: %s)\n", _pszWhat, dRatio, _dGoal,
                bMet ? "met" : "missed");
    return bMet;
}

} // namespace

int wmain(int _nArgs, wchar_t** _ppArgs) {
    const int nFiles = _nArgs > 1 ? _wtoi(_ppArgs[1]) : 10000;
    const int nRecords = _nArgs > 2 ? _wtoi(_ppArgs[2]) : 1000000;
    INITCOMMONCONTROLSEX controls{sizeof(controls),
                                  ICC_WIN95_CLASSES | ICC_DATE_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    UQGuiRegistry::mf_initialize();
    const std::wstring sRoot = ROOT;
    UQClientSample::mf_removeTree(sRoot);
    CreateDirectoryW(sRoot.c_str(), nullptr);
    const std::wstring sFiles = sRoot + L"\\files";
    CreateDirectoryW(sFiles.c_str(), nullptr);
    std::printf("korclient benchmark: %d files, a history of %d records\n", nFiles, nRecords);
    const std::vector<std::wstring> files = makeFiles(sFiles, nFiles);

    const double dCopy = copyFiles(sFiles, sRoot + L"\\copy", false, files);
    std::printf("CopyFileW   %8.2f s  %8.0f files/s\n", dCopy, nFiles / dCopy);
    // For reading the ratios: the copy with one flush per file (migration flushes three times per file,
    // retrieval once).
    const double dCopyFlushed = copyFiles(sFiles, sRoot + L"\\copy-flushed", true, files);
    std::printf("CopyFileW and FlushFileBuffers %8.2f s  %8.0f files/s\n", dCopyFlushed,
                nFiles / dCopyFlushed);

    UQServerDirectory server(sRoot + L"\\server");
    std::vector<UQFileOutcome> outcomes;
    std::wstring sReason;
    Clock::time_point start = Clock::now();
    UQMigration(server, sFiles).mf_run(nullptr, nullptr, outcomes, sReason);
    const double dMigrate = secondsSince(start);
    int nMigrated = 0;
    for (const UQFileOutcome& outcome : outcomes)
        nMigrated += outcome.eSeverity == UQFileOutcome::GREEN ? 1 : 0;
    std::printf("migrate     %8.2f s  %8.0f files/s  (%d migrated)\n", dMigrate, nFiles / dMigrate,
                nMigrated);
    // The copy again, of the first copy (the files are stubs now): the disk's pace drifts from minute to
    // minute, and the faster of the two copies is the limit.
    const double dCopyAgain = copyFiles(sRoot + L"\\copy", sRoot + L"\\copy-again", false, files);
    std::printf("CopyFileW again %4.2f s  %8.0f files/s  (the limit: the faster of the two, %.2f s)\n",
                dCopyAgain, nFiles / dCopyAgain, std::min(dCopy, dCopyAgain));
    const double dCopyLimit = std::min(dCopy, dCopyAgain);

    // The versions to retrieve, as the window takes them from the history.
    class RequestSink : public UVQueryDataSink {
    public:
        void mf_onQueryData(const UQQueryData& _data) override {
            UQRetrieval::Request request;
            request.sObjectPath = _data.mf_getObjectPath().mf_getPath().GetString();
            request.uVersion = _data.mf_getVersion();
            request.uVolume = _data.mf_getAccessKey().uVolume;
            request.uPosition = _data.mf_getAccessKey().uPosition;
            m_requests.push_back(request);
        }
        std::vector<UQRetrieval::Request> m_requests;
    } requests;
    UQHistoryStore(CString(server.mf_getHistoryFile().c_str())).mf_search(UQHistoryQuery(), requests);
    outcomes.clear();
    start = Clock::now();
    UQRetrieval(server).mf_retrieve(requests.m_requests, sRoot + L"\\retrieved", nullptr, nullptr, outcomes,
                                    sReason);
    const double dRetrieve = secondsSince(start);
    int nRetrieved = 0;
    for (const UQFileOutcome& outcome : outcomes)
        nRetrieved += outcome.eSeverity == UQFileOutcome::GREEN ? 1 : 0;
    std::printf("retrieve    %8.2f s  %8.0f files/s  (%d retrieved)\n", dRetrieve, nFiles / dRetrieve,
                nRetrieved);

    // The search runs over a generated history of its own size.
    const std::wstring sSearchServer = sRoot + L"\\search-server";
    CreateDirectoryW(sSearchServer.c_str(), nullptr);
    UQHistoryGenerator(static_cast<std::uint32_t>(nRecords / 3))
        .mf_writeStore(CString((sSearchServer + L"\\history.txt").c_str()));
    int nShown = 0;
    const double dWindow = searchWindow(sSearchServer, nShown);
    std::uint64_t uRecords = 0;
    int nRows = 0;
    const double dLimit = searchLimit(sSearchServer + L"\\history.txt", false, uRecords, nRows);
    const double dRowByRow = searchLimit(sSearchServer + L"\\history.txt", true, uRecords, nRows);
    std::printf("search      %8.2f s  %8.0f records/s  (%llu records, %d rows shown)\n", dWindow,
                uRecords / dWindow, static_cast<unsigned long long>(uRecords), nShown);
    std::printf("limit       %8.2f s  %8.0f records/s  (store read, std::sort and grouping, bare list view "
                "without rows of its own told of %d rows)\n",
                dLimit, uRecords / dLimit, nRows);
    std::printf("row by row  %8.2f s  %8.0f records/s  (the same, the rows inserted one by one)\n", dRowByRow,
                uRecords / dRowByRow);

    std::printf("migrate against the flushed copy %.2fx, retrieve %.2fx; search against the row-by-row list "
                "%.2fx (not judged)\n",
                dMigrate / dCopyFlushed, dRetrieve / dCopyFlushed, dWindow / dRowByRow);
    bool bMet = nMigrated == nFiles && nRetrieved == nFiles && dWindow > 0;
    bMet = judge("migrate", dMigrate, dCopyLimit, FILE_GOAL) && bMet;
    bMet = judge("retrieve", dRetrieve, dCopyLimit, FILE_GOAL) && bMet;
    bMet = judge("search", dWindow, dLimit, SEARCH_GOAL) && bMet;
    UQClientSample::mf_removeTree(sRoot);
    return bMet ? 0 : 1;
}
