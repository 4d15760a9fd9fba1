#include "afx.h"

#include "utf8.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>

namespace {

struct EmptyString {
    std::atomic<long> nRefs{-1};
    int nDataLength = 0;
    int nAllocLength = 0;
    wchar_t terminator[2] = {0, 0};
};
EmptyString g_empty;

wchar_t* emptyChars() noexcept {
    return g_empty.terminator;
}

int lengthOf(const wchar_t* p) noexcept {
    if (p == nullptr)
        return 0;
    const wchar_t* q = p;
    while (*q != 0)
        ++q;
    return static_cast<int>(q - p);
}

bool inSet(wchar_t c, const wchar_t* set) noexcept {
    if (set == nullptr)
        return false;
    for (; *set != 0; ++set)
        if (*set == c)
            return true;
    return false;
}

bool isSpace(wchar_t c) noexcept {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n' || c == L'\v' || c == L'\f' || c == 0x00A0 ||
           c == 0x3000;
}

// The ASCII part of AfxFoldUpper, inline: sorting file lists spends its time comparing mostly-ASCII names.
unsigned foldAsciiUpper(unsigned u) noexcept {
    return (u >= 'a' && u <= 'z') ? u - 32 : u;
}

} // namespace

static_assert(sizeof(CString) == sizeof(void*), "CString is relocatable as one pointer");

namespace uqfmt {
Arg makeArg(const CString& s) {
    return makeArg(s.GetString());
}
} // namespace uqfmt

namespace {

// Text that never was UTF-16 (a wide literal or a C library result on Linux, where wchar_t has 32 bits)
// holds characters beyond the BMP as one unit; CString keeps them as surrogate pairs, as on Windows.
bool hasUnitsBeyondBmp(const wchar_t* p, int n) noexcept {
#if WCHAR_MAX > 0xFFFF
    for (int i = 0; i < n; ++i)
        if (static_cast<unsigned long>(p[i]) > 0xFFFFu)
            return true;
#else
    (void)p;
    (void)n;
#endif
    return false;
}

std::wstring asUtf16(const wchar_t* p, int n) {
    std::wstring out;
    out.reserve(static_cast<std::size_t>(n) + 1);
    for (int i = 0; i < n; ++i) {
        unsigned long c = static_cast<unsigned long>(p[i]);
        if (c > 0x10FFFFu) {
            out += static_cast<wchar_t>(0xFFFD);
        } else if (c > 0xFFFFu) {
            c -= 0x10000u;
            out += static_cast<wchar_t>(0xD800u + (c >> 10));
            out += static_cast<wchar_t>(0xDC00u + (c & 0x3FFu));
        } else {
            out += static_cast<wchar_t>(c);
        }
    }
    return out;
}

} // namespace

CString::Data* CString::allocate(int n) {
    if (n < 0)
        AfxThrowInvalidArgException();
    void* mem = std::malloc(sizeof(Data) + (static_cast<std::size_t>(n) + 1) * sizeof(wchar_t));
    if (mem == nullptr)
        throw std::bad_alloc();
    Data* d = new (mem) Data;
    d->nRefs.store(1, std::memory_order_relaxed);
    d->nDataLength = 0;
    d->nAllocLength = n;
    d->chars()[0] = 0;
    return d;
}

void CString::release(Data* d) noexcept {
    if (d->nRefs.load(std::memory_order_relaxed) < 0)
        return;
    if (d->nRefs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        d->~Data();
        std::free(d);
    }
}

CString::CString() noexcept : m_pszData(emptyChars()) {}

CString::CString(const CString& s) noexcept : m_pszData(s.m_pszData) {
    Data* d = header();
    if (d->nRefs.load(std::memory_order_relaxed) >= 0)
        d->nRefs.fetch_add(1, std::memory_order_relaxed);
}

CString::CString(CString&& s) noexcept : m_pszData(s.m_pszData) {
    s.m_pszData = emptyChars();
}

CString::CString(PCXSTR psz) : m_pszData(emptyChars()) {
    assign(psz, lengthOf(psz));
}

CString::CString(PCXSTR pch, int n) : m_pszData(emptyChars()) {
    if (n < 0 || (pch == nullptr && n > 0))
        AfxThrowInvalidArgException();
    assign(pch, n);
}

CString::CString(wchar_t ch, int nRepeat) : m_pszData(emptyChars()) {
    if (nRepeat > 0 && hasUnitsBeyondBmp(&ch, 1)) {
        const std::wstring pair = asUtf16(&ch, 1);
        for (int i = 0; i < nRepeat; ++i)
            append(pair.data(), static_cast<int>(pair.size()));
    } else if (nRepeat > 0) {
        Data* d = allocate(nRepeat);
        std::fill_n(d->chars(), nRepeat, ch);
        d->chars()[nRepeat] = 0;
        d->nDataLength = nRepeat;
        m_pszData = d->chars();
    }
}

