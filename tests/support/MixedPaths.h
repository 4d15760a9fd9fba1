// Paths that make case-blind orders hard: drive, UNC and relative roots, both separators and runs of them,
// trailing separators, punctuation on both sides of the separators' and letters' codes ('!', '[', '_',
// '~'), letters in mixed case from several scripts (with final sigma, dotless i, title-case digraphs, full
// width forms), digits, prefixes of one another and the same path in other case. Deterministic for one
// starting value. With the per-character comparisons the keyed sorts must agree with.
#pragma once

#include "compat/afx.h"

#include <cstdint>
#include <random>
#include <vector>

namespace mixed_paths {

// UQPath::mf_compare, one character at a time: a separator before every other character, the others by
// their upper-case fold; at the end of either text the shorter comes first.
inline int perCharacterPathCompare(const CString& _a, const CString& _b) {
    const wchar_t* p = _a;
    const wchar_t* q = _b;
    for (;; ++p, ++q) {
        if (*p == 0 || *q == 0)
            return (*p != 0) - (*q != 0);
        const auto key = [](wchar_t _c) {
            return _c == L'\\' || _c == L'/' ? 0u : static_cast<unsigned>(AfxFoldUpper(_c)) + 1u;
        };
        const unsigned x = key(*p);
        const unsigned y = key(*q);
        if (x != y)
            return x < y ? -1 : 1;
    }
}

// CString::CompareNoCase, one character at a time.
inline int perCharacterNoCaseCompare(const CString& _a, const CString& _b) {
    const wchar_t* p = _a;
    const wchar_t* q = _b;
    for (;; ++p, ++q) {
        const unsigned x = static_cast<unsigned>(AfxFoldUpper(*p));
        const unsigned y = static_cast<unsigned>(AfxFoldUpper(*q));
        if (x != y)
            return x < y ? -1 : 1;
        if (x == 0)
            return 0;
    }
}

inline std::vector<CString> handMade() {
    return {L"C:\\dir",
            L"C:\\dir\\",
            L"C:\\dir\\\\",
            L"C:/dir/",
            L"C:\\DIR\\a",
            L"c:/dir/A",
            L"C:\\dir-2\\x",
            L"C:\\dir!",
            L"C:\\dir[",
            L"C:\\dir_",
            L"C:\\dir~",
            L"C:\\dira",
            L"C:\\dirZ",
            L"C:\\dir\\z",
            L"C:",
            L"C:\\",
            L"",
            L"\\",
            L"/",
            L"\\\\",
            L"\\\\srv\\share",
            L"\\\\SRV\\SHARE",
            L"//srv/share",
            L"\\\\srv\\share\\",
            L"\\\\srv\\sharE\\x",
            L"a",
            L"A",
            L"a\\",
            L"ab",
            L"aB",
            L"\u03c3",
            L"\u03c2",
            L"\u03a3",
            L"\u0131",
            L"I",
            L"i",
            L"\u0130",
            L"\u01c4",
            L"\u01c5",
            L"\u01c6",
            L"\uff41",
            L"\uff21",
            L"\u00df",
            L"SS",
            L"\u00e4",
            L"\u00c4",
            L"\u0491",
            L"\u0490",
            L"\u4e2d\u6587",
            L"\uffff",
            L"\ufffe",
            L"\u00ff",
            L"\u0178",
            L"\u00b5",
            L"\u039c"};
}

// _nCount paths: the hand-made ones first, then generated ones.
inline std::vector<CString> generate(std::size_t _nCount, std::uint64_t _uStart) {
    static const wchar_t* const roots[] = {L"C:\\",
                                           L"c:/",
                                           L"D:\\",
                                           L"\\\\srv\\share\\",
                                           L"\\\\SRV\\Share\\",
                                           L"//srv/share/",
                                           L"\\\\?\\UNC\\srv\\x\\",
                                           L"",
                                           L"rel\\"};
    static const wchar_t* const words[] = {L"dir",
                                           L"Dir",
                                           L"DIR",
                                           L"dir-2",
                                           L"dir!",
                                           L"dir[",
                                           L"dir_",
                                           L"dir~",
                                           L"Projekte",
                                           L"PROJEKTE",
                                           L"\u00e4nderung",
                                           L"\u00c4NDERUNG",
                                           L"\u03c3\u03bf\u03c6\u03af\u03b1",
                                           L"\u03a3\u039f\u03a6\u0399\u0391",
                                           L"\u03c2",
                                           L"\u0438\u0432\u0430\u043d",
                                           L"\u0418\u0412\u0410\u041d",
                                           L"\u0131\u0130iI",
                                           L"\u01c4\u01c5\u01c6",
                                           L"\uff41\uff42",
                                           L"\uff21\uff22",
                                           L"\u65e5\u672c",
                                           L"a",
                                           L"A",
                                           L"ab",
                                           L"AB",
                                           L"x1",
                                           L"X10",
                                           L"x2"};
    static const wchar_t* const separators[] = {L"\\", L"/", L"\\\\", L"\\/"};
    std::vector<CString> out = handMade();
    std::mt19937_64 random(_uStart);
    const auto pick = [&random](std::size_t _n) { return static_cast<std::size_t>(random() % _n); };
    while (out.size() < _nCount) {
        // Now and then the same path in other case, or a prefix of an earlier one.
        if (out.size() > 100 && pick(8) == 0) {
            CString same = out[out.size() - 1 - pick(50)];
            if (pick(2) != 0)
                same.MakeUpper();
            else
                same.MakeLower();
            out.push_back(same);
            continue;
        }
        if (out.size() > 100 && pick(16) == 0) {
            const CString& earlier = out[out.size() - 1 - pick(50)];
            out.push_back(
                earlier.Left(static_cast<int>(pick(static_cast<std::size_t>(earlier.GetLength()) + 1))));
            continue;
        }
        CString path = roots[pick(sizeof roots / sizeof roots[0])];
        const std::size_t depth = 1 + pick(6);
        for (std::size_t d = 0; d < depth; ++d) {
            if (d > 0)
                path += separators[pick(4) == 0 ? pick(4) : 0];
            path += words[pick(sizeof words / sizeof words[0])];
        }
        if (pick(10) == 0)
            path += L'\\';
        out.push_back(path);
    }
    out.resize(_nCount);
    return out;
}

} // namespace mixed_paths
