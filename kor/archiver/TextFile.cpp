#include "kor/archiver/TextFile.h"
#include "kor/KorReport.h"

#include "compat/utf8.h"

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace kortext {

namespace {

// The system's words for an errno; std::strerror may share its buffer between threads.
CString systemReason(int _nError) {
    return CString::FromUtf8(std::error_code(_nError, std::generic_category()).message());
}

} // namespace

FILE* openForReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat) {
#if defined(_WIN32)
    FILE* f = _wfopen(_sFile, L"rb");
#else
    // A name that is not UTF-8 keeps its bytes (uqfmt::nativeToWide).
    FILE* f = std::fopen(uqfmt::wideToNative(_sFile.GetString(), _sFile.GetLength()).c_str(), "rb");
#endif
    const int openError = errno;
    if (f == nullptr) {
        CString detail;
        detail.Format(L"%s: cannot open: %s (errno %d)", _sFile, systemReason(openError), openError);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), detail), _pszFunction,
                             L"Failure opening %s '%s'", _pszWhat, _sFile);
    }
    return f;
}

CString readErrorDetail(const CString& _sFile, int _nErrno) {
    CString detail;
    detail.Format(L"%s: read error: %s (errno %d)", _sFile, systemReason(_nErrno), _nErrno);
    return detail;
}

bool isUtf8(const std::string& _text) {
    const auto* s = reinterpret_cast<const unsigned char*>(_text.data());
    const std::size_t n = _text.size();
    std::size_t i = 0;
    while (i < n) {
        const unsigned char c = s[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        std::size_t extra;
        std::uint32_t cp, min;
        if ((c & 0xE0) == 0xC0) {
            extra = 1, cp = c & 0x1Fu, min = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2, cp = c & 0x0Fu, min = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3, cp = c & 0x07u, min = 0x10000;
        } else {
            return false;
        }
        if (n - i <= extra)
            return false;
        for (std::size_t k = 1; k <= extra; ++k) {
            if ((s[i + k] & 0xC0) != 0x80)
                return false;
            cp = (cp << 6) | (s[i + k] & 0x3Fu);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return false;
        i += extra + 1;
    }
    return true;
}

int findUnwritable(const CString& _sText, CString& _rsWhat) {
    const int n = _sText.GetLength();
    for (int i = 0; i < n; ++i) {
        const unsigned u = static_cast<unsigned>(_sText[i]) & 0xFFFFu;
        const bool high = u >= 0xD800 && u <= 0xDBFF;
        const bool low = u >= 0xDC00 && u <= 0xDFFF;
        if (high && i + 1 < n && (static_cast<unsigned>(_sText[i + 1]) & 0xFC00u) == 0xDC00u) {
            ++i;
            continue;
        }
        if (u < 0x20 || u == 0x7F)
            _rsWhat.Format(L"control character U+%04X", u);
        else if (high || low)
            _rsWhat.Format(L"unpaired surrogate U+%04X", u);
        else
            continue;
        return i;
    }
    return -1;
}

CString shownText(const CString& _sText) {
    CString out;
    for (int i = 0; i < _sText.GetLength(); ++i) {
        const unsigned u = static_cast<unsigned>(_sText[i]) & 0xFFFFu;
        const bool pairStart = (u & 0xFC00u) == 0xD800u && i + 1 < _sText.GetLength() &&
                               (static_cast<unsigned>(_sText[i + 1]) & 0xFC00u) == 0xDC00u;
        if (pairStart) {
            out += _sText[i];
            out += _sText[++i];
        } else if (u < 0x20 || u == 0x7F || (u >= 0xD800 && u <= 0xDFFF)) {
            CString escaped;
            escaped.Format(L"\\u%04X", u);
            out += escaped;
        } else {
            out += _sText[i];
        }
    }
    return out;
}

} // namespace kortext
