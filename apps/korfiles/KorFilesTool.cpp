#include "KorFilesTool.h"

#include "FileListTable.h"
#include "FileVersionList.h"
#include "FileVersionReader.h"
#include "MalformedLines.h"
#include "MigrationListing.h"
#include "ProgressLine.h"
#include "SearchCommand.h"
#include "SettingsCommand.h"
#include "compat/UQHandle.h"

#include "compat/utf8.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <system_error>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

namespace {

const char* const USAGE =
    "Usage: korfiles [--sort=path|result] [--descending] [FILE]\n"
    "       korfiles --listing[=FILE] [--no-stubs] [--skip=info,warning,error] [--sort=path|result]\n"
    "                [--descending]\n";

struct Options {
    FileListOrder::Key key = FileListOrder::BY_PATH;
    int bAscending = 1;
    FileListTable::Format format = FileListTable::TABLE;
    bool bHelp = false;
    bool bVersion = false;
    bool bListing = false;
    MigrationListing::Filter filter;
    // The first option that filters a listing, to name it when no listing is read.
    CString sFilterOption;
    CString sInput;
    bool bHasInput = false;
};

// Answers an empty string when the input is taken, else what is wrong.
std::string takeInput(const CString& _sInput, Options& _rOptions) {
    if (_rOptions.bHasInput)
        return "only one file may be given, not both '" + _rOptions.sInput.ToUtf8() + "' and '" +
               _sInput.ToUtf8() + "'";
    _rOptions.sInput = _sInput;
    _rOptions.bHasInput = true;
    return std::string();
}

// The severities of a --skip option: one or more of info, warning and error, separated by commas.
int parseSkip(const CString& _sList, MigrationListing::Filter& _rFilter) {
    int start = 0;
    for (;;) {
        const int comma = _sList.Find(L',', start);
        const CString word = comma < 0 ? _sList.Mid(start) : _sList.Mid(start, comma - start);
        if (word == L"info")
            _rFilter.bSkipInformation = 1;
        else if (word == L"warning")
            _rFilter.bSkipWarning = 1;
        else if (word == L"error")
            _rFilter.bSkipError = 1;
        else
            return 0;
        if (comma < 0)
            return 1;
        start = comma + 1;
    }
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
            } else if (arg == L"--version") {
                _rOptions.bVersion = true;
            } else if (arg == L"--format" || arg.Left(9) == L"--format=") {
                if (arg.GetLength() <= 9 || !FileListTable::mf_parseFormat(arg.Mid(9), _rOptions.format))
                    return "--format needs table, csv or json, as in --format=csv, not '" + arg.ToUtf8() +
                           "'";
            } else if (arg == L"--descending") {
                _rOptions.bAscending = 0;
            } else if (arg == L"--sort=path") {
                _rOptions.key = FileListOrder::BY_PATH;
            } else if (arg == L"--sort=result") {
                _rOptions.key = FileListOrder::BY_RESULT;
            } else if (arg == L"--sort" || arg.Left(7) == L"--sort=") {
                return "--sort needs path or result, as in --sort=result, not '" + arg.ToUtf8() + "'";
            } else if (arg == L"--listing") {
                _rOptions.bListing = true;
            } else if (arg.Left(10) == L"--listing=") {
                if (arg.GetLength() == 10)
                    return "--listing= needs a file name, as in --listing=listing.txt";
                _rOptions.bListing = true;
                const std::string problem = takeInput(arg.Mid(10), _rOptions);
                if (!problem.empty())
                    return problem;
            } else if (arg == L"--no-stubs") {
                _rOptions.filter.bSkipStubFiles = 1;
                if (_rOptions.sFilterOption.IsEmpty())
                    _rOptions.sFilterOption = arg;
            } else if (arg == L"--skip" || arg.Left(7) == L"--skip=") {
                if (arg.GetLength() <= 7 || !parseSkip(arg.Mid(7), _rOptions.filter))
                    return "--skip needs info, warning or error, several separated by commas, as in "
                           "--skip=info,warning, not '" +
                           arg.ToUtf8() + "'";
                if (_rOptions.sFilterOption.IsEmpty())
                    _rOptions.sFilterOption = arg;
            } else if (arg == L"--store" || arg.Left(8) == L"--store=") {
                return "--store is an option of search, as in korfiles search --store=...";
            } else if (arg == L"--registry" || arg.Left(11) == L"--registry=") {
                return "--registry is an option of settings, as in korfiles settings --registry=...";
            } else {
                return "unknown option '" + arg.ToUtf8() + "'";
            }
            continue;
        }
        const std::string problem = takeInput(arg, _rOptions);
        if (!problem.empty())
            return problem;
    }
    if (!_rOptions.bListing && !_rOptions.sFilterOption.IsEmpty())
        return "'" + _rOptions.sFilterOption.ToUtf8() + "' filters a listing and needs --listing";
    return std::string();
}

