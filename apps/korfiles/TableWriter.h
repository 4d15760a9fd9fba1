#pragma once

#include "TextOutput.h"

#include "compat/afx.h"

#include <cstddef>
#include <string>
#include <vector>

// Writes korfiles's tables row by row, in bounded memory: rows are gathered into pieces of about
// PIECE_BYTES and handed to the output piece by piece.
//
// TABLE: a header line and one line per row, columns aligned by character count and separated by two
// blanks, no line ending in blanks. A column is as wide as its widest cell (measured beforehand with
// mf_measure) but at most WIDTH_LIMIT characters: a longer cell is written whole and pushes the rest of its
// own line to the right, so that one long path does not pad every other line.
// CSV: RFC 4180 with "\n" line ends; a field with a comma, a quote, a line break or blanks at either end in
// quotes, quotes doubled. JSON: an array with one object per row and line, keys the headers in camel case.
class TableWriter {
public:
    enum Format { TABLE, CSV, JSON };
    static constexpr std::size_t WIDTH_LIMIT = 100;
    static constexpr std::size_t PIECE_BYTES = 65536;

    TableWriter(const std::vector<CString>& _headers, Format _format, TextOutput& _rOut);
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    // Widens the columns to hold this row's cells (TABLE; the other formats ignore it). All rows are
    // measured before the first is written.
    void mf_measure(const std::vector<CString>& _row);
    // Writes the header before the first row. Every row has the header's number of cells.
    void mf_writeRow(const std::vector<CString>& _row);
    // Writes the header if no row came, closes a JSON array and hands over the last piece.
    void mf_finish();
    // Whether the output failed: the rest need not be made.
    bool mf_hasFailed() const noexcept { return m_rOut.mf_getError() != 0; }

private:
    void mf_implLine(const std::vector<CString>& _row);
    void mf_implFlushIfFull();

    std::vector<CString> m_headers;
    Format m_format;
    TextOutput& m_rOut;
    std::vector<std::size_t> m_widths;
    std::vector<std::string> m_jsonNames;
    std::string m_piece;
    std::size_t m_nRows;
    bool m_bStarted;
};
