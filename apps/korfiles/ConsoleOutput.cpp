#include "ConsoleOutput.h"

#include "compat/utf8.h"

#if !defined(_WIN32)
#include <unistd.h>
#endif

ConsoleOutput::ConsoleOutput(Stream _stream) noexcept : m_pFile(_stream == STANDARD_ERROR ? stderr : stdout) {
#if defined(_WIN32)
    m_hConsole = nullptr;
    const HANDLE handle = GetStdHandle(_stream == STANDARD_ERROR ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE && GetConsoleMode(handle, &mode))
        m_hConsole = handle;
#endif
}

void ConsoleOutput::mf_write(const std::string& _sText) noexcept {
#if defined(_WIN32)
    if (m_hConsole != nullptr) {
        try {
            const std::wstring wide = uqfmt::utf8ToWide(_sText.data(), _sText.size());
            std::size_t done = 0;
            while (done < wide.size()) {
                // Bounded pieces, as large console writes can fail; a surrogate pair is never split.
                std::size_t piece = wide.size() - done;
                if (piece > 8192) {
                    piece = 8192;
                    const wchar_t last = wide[done + piece - 1];
                    if (last >= 0xD800 && last <= 0xDBFF)
                        --piece;
                }
                DWORD written = 0;
                if (!WriteConsoleW(m_hConsole, wide.data() + done, static_cast<DWORD>(piece), &written,
                                   nullptr) ||
                    written == 0)
                    return;
                done += written;
            }
        } catch (...) {
            // Out of memory while converting: the text is lost, as with any failed console write.
        }
        return;
    }
#endif
    std::fwrite(_sText.data(), 1, _sText.size(), m_pFile);
    std::fflush(m_pFile);
}

bool ConsoleOutput::mf_isTerminal() const noexcept {
#if defined(_WIN32)
    return m_hConsole != nullptr;
#else
    return ::isatty(::fileno(m_pFile)) != 0;
#endif
}
