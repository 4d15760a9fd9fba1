// The error and log frame of korbase: categories, error texts, the message catalogue and the capture sink.
#include "support/LogCheck.h"

#include <thread>

namespace {

std::string text(const CString& s) {
    return s.ToUtf8();
}

} // namespace

TEST(UQErrno, CategoriesAreNamedByTheirSeverityAndName) {
    EXPECT_EQ(utf8(UQErrno::_E_::Parameter.mf_getName()), "_E_::Parameter");
    EXPECT_EQ(utf8(UQErrno::_E_::Range.mf_getName()), "_E_::Range");
    EXPECT_EQ(utf8(UQErrno::_E_::Registry.mf_getName()), "_E_::Registry");
    EXPECT_EQ(utf8(UQErrno::_W_::ItemNotFound.mf_getName()), "_W_::ItemNotFound");
    EXPECT_EQ(utf8(UQErrno::_W_::UserCanceled.mf_getName()), "_W_::UserCanceled");
    EXPECT_EQ(utf8(UQErrno::_I_::StubFile.mf_getName()), "_I_::StubFile");
}

TEST(UQErrno, SeverityLettersFollowTheCategoryGroup) {
    EXPECT_EQ(UQErrno::_E_::Memory.mf_getSeverityLetter(), L'E');
    EXPECT_EQ(UQErrno::_W_::UserCanceled.mf_getSeverityLetter(), L'W');
    EXPECT_EQ(UQErrno::_I_::StubFile.mf_getSeverityLetter(), L'I');
    EXPECT_TRUE(UQErrno::_E_::Memory.mf_getSeverity().mf_isRed());
    EXPECT_TRUE(UQErrno::_W_::UserCanceled.mf_getSeverity().mf_isYellow());
    EXPECT_TRUE(UQErrno::_I_::StubFile.mf_getSeverity().mf_isGreen());
}

TEST(UQErrno, LogLevelsCarryTheirLetters) {
    EXPECT_EQ(UQLogData::LEVEL_E.mf_getLetter(), L'E');
    EXPECT_EQ(UQLogData::LEVEL_W.mf_getLetter(), L'W');
    EXPECT_EQ(UQLogData::LEVEL_I.mf_getLetter(), L'I');
    EXPECT_EQ(UQLogData::LEVEL_D.mf_getLetter(), L'D');
    EXPECT_EQ(UQLogData::LEVEL_T.mf_getLetter(), L'T');
    EXPECT_EQ(UQLogData::LEVEL_G.mf_getLetter(), L'G');
}

TEST(UQErrno, SeveritiesHaveNamesAndUnknownValuesTheirNumber) {
    EXPECT_EQ(text(UVSeverity::mf_toString(UQSeverity::Info)), "Information");
    EXPECT_EQ(text(UVSeverity::mf_toString(UQSeverity::Warning)), "Warning");
    EXPECT_EQ(text(UVSeverity::mf_toString(UQSeverity::Error)), "Error");
    EXPECT_EQ(text(UVSeverity::mf_toString(UVSeverity(7))), "Severity 7");
}

TEST(UQErrno, ToStringWithoutSystemErrorNamesCategoryAndMessage) {
    const UQErrno error(UQErrno::_E_::Range);
    EXPECT_EQ(text(error.mf_toString()), "[E] _E_::Range: A value is out of range.");
    EXPECT_EQ(error.mf_getSystemError(), 0u);
}

TEST(UQErrno, ToStringWithSystemErrorAddsNumberAndSystemMessage) {
    const UQErrno error(UQErrno::_E_::File, 5u);
    const CString system = UQErrno::mf_getSystemMessage(5);
    // Windows says "Access is denied."; Wine words some messages differently, so only the native text is
    // fixed.
#if !defined(_WIN32)
    EXPECT_EQ(text(system), "Access is denied.");
#endif
    EXPECT_FALSE(system.IsEmpty());
    EXPECT_NE(system[system.GetLength() - 1], L'\n');
    EXPECT_EQ(text(error.mf_toString()),
              "[E] _E_::File: A file could not be read or written. (system error 5: " + text(system) + ")");
}

TEST(UQErrno, SystemNumberWithoutMessageIsCalledUnknown) {
    // Bit 29 marks application-defined codes: no system has a text for them.
    EXPECT_EQ(text(UQErrno::mf_getSystemMessage(0x20001234u)), "Unknown error 536875572");
}

TEST(UQErrno, DetailFollowsTheMessage) {
    const UQErrno error(UQErrno::_E_::Format, CString(L"options.opt, line 3"));
    EXPECT_EQ(text(error.mf_toString()),
              "[E] _E_::Format: The data is not in the expected format. (options.opt, line 3)");
    EXPECT_TRUE(error.mf_getData().mf_is(UQErrno::_E_::Format));
}

TEST(UQErrno, ErrorWithoutCategorySaysSo) {
    const UQErrno error{UQErrnoData()};
    EXPECT_EQ(text(error.mf_toString()), "No error.");
    EXPECT_FALSE(UQErrnoData().mf_isError());
}

