#include "TableWriter.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

const std::size_t COLUMN_GAP = 2;

// Characters as a terminal counts them, near enough: code points, so a UTF-16 surrogate pair is one.
std::size_t width(const CString& _sText) {
    std::size_t n = 0;
    for (int i = 0; i < _sText.GetLength(); ++i) {
        const wchar_t c = _sText.GetString()[i];
        if (sizeof(wchar_t) == 2 && c >= 0xDC00 && c <= 0xDFFF)
            continue;
        ++n;
    }
    return n;
}

void appendCsvField(std::string& _rOut, const CString& _sValue) {
    const std::string text = _sValue.ToUtf8();
    const bool quote = text.find_first_of(",\"\r\n") != std::string::npos ||
                       (!text.empty() && (text.front() == ' ' || text.back() == ' '));
    if (!quote) {
        _rOut += text;
        return;
    }
    _rOut += '"';
    for (const char c : text) {
        if (c == '"')
            _rOut += '"';
        _rOut += c;
    }
    _rOut += '"';
}

void appendJsonString(std::string& _rOut, const std::string& _sText) {
    _rOut += '"';
    for (const char c : _sText) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            _rOut += '\\';
            _rOut += c;
        } else if (u < 0x20 || u == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", u);
            _rOut += escaped;
        } else {
            _rOut += c;
        }
    }
    _rOut += '"';
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
    std::string quoted;
    appendJsonString(quoted, name);
    return quoted;
}

} // namespace

TableWriter::TableWriter(const std::vector<CString>& _headers, Format _format, TextOutput& _rOut)
    : m_headers(_headers), m_format(_format), m_rOut(_rOut), m_widths(_headers.size(), 0), m_nRows(0),
      m_bStarted(false) {
    for (std::size_t c = 0; c < m_headers.size(); ++c)
        m_widths[c] = width(m_headers[c]);
    if (m_format == JSON) {
        for (const CString& header : m_headers)
            m_jsonNames.push_back(jsonName(header));
    }
}

void TableWriter::mf_measure(const std::vector<CString>& _row) {
    for (std::size_t c = 0; c < m_widths.size() && c < _row.size(); ++c) {
        const std::size_t w = std::min(width(_row[c]), WIDTH_LIMIT);
        if (w > m_widths[c])
            m_widths[c] = w;
    }
}

void TableWriter::mf_writeRow(const std::vector<CString>& _row) {
    if (!m_bStarted) {
        m_bStarted = true;
        if (m_format == JSON)
            m_piece += '[';
        else
            mf_implLine(m_headers);
    }
    if (m_format == JSON) {
        m_piece += m_nRows == 0 ? "\n{" : ",\n{";
        for (std::size_t c = 0; c < _row.size(); ++c) {
            if (c > 0)
                m_piece += ", ";
            m_piece += m_jsonNames[c];
            m_piece += ": ";
            appendJsonString(m_piece, _row[c].ToUtf8());
        }
        m_piece += '}';
    } else {
        mf_implLine(_row);
    }
    ++m_nRows;
    mf_implFlushIfFull();
}

void TableWriter::mf_finish() {
    if (!m_bStarted) {
        m_bStarted = true;
        if (m_format == JSON)
            m_piece += '[';
        else
            mf_implLine(m_headers);
    }
    if (m_format == JSON)
        m_piece += "\n]\n";
    m_rOut.mf_write(m_piece);
    m_piece.clear();
}

void TableWriter::mf_implLine(const std::vector<CString>& _row) {
    if (m_format == CSV) {
        for (std::size_t c = 0; c < _row.size(); ++c) {
            if (c > 0)
                m_piece += ',';
            appendCsvField(m_piece, _row[c]);
        }
        m_piece += '\n';
        return;
    }
    // Blanks are written only before further text, so no line ends in blanks. A cell wider than its
    // column pushes the cells after it on its line, each two blanks after the one before.
    std::size_t column = 0;
    std::size_t start = 0;
    for (std::size_t c = 0; c < _row.size(); ++c) {
        if (c > 0)
            start += m_widths[c - 1] + COLUMN_GAP;
        if (_row[c].IsEmpty())
            continue;
        std::size_t at = start;
        if (column > 0 && column + COLUMN_GAP > at)
            at = column + COLUMN_GAP;
        m_piece.append(at - column, ' ');
        m_piece += _row[c].ToUtf8();
        column = at + width(_row[c]);
    }
    m_piece += '\n';
}

void TableWriter::mf_implFlushIfFull() {
    if (m_piece.size() < PIECE_BYTES)
        return;
    m_rOut.mf_write(m_piece);
    m_piece.clear();
}