long long versionCount(const UQFileListItem::Array& _items) {
    long long n = 0;
    for (INT_PTR i = 0; i < _items.GetSize(); ++i)
        n += _items[i]->mf_getVersionCount();
    return n;
}

int runFileVersions(const std::string& _sText, const Options& _options, const std::string& _sInputName,
                    TextOutput& _rOut, TextOutput& _rErr) {
    MalformedLines problems;
    std::vector<FileVersionRecord> records;
    ProgressLine progress(_rErr, _sText.size());
    FileVersionReader::mf_read(_sText, records, problems, &progress);
    progress.mf_finish();
    FileVersionList list;
    for (const FileVersionRecord& record : records) {
        std::string problem;
        if (!list.mf_add(record, problem))
            problems.mf_onProblem(record.nLine, problem);
    }
    problems.mf_report(_sInputName, _rErr);

    UQFileListItem::Array items;
    list.mf_getSorted(items, _options.key, _options.bAscending);
    FileListTable::mf_write(items, _options.format, _rOut);
    if (_rOut.mf_getError() != 0)
        return KorFilesTool::mf_reportOutputFailure(_rOut, _rErr);
    _rErr.mf_write(KorFilesTool::mf_countLine(items.GetSize(), versionCount(items), problems.mf_getCount(),
                                              "malformed line"));
    return problems.mf_getCount() > 0 ? KorFilesTool::EXIT_LINES_SKIPPED : KorFilesTool::EXIT_ALL_READ;
}

int runListing(const std::string& _sText, const Options& _options, const CString& _sInput, TextOutput& _rOut,
               TextOutput& _rErr) {
    MigrationListing listing;
    ProgressLine progress(_rErr, _sText.size());
    const std::vector<UQErrno> skipped = listing.mf_read(_sText, _sInput, &progress);
    progress.mf_finish();
    // The reader's own words, which already name the file and the line.
    for (const UQErrno& e : skipped)
        _rErr.mf_write(e.mf_getDetail().ToUtf8() + "\n");

    UQFileListItem::Array items;
    listing.mf_getItems(items, _options.filter, _options.key, _options.bAscending);
    FileListTable::mf_writeListing(items, _options.format, _rOut);
    if (_rOut.mf_getError() != 0)
        return KorFilesTool::mf_reportOutputFailure(_rOut, _rErr);
    _rErr.mf_write(KorFilesTool::mf_countLine(items.GetSize(), versionCount(items),
                                              static_cast<long long>(skipped.size()), "malformed line"));
    return skipped.empty() ? KorFilesTool::EXIT_ALL_READ : KorFilesTool::EXIT_LINES_SKIPPED;
}