CString::CString(const std::wstring& s) : m_pszData(emptyChars()) {
    assign(s.data(), static_cast<int>(s.size()));
}

CString::~CString() {
    release(header());
}

CString& CString::operator=(const CString& s) noexcept {
    if (m_pszData != s.m_pszData) {
        CString copy(s);
        std::swap(m_pszData, copy.m_pszData);
    }
    return *this;
}

CString& CString::operator=(CString&& s) noexcept {
    if (this != &s)
        std::swap(m_pszData, s.m_pszData);
    return *this;
}

CString& CString::operator=(PCXSTR psz) {
    assign(psz, lengthOf(psz));
    return *this;
}

CString& CString::operator=(wchar_t ch) {
    assign(&ch, 1);
    return *this;
}

CString& CString::operator+=(const CString& s) {
    if (s.m_pszData == m_pszData) {
        const CString copy(s);
        append(copy.m_pszData, copy.GetLength());
    } else {
        append(s.m_pszData, s.GetLength());
    }
    return *this;
}

CString& CString::operator+=(PCXSTR psz) {
    append(psz, lengthOf(psz));
    return *this;
}

CString& CString::operator+=(wchar_t ch) {
    append(&ch, 1);
    return *this;
}

void CString::assign(PCXSTR pch, int n) {
    if (hasUnitsBeyondBmp(pch, n)) {
        const std::wstring units = asUtf16(pch, n);
        assign(units.data(), static_cast<int>(units.size()));
        return;
    }
    if (n == 0) {
        Empty();
        return;
    }
    Data* d = allocate(n);
    std::memmove(d->chars(), pch, static_cast<std::size_t>(n) * sizeof(wchar_t));
    d->chars()[n] = 0;
    d->nDataLength = n;
    release(header());
    m_pszData = d->chars();
}

void CString::append(PCXSTR pch, int n) {
    if (n <= 0)
        return;
    if (hasUnitsBeyondBmp(pch, n)) {
        const std::wstring units = asUtf16(pch, n);
        append(units.data(), static_cast<int>(units.size()));
        return;
    }
    const int old = GetLength();
    if (pch >= m_pszData && pch <= m_pszData + old) {
        // Appending a part of ourselves: the reallocation must not free it first.
        const CString part(pch, n);
        makeUnique(old + n);
        std::memcpy(m_pszData + old, part.m_pszData, static_cast<std::size_t>(n) * sizeof(wchar_t));
        setLength(old + n);
        return;
    }
    makeUnique(old + n);
    std::memmove(m_pszData + old, pch, static_cast<std::size_t>(n) * sizeof(wchar_t));
    setLength(old + n);
}

void CString::makeUnique(int nMin) {
    Data* d = header();
    const bool shared = d->nRefs.load(std::memory_order_acquire) != 1;
    if (!shared && d->nAllocLength >= nMin)
        return;
    int cap = nMin;
    if (!shared && nMin > d->nAllocLength)
        cap = std::max(nMin, d->nAllocLength + d->nAllocLength / 2);
    Data* n = allocate(cap);
    const int len = std::min(d->nDataLength, cap);
    std::memcpy(n->chars(), d->chars(), static_cast<std::size_t>(len) * sizeof(wchar_t));
    n->chars()[len] = 0;
    n->nDataLength = len;
    release(d);
    m_pszData = n->chars();
}

void CString::setLength(int n) noexcept {
    Data* d = header();
    if (d->nRefs.load(std::memory_order_relaxed) < 0)
        return;
    d->nDataLength = n;
    d->chars()[n] = 0;
}

void CString::Empty() noexcept {
    release(header());
    m_pszData = emptyChars();
}

wchar_t CString::GetAt(int i) const {
    if (i < 0 || i > GetLength())
        AfxThrowInvalidArgException();
    return m_pszData[i];
}

void CString::SetAt(int i, wchar_t ch) {
    if (i < 0 || i >= GetLength())
        AfxThrowInvalidArgException();
    makeUnique(GetLength());
    m_pszData[i] = ch;
}

CString::PXSTR CString::GetBuffer() {
    return GetBuffer(0);
}

