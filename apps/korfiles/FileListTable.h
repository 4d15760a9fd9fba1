#pragma once

#include "guibase/filelist/UQFileListItem.h"
#include "guibase/search/UQSearchFileItem.h"

#include <string>

// The text korfiles prints: a header line and one line per item, in columns aligned by character count.
// Paths are never shortened. UTF-8, lines ending in "\n", no trailing blanks. Every item must have a
// version.
//
// For programs, the same columns as CSV (RFC 4180: a header line, then one line per item; a field with a
// comma, a quote, a line break or blanks at either end in quotes, quotes doubled) or as JSON (an array with
// one object per item and line, named by the header in camel case: "path", "versions", "selectedVersion",
// "result", "severity", "version", "status", "security", "streams").
class FileListTable {
public:
    enum Format { TABLE, CSV, JSON };
    // "table", "csv" or "json"; answers 0 for another word.
    static int mf_parseFormat(const CString& _sWord, Format& _rFormat);

    // Path, version ranges, selected version, result and severity.
    static std::string mf_format(const UQFileListItem::Array& _items, Format _format = TABLE);
    // Path, version ranges, result and severity: a listing gives its versions no file time, so there is no
    // selected version to show.
    static std::string mf_formatListing(const UQFileListItem::Array& _items, Format _format = TABLE);
    // A history search: path, versions, status, security and alternate data streams, each item's display
    // strings. Versions are the item's version ranges, or with _bSelectedOnly the number of its selected
    // version alone (the header then says Version); the status is the selected version's, or the latest
    // one's when none is selected; security and streams are the latest record's.
    static std::string mf_formatSearch(const UQSearchFileItem::Array& _items, int _bSelectedOnly,
                                       Format _format = TABLE);
};
