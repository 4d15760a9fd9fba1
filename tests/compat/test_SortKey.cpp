#include "compat/afxsortkey.h"

#include "support/MixedPaths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <numeric>
#include <random>
#include <vector>

namespace {

int sign(int _n) {
    return (_n > 0) - (_n < 0);
}

// The keys of a set of texts in one arena.
class Keys {
public:
    Keys(const std::vector<CString>& _texts, AfxKeyOrder _order) : m_keys(_texts.size()) {
        std::size_t units = 1;
        for (const CString& text : _texts)
            units += AfxSortKeyTailUnits(text.GetLength());
        m_arena.resize(units);
        std::uint32_t offset = 0;
        for (std::size_t i = 0; i < _texts.size(); ++i) {
            EXPECT_TRUE(AfxMakeSortKey(_texts[i].GetString(), _texts[i].GetLength(), _order, m_arena.data(),
                                       offset, m_keys[i]));
            m_keys[i].uTie = 0;
            m_keys[i].uIndex = static_cast<std::uint32_t>(i);
            offset += static_cast<std::uint32_t>(AfxSortKeyTailUnits(_texts[i].GetLength()));
        }
    }
    int compare(std::size_t _a, std::size_t _b) const {
        return AfxCompareSortKeys(m_arena.data(), m_keys[_a], m_keys[_b]);
    }
    std::vector<AfxSortKey>& keys() { return m_keys; }
    const std::uint16_t* arena() const { return m_arena.data(); }

private:
    std::vector<AfxSortKey> m_keys;
    std::vector<std::uint16_t> m_arena;
};

using Reference = int (*)(const CString&, const CString&);

void expectEveryUnitInItsPlace(AfxKeyOrder _order, Reference _reference) {
    std::vector<CString> units;
    for (unsigned u = 1; u <= 0xFFFFu; ++u)
        units.emplace_back(CString(static_cast<wchar_t>(u), 1));
    std::vector<std::size_t> byReference(units.size());
    std::iota(byReference.begin(), byReference.end(), 0);
    std::stable_sort(byReference.begin(), byReference.end(),
                     [&](std::size_t _a, std::size_t _b) { return _reference(units[_a], units[_b]) < 0; });
    Keys keys(units, _order);
    // Neighbours in the reference order relate alike under the keys: then all pairs do.
    int mismatches = 0;
    for (std::size_t i = 1; i < byReference.size(); ++i) {
        const std::size_t a = byReference[i - 1];
        const std::size_t b = byReference[i];
        if (sign(keys.compare(a, b)) != sign(_reference(units[a], units[b])) && ++mismatches < 5)
            ADD_FAILURE() << "units " << std::hex << a + 1 << " and " << b + 1;
    }
    EXPECT_EQ(mismatches, 0);
}

} // namespace

TEST(SortKey, EveryUnitKeepsItsPlaceInThePathOrder) {
    expectEveryUnitInItsPlace(AFX_KEY_PATH, mixed_paths::perCharacterPathCompare);
}

TEST(SortKey, EveryUnitKeepsItsPlaceInTheCaseBlindOrder) {
    expectEveryUnitInItsPlace(AFX_KEY_NOCASE, mixed_paths::perCharacterNoCaseCompare);
}

TEST(SortKey, KeysCompareAsTheTextsDoOnMixedPaths) {
    const std::vector<CString> paths = mixed_paths::generate(100000, 7);
    for (const std::pair<AfxKeyOrder, Reference>& way :
         {std::pair<AfxKeyOrder, Reference>{AFX_KEY_PATH, mixed_paths::perCharacterPathCompare},
          {AFX_KEY_NOCASE, mixed_paths::perCharacterNoCaseCompare}}) {
        const AfxKeyOrder order = way.first;
        const Reference reference = way.second;
        Keys keys(paths, order);
        int mismatches = 0;
        const auto check = [&](std::size_t _a, std::size_t _b) {
            if (sign(keys.compare(_a, _b)) != sign(reference(paths[_a], paths[_b])) && ++mismatches < 5)
                ADD_FAILURE() << "order " << order << ": " << _a << " and " << _b;
        };
        // Every pair of the hand-made paths and their first neighbours, then random pairs.
        for (std::size_t a = 0; a < 400; ++a)
            for (std::size_t b = 0; b < 400; ++b)
                check(a, b);
        std::mt19937_64 random(11);
        for (int i = 0; i < 400000; ++i)
            check(static_cast<std::size_t>(random() % paths.size()),
                  static_cast<std::size_t>(random() % paths.size()));
        EXPECT_EQ(mismatches, 0);
    }
}

