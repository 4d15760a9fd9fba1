// The MFC subset the library uses: CString (wide, reference-counted, copy on write) and the
// invalid-argument exception of MFC's collection classes.
#pragma once

#include "compat/compat_api.h"
#include "compat/uqformat.h"

#include <atomic>
#include <cstddef>
#include <string>

class KORCOMPAT_API CException {
public:
    virtual ~CException();
    // MFC's exceptions are thrown by pointer; the invalid-argument one is a static object.
    virtual void Delete();
};

class KORCOMPAT_API CInvalidArgException : public CException {
public:
    ~CInvalidArgException() override;
};

// Throws a pointer to MFC's static CInvalidArgException; catch it as CInvalidArgException*.
[[noreturn]] KORCOMPAT_API void AfxThrowInvalidArgException();

class KORCOMPAT_API CString {
public:
    using XCHAR = wchar_t;
    using PCXSTR = const wchar_t*;
    using PXSTR = wchar_t*;

    CString() noexcept;
    CString(const CString& _s) noexcept;
    CString(CString&& _s) noexcept;
    CString(PCXSTR _psz);
    CString(PCXSTR _pch, int _nLength);
    CString(wchar_t _ch, int _nRepeat = 1);
    explicit CString(const std::wstring& _s);
    ~CString();

    CString& operator=(const CString& _s) noexcept;
    CString& operator=(CString&& _s) noexcept;
    CString& operator=(PCXSTR _psz);
    CString& operator=(wchar_t _ch);

    CString& operator+=(const CString& _s);
    CString& operator+=(PCXSTR _psz);
    CString& operator+=(wchar_t _ch);

    int GetLength() const noexcept { return header()->nDataLength; }
    bool IsEmpty() const noexcept { return header()->nDataLength == 0; }
    void Empty() noexcept;
    PCXSTR GetString() const noexcept { return m_pszData; }
    operator PCXSTR() const noexcept { return m_pszData; }

    // Index checks raise AfxThrowInvalidArgException as MFC does.
    wchar_t GetAt(int _nIndex) const;
    wchar_t operator[](int _nIndex) const { return GetAt(_nIndex); }
    void SetAt(int _nIndex, wchar_t _ch);

    PXSTR GetBuffer();
    PXSTR GetBuffer(int _nMinBufferLength);
    PXSTR GetBufferSetLength(int _nLength);
    void ReleaseBuffer(int _nNewLength = -1);
    void Preallocate(int _nLength);

    // Ordinal, case-sensitive, in 16-bit code units.
    int Compare(PCXSTR _psz) const noexcept;
    // Case-blind: both sides upper-cased unit by unit (AfxFoldUpper), then compared ordinally, as
    // CompareStringOrdinal with ignore-case does.
    int CompareNoCase(PCXSTR _psz) const noexcept;

    CString& MakeUpper();
    CString& MakeLower();
    CString& MakeReverse();
    CString& Trim();
    CString& Trim(wchar_t _chTarget);
    CString& Trim(PCXSTR _pszTargets);
    CString& TrimLeft();
    CString& TrimLeft(wchar_t _chTarget);
    CString& TrimLeft(PCXSTR _pszTargets);
    CString& TrimRight();
    CString& TrimRight(wchar_t _chTarget);
    CString& TrimRight(PCXSTR _pszTargets);

    int Find(wchar_t _ch, int _iStart = 0) const noexcept;
    int Find(PCXSTR _pszSub, int _iStart = 0) const noexcept;
    int FindOneOf(PCXSTR _pszCharSet) const noexcept;
    int ReverseFind(wchar_t _ch) const noexcept;

    CString Left(int _nCount) const;
    CString Mid(int _iFirst) const;
    CString Mid(int _iFirst, int _nCount) const;
    CString Right(int _nCount) const;

