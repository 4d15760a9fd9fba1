#include "SearchCommand.h"

#include "ArgumentText.h"
#include "FileListTable.h"
#include "KorFilesTool.h"
#include "ProgressLine.h"
#include "SearchListSink.h"

#include "guibase/search/UQSearchList.h"

#include <unordered_set>

namespace {

enum SortKey { BY_PATH, BY_STATUS, BY_SECURITY, BY_STREAMS };

// The words of --exclude in the order of UQSearchList::mf_getFileList's flags.
const wchar_t* const EXCLUSIONS[6] = {L"available", L"available-protected",
                                      L"expiring",  L"expiring-protected",
                                      L"deleted",   L"deleted-protected"};

struct Options {
    CString sPattern = L"*";
    bool bHasPattern = false;
    CString sStore;
    bool bHasStore = false;
    SortKey key = BY_PATH;
    // The first option that orders the list, to name it beside --retrieval-order.
    CString sOrderOption;
    int bAscending = 1;
    int abExclude[6] = {0, 0, 0, 0, 0, 0};
    bool bLatestOnly = false;
    bool bRetrievalOrder = false;
    UQFileTime fromTime;
    UQFileTime toTime;
    CString sFrom;
    CString sTo;
    FileListTable::Format format = FileListTable::TABLE;
    bool bHelp = false;
};

// Days from 0000-03-01 of the proleptic Gregorian calendar to the date, which must exist; counted from
// March so that the leap day ends a year.
std::int64_t civilDays(int _nYear, int _nMonth, int _nDay) {
    const int y = _nYear - (_nMonth <= 2 ? 1 : 0);
    const int era = y / 400;
    const int yearOfEra = y - era * 400;
    const int dayOfYear = (153 * (_nMonth > 2 ? _nMonth - 3 : _nMonth + 9) + 2) / 5 + _nDay - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return static_cast<std::int64_t>(era) * 146097 + dayOfEra;
}

// Days from 1601-01-01, where file times start.
std::int64_t daysSince1601(int _nYear, int _nMonth, int _nDay) {
    return civilDays(_nYear, _nMonth, _nDay) - civilDays(1601, 1, 1);
}

// "YYYY-MM-DD" from 1601 to 9999, a date that exists; answers 0 otherwise.
int parseDate(const CString& _sText, int& _rnYear, int& _rnMonth, int& _rnDay) {
    if (_sText.GetLength() != 10 || _sText[4] != L'-' || _sText[7] != L'-')
        return 0;
    int values[3] = {0, 0, 0};
    const int starts[3] = {0, 5, 8};
    const int lengths[3] = {4, 2, 2};
    for (int f = 0; f < 3; ++f) {
        for (int i = starts[f]; i < starts[f] + lengths[f]; ++i) {
            if (_sText[i] < L'0' || _sText[i] > L'9')
                return 0;
            values[f] = values[f] * 10 + (_sText[i] - L'0');
        }
    }
    _rnYear = values[0];
    _rnMonth = values[1];
    _rnDay = values[2];
    if (_rnYear < 1601 || _rnMonth < 1 || _rnMonth > 12 || _rnDay < 1)
        return 0;
    static const int DAYS[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (_rnYear % 4 == 0 && _rnYear % 100 != 0) || _rnYear % 400 == 0;
    return _rnDay <= DAYS[_rnMonth - 1] + (_rnMonth == 2 && leap ? 1 : 0) ? 1 : 0;
}

// The words of one --exclude option, separated by commas; answers 0 for an empty or unknown word.
int parseExclusions(const CString& _sList, int (&_rExclude)[6]) {
    int start = 0;
    for (;;) {
        const int comma = _sList.Find(L',', start);
        const CString word = comma < 0 ? _sList.Mid(start) : _sList.Mid(start, comma - start);
        int found = -1;
        for (int i = 0; i < 6; ++i) {
            if (word == EXCLUSIONS[i])
                found = i;
        }
        if (found < 0)
            return 0;
        _rExclude[found] = 1;
        if (comma < 0)
            return 1;
        start = comma + 1;
    }
}

std::string exclusionWords() {
    std::string words;
    for (const wchar_t* w : EXCLUSIONS)
        words += (words.empty() ? "" : ", ") + CString(w).ToUtf8();
    return words;
}

// Answers an empty string when the date is taken, else what is wrong.
std::string takeDate(const CString& _sArg, int _nPrefix, bool _bEndOfDay, CString& _rsText,
                     UQFileTime& _rTime) {
    const CString name = _sArg.Left(_nPrefix - 1);
    if (!_rsText.IsEmpty())
        return "only one " + name.ToUtf8() + " may be given";
    int year = 0, month = 0, day = 0;
    if (!parseDate(_sArg.Mid(_nPrefix), year, month, day))
        return name.ToUtf8() + " needs a date YYYY-MM-DD from 1601-01-01 on, as in " + name.ToUtf8() +
               "=2023-01-31, not '" + _sArg.ToUtf8() + "'";
    const std::uint64_t days = static_cast<std::uint64_t>(daysSince1601(year, month, day));
    // The whole day: --to takes its last tick, so that a record written during that day is in range.
    _rTime = UQFileTime((days + (_bEndOfDay ? 1u : 0u)) * UQFileTime::TICKS_PER_DAY - (_bEndOfDay ? 1u : 0u));
    _rsText = _sArg.Mid(_nPrefix);
    return std::string();
}

// Answers an empty string when the arguments are good, else the one line that says what is wrong.
std::string parseOptions(const std::vector<CString>& _args, Options& _rOptions) {
    bool optionsEnded = false;
    for (const CString& arg : _args) {
        if (!optionsEnded && arg.GetLength() > 1 && arg[0] == L'-') {
            if (arg == L"--") {
                optionsEnded = true;
            } else if (arg == L"--help" || arg == L"-h") {
                _rOptions.bHelp = true;
            } else if (arg == L"--descending") {
                _rOptions.bAscending = 0;
                if (_rOptions.sOrderOption.IsEmpty())
                    _rOptions.sOrderOption = arg;
            } else if (arg.Left(7) == L"--sort=" || arg == L"--sort") {
                const CString key = arg.Mid(7);
                if (arg == L"--sort=path")
                    _rOptions.key = BY_PATH;
                else if (key == L"status")
                    _rOptions.key = BY_STATUS;
                else if (key == L"security")
                    _rOptions.key = BY_SECURITY;
                else if (key == L"streams")
                    _rOptions.key = BY_STREAMS;
                else
                    return "--sort needs path, status, security or streams, as in --sort=status, not '" +
                           arg.ToUtf8() + "'";
                if (_rOptions.sOrderOption.IsEmpty())
                    _rOptions.sOrderOption = arg;
            } else if (arg.Left(10) == L"--exclude=" || arg == L"--exclude") {
                if (arg.GetLength() <= 10 || !parseExclusions(arg.Mid(10), _rOptions.abExclude))
                    return "--exclude needs one or more of " + exclusionWords() +
                           ", separated by commas, not '" + arg.ToUtf8() + "'";
            } else if (arg == L"--format" || arg.Left(9) == L"--format=") {
                if (arg.GetLength() <= 9 || !FileListTable::mf_parseFormat(arg.Mid(9), _rOptions.format))
                    return "--format needs table, csv or json, as in --format=csv, not '" + arg.ToUtf8() +
                           "'";
            } else if (arg == L"--latest-only") {
                _rOptions.bLatestOnly = true;
            } else if (arg == L"--retrieval-order") {
                _rOptions.bRetrievalOrder = true;
            } else if (arg.Left(8) == L"--store=" || arg == L"--store") {
                if (arg.GetLength() <= 8)
                    return "--store needs a file name, as in --store=history.txt";
                if (_rOptions.bHasStore)
                    return "only one --store may be given";
                _rOptions.sStore = arg.Mid(8);
                _rOptions.bHasStore = true;
            } else if (arg.Left(7) == L"--from=" || arg == L"--from") {
                const std::string problem = takeDate(arg, 7, false, _rOptions.sFrom, _rOptions.fromTime);
                if (!problem.empty())
                    return problem;
            } else if (arg.Left(5) == L"--to=" || arg == L"--to") {
                const std::string problem = takeDate(arg, 5, true, _rOptions.sTo, _rOptions.toTime);
                if (!problem.empty())
                    return problem;
            } else {
                return "unknown search option '" + arg.ToUtf8() + "'";
            }
            continue;
        }
        if (_rOptions.bHasPattern)
            return "only one PATTERN may be given, not both '" + _rOptions.sPattern.ToUtf8() + "' and '" +
                   arg.ToUtf8() + "'";
        if (arg.IsEmpty())
            return "PATTERN may not be empty: leave it out, or give '*', to find every file";
        const int nInvalid = ArgumentText::mf_findUnpairedSurrogate(arg);
        if (nInvalid >= 0)
            return "PATTERN is not valid UTF-8 (" + ArgumentText::mf_describe(arg, nInvalid) +
                   "), so it could match no stored path";
        _rOptions.sPattern = arg;
        _rOptions.bHasPattern = true;
    }
    if (_rOptions.bRetrievalOrder && !_rOptions.sOrderOption.IsEmpty())
        return "--retrieval-order prints in the backend's access order and takes no '" +
               _rOptions.sOrderOption.ToUtf8() + "'";
    if (!_rOptions.sFrom.IsEmpty() && !_rOptions.sTo.IsEmpty() &&
        _rOptions.toTime.mf_getValue() < _rOptions.fromTime.mf_getValue())
        return "--from=" + _rOptions.sFrom.ToUtf8() + " is after --to=" + _rOptions.sTo.ToUtf8();
    return std::string();
}

void sortItems(UQSearchFileItem::Array& _rItems, SortKey _key, int _bAscending) {
    // An empty array is left alone: the sorts warn about it in the log.
    if (_rItems.GetSize() == 0)
        return;
    switch (_key) {
    case BY_PATH:
        UQSearchFileItem::mf_sortByPath(_rItems, _bAscending);
        break;
    case BY_STATUS:
        UQSearchFileItem::mf_sortByStatus(_rItems, _bAscending);
        break;
    case BY_SECURITY:
        UQSearchFileItem::mf_sortBySecurity(_rItems, _bAscending);
        break;
    case BY_STREAMS:
        UQSearchFileItem::mf_sortByADStreams(_rItems, _bAscending);
        break;
    }
}

} // namespace

const char* const SearchCommand::SYNOPSIS =
    "korfiles search [PATTERN] [--store=FILE] [--from=DATE] [--to=DATE] [--exclude=STATES]\n"
    "                [--sort=path|status|security|streams] [--descending] [--latest-only]\n"
    "                [--retrieval-order]";

int SearchCommand::mf_run(const std::vector<CString>& _args, const HistorySource& _sample, TextOutput& _rOut,
                          TextOutput& _rErr) {
    Options options;
    const std::string usageError = parseOptions(_args, options);
    if (!usageError.empty()) {
        // One line: the search's usage is long, and --help has it.
        _rErr.mf_write("korfiles search: " + usageError + "\n");
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    if (options.bHelp) {
        _rOut.mf_write("Usage: " + std::string(SYNOPSIS) + "\n\n" + mf_getHelp());
        return KorFilesTool::EXIT_ALL_READ;
    }

    const HistorySource source = options.bHasStore ? HistorySource::mf_file(options.sStore) : _sample;
    UQHistoryQuery query;
    query.sPattern = options.sPattern;
    query.fromTime = options.fromTime;
    query.toTime = options.toTime;

    UQSearchList list;
    SearchListSink sink(list);
    UQHistoryStore::Result result;
    ProgressLine progress(_rErr, 0);
    try {
        result = source.mf_search(query, sink, &progress);
        progress.mf_finish();
    } catch (const UQErrno& e) {
        progress.mf_finish();
        if (!e.mf_getData().mf_is(UQErrno::_E_::File))
            throw;
        // The store's own words, which name the file.
        _rErr.mf_write("korfiles: cannot read the history store " + e.mf_getDetail().ToUtf8() + "\n");
        return KorFilesTool::EXIT_UNREADABLE;
    }
    for (const UQErrno& e : result.errors)
        _rErr.mf_write(e.mf_getDetail().ToUtf8() + "\n");
    list.mf_close();

    UQSearchFileItem::Array files;
    list.mf_getFileList(files, options.abExclude[0], options.abExclude[1], options.abExclude[2],
                        options.abExclude[3], options.abExclude[4], options.abExclude[5]);
    UQSearchFileItem::Array shown;
    if (options.bLatestOnly || options.bRetrievalOrder) {
        // As the dialog does before a retrieval: every file with its latest version, the selection taken
        // in list order or in the backend's access order, and of it the files that the exclusions keep.
        list.mf_reset();
        list.mf_selectLatest();
        UQSearchFileItem::Array selected;
        list.mf_getSelectedFileList(selected, options.bRetrievalOrder ? 1 : 0);
        std::unordered_set<const UQSearchFileItem*> kept;
        for (INT_PTR i = 0; i < files.GetSize(); ++i)
            kept.insert(files[i]);
        for (INT_PTR i = 0; i < selected.GetSize(); ++i) {
            if (kept.count(selected[i]) != 0)
                shown.Add(selected[i]);
        }
    } else {
        for (INT_PTR i = 0; i < files.GetSize(); ++i)
            shown.Add(files[i]);
    }
    if (!options.bRetrievalOrder)
        sortItems(shown, options.key, options.bAscending);
    FileListTable::mf_writeSearch(shown, options.bLatestOnly ? 1 : 0, options.format, _rOut);
    if (_rOut.mf_getError() != 0)
        return KorFilesTool::mf_reportOutputFailure(_rOut, _rErr);
    long long versions = 0;
    for (INT_PTR i = 0; i < shown.GetSize(); ++i)
        versions += shown[i]->mf_getVersionCount();
    _rErr.mf_write(KorFilesTool::mf_countLine(
        shown.GetSize(), versions, static_cast<long long>(result.errors.size()), "malformed record"));
    return result.errors.empty() ? KorFilesTool::EXIT_ALL_READ : KorFilesTool::EXIT_LINES_SKIPPED;
}

std::string SearchCommand::mf_getHelp() {
    return "korfiles search is the history search: it searches the history store, the server's record of\n"
           "every stored version of every migrated file, for the files whose path matches PATTERN, and\n"
           "prints them as the search dialog lists them: one line per file with its path, the ranges of\n"
           "its version numbers, its status (Available, Expiring or Deleted, each possibly protected),\n"
           "and whether it carries security data and alternate data streams, all of its latest version.\n"
           "\n"
           "PATTERN matches the whole file path, case-blind: '*' stands for any run of characters (also\n"
           "across '\\'), '?' for exactly one. Without PATTERN every file is found (as with '*'). Quote it\n"
           "so that the shell leaves the '*' alone: korfiles search '*\\Finance\\*.xlsx'.\n"
           "Without --store the search reads the sample history built into the program (the 60 versions\n"
           "of 21 files of kor/archiver/sample/history.txt); the format is in\n"
           "docs/history-store-format.md. Malformed records are reported as FILE:LINE: PROBLEM on\n"
           "standard error and skipped.\n"
           "\n"
           "Search options:\n"
           "  --store=FILE        search the history store FILE instead of the built-in sample\n"
           "  --from=YYYY-MM-DD   only versions last written on or after that day (UTC)\n"
           "  --to=YYYY-MM-DD     only versions last written on or before that day (UTC)\n"
           "  --exclude=STATES    leave out the files whose latest version is in one of these states:\n"
           "                      available, available-protected, expiring, expiring-protected,\n"
           "                      deleted, deleted-protected, several separated by commas; several\n"
           "                      --exclude options add up\n"
           "  --sort=path         sort by path (the default)\n"
           "  --sort=status       sort by status text, equal ones by path ascending\n"
           "  --sort=security     files without security data first, equal ones by path ascending\n"
           "  --sort=streams      files without alternate data streams first, then by path ascending\n"
           "  --descending        sort in descending order (ties stay by path ascending)\n"
           "  --latest-only       select the latest version of every file, as before a retrieval, and\n"
           "                      list the selected files: the Version column then shows the number of\n"
           "                      the selected version alone instead of all version ranges; which files\n"
           "                      are listed and their status do not change, as every file has a\n"
           "                      latest version\n"
           "  --retrieval-order   list the selected files (the latest versions) in the order the backend\n"
           "                      reads them fastest, volume by volume and front to back, as a\n"
           "                      retrieval takes them; takes no --sort or --descending\n"
           "  --format=FORMAT     table (the default), csv or json: one record per file, for programs\n"
           "  -h, --help          print this help and exit\n"
           "  --                  take the next argument as PATTERN even if it starts with '-'\n"
           "\n"
           "Exit status: 0 every record was read, 1 malformed records were skipped, 2 bad usage,\n"
           "3 the store cannot be read, 4 internal error, 5 standard output cannot be written,\n"
           "6 standard output was closed by its reader.\n";
}
