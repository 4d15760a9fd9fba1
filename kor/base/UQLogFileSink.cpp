#include "interfaces/korbase.h"

#include "kor/base/Environment.h"

#include "compat/utf8.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

#if !defined(_WIN32)
#include <cerrno>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#endif

namespace {

#if defined(_WIN32)
const char* const LINE_END = "\r\n";
#else
const char* const LINE_END = "\n";
#endif

// Continuation lines start under the level letter, so that only a record's first line starts with a digit.
const char* const CONTINUATION = "                        ";

bool isSeparator(wchar_t _cC) noexcept {
    return _cC == L'\\' || _cC == L'/';
}

void appendUtf8Line(std::string& _rsOut, const wchar_t* _pszText, int _nLength) {
    std::wstring clean(_pszText, static_cast<std::size_t>(_nLength));
    for (wchar_t& c : clean) {
        // Other control characters would break the one-line-per-record layout or confuse terminals.
        if ((c < 0x20 && c != L'\t') || c == 0x7F)
            c = 0xFFFD;
    }
    _rsOut += uqfmt::wideToUtf8(clean.data(), clean.size());
}

#if defined(_WIN32)
typedef HANDLE FileHandle;
const FileHandle NO_FILE = INVALID_HANDLE_VALUE;

void createDirectory(const CString& path) {
    CreateDirectoryW(path, nullptr);
}

const DWORD SHARE_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileHandle openFile(const CString& path, bool truncate, std::uint64_t& size) {
    if (truncate) {
        // Emptying the file needs write access; the handle that is kept may only append.
        const HANDLE t = CreateFileW(path, GENERIC_WRITE, SHARE_ALL, nullptr, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
        if (t == INVALID_HANDLE_VALUE)
            return NO_FILE;
        CloseHandle(t);
    }
    // Append-only access: every write lands at the end, even with other writers of the same file.
    const HANDLE h = CreateFileW(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, SHARE_ALL,
                                 nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE)
        return NO_FILE;
    LARGE_INTEGER li;
    size = GetFileSizeEx(h, &li) ? static_cast<std::uint64_t>(li.QuadPart) : 0;
    return h;
}

void closeFile(FileHandle h) {
    CloseHandle(h);
}

bool writeFile(FileHandle h, const std::string& data) {
    const char* p = data.data();
    std::size_t rest = data.size();
    while (rest > 0) {
        DWORD written = 0;
        const DWORD chunk = rest > 0x40000000u ? 0x40000000u : static_cast<DWORD>(rest);
        if (!WriteFile(h, p, chunk, &written, nullptr) || written == 0)
            return false;
        p += written;
        rest -= written;
    }
    return true;
}

void removeFile(const CString& path) {
    DeleteFileW(path);
}

bool renameFile(const CString& from, const CString& to) {
    return MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING) != FALSE ||
           GetLastError() == ERROR_FILE_NOT_FOUND;
}
#else
typedef std::FILE* FileHandle;
FileHandle const NO_FILE = nullptr;

void createDirectory(const CString& _sPath) {
    ::mkdir(_sPath.ToUtf8().c_str(), 0777);
}

FileHandle openFile(const CString& _sPath, bool _bTruncate, std::uint64_t& _ruSize) {
    // "e": the descriptor does not leak into programs that this process starts.
    std::FILE* f = std::fopen(_sPath.ToUtf8().c_str(), _bTruncate ? "wbe" : "abe");
    if (f == nullptr)
        return NO_FILE;
    std::fseek(f, 0, SEEK_END);
    const long end = std::ftell(f);
    _ruSize = end > 0 ? static_cast<std::uint64_t>(end) : 0;
    return f;
}

void closeFile(FileHandle _hF) {
    std::fclose(_hF);
}

bool writeFile(FileHandle _hF, const std::string& _sData) {
    const bool ok = std::fwrite(_sData.data(), 1, _sData.size(), _hF) == _sData.size();
    return std::fflush(_hF) == 0 && ok;
}

void removeFile(const CString& _sPath) {
    std::remove(_sPath.ToUtf8().c_str());
}

bool renameFile(const CString& _sFrom, const CString& _sTo) {
    return std::rename(_sFrom.ToUtf8().c_str(), _sTo.ToUtf8().c_str()) == 0 || errno == ENOENT;
}
#endif

// Creates every directory above the file; failures show when the file itself cannot be opened.
void createParents(const CString& _sPath) {
    for (int i = 1; i < _sPath.GetLength(); ++i) {
        if (isSeparator(_sPath[i]) && !isSeparator(_sPath[i - 1]))
            createDirectory(_sPath.Left(i));
    }
}

CString numbered(const CString& _sPath, int _nN) {
    CString s;
    s.Format(L"%s.%d", _sPath, _nN);
    return s;
}

} // namespace

struct UQLogFileSink::Impl {
    std::mutex mutex;
    FileHandle file = NO_FILE;
    std::uint64_t size = 0;
    std::uint64_t maxBytes = 0;
    int keepFiles = 0;

