// Hand-made names from many scripts through every place that compares names: the file list (ordinal and
// case-sensitive: its find-or-add and its sort), the search list (case-blind by the one fold: its grouping
// and sort), the wildcard matcher and the registry. Every expected answer is written out here and is the same
// on both targets: text is UTF-16 on both, so a character beyond the BMP is two units that sort before
// U+E000 and match "??", and the fold is the library's own on both.
#include "guibase/filelist/UQListingFileList.h"
#include "guibase/foundation/UQWildcard.h"
#include "guibase/search/UQSearchList.h"
#include "guibase/settings/RegistrySandbox.h"
#include "interfaces/korarchiver.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <map>
#include <string>
#include <vector>

namespace {

std::string repeated(const std::string& _sPart, int _nTimes) {
    std::string out;
    for (int i = 0; i < _nTimes; ++i)
        out += _sPart;
    return out;
}

// Each name by a letter, so that the expected orders below read as rows of letters.
const std::map<char, std::string>& names() {
    static const std::map<char, std::string> s_names = {
        {'A', "C:\\Daten\\straße.txt"},
        {'B', "C:\\Daten\\STRASSE.TXT"}, // ß has no simple upper case: another name than A
        {'C', "C:\\Daten\\ärger.txt"},
        {'D', "C:\\DATEN\\ÄRGER.TXT"},
        {'E', "C:\\Ελληνικά\\σοφος.txt"}, // tonos, and a final sigma
        {'F', "C:\\ΕΛΛΗΝΙΚΆ\\ΣΟΦΟΣ.TXT"},
        {'G', "C:\\ΕΛΛΗΝΙΚΑ\\ΣΟΦΟΣ.TXT"}, // without tonos: another folder
        {'H', "C:\\ґанок\\ѳ.txt"},        // Cyrillic beyond U+045F
        {'I', "C:\\ҐАНОК\\Ѳ.TXT"},
        {'J', "C:\\հայերեն.txt"}, // Armenian
        {'K', "C:\\ՀԱՅԵՐԵՆ.TXT"},
        {'L', "C:\\ｆｕｌｌ.txt"}, // fullwidth Latin
        {'M', "C:\\ＦＵＬＬ.TXT"},
        {'N', "C:\\文件\\報告.txt"},
        {'O', "C:\\Fotos\\😀.jpg"},
        {'P', "C:\\𐐨.txt"}, // Deseret: a case pair beyond the BMP, which the fold leaves apart
        {'Q', "C:\\𐐀.txt"},
        {'R', "C:\\" + repeated("Verzeichnis\\", 25) + "ende.txt"}, // 311 units
        {'S', "C:\\" + repeated("VERZEICHNIS\\", 25) + "ENDE.TXT"},
        {'T', "C:\\ıi.txt"}, // dotless i folds to I
        {'U', "C:\\II.TXT"},
    };
    return s_names;
}

CString name(char _cLetter) {
    return CString::FromUtf8(names().at(_cLetter));
}

// The letters of the paths, in the order given.
template <class Items> std::string letters(const Items& _items) {
    std::string out;
    for (INT_PTR i = 0; i < _items.GetSize(); ++i) {
        const std::string path = utf8(static_cast<const CString&>(_items[i]->mf_getPath()));
        char found = '?';
        for (const auto& entry : names())
            if (entry.second == path)
                found = entry.first;
        out += found;
    }
    return out;
}

// Added in this order, each path's lines together: ascending ordinal order of UTF-16 units, in which the
// file list's halving search finds every path again.
const char* const ORDINAL = "DBACOUSRTFGEIHKJNQPML";

} // namespace

TEST(HandMadeNames, LengthsCountUtf16Units) {
    EXPECT_EQ(311, name('R').GetLength()); // longer than MAX_PATH
    EXPECT_EQ(CString(L"C:\\Fotos\\.jpg").GetLength() + 2, name('O').GetLength());
    EXPECT_EQ(CString(L"C:\\.txt").GetLength() + 2, name('P').GetLength());
}

TEST(HandMadeNames, TheFileListFindsEachPathAgainAndSortsByUtf16Units) {
    UQListingFileList list;
    for (std::uint32_t version = 1; version <= 3; ++version)
        for (const char* p = ORDINAL; *p != '\0'; ++p)
            list.mf_onMigrationEntry(version, UQFileTime(0), name(*p), version, L"Migrated",
                                     UQSeverity::Info);
    list.mf_close();
    EXPECT_EQ(21u, list.mf_getItemCount());
    UQFileListItem::Array items;
    list.mf_sort(0);
    list.mf_getList(items);
    EXPECT_EQ("LMPQNJKHIEGFTRSUOCABD", letters(items));
    for (INT_PTR i = 0; i < items.GetSize(); ++i) {
        UQFileListItem::VersionArray versions;
        items[i]->mf_getVersions(versions);
        EXPECT_EQ(3, versions.GetSize()) << utf8(items[i]->mf_getPath());
    }
    items.RemoveAll();
    list.mf_sort(1);
    list.mf_getList(items);
    // Names that differ only in case are two files; the surrogates of P and Q come before fullwidth M.
    EXPECT_EQ(ORDINAL, letters(items));
}

