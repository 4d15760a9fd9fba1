#pragma once

#include "TableWriter.h"
#include "TextOutput.h"

#include "guibase/filelist/UQFileListItem.h"
#include "guibase/search/UQSearchFileItem.h"

// The tables korfiles prints, written row by row through TableWriter (its formats and column widths):
// a header line and one line per item. Paths are never shortened. Every item must have a version.
// The CSV and JSON keys are the headers: "path", "versions", "selectedVersion", "result", "severity",
// "version", "status", "security", "streams". Writing stops at the first failure of the output.
class FileListTable {
public:
    using Format = TableWriter::Format;
    static constexpr Format TABLE = TableWriter::TABLE;
    static constexpr Format CSV = TableWriter::CSV;
    static constexpr Format JSON = TableWriter::JSON;

    // "table", "csv" or "json"; answers 0 for another word.
    static int mf_parseFormat(const CString& _sWord, Format& _rFormat);

    // Path, version ranges, selected version, result and severity.
    static void mf_write(const UQFileListItem::Array& _items, Format _format, TextOutput& _rOut);
    // Path, version ranges, result and severity: a listing gives its versions no file time, so there is no
    // selected version to show.
    static void mf_writeListing(const UQFileListItem::Array& _items, Format _format, TextOutput& _rOut);
    // A history search: path, versions, status, security and alternate data streams, each item's display
    // strings. Versions are the item's version ranges, or with _bSelectedOnly the number of its selected
    // version alone (the header then says Version); the status is the selected version's, or the latest
    // one's when none is selected; security and streams are the latest record's.
    static void mf_writeSearch(const UQSearchFileItem::Array& _items, int _bSelectedOnly, Format _format,
                               TextOutput& _rOut);
};
