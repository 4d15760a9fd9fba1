#pragma once

#include "TextOutput.h"

#include "compat/win32.h"

#include <cstdio>

// Standard output or standard error. On Windows a console gets the text through WriteConsoleW, so that
// every character shows whatever the console's code page; a file or pipe gets the UTF-8 bytes.
class ConsoleOutput : public TextOutput {
public:
    enum Stream { STANDARD_OUTPUT, STANDARD_ERROR };

    explicit ConsoleOutput(Stream _stream) noexcept;
    // Over a stream that the caller opened and closes, written as a file or pipe (tests).
    explicit ConsoleOutput(std::FILE* _pFile) noexcept;
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;

    // Flushes every piece, so that what reaches the reader is never held back and a failure shows at the
    // piece that caused it; callers write in pieces of some kilobytes.
    void mf_write(const std::string& _sText) noexcept override;
    bool mf_isTerminal() const noexcept override;
    int mf_getError() const noexcept override { return m_nError; }

private:
    std::FILE* m_pFile;
    int m_nError;
#if defined(_WIN32)
    // Null unless the stream is a console.
    HANDLE m_hConsole;
#endif
};