TEST(HandMadeNames, TheSearchListGroupsNamesThatFoldAlikeAndSortsByTheFold) {
    // Scattered, as a backend answers; the second name of each pair that folds alike is its version 2, so
    // that the item's path tells which record it took.
    const std::string order = "QGMAUHBEJSLOCNDPIKFRT";
    const std::string second = "DFIKMSU";
    UQSearchList list;
    for (const char letter : order) {
        const std::uint32_t version = second.find(letter) == std::string::npos ? 1 : 2;
        list.mf_add(UQQueryData(name(letter), CString(), version, fileTime(2024, 3, 7), UQFileSize(1), 0,
                                UQExpiryTime{0}, {1, 0}));
    }
    list.mf_close();
    EXPECT_EQ(14u, list.mf_getFileItemCount());
    UQSearchFileItem::Array items;
    list.mf_sortByPath(1);
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    // Each item by its oldest version's path. STRASSE before STRAßE (S U+0053 before ß U+00DF), both before
    // ÄRGER (S before Ä U+00C4); dotless i with I; Ά (U+0386) before Α (U+0391); the surrogates of Deseret
    // before fullwidth.
    EXPECT_EQ("BACOTREGHJNQPL", letters(items));
    std::string counts;
    for (INT_PTR i = 0; i < items.GetSize(); ++i) {
        UQSearchFileItem::VersionArray versions;
        items[i]->mf_getVersions(1, versions);
        counts += std::to_string(versions.GetSize());
    }
    EXPECT_EQ("11212221221112", counts);
    items.RemoveAll();
    list.mf_sortByPath(0);
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ("LPQNJHGERTOCAB", letters(items));
}

TEST(HandMadeNames, TheWildcardMatchesCaseBlindByTheFoldAndCountsUnits) {
    struct Case {
        const char* pattern;
        char letter;
        int expected;
    };
    const std::vector<Case> cases = {
        {"*STRASSE*", 'A', 0}, // ß is not SS
        {"*STRAßE*", 'A', 1},  // ß is itself
        {"C:\\DATEN\\ÄRGER.TXT", 'C', 1},
        {"*\\ΣΟΦΟΣ.TXT", 'E', 1}, // final sigma folds to capital sigma
        {"C:\\ΕΛΛΗΝΙΚΆ\\*", 'E', 1},
        {"C:\\ΕΛΛΗΝΙΚΑ\\*", 'E', 0}, // tonos counts
        {"*\\Ѳ.TXT", 'H', 1},
        {"C:\\ՀԱՅԵՐԵՆ.*", 'J', 1},
        {"C:\\ＦＵＬＬ.TXT", 'L', 1},
        {"C:\\FULL.TXT", 'L', 0}, // fullwidth is not ASCII
        {"C:\\文件\\??.TXT", 'N', 1},
        {"C:\\Fotos\\?.jpg", 'O', 0}, // an emoji is two units
        {"C:\\Fotos\\??.JPG", 'O', 1},
        {"C:\\𐐀.txt", 'P', 0}, // the fold leaves Deseret apart
        {"C:\\??.TXT", 'P', 1},
        {"C:\\*\\ENDE.TXT", 'R', 1},
        {"C:\\VERZEICHNIS\\*\\VERZEICHNIS\\ENDE.TXT", 'R', 1},
        {"C:\\II.TXT", 'T', 1}, // dotless i folds to I
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.expected, UQWildcard(CString::FromUtf8(c.pattern)).mf_matches(name(c.letter)))
            << c.pattern << " on " << names().at(c.letter);
}

// The registry part leaves out final sigma and dotless i: the fold maps them, the registry keeps them apart
// (docs/architecture.md), so there the targets knowingly differ.
class HandMadeRegistryNames : public ::testing::Test {
protected:
    static CString read(const CString& _sName, const CString& _sKey) {
        CString value;
        UQRegistry::mf_getValue(_sName, value, _sKey, HKEY_CURRENT_USER);
        return value;
    }

    registrytest::RegistrySandbox m_sandbox;
    const CString m_sKey = L"SOFTWARE\\korguibase\\HandMade";
};

