#include "compat/afx.h"

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

int lengthOf(const wchar_t* _pszP) noexcept {
    if (_pszP == nullptr)
        return 0;
    const wchar_t* q = _pszP;
    while (*q != 0)
        ++q;
    return static_cast<int>(q - _pszP);
}

bool inSet(wchar_t _cC, const wchar_t* _pszSet) noexcept {
    if (_pszSet == nullptr)
        return false;
    for (; *_pszSet != 0; ++_pszSet)
        if (*_pszSet == _cC)
            return true;
    return false;
}

bool isSpace(wchar_t _cC) noexcept {
    return _cC == L' ' || _cC == L'\t' || _cC == L'\r' || _cC == L'\n' || _cC == L'\v' || _cC == L'\f' ||
           _cC == 0x00A0 || _cC == 0x3000;
}

// The ASCII part of AfxFoldUpper, inline: sorting file lists spends its time comparing mostly-ASCII names.
unsigned foldAsciiUpper(unsigned _uU) noexcept {
    return (_uU >= 'a' && _uU <= 'z') ? _uU - 32 : _uU;
}

} // namespace

static_assert(sizeof(CString) == sizeof(void*), "CString is relocatable as one pointer");

namespace uqfmt {
Arg makeArg(const CString& _sS) {
    return makeArg(_sS.GetString());
}
} // namespace uqfmt