    bool open(const CString& _sPath, bool _bTruncate) {
        file = openFile(_sPath, _bTruncate, size);
        if (file == NO_FILE) {
            createParents(_sPath);
            file = openFile(_sPath, _bTruncate, size);
        }
        return file != NO_FILE;
    }

    void close() {
        if (file != NO_FILE)
            closeFile(file);
        file = NO_FILE;
    }

    // path.N is dropped, path.1 .. path.N-1 move up by one, the current file becomes path.1.
    void rotate(const CString& _sPath) {
        close();
        bool moved = true;
        if (keepFiles > 0) {
            removeFile(numbered(_sPath, keepFiles));
            for (int i = keepFiles - 1; i >= 1; --i)
                renameFile(numbered(_sPath, i), numbered(_sPath, i + 1));
            moved = renameFile(_sPath, numbered(_sPath, 1));
        }
        if (!open(_sPath, keepFiles == 0))
            return;
        // When the file could not move (another program holds it without sharing), it goes on growing and
        // the move is tried again after another maxBytes.
        if (!moved)
            size = 0;
    }
};

UQLogFileSink::UQLogFileSink(const CString& _sPath, std::uint64_t _uMaxBytes, int _nKeepFiles)
    : m_pImpl(new Impl), m_sPath(_sPath.IsEmpty() ? mf_getDefaultPath() : _sPath) {
    m_pImpl->maxBytes = _uMaxBytes;
    m_pImpl->keepFiles = _nKeepFiles > 0 ? _nKeepFiles : 0;
}

UQLogFileSink::~UQLogFileSink() {
    m_pImpl->close();
}

void UQLogFileSink::mf_write(const UQLogRecord& _record) noexcept {
    try {
        const std::string line = mf_formatLine(_record);
        std::lock_guard<std::mutex> lock(m_pImpl->mutex);
        if (m_pImpl->file == NO_FILE && !m_pImpl->open(m_sPath, false))
            return; // the next record tries again
        if (m_pImpl->maxBytes > 0 && m_pImpl->size > 0 && m_pImpl->size + line.size() > m_pImpl->maxBytes) {
            m_pImpl->rotate(m_sPath);
            if (m_pImpl->file == NO_FILE)
                return;
        }
        if (writeFile(m_pImpl->file, line)) {
            m_pImpl->size += line.size();
        } else {
            // A broken handle (the volume went away, say) is reopened for the next record.
            m_pImpl->close();
        }
    } catch (...) {
        // Losing a record is all that may happen here.
    }
}

CString UQLogFileSink::mf_getDefaultPath() {
    const CString configured = korenv::variable(L"KOR_LOG_FILE");
    if (!configured.IsEmpty())
        return configured;
#if defined(_WIN32)
    CString base = korenv::variable(L"LOCALAPPDATA");
    if (base.IsEmpty()) {
        base = korenv::variable(L"USERPROFILE");
        if (!base.IsEmpty()) {
            base.TrimRight(L"\\/");
            base += L"\\AppData\\Local";
        }
    }
    if (base.IsEmpty()) {
        wchar_t temp[MAX_PATH + 1];
        const DWORD n = GetTempPathW(MAX_PATH + 1, temp);
        base = n > 0 && n <= MAX_PATH ? CString(temp, static_cast<int>(n)) : CString(L"C:\\");
    }
    base.TrimRight(L"\\/");
    return base + L"\\Corvex\\Stormex\\Logs\\korguibase.log";
#else
    const CString base = korenv::userDirectory(L"XDG_STATE_HOME", L".local/state");
    return base + L"/korguibase/korguibase.log";
#endif
}

std::string UQLogFileSink::mf_formatLine(const UQLogRecord& _record) {
    SYSTEMTIME st;
    const FILETIME ft = _record.ftTime;
    if (!FileTimeToSystemTime(&ft, &st))
        st = SYSTEMTIME{0, 0, 0, 0, 0, 0, 0, 0};
    const wchar_t* function =
        _record.pszFunction != nullptr && _record.pszFunction[0] != 0 ? _record.pszFunction : L"-";
    const wchar_t level = _record.pLevel != nullptr ? _record.pLevel->mf_getLetter() : L'?';
    const std::wstring head = uqfmt::format(L"%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u %c %lu %s: ",
                                            st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond,
                                            st.wMilliseconds, level, _record.dwThreadId, function);
    std::string out;
    appendUtf8Line(out, head.data(), static_cast<int>(head.size()));

    // Line breaks of any kind (CR LF, LF, CR) end a line; trailing ones carry nothing.
    const wchar_t* text = _record.sText;
    int length = _record.sText.GetLength();
    while (length > 0 && (text[length - 1] == L'\r' || text[length - 1] == L'\n'))
        --length;
    int start = 0;
    for (int i = 0; i <= length; ++i) {
        if (i < length && text[i] != L'\r' && text[i] != L'\n')
            continue;
        if (start > 0)
            out += CONTINUATION;
        appendUtf8Line(out, text + start, i - start);
        out += LINE_END;
        if (i < length && text[i] == L'\r' && i + 1 < length && text[i + 1] == L'\n')
            ++i;
        start = i + 1;
    }
    return out;
}
