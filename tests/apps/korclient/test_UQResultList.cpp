// The listing excerpt the client saves is a listing the reader takes back line for line; an outcome a listing
// cannot carry is named and leaves no file behind.
#include "ClientTestSupport.h"
#include "UQResultList.h"

#include "interfaces/korarchiver.h"
#include "support/LogCheck.h"

#include <gtest/gtest.h>

namespace {

using namespace clienttest;

class PathCollector : public UVListingFileReader {
public:
    void mf_onMigrationEntry(std::uint32_t, const UQFileTime&, const CString& _sPath, std::uint32_t _uVersion,
                             const CString& _sResult, const UQSeverity& _severity) override {
        lines.push_back(::utf8(_sPath) + "|" + std::to_string(_uVersion) + "|" + ::utf8(_sResult) + "|" +
                        std::to_string(_severity.mf_getValue()));
    }
    std::vector<std::string> lines;
};

UQFileOutcome outcome(const std::wstring& _sPath, UQFileOutcome::SEVERITY _eSeverity,
                      const std::wstring& _sResult) {
    UQFileOutcome o;
    o.sPath = _sPath;
    o.eSeverity = _eSeverity;
    o.sResult = _sResult;
    o.uVersion = 1;
    return o;
}

} // namespace

TEST(UQResultList, ASavedExcerptReadsBackThroughTheListingReader) {
    ScratchFolder scratch(L"excerpt");
    const std::wstring sFile = scratch.path() + L"\\migration.lxf";
    const std::vector<UQFileOutcome> outcomes = {
        outcome(L"C:\\data\\\x00FC"
                L"ber.txt",
                UQFileOutcome::GREEN, L"Migrated"),
        outcome(L"C:\\data\\a.txt", UQFileOutcome::RED, L"Access denied"),
        outcome(L"C:\\data\\b.txt", UQFileOutcome::YELLOW, L"Stored, but the file changed meanwhile")};
    std::wstring sError = L"unchanged";
    EXPECT_EQ(UQResultList::mf_saveListing(outcomes, sFile, sError), 1);
    EXPECT_EQ(sError, L"");
    PathCollector collector;
    const UQListingReader::Result result =
        UQListingReader::mf_readText(readFile(sFile), L"migration.lxf", collector);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(collector.lines,
              (std::vector<std::string>{"C:\\data\\a.txt|1|Access denied|2",
                                        "C:\\data\\b.txt|1|Stored, but the file changed meanwhile|1",
                                        "C:\\data\\\xC3\xBC"
                                        "ber.txt|1|Migrated|0"}));
}

TEST(UQResultList, AnOutcomeAListingCannotCarryIsNamedAndNothingIsWritten) {
    ScratchFolder scratch(L"excerpt-refused");
    const std::wstring sFile = scratch.path() + L"\\migration.lxf";
    std::wstring sLone = L"C:\\data\\lone";
    sLone += static_cast<wchar_t>(0xDC00);
    LogCheck log;
    std::wstring sError;
    EXPECT_EQ(UQResultList::mf_saveListing({outcome(L"C:\\data\\a.txt", UQFileOutcome::GREEN, L"Migrated"),
                                            outcome(sLone, UQFileOutcome::GREEN, L"Migrated")},
                                           sFile, sError),
              0);
    EXPECT_EQ(utf8(sError), "The path 'C:\\data\\lone\\uDC00' cannot be written to a listing: unpaired "
                            "surrogate U+DC00 at unit 13");
    EXPECT_FALSE(exists(sFile));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListingWriter::mf_formatLine", utf8(sError)}}));
}
