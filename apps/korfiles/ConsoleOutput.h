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
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;

    void mf_write(const std::string& _sText) noexcept override;
    bool mf_isTerminal() const noexcept override;

private:
    std::FILE* m_pFile;
#if defined(_WIN32)
    // Null unless the stream is a console.
    HANDLE m_hConsole;
#endif
};