TEST_F(HandMadeRegistryNames, ValueNamesThatFoldAlikeAreOneValue) {
    // Written lower case first, then the other spelling: one value when they fold alike.
    const std::vector<std::pair<std::string, std::string>> pairs = {
        {"ärger", "ÄRGER"},     {"ελληνικά", "ΕΛΛΗΝΙΚΆ"}, {"ґанок ѳ", "ҐАНОК Ѳ"},
        {"հայերեն", "ՀԱՅԵՐԵՆ"}, {"ｆｕｌｌ", "ＦＵＬＬ"}, {"verzeichnis", "VERZEICHNIS"}};
    for (const auto& pair : pairs) {
        UQRegistry::mf_setValue(CString::FromUtf8(pair.first), L"first", 0, m_sKey, HKEY_CURRENT_USER);
        UQRegistry::mf_setValue(CString::FromUtf8(pair.second), L"second", 0, m_sKey, HKEY_CURRENT_USER);
        EXPECT_EQ("second", utf8(read(CString::FromUtf8(pair.first), m_sKey))) << pair.first;
    }
}

TEST_F(HandMadeRegistryNames, ValueNamesThatFoldApartAreTwoValues) {
    const std::vector<std::pair<std::string, std::string>> pairs = {
        {"straße", "STRASSE"}, {"ΕΛΛΗΝΙΚΆ", "ΕΛΛΗΝΙΚΑ"}, {"𐐨", "𐐀"}, {"ｆｕｌｌ", "FULL"}};
    for (const auto& pair : pairs) {
        UQRegistry::mf_setValue(CString::FromUtf8(pair.first), L"first", 0, m_sKey, HKEY_CURRENT_USER);
        UQRegistry::mf_setValue(CString::FromUtf8(pair.second), L"second", 0, m_sKey, HKEY_CURRENT_USER);
        EXPECT_EQ("first", utf8(read(CString::FromUtf8(pair.first), m_sKey))) << pair.first;
        EXPECT_EQ("second", utf8(read(CString::FromUtf8(pair.second), m_sKey))) << pair.second;
    }
    // ß is itself in any case.
    EXPECT_EQ("first", utf8(read(CString::FromUtf8("STRAßE"), m_sKey)));
}

TEST_F(HandMadeRegistryNames, NamesOfEveryScriptReadBackAsWritten) {
    for (const auto& entry : names()) {
        if (entry.first == 'E' || entry.first == 'T')
            continue; // final sigma and dotless i, see above
        UQRegistry::mf_setValue(CString::FromUtf8(entry.second), CString::FromUtf8(entry.second), 0, m_sKey,
                                HKEY_CURRENT_USER);
    }
    for (const auto& entry : names()) {
        if (entry.first == 'E' || entry.first == 'T')
            continue;
        // Where two names fold alike the value holds the later one written (the map's order).
        const char later = entry.first == 'C'   ? 'D'
                           : entry.first == 'H' ? 'I'
                           : entry.first == 'J' ? 'K'
                           : entry.first == 'L' ? 'M'
                           : entry.first == 'R' ? 'S'
                                                : entry.first;
        EXPECT_EQ(names().at(later), utf8(read(CString::FromUtf8(entry.second), m_sKey))) << entry.second;
    }
}

TEST_F(HandMadeRegistryNames, ALongKeyPathAndADeepOneAreFoundInAnyCase) {
    // 25 levels, 311 units in all: longer than MAX_PATH, each name far below the limit of 255.
    const CString longKey =
        CString(L"SOFTWARE\\") + CString::FromUtf8(repeated("Verzeichnis\\", 25) + "Ende");
    UQRegistry::mf_setValue(L"Wert", L"long", 0, longKey, HKEY_CURRENT_USER);
    const CString upper = CString(L"software\\") + CString::FromUtf8(repeated("VERZEICHNIS\\", 25) + "ENDE");
    EXPECT_EQ("long", utf8(read(L"WERT", upper)));
    // 120 levels of names from many scripts.
    const std::vector<std::string> parts = {"ärger",    "ελληνικά", "ґанок", "հայերեն",
                                            "ｆｕｌｌ", "文件",     "😀",     "x"};
    std::string deep = "SOFTWARE";
    std::string deepUpper = "SOFTWARE";
    const std::vector<std::string> upperParts = {"ÄRGER",    "ΕΛΛΗΝΙΚΆ", "ҐАНОК", "ՀԱՅԵՐԵՆ",
                                                 "ＦＵＬＬ", "文件",     "😀",     "X"};
    for (int i = 0; i < 120; ++i) {
        deep += "\\" + parts[static_cast<std::size_t>(i) % parts.size()];
        deepUpper += "\\" + upperParts[static_cast<std::size_t>(i) % upperParts.size()];
    }
    UQRegistry::mf_setValue(L"Wert", L"deep", 0, CString::FromUtf8(deep), HKEY_CURRENT_USER);
    EXPECT_EQ("deep", utf8(read(L"wert", CString::FromUtf8(deepUpper))));
    const std::string halfway = deepUpper.substr(0, deepUpper.rfind('\\', deepUpper.size() / 2));
    EXPECT_EQ(1, UQRegistry::mf_PathExists(CString::FromUtf8(halfway), HKEY_CURRENT_USER));
    EXPECT_EQ(0, UQRegistry::mf_PathExists(CString::FromUtf8(halfway + "\\Y"), HKEY_CURRENT_USER));
}
