#include "interfaces/korarchiver.h"

#include "support/LogCheck.h"

#include <string>
#include <vector>

namespace {

struct Taken {
    std::string path;
    std::uint32_t version;
    std::string result;
    int severity;

    friend bool operator==(const Taken& a, const Taken& b) {
        return a.path == b.path && a.version == b.version && a.result == b.result && a.severity == b.severity;
    }
};

class TakingListener : public UVListingFileReader {
public:
    void mf_onMigrationEntry(std::uint32_t, const UQFileTime&, const CString& path, std::uint32_t version,
                             const CString& result, const UQSeverity& severity) override {
        taken.push_back(Taken{utf8(path), version, utf8(result), severity.mf_getValue()});
    }
    std::vector<Taken> taken;
};

CString withUnit(const wchar_t* _pszBefore, unsigned _uUnit, const wchar_t* _pszAfter) {
    CString s(_pszBefore);
    s += static_cast<wchar_t>(_uUnit);
    s += _pszAfter;
    return s;
}

// The text of the one refusal of a line, checked to be logged under the writer's name as well.
std::string refusal(const CString& _sPath, UQListingWriter::STATUS _eStatus, const CString& _sResult) {
    LogCheck log;
    std::string line = "not written";
    std::string text;
    try {
        line = UQListingWriter::mf_formatLine(_sPath, 7, _eStatus, _sResult);
    } catch (const UQErrno& e) {
        EXPECT_EQ(utf8(e.mf_getData().mf_getValue()->mf_getName()), "_E_::Parameter");
        text = utf8(e.mf_getDetail());
    }
    EXPECT_EQ(line, "not written");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListingWriter::mf_formatLine", text}}));
    return text;
}

} // namespace

TEST(UQListingWriter, EveryWrittenLineReadsBackAsGiven) {
    CString emoji(L"C:\\Fotos\\Urlaub ");
    emoji += static_cast<wchar_t>(0xD83C);
    emoji += static_cast<wchar_t>(0xDF34);
    emoji += L".jpg";
    const std::string text =
        UQListingWriter::mf_formatLine(L"C:\\Akten\\\x00DC"
                                       L"bersicht.docx",
                                       1, UQListingWriter::STATUS_MIGRATED, L"") +
        UQListingWriter::mf_formatLine(L"C:\\Akten\\\x00DC"
                                       L"bersicht.docx",
                                       2, UQListingWriter::STATUS_MIGRATED, L"Premigrated") +
        UQListingWriter::mf_formatLine(L"C:\\a\\stub.txt", 4294967295u, UQListingWriter::STATUS_STUB, L"") +
        UQListingWriter::mf_formatLine(emoji, 3, UQListingWriter::STATUS_WARNING,
                                       L"Changed \x03A3\x03B1\x03C2") +
        UQListingWriter::mf_formatLine(L"\\\\fs\\x\\denied", 0, UQListingWriter::STATUS_FAILED,
                                       L"Access denied");
    EXPECT_EQ(UQListingWriter::mf_formatLine(L"C:\\a", 12, UQListingWriter::STATUS_FAILED, L"Denied"),
              "C:\\a\t12\tfailed\tDenied\n");
    TakingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText(text, L"excerpt.lxf", listener);
    EXPECT_TRUE(result.errors.empty());
    const std::string stub = utf8(UQString(UQErrno::_I_::StubFile.mf_getMessageNumber()).mf_getText());
    EXPECT_EQ(listener.taken,
              (std::vector<Taken>{{"C:\\Akten\\\xC3\x9C"
                                   "bersicht.docx",
                                   1, "Migrated", UVSeverity::GREEN},
                                  {"C:\\Akten\\\xC3\x9C"
                                   "bersicht.docx",
                                   2, "Premigrated", UVSeverity::GREEN},
                                  {"C:\\a\\stub.txt", 4294967295u, stub, UVSeverity::GREEN},
                                  {"C:\\Fotos\\Urlaub \xF0\x9F\x8C\xB4.jpg", 3,
                                   "Changed \xCE\xA3\xCE\xB1\xCF\x82", UVSeverity::YELLOW},
                                  {"\\\\fs\\x\\denied", 0, "Access denied", UVSeverity::RED}}));
}

TEST(UQListingWriter, RefusesAControlCharacterInThePath) {
    EXPECT_EQ(
        refusal(L"C:\\a\tb.txt", UQListingWriter::STATUS_MIGRATED, L""),
        "The path 'C:\\a\\u0009b.txt' cannot be written to a listing: control character U+0009 at unit 5");
    EXPECT_EQ(
        refusal(L"C:\\line\nbreak", UQListingWriter::STATUS_MIGRATED, L""),
        "The path 'C:\\line\\u000Abreak' cannot be written to a listing: control character U+000A at unit 8");
    EXPECT_EQ(refusal(L"C:\\del\x7F", UQListingWriter::STATUS_MIGRATED, L""),
              "The path 'C:\\del\\u007F' cannot be written to a listing: control character U+007F at unit 7");
}

TEST(UQListingWriter, RefusesAnUnpairedSurrogateInThePath) {
    EXPECT_EQ(
        refusal(withUnit(L"C:\\high", 0xD83D, L".txt"), UQListingWriter::STATUS_MIGRATED, L""),
        "The path 'C:\\high\\uD83D.txt' cannot be written to a listing: unpaired surrogate U+D83D at unit 8");
    EXPECT_EQ(
        refusal(withUnit(L"C:\\low", 0xDE00, L""), UQListingWriter::STATUS_STUB, L""),
        "The path 'C:\\low\\uDE00' cannot be written to a listing: unpaired surrogate U+DE00 at unit 7");
}

TEST(UQListingWriter, RefusesAControlCharacterOrUnpairedSurrogateInTheResultText) {
    EXPECT_EQ(refusal(L"C:\\a", UQListingWriter::STATUS_FAILED, L"Access denied\r\n"),
              "The path 'C:\\a' cannot be written to a listing: control character U+000D at unit 14 of its "
              "result text");
    EXPECT_EQ(
        refusal(L"C:\\a", UQListingWriter::STATUS_WARNING, withUnit(L"odd ", 0xDC80, L"")),
        "The path 'C:\\a' cannot be written to a listing: unpaired surrogate U+DC80 at unit 5 of its result "
        "text");
}

TEST(UQListingWriter, RefusesAPathTheReaderWouldNotGiveBack) {
    EXPECT_EQ(refusal(L"", UQListingWriter::STATUS_MIGRATED, L""),
              "The path '' cannot be written to a listing: the path is empty");
    EXPECT_EQ(refusal(L" C:\\a", UQListingWriter::STATUS_MIGRATED, L""),
              "The path ' C:\\a' cannot be written to a listing: it begins or ends with a space");
    EXPECT_EQ(refusal(L"C:\\a ", UQListingWriter::STATUS_MIGRATED, L""),
              "The path 'C:\\a ' cannot be written to a listing: it begins or ends with a space");
}

TEST(UQListingWriter, RefusesAWarningOrFailureWithoutResultText) {
    EXPECT_EQ(refusal(L"C:\\a", UQListingWriter::STATUS_WARNING, L""),
              "The path 'C:\\a' cannot be written to a listing: status 'warning' needs a result text");
    EXPECT_EQ(refusal(L"C:\\a", UQListingWriter::STATUS_FAILED, L"   "),
              "The path 'C:\\a' cannot be written to a listing: status 'failed' needs a result text");
}
