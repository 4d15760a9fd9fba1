// Path composition, splitting and ordering: product paths are Windows paths on every platform.
#include "BaseTestSupport.h"
#include "support/LogCheck.h"
#include "support/MixedPaths.h"

#include <algorithm>
#include <random>
#include <vector>

namespace {

std::string s(const CString& c) {
    return c.ToUtf8();
}

} // namespace

TEST(UQPath, AppendDirectoryEndsInExactlyOneBackslash) {
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"C:\\dir", L"sub")), "C:\\dir\\sub\\");
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"C:\\dir\\\\", L"\\sub\\\\")), "C:\\dir\\sub\\");
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"SOFTWARE\\Corvex\\Stormex", L"Options")),
              "SOFTWARE\\Corvex\\Stormex\\Options\\");
}

TEST(UQPath, AppendDirectoryWithAnEmptySide) {
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"", L"sub")), "sub\\");
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"C:\\dir", L"")), "C:\\dir\\");
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"", L"")), "");
    EXPECT_EQ(s(UQPath::mf_appendDirectory(L"\\", L"sub")), "\\sub\\");
}

TEST(UQPath, AppendFilePutsOneBackslashBetween) {
    EXPECT_EQ(s(UQPath::mf_appendFile(L"C:\\dir", L"a.txt")), "C:\\dir\\a.txt");
    EXPECT_EQ(s(UQPath::mf_appendFile(L"C:\\dir\\\\", L"\\a.txt")), "C:\\dir\\a.txt");
    EXPECT_EQ(s(UQPath::mf_appendFile(L"C:/dir/", L"a.txt")), "C:/dir\\a.txt");
    EXPECT_EQ(s(UQPath::mf_appendFile(L"C:\\", L"kor.opt")), "C:\\kor.opt");
}

TEST(UQPath, AppendFileToNothingIsTheFileAlone) {
    EXPECT_EQ(s(UQPath::mf_appendFile(L"", L"a.txt")), "a.txt");
    EXPECT_EQ(s(UQPath::mf_appendFile(L"\\", L"a.txt")), "\\a.txt");
}

TEST(UQPath, NormalizeDirectoryTurnsSlashesAndCollapsesRuns) {
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"C:/dir//sub")), "C:\\dir\\sub\\");
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"C:\\dir\\\\\\")), "C:\\dir\\");
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"C:\\")), "C:\\");
}

TEST(UQPath, NormalizeDirectoryKeepsTheLeadingUncPair) {
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"\\\\server\\\\share")), "\\\\server\\share\\");
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"//server/share/")), "\\\\server\\share\\");
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"\\\\\\server")), "\\\\server\\");
}

TEST(UQPath, NormalizeDirectoryOfNothingIsNothing) {
    EXPECT_EQ(s(UQPath::mf_normalizeDirectory(L"")), "");
}

TEST(UQPath, ExistsForFilesAndDirectoriesButNotForMissingOrEmptyPaths) {
    basetest::ScratchDirectory dir("path-exists");
    const CString file = UQPath::mf_appendFile(dir.path(), L"present.txt");
    basetest::writeFile(file, "x");
    EXPECT_TRUE(UQPath::mf_exists(file));
    EXPECT_TRUE(UQPath::mf_exists(dir.path()));
    EXPECT_FALSE(UQPath::mf_exists(UQPath::mf_appendFile(dir.path(), L"absent.txt")));
    EXPECT_FALSE(UQPath::mf_exists(CString()));
}

TEST(UQPath, ExistsWithNonAsciiNames) {
    basetest::ScratchDirectory dir("path-unicode");
    const CString file = UQPath::mf_appendFile(dir.path(), L"Gr\u00f6\u00dfe \u20ac.txt");
    EXPECT_FALSE(UQPath::mf_exists(file));
    basetest::writeFile(file, "x");
    EXPECT_TRUE(UQPath::mf_exists(file));
}

TEST(UQPath, LocationAndFilePartSplitAtTheLastBackslash) {
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"C:\\dir\\file.txt")), "C:\\dir\\");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"C:\\dir\\file.txt")), "file.txt");
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"\\\\server\\share\\a.txt")), "\\\\server\\share\\");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"\\\\server\\share\\a.txt")), "a.txt");
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"dir/sub/f")), "dir/sub/");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"dir/sub/f")), "f");
}

TEST(UQPath, DriveColonEndsTheLocation) {
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"C:file.txt")), "C:");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"C:file.txt")), "file.txt");
}

TEST(UQPath, StreamColonIsPartOfTheFileName) {
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"C:\\dir\\file.txt:stream")), "C:\\dir\\");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"C:\\dir\\file.txt:stream")), "file.txt:stream");
}

TEST(UQPath, PathWithoutLocationOrFile) {
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"file.txt")), "");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"file.txt")), "file.txt");
    EXPECT_EQ(s(UQPath::mf_getLocationPart(L"C:\\dir\\")), "C:\\dir\\");
    EXPECT_EQ(s(UQPath::mf_getFilePart(L"C:\\dir\\")), "");
}