TEST(UQErrno, GetStringIsTheMessageAlone) {
    EXPECT_EQ(text(UQErrno(UQErrno::_W_::UserCanceled).mf_getString()),
              "The operation was canceled by the user.");
    EXPECT_EQ(text(UQErrno(UQErrno::_E_::Memory, 8u).mf_getString()), "There is not enough memory.");
}

TEST(UQErrno, GuiMessageWithEmptyPrefixIsTheMessageOnly) {
    const UQErrnoData data(UQErrno::_E_::Gui);
    EXPECT_EQ(text(UQErrno::mf_toGuiMessage(data, CString())), "A window or dialog operation failed.");
    EXPECT_EQ(text(UQErrno::mf_toGuiMessage(data, CString(L"Saving: "))),
              "Saving: A window or dialog operation failed.");
    // The user's text is never the log's text.
    EXPECT_NE(UQErrno::mf_toGuiMessage(data, CString()), UQErrno(data).mf_toString());
}

TEST(UQErrno, CopiedErrorKeepsCategoryAndNumber) {
    const UQErrno original(UQErrnoData(UQErrno::_E_::Synchronization), 6u);
    const UQErrno copy(original);
    EXPECT_TRUE(copy.mf_getData().mf_is(UQErrno::_E_::Synchronization));
    EXPECT_EQ(copy.mf_getSystemError(), 6u);
    UQErrno assigned(UQErrno::_E_::Parameter);
    assigned = original;
    EXPECT_TRUE(assigned.mf_getData().mf_is(UQErrno::_E_::Synchronization));
    EXPECT_EQ(assigned.mf_getSystemError(), 6u);
    EXPECT_EQ(assigned.mf_toString(), original.mf_toString());
}

TEST(UQErrno, CollectedDataIsCopiedAndAssigned) {
    UQErrnoData collected;
    EXPECT_FALSE(collected);
    collected = UQErrno::_E_::Memory;
    const UQErrnoData copy(collected);
    EXPECT_TRUE(copy.mf_isError());
    EXPECT_TRUE(copy.mf_is(UQErrno::_E_::Memory));
    EXPECT_FALSE(copy.mf_is(UQErrno::_E_::Range));
}

TEST(UQString, KnownNumberGivesItsText) {
    EXPECT_EQ(text(UQString(1102)), "Error");
    EXPECT_TRUE(UQString::mf_exists(1004));
}

TEST(UQString, MissingNumberThrowsItemNotFoundAndLogsIt) {
    LogCheck log;
    EXPECT_FALSE(UQString::mf_exists(999999));
    EXPECT_EQ(thrownCategory([] { UQString s(999999); }), "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQString::UQString", "Message 999999 not found in the catalogue"}}));
}

TEST(UQLogCapture, SeesWhetherTheThreadSelectedItsLanguage) {
    UQLogCapture capture;
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(UQLogData::LEVEL_T, L"Test::selected", L"with language");
    UQLog::mf_writeMessage(UQLogData::LEVEL_T, L"Test::notSelected", L"without language");
    // The mark belongs to the thread that set it.
    UQThreadContext::mf_setLoggingLanguage();
    std::thread other(
        [] { UQLog::mf_writeMessage(UQLogData::LEVEL_T, L"Test::otherThread", L"other thread"); });
    other.join();
    UQLog::mf_writeMessage(UQLogData::LEVEL_T, L"Test::selectedAgain", L"still marked");

    const std::vector<UQLogCapture::Entry> entries = capture.mf_getEntries();
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(utf8(entries[0].sFunction), "Test::selected");
    EXPECT_TRUE(entries[0].bLanguageSelected);
    EXPECT_FALSE(entries[1].bLanguageSelected);
    EXPECT_EQ(utf8(entries[2].sFunction), "Test::otherThread");
    EXPECT_FALSE(entries[2].bLanguageSelected);
    EXPECT_NE(entries[2].dwThreadId, entries[0].dwThreadId);
    EXPECT_TRUE(entries[3].bLanguageSelected);
    EXPECT_EQ(entries[3].dwThreadId, GetCurrentThreadId());
}

TEST(UQLog, SurplusArgumentsAreIgnored) {
    LogCheck log;
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(UQLogData::LEVEL_W, L"Test::surplus",
                           L"Item with index=%d not found in combobox list", 7, CString(L"unused"), 3u);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "Test::surplus", "Item with index=7 not found in combobox list"}}));
}

TEST(UQLog, PercentInAnArgumentIsKeptAsItIs) {
    LogCheck log;
    const CString name(L"100% %s %d done.txt");
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(UQLogData::LEVEL_G, L"Test::percent", L"Path selected: '%s'", name);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "Test::percent", "Path selected: '100% %s %d done.txt'"}}));
}

TEST(UQLog, WrappedFailureCarriesTheErrorTextOnAnIndentedLine) {
    LogCheck log;
    const UQErrno error(UQErrno::_E_::Memory);
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(UQLogData::LEVEL_E, L"Test::wrapped", L"Failure adding file item:\r\n%s%s",
                           UQLog::TAB, error.mf_toString());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "Test::wrapped",
                                     "Failure adding file item:\r\n    [E] _E_::Memory: There is not "
                                     "enough memory."}}));
}