namespace {

// Text that never was UTF-16 (a wide literal or a C library result on Linux, where wchar_t has 32 bits)
// holds characters beyond the BMP as one unit; CString keeps them as surrogate pairs, as on Windows.
bool hasUnitsBeyondBmp(const wchar_t* _pText, int _nLength) noexcept {
#if WCHAR_MAX > 0xFFFF
    for (int i = 0; i < _nLength; ++i)
        if (static_cast<unsigned long>(_pText[i]) > 0xFFFFu)
            return true;
#else
    (void)_pText;
    (void)_nLength;
#endif
    return false;
}

std::wstring asUtf16(const wchar_t* _pText, int _nLength) {
    std::wstring out;
    out.reserve(static_cast<std::size_t>(_nLength) + 1);
    for (int i = 0; i < _nLength; ++i) {
        unsigned long c = static_cast<unsigned long>(_pText[i]);
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

CString::Data* CString::allocate(int _nLength) {
    if (_nLength < 0)
        AfxThrowInvalidArgException();
    void* mem = std::malloc(sizeof(Data) + (static_cast<std::size_t>(_nLength) + 1) * sizeof(wchar_t));
    if (mem == nullptr)
        throw std::bad_alloc();
    Data* d = new (mem) Data;
    d->nRefs.store(1, std::memory_order_relaxed);
    d->nDataLength = 0;
    d->nAllocLength = _nLength;
    d->chars()[0] = 0;
    return d;
}

void CString::release(Data* _p) noexcept {
    // The shared empty string also has a negative count; its address is tested first so that an
    // optimising compiler sees it is never freed.
    if (static_cast<void*>(_p) == static_cast<void*>(&g_empty) ||
        _p->nRefs.load(std::memory_order_relaxed) < 0)
        return;
    if (_p->nRefs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        _p->~Data();
        std::free(_p);
    }
}

CString::CString() noexcept : m_pszData(emptyChars()) {}

CString::CString(const CString& _s) noexcept : m_pszData(_s.m_pszData) {
    Data* d = header();
    if (d->nRefs.load(std::memory_order_relaxed) >= 0)
        d->nRefs.fetch_add(1, std::memory_order_relaxed);
}

CString::CString(CString&& _s) noexcept : m_pszData(_s.m_pszData) {
    _s.m_pszData = emptyChars();
}

CString::CString(PCXSTR _psz) : m_pszData(emptyChars()) {
    assign(_psz, lengthOf(_psz));
}

CString::CString(PCXSTR _pch, int _nLength) : m_pszData(emptyChars()) {
    if (_nLength < 0 || (_pch == nullptr && _nLength > 0))
        AfxThrowInvalidArgException();
    assign(_pch, _nLength);
}

CString::CString(wchar_t _ch, int _nRepeat) : m_pszData(emptyChars()) {
    if (_nRepeat > 0 && hasUnitsBeyondBmp(&_ch, 1)) {
        const std::wstring pair = asUtf16(&_ch, 1);
        for (int i = 0; i < _nRepeat; ++i)
            append(pair.data(), static_cast<int>(pair.size()));
    } else if (_nRepeat > 0) {
        Data* d = allocate(_nRepeat);
        std::fill_n(d->chars(), _nRepeat, _ch);
        d->chars()[_nRepeat] = 0;
        d->nDataLength = _nRepeat;
        m_pszData = d->chars();
    }
}

CString::CString(const std::wstring& _s) : m_pszData(emptyChars()) {
    assign(_s.data(), static_cast<int>(_s.size()));
}

CString::~CString() {
    release(header());
}

CString& CString::operator=(const CString& _s) noexcept {
    if (m_pszData != _s.m_pszData) {
        CString copy(_s);
        std::swap(m_pszData, copy.m_pszData);
    }
    return *this;
}

CString& CString::operator=(CString&& _s) noexcept {
    if (this != &_s)
        std::swap(m_pszData, _s.m_pszData);
    return *this;
}

CString& CString::operator=(PCXSTR _psz) {
    assign(_psz, lengthOf(_psz));
    return *this;
}

CString& CString::operator=(wchar_t _ch) {
    assign(&_ch, 1);
    return *this;
}

CString& CString::operator+=(const CString& _s) {
    if (_s.m_pszData == m_pszData) {
        const CString copy(_s);
        append(copy.m_pszData, copy.GetLength());
    } else {
        append(_s.m_pszData, _s.GetLength());
    }
    return *this;
}

CString& CString::operator+=(PCXSTR _psz) {
    append(_psz, lengthOf(_psz));
    return *this;
}

CString& CString::operator+=(wchar_t _ch) {
    append(&_ch, 1);
    return *this;
}

void CString::assign(PCXSTR _pch, int _nLength) {
    if (hasUnitsBeyondBmp(_pch, _nLength)) {
        const std::wstring units = asUtf16(_pch, _nLength);
        assign(units.data(), static_cast<int>(units.size()));
        return;
    }
    if (_nLength == 0) {
        Empty();
        return;
    }
    Data* d = allocate(_nLength);
    std::memmove(d->chars(), _pch, static_cast<std::size_t>(_nLength) * sizeof(wchar_t));
    d->chars()[_nLength] = 0;
    d->nDataLength = _nLength;
    release(header());
    m_pszData = d->chars();
}

void CString::append(PCXSTR _pch, int _nLength) {
    if (_nLength <= 0)
        return;
    if (hasUnitsBeyondBmp(_pch, _nLength)) {
        const std::wstring units = asUtf16(_pch, _nLength);
        append(units.data(), static_cast<int>(units.size()));
        return;
    }
    const int old = GetLength();
    if (_pch >= m_pszData && _pch <= m_pszData + old) {
        // Appending a part of ourselves: the reallocation must not free it first.
        const CString part(_pch, _nLength);
        makeUnique(old + _nLength);
        std::memcpy(m_pszData + old, part.m_pszData, static_cast<std::size_t>(_nLength) * sizeof(wchar_t));
        setLength(old + _nLength);
        return;
    }
    makeUnique(old + _nLength);
    std::memmove(m_pszData + old, _pch, static_cast<std::size_t>(_nLength) * sizeof(wchar_t));
    setLength(old + _nLength);
}

void CString::makeUnique(int _nMinLength) {
    Data* d = header();
    const bool shared = d->nRefs.load(std::memory_order_acquire) != 1;
    if (!shared && d->nAllocLength >= _nMinLength)
        return;
    int cap = _nMinLength;
    if (!shared && _nMinLength > d->nAllocLength)
        cap = std::max(_nMinLength, d->nAllocLength + d->nAllocLength / 2);
    Data* n = allocate(cap);
    const int len = std::min(d->nDataLength, cap);
    std::memcpy(n->chars(), d->chars(), static_cast<std::size_t>(len) * sizeof(wchar_t));
    n->chars()[len] = 0;
    n->nDataLength = len;
    release(d);
    m_pszData = n->chars();
}

void CString::setLength(int _nLength) noexcept {
    Data* d = header();
    if (d->nRefs.load(std::memory_order_relaxed) < 0)
        return;
    d->nDataLength = _nLength;
    d->chars()[_nLength] = 0;
}

void CString::Empty() noexcept {
    release(header());
    m_pszData = emptyChars();
}

wchar_t CString::GetAt(int _nIndex) const {
    if (_nIndex < 0 || _nIndex > GetLength())
        AfxThrowInvalidArgException();
    return m_pszData[_nIndex];
}

void CString::SetAt(int _nIndex, wchar_t _ch) {
    if (_nIndex < 0 || _nIndex >= GetLength())
        AfxThrowInvalidArgException();
    makeUnique(GetLength());
    m_pszData[_nIndex] = _ch;
}

CString::PXSTR CString::GetBuffer() {
    return GetBuffer(0);
}

CString::PXSTR CString::GetBuffer(int _nMinBufferLength) {
    if (_nMinBufferLength < 0)
        AfxThrowInvalidArgException();
    makeUnique(std::max(_nMinBufferLength, GetLength()));
    if (header()->nRefs.load(std::memory_order_relaxed) < 0) {
        // The shared empty string has no room: give it a real buffer.
        Data* d = allocate(0);
        m_pszData = d->chars();
    }
    return m_pszData;
}

CString::PXSTR CString::GetBufferSetLength(int _nLength) {
    PXSTR p = GetBuffer(_nLength);
    setLength(_nLength);
    return p;
}

void CString::ReleaseBuffer(int _nNewLength) {
    Data* d = header();
    if (d->nRefs.load(std::memory_order_relaxed) < 0)
        return;
    if (_nNewLength < 0) {
        _nNewLength = 0;
        while (_nNewLength < d->nAllocLength && d->chars()[_nNewLength] != 0)
            ++_nNewLength;
    }
    if (_nNewLength > d->nAllocLength)
        AfxThrowInvalidArgException();
    setLength(_nNewLength);
}

void CString::Preallocate(int _nLength) {
    if (_nLength > GetLength())
        makeUnique(_nLength);
}

int CString::Compare(PCXSTR _psz) const noexcept {
    const wchar_t* a = m_pszData;
    const wchar_t* b = _psz != nullptr ? _psz : L"";
    for (;; ++a, ++b) {
        const unsigned ca = static_cast<unsigned>(*a) & 0xFFFFFFFFu;
        const unsigned cb = static_cast<unsigned>(*b) & 0xFFFFFFFFu;
        if (ca != cb)
            return ca < cb ? -1 : 1;
        if (ca == 0)
            return 0;
    }
}

int CString::CompareNoCase(PCXSTR _psz) const noexcept {
    const wchar_t* a = m_pszData;
    const wchar_t* b = _psz != nullptr ? _psz : L"";
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

CString& CString::TrimLeft(wchar_t _chTarget) {
    int i = 0;
    while (i < GetLength() && m_pszData[i] == _chTarget)
        ++i;
    if (i > 0)
        Delete(0, i);
    return *this;
}

CString& CString::TrimLeft(PCXSTR _pszTargets) {
    int i = 0;
    while (i < GetLength() && inSet(m_pszData[i], _pszTargets))
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

CString& CString::TrimRight(wchar_t _chTarget) {
    int n = GetLength();
    while (n > 0 && m_pszData[n - 1] == _chTarget)
        --n;
    if (n < GetLength())
        *this = Left(n);
    return *this;
}

CString& CString::TrimRight(PCXSTR _pszTargets) {
    int n = GetLength();
    while (n > 0 && inSet(m_pszData[n - 1], _pszTargets))
        --n;
    if (n < GetLength())
        *this = Left(n);
    return *this;
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}
CString& CString::Trim(wchar_t _chTarget) {
    return TrimRight(_chTarget).TrimLeft(_chTarget);
}
CString& CString::Trim(PCXSTR _pszTargets) {
    return TrimRight(_pszTargets).TrimLeft(_pszTargets);
}

int CString::Find(wchar_t _ch, int _iStart) const noexcept {
    if (_iStart < 0 || _iStart >= GetLength())
        return -1;
    for (int i = _iStart; i < GetLength(); ++i)
        if (m_pszData[i] == _ch)
            return i;
    return -1;
}

int CString::Find(PCXSTR _pszSub, int _iStart) const noexcept {
    const int n = GetLength();
    const int m = lengthOf(_pszSub);
    if (_pszSub == nullptr || _iStart < 0 || _iStart > n)
        return -1;
    if (m == 0)
        return _iStart;
    for (int i = _iStart; i + m <= n; ++i)
        if (std::equal(_pszSub, _pszSub + m, m_pszData + i))
            return i;
    return -1;
}

int CString::FindOneOf(PCXSTR _pszCharSet) const noexcept {
    for (int i = 0; i < GetLength(); ++i)
        if (inSet(m_pszData[i], _pszCharSet))
            return i;
    return -1;
}

int CString::ReverseFind(wchar_t _ch) const noexcept {
    for (int i = GetLength() - 1; i >= 0; --i)
        if (m_pszData[i] == _ch)
            return i;
    return -1;
}

CString CString::Left(int _nCount) const {
    if (_nCount < 0)
        _nCount = 0;
    if (_nCount >= GetLength())
        return *this;
    return CString(m_pszData, _nCount);
}

CString CString::Mid(int _iFirst) const {
    return Mid(_iFirst, GetLength());
}

CString CString::Mid(int _iFirst, int _nCount) const {
    if (_iFirst < 0)
        _iFirst = 0;
    if (_nCount < 0)
        _nCount = 0;
    const int n = GetLength();
    if (_iFirst > n)
        _iFirst = n;
    if (_nCount > n - _iFirst)
        _nCount = n - _iFirst;
    if (_iFirst == 0 && _nCount == n)
        return *this;
    return CString(m_pszData + _iFirst, _nCount);
}

CString CString::Right(int _nCount) const {
    if (_nCount < 0)
        _nCount = 0;
    if (_nCount >= GetLength())
        return *this;
    return CString(m_pszData + GetLength() - _nCount, _nCount);
}

int CString::Replace(wchar_t _chOld, wchar_t _chNew) {
    if (_chOld == _chNew)
        return 0; // MFC answers 0 without counting
    int count = 0;
    const int n = GetLength();
    for (int i = 0; i < n; ++i) {
        if (m_pszData[i] == _chOld) {
            makeUnique(n);
            m_pszData[i] = _chNew;
            ++count;
        }
    }
    return count;
}

int CString::Replace(PCXSTR _pszOld, PCXSTR _pszNew) {
    const int m = lengthOf(_pszOld);
    if (m == 0)
        return 0;
    std::wstring out;
    int count = 0;
    int i = 0;
    const int n = GetLength();
    while (i < n) {
        if (i + m <= n && std::equal(_pszOld, _pszOld + m, m_pszData + i)) {
            out += (_pszNew != nullptr ? _pszNew : L"");
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

int CString::Remove(wchar_t _ch) {
    const int n = GetLength();
    int w = 0;
    if (Find(_ch) < 0)
        return 0;
    makeUnique(n);
    for (int r = 0; r < n; ++r)
        if (m_pszData[r] != _ch)
            m_pszData[w++] = m_pszData[r];
    setLength(w);
    return n - w;
}

int CString::Insert(int _iIndex, wchar_t _ch) {
    return Insert(_iIndex, CString(_ch, 1));
}

int CString::Insert(int _iIndex, PCXSTR _psz) {
    const int n = GetLength();
    if (_iIndex < 0)
        _iIndex = 0;
    if (_iIndex > n)
        _iIndex = n;
    const CString tail = Mid(_iIndex);
    const CString ins(_psz);
    *this = Left(_iIndex) + ins + tail;
    return GetLength();
}

int CString::Delete(int _iIndex, int _nCount) {
    const int n = GetLength();
    if (_iIndex < 0)
        _iIndex = 0;
    if (_nCount <= 0 || _iIndex >= n)
        return n;
    if (_nCount > n - _iIndex)
        _nCount = n - _iIndex;
    makeUnique(n);
    std::memmove(m_pszData + _iIndex, m_pszData + _iIndex + _nCount,
                 static_cast<std::size_t>(n - _iIndex - _nCount) * sizeof(wchar_t));
    setLength(n - _nCount);
    return GetLength();
}

CString operator+(const CString& _a, const CString& _b) {
    CString r;
    r.Preallocate(_a.GetLength() + _b.GetLength());
    r += _a;
    r += _b;
    return r;
}
CString operator+(const CString& _a, CString::PCXSTR _b) {
    return _a + CString(_b);
}
CString operator+(CString::PCXSTR _a, const CString& _b) {
    return CString(_a) + _b;
}
CString operator+(const CString& _a, wchar_t _b) {
    return _a + CString(_b, 1);
}
CString operator+(wchar_t _a, const CString& _b) {
    return CString(_a, 1) + _b;
}

std::string CString::ToUtf8() const {
    return uqfmt::wideToUtf8(m_pszData, static_cast<std::size_t>(GetLength()));
}

CString CString::FromUtf8(const std::string& _s) {
    return CString(uqfmt::utf8ToWide(_s.data(), _s.size()));
}
