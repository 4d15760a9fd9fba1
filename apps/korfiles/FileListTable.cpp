#include "FileListTable.h"

#include <vector>

namespace {

// The cells of each item are made twice for a table, once to measure the columns and once to write
// them: that keeps no more than one row in memory, whatever the number of items.
template <class Item, class MakeCells>
void writeItems(const UQArray<Item*, Item*>& _items, const std::vector<CString>& _headers,
                FileListTable::Format _format, TextOutput& _rOut, MakeCells _makeCells) {
    TableWriter writer(_headers, _format, _rOut);
    std::vector<CString> row(_headers.size());
    if (_format == FileListTable::TABLE) {
        for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
            _makeCells(*_items[i], row);
            writer.mf_measure(row);
        }
    }
    for (INT_PTR i = 0; i < _items.GetSize() && !writer.mf_hasFailed(); ++i) {
        _makeCells(*_items[i], row);
        writer.mf_writeRow(row);
    }
    writer.mf_finish();
}

} // namespace

int FileListTable::mf_parseFormat(const CString& _sWord, Format& _rFormat) {
    if (_sWord == L"table")
        _rFormat = TABLE;
    else if (_sWord == L"csv")
        _rFormat = CSV;
    else if (_sWord == L"json")
        _rFormat = JSON;
    else
        return 0;
    return 1;
}

void FileListTable::mf_write(const UQFileListItem::Array& _items, Format _format, TextOutput& _rOut) {
    writeItems(_items, {L"Path", L"Versions", L"Selected version", L"Result", L"Severity"}, _format, _rOut,
               [](const UQFileListItem& _item, std::vector<CString>& _rRow) {
                   _rRow[0] = _item.mf_getPath();
                   _rRow[1] = _item.mf_getRangesDisplayString();
                   _rRow[2] = _item.mf_getSelectedVersionDisplayString();
                   _rRow[3] = _item.mf_getResult();
                   _rRow[4] = UVSeverity::mf_toString(_item.mf_getSeverity());
               });
}

void FileListTable::mf_writeListing(const UQFileListItem::Array& _items, Format _format, TextOutput& _rOut) {
    writeItems(_items, {L"Path", L"Versions", L"Result", L"Severity"}, _format, _rOut,
               [](const UQFileListItem& _item, std::vector<CString>& _rRow) {
                   _rRow[0] = _item.mf_getPath();
                   _rRow[1] = _item.mf_getRangesDisplayString();
                   _rRow[2] = _item.mf_getResult();
                   _rRow[3] = UVSeverity::mf_toString(_item.mf_getSeverity());
               });
}

void FileListTable::mf_writeSearch(const UQSearchFileItem::Array& _items, int _bSelectedOnly, Format _format,
                                   TextOutput& _rOut) {
    writeItems(
        _items, {L"Path", _bSelectedOnly ? L"Version" : L"Versions", L"Status", L"Security", L"Streams"},
        _format, _rOut, [_bSelectedOnly](const UQSearchFileItem& _item, std::vector<CString>& _rRow) {
            const UQSearchFileVersion* selected = _item.mf_getSelectedVersion();
            const UQSearchFileVersion* shown = selected != nullptr ? selected : _item.mf_getLatestVersion();
            _rRow[0] = _item.mf_getPathDisplayString();
            if (_bSelectedOnly && selected != nullptr)
                _rRow[1].Format(L"%lu", static_cast<unsigned long>(selected->mf_getVersion()));
            else
                _rRow[1] = _item.mf_getRangesDisplayString();
            _rRow[2] = shown->mf_getStatusString();
            _rRow[3] = _item.mf_getSecurityDisplayString();
            _rRow[4] = _item.mf_getADStreamsDisplayString();
        });
}
