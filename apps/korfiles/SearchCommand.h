#pragma once

#include "HistorySource.h"
#include "TextOutput.h"

#include "interfaces/korbase.h"

#include <string>
#include <vector>

// korfiles search: the history search of the client, end to end. Searches a history store (the built-in
// sample unless --store names a file) for the files whose path matches a pattern, optionally within a
// range of last write times, hands the records to a UQSearchList on the search's worker thread, closes the
// list and prints its file list: one line per file with path, version ranges, status, security and
// alternate data streams, sorted, filtered by the list's six exclusion flags, or the latest versions
// selected, or in the order the backend reads them (docs/korfiles.md).
class SearchCommand {
public:
    // The command's line of the usage, without "Usage: ".
    static const char* const SYNOPSIS;

    // _args are the arguments after "search"; _sample is read when no --store is given. Answers
    // KorFilesTool's exit codes: 0 every record was read; 1 malformed records were skipped (each reported
    // on _rErr as "<file>:<line>: <what is wrong>"); 2 bad usage, one line on _rErr;
    // 3 the store cannot be read. Throws what the search list throws.
    static int mf_run(const std::vector<CString>& _args, const HistorySource& _sample, TextOutput& _rOut,
                      TextOutput& _rErr);

    // The search part of the --help text.
    static std::string mf_getHelp();
};
