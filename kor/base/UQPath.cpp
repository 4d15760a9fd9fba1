#include "interfaces/korbase.h"

#include <cwchar>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace {

// Windows accepts both; the product writes backslashes.
bool isSeparator(wchar_t _cC) noexcept {
    return _cC == L'\\' || _cC == L'/';
}

bool isAsciiLetter(wchar_t _cC) noexcept {
    return (_cC >= L'A' && _cC <= L'Z') || (_cC >= L'a' && _cC <= L'z');
}

// "C:" at the start: the colon ends the location part like a separator would.
bool hasDrive(const CString& _sPath) noexcept {
    return _sPath.GetLength() >= 2 && isAsciiLetter(_sPath[0]) && _sPath[1] == L':';
}

// Index of the last separator or the drive colon; -1 when there is none.
int locationEnd(const CString& _sPath) noexcept {
    for (int i = _sPath.GetLength() - 1; i >= 0; --i) {
        if (isSeparator(_sPath[i]))
            return i;
    }
    return hasDrive(_sPath) ? 1 : -1;
}

int trailingSeparators(const CString& _sPath) noexcept {
    int n = 0;
    while (n < _sPath.GetLength() && isSeparator(_sPath[_sPath.GetLength() - 1 - n]))
        ++n;
    return n;
}

int leadingSeparators(const CString& _sPath) noexcept {
    int n = 0;
    while (n < _sPath.GetLength() && isSeparator(_sPath[n]))
        ++n;
    return n;
}

// The directory with exactly one trailing backslash; a directory made of separators only is the root "\".
CString withOneTrailingBackslash(const CString& _sDirectory) {
    const int keep = _sDirectory.GetLength() - trailingSeparators(_sDirectory);
    return _sDirectory.Left(keep) + L'\\';
}

// Forward slashes become backslashes and runs of backslashes one; a leading "\\" (UNC) stays.
CString collapseSeparators(const CString& _sPath) {
    CString out;
    const int n = _sPath.GetLength();
    wchar_t* p = out.GetBuffer(n);
    int o = 0;
    for (int i = 0; i < n; ++i) {
        const wchar_t c = isSeparator(_sPath[i]) ? L'\\' : _sPath[i];
        if (c == L'\\' && o > 0 && p[o - 1] == L'\\' && !(i == 1 && o == 1))
            continue;
        p[o++] = c;
    }
    out.ReleaseBuffer(o);
    return out;
}

bool startsWithNoCase(const CString& _sPath, const wchar_t* _pszPrefix) noexcept {
    int i = 0;
    for (; _pszPrefix[i] != 0; ++i) {
        if (i >= _sPath.GetLength())
            return false;
        const wchar_t a = isSeparator(_sPath[i]) ? L'\\' : AfxFoldUpper(_sPath[i]);
        const wchar_t b = isSeparator(_pszPrefix[i]) ? L'\\' : AfxFoldUpper(_pszPrefix[i]);
        if (a != b)
            return false;
    }
    return true;
}

// The order key of one character: separators first, then the case-folded character.
unsigned orderKey(wchar_t _cC) noexcept {
    return isSeparator(_cC) ? 0u : static_cast<unsigned>(AfxFoldUpper(_cC)) + 1u;
}

} // namespace

CString UQPath::mf_appendDirectory(const CString& _sDirectory, const CString& _sSubDirectory) {
    if (_sDirectory.IsEmpty() && _sSubDirectory.IsEmpty())
        return CString();
    if (_sSubDirectory.IsEmpty())
        return withOneTrailingBackslash(_sDirectory);
    if (_sDirectory.IsEmpty())
        return withOneTrailingBackslash(_sSubDirectory);
    const int skip = leadingSeparators(_sSubDirectory);
    return withOneTrailingBackslash(withOneTrailingBackslash(_sDirectory) + _sSubDirectory.Mid(skip));
}

CString UQPath::mf_appendFile(const CString& _sDirectory, const CString& _sFile) {
    if (_sDirectory.IsEmpty())
        return _sFile;
    const int skip = leadingSeparators(_sFile);
    return withOneTrailingBackslash(_sDirectory) + _sFile.Mid(skip);
}

CString UQPath::mf_normalizeDirectory(const CString& _sDirectory) {
    if (_sDirectory.IsEmpty())
        return CString();
    return withOneTrailingBackslash(collapseSeparators(_sDirectory));
}

int UQPath::mf_exists(const CString& _sPath) {
    if (_sPath.IsEmpty())
        return 0;
#if defined(_WIN32)
    return GetFileAttributesW(_sPath) != INVALID_FILE_ATTRIBUTES;
#else
    CString local(_sPath);
    local.Replace(L'\\', L'/');
    struct stat st;
    return ::stat(local.ToUtf8().c_str(), &st) == 0;
#endif
}

CString UQPath::mf_getLocationPart(const CString& _sPath) {
    return _sPath.Left(locationEnd(_sPath) + 1);
}

CString UQPath::mf_getFilePart(const CString& _sPath) {
    return _sPath.Mid(locationEnd(_sPath) + 1);
}

CString UQPath::mf_getFileTypeName(const CString& _sPath) {
    const CString file = mf_getFilePart(_sPath);
    const int dot = file.ReverseFind(L'.');
    if (dot < 0 || dot == file.GetLength() - 1)
        return CString();
    CString type = file.Mid(dot + 1);
    type.MakeUpper();
    return type + L" File";
}

CString UQPath::mf_getUNCPath(const CString& _sPath) {
    if (startsWithNoCase(_sPath, L"\\\\?\\UNC\\"))
        return L"\\\\" + collapseSeparators(_sPath.Mid(8 + leadingSeparators(_sPath.Mid(8))));
    if (startsWithNoCase(_sPath, L"\\\\?\\")) {
        const CString rest = _sPath.Mid(4);
        if (hasDrive(rest))
            return collapseSeparators(rest);
    }
    return collapseSeparators(_sPath);
}

int UQPath::mf_compare(const CString& _sA, const CString& _sB) noexcept {
    const wchar_t* p = _sA;
    const wchar_t* q = _sB;
    // The versions of one file carry equal texts: one vectorised comparison instead of a walk.
    const int n = _sA.GetLength();
    if (n == _sB.GetLength() && std::wmemcmp(p, q, static_cast<std::size_t>(n)) == 0)
        return 0;
    for (;; ++p, ++q) {
        // Equal units have equal keys: the long common prefixes of paths cost no folding.
        if (*p == *q) {
            if (*p == 0)
                return 0;
            continue;
        }
        if (*p == 0 || *q == 0)
            return (*p != 0) - (*q != 0);
        const unsigned x = orderKey(*p);
        const unsigned y = orderKey(*q);
        if (x != y)
            return x < y ? -1 : 1;
    }
}
