#include "FileListTable.h"

#include <cctype>
#include <cstdio>
#include <vector>

namespace {

const std::size_t GAP = 2;

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
                pending += GAP;
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

std::string csvField(const CString& _sValue) {
    const std::string text = _sValue.ToUtf8();
    const bool quote = text.find_first_of(",\"\r\n") != std::string::npos ||
                       (!text.empty() && (text.front() == ' ' || text.back() == ' '));
    if (!quote)
        return text;
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    return out + "\"";
}

std::string csv(const std::vector<Row>& _rows) {
    std::string text;
    for (const Row& row : _rows) {
        for (std::size_t c = 0; c < row.size(); ++c) {
            if (c > 0)
                text += ',';
            text += csvField(row[c]);
        }
        text += '\n';
    }
    return text;
}

std::string jsonString(const std::string& _sText) {
    std::string out = "\"";
    for (const char c : _sText) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (u < 0x20 || u == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", u);
            out += escaped;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

// "Selected version" -> "selectedVersion".
std::string jsonName(const CString& _sHeader) {
    std::string name;
    bool upper = false;
    for (const char c : _sHeader.ToUtf8()) {
        if (c == ' ') {
            upper = true;
            continue;
        }
        name += name.empty() ? static_cast<char>(std::tolower(static_cast<unsigned char>(c)))
                : upper      ? static_cast<char>(std::toupper(static_cast<unsigned char>(c)))
                             : c;
        upper = false;
    }
    return name;
}

std::string json(const std::vector<Row>& _rows) {
    std::vector<std::string> names;
    for (const CString& header : _rows.front())
        names.push_back(jsonString(jsonName(header)));
    std::string text = "[";
    for (std::size_t r = 1; r < _rows.size(); ++r) {
        text += r == 1 ? "\n{" : ",\n{";
        for (std::size_t c = 0; c < _rows[r].size(); ++c)
            text += (c > 0 ? ", " : "") + names[c] + ": " + jsonString(_rows[r][c].ToUtf8());
        text += '}';
    }
    return text + "\n]\n";
}

std::string render(const std::vector<Row>& _rows, FileListTable::Format _format) {
    switch (_format) {
    case FileListTable::CSV:
        return csv(_rows);
    case FileListTable::JSON:
        return json(_rows);
    case FileListTable::TABLE:
        break;
    }
    return alignColumns(_rows);
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

std::string FileListTable::mf_format(const UQFileListItem::Array& _items, Format _format) {
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(_items.GetSize()) + 1);
    rows.push_back({L"Path", L"Versions", L"Selected version", L"Result", L"Severity"});
    for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
        const UQFileListItem* item = _items[i];
        rows.push_back({item->mf_getPath(), item->mf_getRangesDisplayString(),
                        item->mf_getSelectedVersionDisplayString(), item->mf_getResult(),
                        UVSeverity::mf_toString(item->mf_getSeverity())});
    }
    return render(rows, _format);
}

std::string FileListTable::mf_formatListing(const UQFileListItem::Array& _items, Format _format) {
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(_items.GetSize()) + 1);
    rows.push_back({L"Path", L"Versions", L"Result", L"Severity"});
    for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
        const UQFileListItem* item = _items[i];
        rows.push_back({item->mf_getPath(), item->mf_getRangesDisplayString(), item->mf_getResult(),
                        UVSeverity::mf_toString(item->mf_getSeverity())});
    }
    return render(rows, _format);
}

std::string FileListTable::mf_formatSearch(const UQSearchFileItem::Array& _items, int _bSelectedOnly,
                                           Format _format) {
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
    return render(rows, _format);
}