TEST(UQPath, FileTypeNameIsTheUpperCaseExtension) {
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L"C:\\dir\\report.txt")), "TXT File");
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L"archive.b.Tar")), "TAR File");
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L".profile")), "PROFILE File");
}

TEST(UQPath, FileTypeNameIsEmptyWithoutExtension) {
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L"C:\\dir.d\\README")), "");
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L"excerpt.")), "");
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L"C:\\dir\\")), "");
    EXPECT_EQ(s(UQPath::mf_getFileTypeName(L"")), "");
}

TEST(UQPath, UncPathOfLongUncFormIsTheShortUncForm) {
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"\\\\?\\UNC\\server\\share\\x")), "\\\\server\\share\\x");
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"\\\\?\\unc\\server\\share\\x")), "\\\\server\\share\\x");
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"\\\\server\\share\\x")), "\\\\server\\share\\x");
}

TEST(UQPath, UncPathOfLongDrivePathIsTheDrivePath) {
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"\\\\?\\C:\\dir\\x")), "C:\\dir\\x");
}

TEST(UQPath, UncPathOfOtherPathsIsTheNormalisedPath) {
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"C:/dir//x")), "C:\\dir\\x");
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"\\\\server\\\\share")), "\\\\server\\share");
    EXPECT_EQ(s(UQPath::mf_getUNCPath(L"")), "");
}

TEST(UQPath, CompareIsCaseBlind) {
    EXPECT_EQ(UQPath::mf_compare(L"C:\\Dir\\A.TXT", L"c:\\dir\\a.txt"), 0);
    EXPECT_LT(UQPath::mf_compare(L"C:\\dir\\a", L"C:\\DIR\\B"), 0);
    EXPECT_GT(UQPath::mf_compare(L"C:\\DIR\\B", L"C:\\dir\\a"), 0);
}

TEST(UQPath, CompareOrdersBackslashBeforeEveryOtherCharacter) {
    // A blank (0x20) and a dash sort below a backslash (0x5C) in plain character order.
    EXPECT_LT(UQPath::mf_compare(L"C:\\dir\\z", L"C:\\dir a"), 0);
    EXPECT_LT(UQPath::mf_compare(L"C:\\dir\\z", L"C:\\dir-a"), 0);
    EXPECT_GT(UQPath::mf_compare(L"C:\\dir-a", L"C:\\dir\\z"), 0);
}

TEST(UQPath, CompareTakesSlashAsBackslash) {
    EXPECT_EQ(UQPath::mf_compare(L"C:/dir/a", L"C:\\dir\\a"), 0);
}

TEST(UQPath, CompareSortsAPrefixFirst) {
    EXPECT_LT(UQPath::mf_compare(L"C:\\dir", L"C:\\dir\\a"), 0);
    EXPECT_GT(UQPath::mf_compare(L"C:\\dir\\a", L"C:\\dir"), 0);
    EXPECT_LT(UQPath::mf_compare(L"", L"a"), 0);
    EXPECT_EQ(UQPath::mf_compare(L"", L""), 0);
}

TEST(UQPath, SortedPathsKeepADirectoryBeforeItsSiblingsThatExtendItsName) {
    std::vector<CString> paths{L"C:\\dir-x", L"C:\\Dir.txt", L"C:\\dir\\b",
                               L"C:\\dir",   L"C:\\DIR\\a",  L"C:\\dir x"};
    std::sort(paths.begin(), paths.end(),
              [](const CString& a, const CString& b) { return UQPath::mf_compare(a, b) < 0; });
    std::vector<std::string> sorted;
    for (const CString& p : paths)
        sorted.push_back(s(p));
    EXPECT_EQ(sorted, (std::vector<std::string>{"C:\\dir", "C:\\DIR\\a", "C:\\dir\\b", "C:\\dir x",
                                                "C:\\dir-x", "C:\\Dir.txt"}));
}

TEST(UQPath, EqualityOperatorsUseTheComparison) {
    const UQPath a(L"C:\\Data\\File.txt");
    const UQPath b(CString(L"c:/data/file.TXT"));
    const UQPath c(L"C:\\Data\\Other.txt");
    EXPECT_FALSE(a != b);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a != c);
    EXPECT_LT(a.mf_compare(c), 0);
    EXPECT_EQ(s(a.mf_getPath()), "C:\\Data\\File.txt");
}

TEST(UQPath, CompareAgreesWithThePerCharacterOrderOnMixedPaths) {
    // Equal units are passed over without folding; the order must stay the one of folding each.
    const std::vector<CString> paths = mixed_paths::generate(20000, 6);
    std::mt19937_64 random(4);
    int mismatches = 0;
    for (int i = 0; i < 200000; ++i) {
        const CString& a = paths[static_cast<std::size_t>(random() % paths.size())];
        const CString& b = paths[static_cast<std::size_t>(random() % paths.size())];
        const int expected = mixed_paths::perCharacterPathCompare(a, b);
        const int actual = UQPath::mf_compare(a, b);
        if ((expected > 0) - (expected < 0) != (actual > 0) - (actual < 0) && ++mismatches < 5)
            ADD_FAILURE() << utf8(a) << " / " << utf8(b);
    }
    EXPECT_EQ(mismatches, 0);
}