int run(const std::vector<CString>& _args, const CString& _sDefaultInput, const CString& _sDefaultListing,
        TextOutput& _rOut, TextOutput& _rErr) {
    if (!_args.empty() && _args[0] == L"settings")
        return SettingsCommand::mf_run(std::vector<CString>(_args.begin() + 1, _args.end()), _rOut, _rErr);
    if (!_args.empty() && _args[0] == L"search")
        return SearchCommand::mf_run(std::vector<CString>(_args.begin() + 1, _args.end()),
                                     HistorySource::mf_sample(), _rOut, _rErr);
    Options options;
    const std::string usageError = parseOptions(_args, options);
    if (!usageError.empty()) {
        _rErr.mf_write("korfiles: " + usageError + "\n" + KorFilesTool::mf_getUsage());
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    if (options.bHelp) {
        _rOut.mf_write(KorFilesTool::mf_getHelp(_sDefaultInput, _sDefaultListing));
        return KorFilesTool::EXIT_ALL_READ;
    }
    if (options.bVersion) {
        _rOut.mf_write(std::string("korfiles ") + KorFilesTool::VERSION + "\n");
        return KorFilesTool::EXIT_ALL_READ;
    }

    const CString input = options.bHasInput  ? options.sInput
                          : options.bListing ? _sDefaultListing
                                             : _sDefaultInput;
    const std::string inputName = input == KorFilesTool::STANDARD_INPUT ? "(standard input)" : input.ToUtf8();
    std::string text;
    std::string reason;
    if (!KorFilesTool::mf_readFile(input, text, reason)) {
        _rErr.mf_write("korfiles: cannot read '" + inputName + "': " + reason + "\n");
        return KorFilesTool::EXIT_UNREADABLE;
    }
    if (options.bListing)
        return runListing(text, options, CString::FromUtf8(inputName), _rOut, _rErr);
    return runFileVersions(text, options, inputName, _rOut, _rErr);
}

} // namespace

const char* const KorFilesTool::VERSION = KORFILES_VERSION;
const wchar_t* const KorFilesTool::STANDARD_INPUT = L"-";

int KorFilesTool::mf_run(const std::vector<CString>& _args, const CString& _sDefaultInput,
                         const CString& _sDefaultListing, TextOutput& _rOut, TextOutput& _rErr) noexcept {
    try {
        const int code = run(_args, _sDefaultInput, _sDefaultListing, _rOut, _rErr);
        // The help, the version and the settings are written whole; their failure shows only here.
        if (_rOut.mf_getError() != 0 && code != EXIT_OUTPUT_FAILED && code != EXIT_OUTPUT_CLOSED)
            return mf_reportOutputFailure(_rOut, _rErr);
        return code;
    } catch (const UQErrno& e) {
        _rErr.mf_write("korfiles: " + e.mf_toString().ToUtf8() + "\n");
    } catch (const std::bad_alloc&) {
        _rErr.mf_write("korfiles: out of memory\n");
    } catch (CException* e) {
        e->Delete();
        _rErr.mf_write("korfiles: internal error: invalid argument\n");
    } catch (...) {
        _rErr.mf_write("korfiles: internal error\n");
    }
    return EXIT_INTERNAL_ERROR;
}

int KorFilesTool::mf_readFile(const CString& _sPath, std::string& _rText, std::string& _rReason) {
    errno = 0;
    if (_sPath == STANDARD_INPUT) {
#if defined(_WIN32)
        // Bytes as they come: text mode would drop CRs and stop at a Ctrl-Z.
        _setmode(_fileno(stdin), _O_BINARY);
#endif
        return mf_implReadStream(stdin, _rText, _rReason);
    }
#if defined(_WIN32)
    const UQStdFile file(_wfopen(_sPath, L"rb"));
#else
    const UQStdFile file(
        std::fopen(uqfmt::wideToNative(_sPath.GetString(), _sPath.GetLength()).c_str(), "rb"));
#endif
    if (!file) {
        _rReason = std::strerror(errno);
        return 0;
    }
    return mf_implReadStream(file.mf_get(), _rText, _rReason);
}

int KorFilesTool::mf_implReadStream(std::FILE* _pFile, std::string& _rText, std::string& _rReason) {
    std::string content;
    char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, _pFile)) > 0)
        content.append(buffer, n);
    const int failed = std::ferror(_pFile);
    const int error = errno;
    if (failed) {
        _rReason = std::strerror(error);
        return 0;
    }
    _rText.swap(content);
    return 1;
}

