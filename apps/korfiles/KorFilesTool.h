#pragma once

#include "TextOutput.h"

#include "interfaces/korbase.h"

#include <cstdio>
#include <string>
#include <vector>

// The korfiles command: reads a file versions file or a migration listing, merges its lines into file
// list items and prints them as a table; with "search" as its first argument, runs the history search
// (SearchCommand); with "settings", shows and changes the client's GUI defaults (SettingsCommand).
class KorFilesTool {
public:
    static constexpr int EXIT_ALL_READ = 0;
    static constexpr int EXIT_LINES_SKIPPED = 1;
    // settings: the registry refused the change, or there was nothing to change.
    static constexpr int EXIT_NOT_CHANGED = 1;
    static constexpr int EXIT_BAD_USAGE = 2;
    static constexpr int EXIT_UNREADABLE = 3;
    static constexpr int EXIT_INTERNAL_ERROR = 4;
    // Standard output cannot be written (a full disk, an I/O error): one line on standard error.
    static constexpr int EXIT_OUTPUT_FAILED = 5;
    // The reader of standard output closed it (a pipe into head): the program ends without a word.
    static constexpr int EXIT_OUTPUT_CLOSED = 6;
    // The program's version, printed by --version.
    static const char* const VERSION;
    // The file name that stands for standard input.
    static const wchar_t* const STANDARD_INPUT;

    // _args are the arguments after the program name; when none names a file, _sDefaultInput is read, or
    // _sDefaultListing with --listing. A first argument "search" runs SearchCommand on the built-in sample
    // history, "settings" SettingsCommand, with the rest (a file of either name is read as "-- settings"
    // or "./settings"). The table goes to _rOut; malformed lines
    // ("<file>:<line>: <what is wrong>"), usage errors and read errors go to _rErr. Answers the exit code.
    static int mf_run(const std::vector<CString>& _args, const CString& _sDefaultInput,
                      const CString& _sDefaultListing, TextOutput& _rOut, TextOutput& _rErr) noexcept;

    // The whole file as bytes; STANDARD_INPUT reads standard input to its end. Answers 0 with the system's
    // reason when it cannot be opened or read.
    static int mf_readFile(const CString& _sPath, std::string& _rText, std::string& _rReason);

    // The closing line on standard error: "3 files, 7 versions, 1 malformed line skipped" (_pszSkipped
    // names what was skipped: "malformed line", "malformed record").
    static std::string mf_countLine(long long _nFiles, long long _nVersions, long long _nSkipped,
                                    const char* _pszSkipped);

    // The exit code for an output that failed (_out.mf_getError() is not 0), after its line on _rErr:
    // EXIT_OUTPUT_CLOSED quietly for a closed pipe, else "korfiles: cannot write to standard output:
    // <reason>" and EXIT_OUTPUT_FAILED.
    static int mf_reportOutputFailure(const TextOutput& _out, TextOutput& _rErr) noexcept;

    // The usage lines that follow a usage error.
    static std::string mf_getUsage();

    // The --help text.
    static std::string mf_getHelp(const CString& _sDefaultInput, const CString& _sDefaultListing);

private:
    // The rest of an open stream, which stays open.
    static int mf_implReadStream(std::FILE* _pFile, std::string& _rText, std::string& _rReason);
};