    int Replace(wchar_t _chOld, wchar_t _chNew);
    int Replace(PCXSTR _pszOld, PCXSTR _pszNew);
    int Remove(wchar_t _ch);
    int Insert(int _iIndex, wchar_t _ch);
    int Insert(int _iIndex, PCXSTR _psz);
    int Delete(int _iIndex, int _nCount = 1);

    template <class... A> void Format(PCXSTR _pszFormat, const A&... _args) {
        assignWide(uqfmt::format(_pszFormat, _args...));
    }
    template <class... A> void AppendFormat(PCXSTR _pszFormat, const A&... _args) {
        *this += CString(uqfmt::format(_pszFormat, _args...));
    }

    friend KORCOMPAT_API CString operator+(const CString& _a, const CString& _b);
    friend KORCOMPAT_API CString operator+(const CString& _a, PCXSTR _b);
    friend KORCOMPAT_API CString operator+(PCXSTR _a, const CString& _b);
    friend KORCOMPAT_API CString operator+(const CString& _a, wchar_t _b);
    friend KORCOMPAT_API CString operator+(wchar_t _a, const CString& _b);

    friend bool operator==(const CString& _a, const CString& _b) noexcept { return _a.Compare(_b) == 0; }
    friend bool operator==(const CString& _a, PCXSTR _b) noexcept { return _a.Compare(_b) == 0; }
    friend bool operator==(PCXSTR _a, const CString& _b) noexcept { return _b.Compare(_a) == 0; }
    friend bool operator!=(const CString& _a, const CString& _b) noexcept { return _a.Compare(_b) != 0; }
    friend bool operator!=(const CString& _a, PCXSTR _b) noexcept { return _a.Compare(_b) != 0; }
    friend bool operator!=(PCXSTR _a, const CString& _b) noexcept { return _b.Compare(_a) != 0; }
    friend bool operator<(const CString& _a, const CString& _b) noexcept { return _a.Compare(_b) < 0; }
    friend bool operator>(const CString& _a, const CString& _b) noexcept { return _a.Compare(_b) > 0; }

    // Not MFC: the text as UTF-8 and back, for files and consoles.
    std::string ToUtf8() const;
    static CString FromUtf8(const std::string& _s);

private:
    struct Data {
        std::atomic<long> nRefs; // -1: the shared empty string, never freed
        int nDataLength;
        int nAllocLength;
        wchar_t* chars() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }
    };
    Data* header() const noexcept { return reinterpret_cast<Data*>(m_pszData) - 1; }
    static Data* allocate(int _nLength);
    static void release(Data* _p) noexcept;
    void assign(PCXSTR _pch, int _nLength);
    void assignWide(const std::wstring& _s) { assign(_s.data(), static_cast<int>(_s.size())); }
    void append(PCXSTR _pch, int _nLength);
    void makeUnique(int _nMinLength);
    void setLength(int _nLength) noexcept;

    wchar_t* m_pszData;
};

// The one case fold of the library: Unicode's simple upper-case mapping of one UTF-16 unit (a surrogate and
// a unit whose mapping lies outside the BMP stay as they are), the mapping the registry and the file system
// compare names with. Every case-blind operation uses it: CompareNoCase, MakeUpper, paths, wildcards, sort
// orders and registry names. A table lookup, cheap enough to build order keys with.
KORCOMPAT_API wchar_t AfxFoldUpper(wchar_t _ch) noexcept;
// The simple lower-case mapping, for MakeLower only; never used to compare.
KORCOMPAT_API wchar_t AfxFoldLower(wchar_t _ch) noexcept;
// Folds _nUnits units of _pSource into _pTarget (which may be _pSource).
KORCOMPAT_API void AfxFoldUpperRange(const wchar_t* _pSource, std::size_t _nUnits,
                                     wchar_t* _pTarget) noexcept;
// Compares two runs of units case-blind: <0, 0 or >0 by the first unit whose folds differ, else by length.
KORCOMPAT_API int AfxCompareFolded(const wchar_t* _pA, int _nA, const wchar_t* _pB, int _nB) noexcept;