CString::PXSTR CString::GetBuffer(int nMin) {
    if (nMin < 0)
        AfxThrowInvalidArgException();
    makeUnique(std::max(nMin, GetLength()));
    if (header()->nRefs.load(std::memory_order_relaxed) < 0) {
        // The shared empty string has no room: give it a real buffer.
        Data* d = allocate(0);
        m_pszData = d->chars();
    }
    return m_pszData;
}

CString::PXSTR CString::GetBufferSetLength(int n) {
    PXSTR p = GetBuffer(n);
    setLength(n);
    return p;
}

void CString::ReleaseBuffer(int n) {
    Data* d = header();
    if (d->nRefs.load(std::memory_order_relaxed) < 0)
        return;
    if (n < 0) {
        n = 0;
        while (n < d->nAllocLength && d->chars()[n] != 0)
            ++n;
    }
    if (n > d->nAllocLength)
        AfxThrowInvalidArgException();
    setLength(n);
}

void CString::Preallocate(int n) {
    if (n > GetLength())
        makeUnique(n);
}

int CString::Compare(PCXSTR psz) const noexcept {
    const wchar_t* a = m_pszData;
    const wchar_t* b = psz != nullptr ? psz : L"";
    for (;; ++a, ++b) {
        const unsigned ca = static_cast<unsigned>(*a) & 0xFFFFFFFFu;
        const unsigned cb = static_cast<unsigned>(*b) & 0xFFFFFFFFu;
        if (ca != cb)
            return ca < cb ? -1 : 1;
        if (ca == 0)
            return 0;
    }
}

int CString::CompareNoCase(PCXSTR psz) const noexcept {
    const wchar_t* a = m_pszData;
    const wchar_t* b = psz != nullptr ? psz : L"";
    for (;; ++a, ++b) {
        unsigned ca = static_cast<unsigned>(*a);
        unsigned cb = static_cast<unsigned>(*b);
        if (ca == cb) {
            // Equal code units fold alike: the long common prefixes of paths cost no folding.
            if (ca == 0)
                return 0;
            continue;
        }
        if ((ca | cb) < 0x80) {
            ca = foldAsciiUpper(ca);
            cb = foldAsciiUpper(cb);
        } else {
            ca = static_cast<unsigned>(AfxFoldUpper(*a));
            cb = static_cast<unsigned>(AfxFoldUpper(*b));
        }
        if (ca != cb)
            return ca < cb ? -1 : 1;
    }
}

CString& CString::MakeUpper() {
    const int n = GetLength();
    for (int i = 0; i < n; ++i) {
        const wchar_t u = AfxFoldUpper(m_pszData[i]);
        if (u != m_pszData[i]) {
            makeUnique(n);
            m_pszData[i] = u;
        }
    }
    return *this;
}

CString& CString::MakeLower() {
    const int n = GetLength();
    for (int i = 0; i < n; ++i) {
        const wchar_t l = AfxFoldLower(m_pszData[i]);
        if (l != m_pszData[i]) {
            makeUnique(n);
            m_pszData[i] = l;
        }
    }
    return *this;
}

CString& CString::MakeReverse() {
    const int n = GetLength();
    if (n > 1) {
        makeUnique(n);
        std::reverse(m_pszData, m_pszData + n);
    }
    return *this;
}

CString& CString::TrimLeft() {
    int i = 0;
    while (i < GetLength() && isSpace(m_pszData[i]))
        ++i;
    if (i > 0)
        Delete(0, i);
    return *this;
}

CString& CString::TrimLeft(wchar_t ch) {
    int i = 0;
    while (i < GetLength() && m_pszData[i] == ch)
        ++i;
    if (i > 0)
        Delete(0, i);
    return *this;
}

CString& CString::TrimLeft(PCXSTR set) {
    int i = 0;
    while (i < GetLength() && inSet(m_pszData[i], set))
        ++i;
    if (i > 0)
        Delete(0, i);
    return *this;
}

CString& CString::TrimRight() {
    int n = GetLength();
    while (n > 0 && isSpace(m_pszData[n - 1]))
        --n;
    if (n < GetLength())
        *this = Left(n);
    return *this;
}

CString& CString::TrimRight(wchar_t ch) {
    int n = GetLength();
    while (n > 0 && m_pszData[n - 1] == ch)
        --n;
    if (n < GetLength())
        *this = Left(n);
    return *this;
}

CString& CString::TrimRight(PCXSTR set) {
    int n = GetLength();
    while (n > 0 && inSet(m_pszData[n - 1], set))
        --n;
    if (n < GetLength())
        *this = Left(n);
    return *this;
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}
CString& CString::Trim(wchar_t ch) {
    return TrimRight(ch).TrimLeft(ch);
}
CString& CString::Trim(PCXSTR set) {
    return TrimRight(set).TrimLeft(set);
}