TEST(SortKey, AKeyEndsAtTheFirstNul) {
    const wchar_t text[] = {L'a', L'b', 0, L'c', L'd', L'e', L'f'};
    std::uint16_t arena[8] = {};
    AfxSortKey key{};
    ASSERT_TRUE(AfxMakeSortKey(text, 7, AFX_KEY_NOCASE, arena, 0, key));
    EXPECT_EQ(key.nUnits, 2u);
    EXPECT_EQ(key.uHead, (std::uint64_t{'A'} << 48) | (std::uint64_t{'B'} << 32));
}

#if WCHAR_MAX > 0xFFFF
TEST(SortKey, AUnitBeyondTheBmpHasNoKey) {
    const wchar_t text[] = {L'a', static_cast<wchar_t>(0x1F600), L'b'};
    std::uint16_t arena[4] = {};
    AfxSortKey key{};
    EXPECT_FALSE(AfxMakeSortKey(text, 3, AFX_KEY_PATH, arena, 0, key));
}
#endif

TEST(SortKey, SortByKeysIsTheStableSortInEveryDirection) {
    // More entries than the two-thread sort starts at, with few distinct ties.
    const std::vector<CString> paths = mixed_paths::generate(60000, 3);
    std::mt19937_64 random(5);
    std::vector<std::uint32_t> ties(paths.size());
    for (std::uint32_t& tie : ties)
        tie = static_cast<std::uint32_t>(random() % 4);
    // Each order by the radix sort and by the comparison sort.
    for (unsigned flags = 0; flags < 16; ++flags) {
        Keys keys(paths, AFX_KEY_PATH);
        for (std::size_t i = 0; i < paths.size(); ++i)
            keys.keys()[i].uTie = ties[i];
        std::vector<std::uint32_t> expected(paths.size());
        std::iota(expected.begin(), expected.end(), 0u);
        std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t _a, std::uint32_t _b) {
            const int c = mixed_paths::perCharacterPathCompare(paths[_a], paths[_b]);
            const bool keyLess = (flags & AFX_SORT_KEY_DESCENDING) ? c > 0 : c < 0;
            const bool keyGreater = (flags & AFX_SORT_KEY_DESCENDING) ? c < 0 : c > 0;
            const bool tieLess =
                (flags & AFX_SORT_TIE_DESCENDING) ? ties[_a] > ties[_b] : ties[_a] < ties[_b];
            if (flags & AFX_SORT_TIE_FIRST)
                return ties[_a] != ties[_b] ? tieLess : keyLess;
            return c != 0 ? keyLess && !keyGreater : tieLess;
        });
        AfxSortByKeys(keys.keys().data(), paths.size(), keys.arena(), flags);
        std::vector<std::uint32_t> actual;
        for (const AfxSortKey& key : keys.keys())
            actual.push_back(key.uIndex);
        EXPECT_TRUE(actual == expected) << "flags " << flags;
    }
}

TEST(SortKey, PathsSharingVeryLongPrefixesSortAsTheComparisonDoes) {
    // Rounds of four units each would go deeper than the radix sort goes before it compares.
    std::vector<CString> paths;
    std::mt19937_64 random(8);
    CString prefix;
    for (int i = 0; i < 1500; ++i)
        prefix += (i % 7 == 0) ? L"\\" : (random() % 2 ? L"a" : L"B");
    for (int i = 0; i < 200; ++i) {
        CString path = prefix;
        for (int j = 0; j < 3; ++j)
            path += static_cast<wchar_t>(L'a' + random() % 3);
        if (random() % 2)
            path.MakeUpper();
        paths.push_back(path);
    }
    for (unsigned flags : {0u, static_cast<unsigned>(AFX_SORT_KEY_DESCENDING)}) {
        Keys keys(paths, AFX_KEY_PATH);
        std::vector<std::uint32_t> expected(paths.size());
        std::iota(expected.begin(), expected.end(), 0u);
        std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t _a, std::uint32_t _b) {
            const int c = mixed_paths::perCharacterPathCompare(paths[_a], paths[_b]);
            return flags != 0 ? c > 0 : c < 0;
        });
        AfxSortByKeys(keys.keys().data(), paths.size(), keys.arena(), flags);
        std::vector<std::uint32_t> actual;
        for (const AfxSortKey& key : keys.keys())
            actual.push_back(key.uIndex);
        EXPECT_TRUE(actual == expected) << "flags " << flags;
    }
}
