#include "interfaces/korbase.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace {

// Windows accepts both; the product writes backslashes.
bool isSeparator(wchar_t c) noexcept {
    return c == L'\\' || c == L'/';
}

bool isAsciiLetter(wchar_t c) noexcept {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

// "C:" at the start: the colon ends the location part like a separator would.
bool hasDrive(const CString& path) noexcept {
    return path.GetLength() >= 2 && isAsciiLetter(path[0]) && path[1] == L':';
}

// Index of the last separator or the drive colon; -1 when there is none.
int locationEnd(const CString& path) noexcept {
    for (int i = path.GetLength() - 1; i >= 0; --i) {
        if (isSeparator(path[i]))
            return i;
    }
    return hasDrive(path) ? 1 : -1;
}

int trailingSeparators(const CString& path) noexcept {
    int n = 0;
    while (n < path.GetLength() && isSeparator(path[path.GetLength() - 1 - n]))
        ++n;
    return n;
}

int leadingSeparators(const CString& path) noexcept {
    int n = 0;
    while (n < path.GetLength() && isSeparator(path[n]))
        ++n;
    return n;
}

// The directory with exactly one trailing backslash; a directory made of separators only is the root "\".
CString withOneTrailingBackslash(const CString& directory) {
    const int keep = directory.GetLength() - trailingSeparators(directory);
    return directory.Left(keep) + L'\\';
}

// Forward slashes become backslashes and runs of backslashes one; a leading "\\" (UNC) stays.
CString collapseSeparators(const CString& path) {
    CString out;
    const int n = path.GetLength();
    wchar_t* p = out.GetBuffer(n);
    int o = 0;
    for (int i = 0; i < n; ++i) {
        const wchar_t c = isSeparator(path[i]) ? L'\\' : path[i];
        if (c == L'\\' && o > 0 && p[o - 1] == L'\\' && !(i == 1 && o == 1))
            continue;
        p[o++] = c;
    }
    out.ReleaseBuffer(o);
    return out;
}

bool startsWithNoCase(const CString& path, const wchar_t* prefix) noexcept {
    int i = 0;
    for (; prefix[i] != 0; ++i) {
        if (i >= path.GetLength())
            return false;
        const wchar_t a = isSeparator(path[i]) ? L'\\' : AfxFoldUpper(path[i]);
        const wchar_t b = isSeparator(prefix[i]) ? L'\\' : AfxFoldUpper(prefix[i]);
        if (a != b)
            return false;
    }
    return true;
}

// The order key of one character: separators first, then the case-folded character.
unsigned orderKey(wchar_t c) noexcept {
    return isSeparator(c) ? 0u : static_cast<unsigned>(AfxFoldUpper(c)) + 1u;
}

} // namespace

CString UQPath::mf_appendDirectory(const CString& directory, const CString& subDirectory) {
    if (directory.IsEmpty() && subDirectory.IsEmpty())
        return CString();
    if (subDirectory.IsEmpty())
        return withOneTrailingBackslash(directory);
    if (directory.IsEmpty())
        return withOneTrailingBackslash(subDirectory);
    const int skip = leadingSeparators(subDirectory);
    return withOneTrailingBackslash(withOneTrailingBackslash(directory) + subDirectory.Mid(skip));
}

CString UQPath::mf_appendFile(const CString& directory, const CString& file) {
    if (directory.IsEmpty())
        return file;
    const int skip = leadingSeparators(file);
    return withOneTrailingBackslash(directory) + file.Mid(skip);
}

CString UQPath::mf_normalizeDirectory(const CString& directory) {
    if (directory.IsEmpty())
        return CString();
    return withOneTrailingBackslash(collapseSeparators(directory));
}

int UQPath::mf_exists(const CString& path) {
    if (path.IsEmpty())
        return 0;
#if defined(_WIN32)
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
#else
    CString local(path);
    local.Replace(L'\\', L'/');
    struct stat st;
    return ::stat(local.ToUtf8().c_str(), &st) == 0;
#endif
}

CString UQPath::mf_getLocationPart(const CString& path) {
    return path.Left(locationEnd(path) + 1);
}

CString UQPath::mf_getFilePart(const CString& path) {
    return path.Mid(locationEnd(path) + 1);
}

CString UQPath::mf_getFileTypeName(const CString& path) {
    const CString file = mf_getFilePart(path);
    const int dot = file.ReverseFind(L'.');
    if (dot < 0 || dot == file.GetLength() - 1)
        return CString();
    CString type = file.Mid(dot + 1);
    type.MakeUpper();
    return type + L" File";
}

CString UQPath::mf_getUNCPath(const CString& path) {
    if (startsWithNoCase(path, L"\\\\?\\UNC\\"))
        return L"\\\\" + collapseSeparators(path.Mid(8 + leadingSeparators(path.Mid(8))));
    if (startsWithNoCase(path, L"\\\\?\\")) {
        const CString rest = path.Mid(4);
        if (hasDrive(rest))
            return collapseSeparators(rest);
    }
    return collapseSeparators(path);
}

int UQPath::mf_compare(const CString& a, const CString& b) noexcept {
    const wchar_t* p = a;
    const wchar_t* q = b;
    for (;; ++p, ++q) {
        if (*p == 0 || *q == 0)
            return (*p != 0) - (*q != 0);
        const unsigned x = orderKey(*p);
        const unsigned y = orderKey(*q);
        if (x != y)
            return x < y ? -1 : 1;
    }
}