int CString::Find(wchar_t ch, int start) const noexcept {
    if (start < 0 || start >= GetLength())
        return -1;
    for (int i = start; i < GetLength(); ++i)
        if (m_pszData[i] == ch)
            return i;
    return -1;
}

int CString::Find(PCXSTR sub, int start) const noexcept {
    const int n = GetLength();
    const int m = lengthOf(sub);
    if (sub == nullptr || start < 0 || start > n)
        return -1;
    if (m == 0)
        return start;
    for (int i = start; i + m <= n; ++i)
        if (std::equal(sub, sub + m, m_pszData + i))
            return i;
    return -1;
}

int CString::FindOneOf(PCXSTR set) const noexcept {
    for (int i = 0; i < GetLength(); ++i)
        if (inSet(m_pszData[i], set))
            return i;
    return -1;
}

int CString::ReverseFind(wchar_t ch) const noexcept {
    for (int i = GetLength() - 1; i >= 0; --i)
        if (m_pszData[i] == ch)
            return i;
    return -1;
}

CString CString::Left(int n) const {
    if (n < 0)
        n = 0;
    if (n >= GetLength())
        return *this;
    return CString(m_pszData, n);
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    if (first < 0)
        first = 0;
    if (count < 0)
        count = 0;
    const int n = GetLength();
    if (first > n)
        first = n;
    if (count > n - first)
        count = n - first;
    if (first == 0 && count == n)
        return *this;
    return CString(m_pszData + first, count);
}

CString CString::Right(int n) const {
    if (n < 0)
        n = 0;
    if (n >= GetLength())
        return *this;
    return CString(m_pszData + GetLength() - n, n);
}

int CString::Replace(wchar_t from, wchar_t to) {
    if (from == to)
        return 0; // MFC answers 0 without counting
    int count = 0;
    const int n = GetLength();
    for (int i = 0; i < n; ++i) {
        if (m_pszData[i] == from) {
            makeUnique(n);
            m_pszData[i] = to;
            ++count;
        }
    }
    return count;
}

int CString::Replace(PCXSTR from, PCXSTR to) {
    const int m = lengthOf(from);
    if (m == 0)
        return 0;
    std::wstring out;
    int count = 0;
    int i = 0;
    const int n = GetLength();
    while (i < n) {
        if (i + m <= n && std::equal(from, from + m, m_pszData + i)) {
            out += (to != nullptr ? to : L"");
            i += m;
            ++count;
        } else {
            out += m_pszData[i++];
        }
    }
    if (count > 0)
        assignWide(out);
    return count;
}

int CString::Remove(wchar_t ch) {
    const int n = GetLength();
    int w = 0;
    if (Find(ch) < 0)
        return 0;
    makeUnique(n);
    for (int r = 0; r < n; ++r)
        if (m_pszData[r] != ch)
            m_pszData[w++] = m_pszData[r];
    setLength(w);
    return n - w;
}

int CString::Insert(int i, wchar_t ch) {
    return Insert(i, CString(ch, 1));
}

int CString::Insert(int i, PCXSTR psz) {
    const int n = GetLength();
    if (i < 0)
        i = 0;
    if (i > n)
        i = n;
    const CString tail = Mid(i);
    const CString ins(psz);
    *this = Left(i) + ins + tail;
    return GetLength();
}

int CString::Delete(int i, int count) {
    const int n = GetLength();
    if (i < 0)
        i = 0;
    if (count <= 0 || i >= n)
        return n;
    if (count > n - i)
        count = n - i;
    makeUnique(n);
    std::memmove(m_pszData + i, m_pszData + i + count,
                 static_cast<std::size_t>(n - i - count) * sizeof(wchar_t));
    setLength(n - count);
    return GetLength();
}

CString operator+(const CString& a, const CString& b) {
    CString r;
    r.Preallocate(a.GetLength() + b.GetLength());
    r += a;
    r += b;
    return r;
}
CString operator+(const CString& a, CString::PCXSTR b) {
    return a + CString(b);
}
CString operator+(CString::PCXSTR a, const CString& b) {
    return CString(a) + b;
}
CString operator+(const CString& a, wchar_t b) {
    return a + CString(b, 1);
}
CString operator+(wchar_t a, const CString& b) {
    return CString(a, 1) + b;
}

std::string CString::ToUtf8() const {
    return uqfmt::wideToUtf8(m_pszData, static_cast<std::size_t>(GetLength()));
}

CString CString::FromUtf8(const std::string& s) {
    return CString(uqfmt::utf8ToWide(s.data(), s.size()));
}
