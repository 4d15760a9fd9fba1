#include "FileListTable.h"

#include <vector>

namespace {

const std::size_t kGap = 2;

// Characters as a terminal counts them, near enough: code points, so a UTF-16 surrogate pair is one.
std::size_t width(const CString& _sS) {
    std::size_t n = 0;
    for (int i = 0; i < _sS.GetLength(); ++i) {
        const wchar_t c = _sS.GetString()[i];
        if (sizeof(wchar_t) == 2 && c >= 0xDC00 && c <= 0xDFFF)
            continue;
        ++n;
    }
    return n;
}

using Row = std::vector<CString>;

// Every row has the header's number of columns.
std::string alignColumns(const std::vector<Row>& _rows) {
    const std::size_t columns = _rows.front().size();
    std::vector<std::size_t> widths(columns, 0);
    for (const Row& row : _rows) {
        for (std::size_t c = 0; c < columns; ++c) {
            const std::size_t w = width(row[c]);
            if (w > widths[c])
                widths[c] = w;
        }
    }

    std::string text;
    for (const Row& row : _rows) {
        std::string line;
        std::size_t pending = 0;
        for (std::size_t c = 0; c < columns; ++c) {
            if (c > 0)
                pending += kGap;
            // Blanks are written only before further text, so no line ends in blanks.
            if (!row[c].IsEmpty()) {
                line.append(pending, ' ');
                pending = 0;
                line += row[c].ToUtf8();
            }
            pending += widths[c] - width(row[c]);
        }
        text += line;
        text += '\n';
    }
    return text;
}

} // namespace

std::string FileListTable::mf_format(const UQFileListItem::Array& _items) {
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(_items.GetSize()) + 1);
    rows.push_back({L"Path", L"Versions", L"Selected version", L"Result", L"Severity"});
    for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
        const UQFileListItem* item = _items[i];
        rows.push_back({item->mf_getPath(), item->mf_getRangesDisplayString(),
                        item->mf_getSelectedVersionDisplayString(), item->mf_getResult(),
                        UVSeverity::mf_toString(item->mf_getSeverity())});
    }
    return alignColumns(rows);
}

std::string FileListTable::mf_formatListing(const UQFileListItem::Array& _items) {
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(_items.GetSize()) + 1);
    rows.push_back({L"Path", L"Versions", L"Result", L"Severity"});
    for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
        const UQFileListItem* item = _items[i];
        rows.push_back({item->mf_getPath(), item->mf_getRangesDisplayString(), item->mf_getResult(),
                        UVSeverity::mf_toString(item->mf_getSeverity())});
    }
    return alignColumns(rows);
}

std::string FileListTable::mf_formatSearch(const UQSearchFileItem::Array& _items, int _bSelectedOnly) {
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(_items.GetSize()) + 1);
    rows.push_back({L"Path", _bSelectedOnly ? L"Version" : L"Versions", L"Status", L"Security", L"Streams"});
    for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
        const UQSearchFileItem* item = _items[i];
        const UQSearchFileVersion* selected = item->mf_getSelectedVersion();
        const UQSearchFileVersion* shown = selected != nullptr ? selected : item->mf_getLatestVersion();
        CString versions;
        if (_bSelectedOnly && selected != nullptr)
            versions.Format(L"%lu", static_cast<unsigned long>(selected->mf_getVersion()));
        else
            versions = item->mf_getRangesDisplayString();
        rows.push_back({item->mf_getPathDisplayString(), versions, shown->mf_getStatusString(),
                        item->mf_getSecurityDisplayString(), item->mf_getADStreamsDisplayString()});
    }
    return alignColumns(rows);
}