int KorFilesTool::mf_reportOutputFailure(const TextOutput& _out, TextOutput& _rErr) noexcept {
    const int error = _out.mf_getError();
    if (error == EPIPE)
        return EXIT_OUTPUT_CLOSED;
    try {
        _rErr.mf_write("korfiles: cannot write to standard output: " +
                       std::error_code(error, std::generic_category()).message() + "\n");
    } catch (...) {
        // Out of memory for the message: the exit code still tells.
    }
    return EXIT_OUTPUT_FAILED;
}

std::string KorFilesTool::mf_countLine(long long _nFiles, long long _nVersions, long long _nSkipped,
                                       const char* _pszSkipped) {
    const auto counted = [](long long _nN, const std::string& _sWhat) {
        return std::to_string(_nN) + " " + _sWhat + (_nN == 1 ? "" : "s");
    };
    return counted(_nFiles, "file") + ", " + counted(_nVersions, "version") + ", " +
           counted(_nSkipped, _pszSkipped) + " skipped\n";
}

std::string KorFilesTool::mf_getUsage() {
    return std::string(USAGE) + "       " + SearchCommand::SYNOPSIS + "\n       " +
           SettingsCommand::SYNOPSIS + "\n";
}

std::string KorFilesTool::mf_getHelp(const CString& _sDefaultInput, const CString& _sDefaultListing) {
    return mf_getUsage() +
           "\n"
           "Lists the file versions in FILE, one line per file: its path, the ranges of its version\n"
           "numbers, its newest version (file name, date and time), its result and the severity of that.\n"
           "\n"
           "FILE is UTF-8 text with one version per line: path, version, size in bytes, last write time\n"
           "(YYYY-MM-DD HH:MM:SS[.mmm]) and optionally result and severity (info, warning or error),\n"
           "separated by tabs. Lines starting with '#' are comments. Malformed lines are reported as\n"
           "FILE:LINE: PROBLEM on standard error and skipped.\n"
           "Without FILE, korfiles reads the sample beside it:\n"
           "  " +
           _sDefaultInput.ToUtf8() +
           "\n"
           "\n"
           "With --listing, FILE is a migration listing instead: UTF-8 text with one migrated version per\n"
           "line, path, version, status (migrated, stub, warning or failed) and optionally the result,\n"
           "separated by tabs, paths in ascending order. korfiles then lists one line per file with its\n"
           "path, version ranges, result and severity; a listing has no file times. Lines the listing\n"
           "reader does not take are reported on standard error in its words (FILE:LINE: PROBLEM) and\n"
           "skipped. Without FILE, korfiles reads the sample listing beside it:\n"
           "  " +
           _sDefaultListing.ToUtf8() +
           "\n"
           "\n"
           "Options:\n"
           "  --sort=path         sort by path (the default)\n"
           "  --sort=result       sort by result text, equal results by path\n"
           "  --descending        sort in descending order (equal results stay by path ascending)\n"
           "  --listing           read FILE as a migration listing\n"
           "  --listing=FILE      read FILE as a migration listing\n"
           "  --no-stubs          leave out stub files: files whose result is exactly the stub-file\n"
           "                      message (listings only)\n"
           "  --skip=SEVERITIES   leave out files of these severities: info, warning, error, several\n"
           "                      separated by commas, as in --skip=info,warning (listings only)\n"
           "  -h, --help          print this help and exit\n"
           "  --format=FORMAT     table (the default), csv or json: one record per file, the\n"
           "                      table's columns, for programs (also for search)\n"
           "  --version           print the program's version and exit\n"
           "  --                  take the next argument as FILE even if it starts with '-' or is\n"
           "                      the word search or settings\n"
           "FILE - reads standard input.\n"
           "\n"
           "Exit status: 0 every line was read, 1 malformed lines were skipped, 2 bad usage,\n"
           "3 FILE cannot be read, 4 internal error, 5 standard output cannot be written (a full\n"
           "disk), 6 standard output was closed by its reader (a pipe into head; nothing is said).\n"
           "\n"
           "Failures of the library are recorded in the product log (KOR_LOG_FILE names another file):\n"
           "  " +
           UQLogFileSink::mf_getDefaultPath().ToUtf8() +
           "\n"
           "\n" +
           SearchCommand::mf_getHelp() + "\n" + SettingsCommand::mf_getHelp();
}
