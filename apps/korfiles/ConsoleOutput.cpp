#include "ConsoleOutput.h"

#include "compat/utf8.h"

#include <cerrno>

#if !defined(_WIN32)
#include <unistd.h>
#endif

ConsoleOutput::ConsoleOutput(Stream _stream) noexcept
    : m_pFile(_stream == STANDARD_ERROR ? stderr : stdout), m_nError(0) {
#if defined(_WIN32)
    m_hConsole = nullptr;
    const HANDLE handle = GetStdHandle(_stream == STANDARD_ERROR ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE && GetConsoleMode(handle, &mode))
        m_hConsole = handle;
#endif
}

ConsoleOutput::ConsoleOutput(std::FILE* _pFile) noexcept : m_pFile(_pFile), m_nError(0) {
#if defined(_WIN32)
    m_hConsole = nullptr;
#endif
}

void ConsoleOutput::mf_write(const std::string& _sText) noexcept {
    if (m_nError != 0)
        return;
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
                    written == 0) {
                    m_nError = EIO;
                    return;
                }
                done += written;
            }
        } catch (...) {
            // Out of memory while converting: the text is lost, as with any failed write.
            m_nError = ENOMEM;
        }
        return;
    }
#endif
    errno = 0;
    const std::size_t written = std::fwrite(_sText.data(), 1, _sText.size(), m_pFile);
    const int writeError = errno;
    if (written != _sText.size() || std::fflush(m_pFile) != 0) {
        // The errno of the call that failed; a stream that failed without one counts as an I/O error.
        const int flushError = errno;
        m_nError = written != _sText.size() ? writeError : flushError;
#if defined(_WIN32)
        // The C runtime does not always translate a pipe closed by its reader into EPIPE.
        const DWORD lastError = GetLastError();
        if (lastError == ERROR_NO_DATA || lastError == ERROR_BROKEN_PIPE)
            m_nError = EPIPE;
#endif
        if (m_nError == 0)
            m_nError = EIO;
    }
}

bool ConsoleOutput::mf_isTerminal() const noexcept {
#if defined(_WIN32)
    return m_hConsole != nullptr;
#else
    return ::isatty(::fileno(m_pFile)) != 0;
#endif
}
