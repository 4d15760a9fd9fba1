// UQDateTimeControl on real date and time pickers: single values, a date and a time combined, pickers
// without a value, the configured formats.
#include "ToolkitTestSupport.h"
#include "support/TestTime.h"

#include "guibase/toolkit/UQDateTimeControl.h"

using namespace toolkittest;

namespace {

std::string text(const UQFileTime& _time) {
    return utf8(_time.mf_toString());
}

std::string shown(HWND _hPicker) {
    SYSTEMTIME st;
    ZeroMemory(&st, sizeof st);
    if (SendMessageW(_hPicker, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&st)) != GDT_VALID)
        return "none";
    FILETIME ft;
    SystemTimeToFileTime(&st, &ft);
    return text(UQFileTime(ft));
}

void setNone(HWND _hPicker) {
    SendMessageW(_hPicker, DTM_SETSYSTEMTIME, GDT_NONE, 0);
}

} // namespace

TEST(UQDateTimeControl, SetAndGetOfOnePickerRoundTrip) {
    TestDialog dialog;
    LogCheck log;
    const UQFileTime time = fileTime(2024, 3, 5, 10, 0, 0);
    EXPECT_EQ(UQDateTimeControl::mf_setItem(dialog.hwnd(), IDC_DATE, time), 1);
    UQFileTime read;
    EXPECT_EQ(UQDateTimeControl::mf_getItem(dialog.hwnd(), IDC_DATE, read), 1);
    EXPECT_EQ(text(read), "2024-03-05 10:00:00");
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQDateTimeControl, TheDatesDayAndTheTimesTimeOfDayMakeOneValue) {
    TestDialog dialog;
    ASSERT_EQ(UQDateTimeControl::mf_set(dialog.item(IDC_DATE), fileTime(2024, 3, 5, 10, 0, 0)), 1);
    ASSERT_EQ(UQDateTimeControl::mf_set(dialog.item(IDC_TIME), fileTime(1999, 1, 1, 23, 15, 30)), 1);
    LogCheck log;
    UQFileTime combined;
    EXPECT_EQ(UQDateTimeControl::mf_getItem(dialog.hwnd(), IDC_DATE, IDC_TIME, combined), 1);
    EXPECT_EQ(text(combined), "2024-03-05 23:15:30");
    UQFileTime byHandles;
    EXPECT_EQ(UQDateTimeControl::mf_get(dialog.item(IDC_DATE), dialog.item(IDC_TIME), byHandles), 1);
    EXPECT_EQ(byHandles, combined);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQDateTimeControl, SettingAPairPutsTheSameValueIntoBoth) {
    TestDialog dialog;
    const UQFileTime time = fileTime(2023, 12, 31, 6, 7, 8);
    EXPECT_EQ(UQDateTimeControl::mf_setItem(dialog.hwnd(), IDC_DATE, IDC_TIME, time), 1);
    EXPECT_EQ(shown(dialog.item(IDC_DATE)), "2023-12-31 06:07:08");
    EXPECT_EQ(shown(dialog.item(IDC_TIME)), "2023-12-31 06:07:08");
    UQFileTime read;
    EXPECT_EQ(UQDateTimeControl::mf_get(dialog.item(IDC_DATE), dialog.item(IDC_TIME), read), 1);
    EXPECT_EQ(read, time);
}

TEST(UQDateTimeControl, APickerWithoutAValueAnswersZero) {
    TestDialog dialog;
    HWND hNone = dialog.item(IDC_DATE_NONE);
    // Wine's picker starts without a value but keeps one once it had it, GDT_NONE or not; Windows' picker
    // takes GDT_NONE at any time. A fresh picker set to GDT_NONE is without a value on both.
    setNone(hNone);
    UQFileTime read(12345);
    EXPECT_EQ(UQDateTimeControl::mf_get(hNone, read), 0);
    EXPECT_EQ(read, UQFileTime(12345)) << "nothing to convert, the value stays";
    UQDateTimeControl::mf_set(dialog.item(IDC_TIME), fileTime(2000, 1, 1, 12, 0, 0));
    EXPECT_EQ(UQDateTimeControl::mf_getItem(dialog.hwnd(), IDC_DATE_NONE, IDC_TIME, read), 0);
    // The date counts as day 0, 1601-01-01.
    EXPECT_EQ(text(read), "1601-01-01 12:00:00");
}

TEST(UQDateTimeControl, AValueThatIsNoCalendarTimeIsNotSet) {
    TestDialog dialog;
    UQDateTimeControl::mf_set(dialog.item(IDC_TIME), fileTime(2001, 2, 3, 4, 5, 6));
    const UQFileTime beyond(0x8000000000000000ull);
    EXPECT_EQ(UQDateTimeControl::mf_set(dialog.item(IDC_DATE), beyond), 0);
    EXPECT_EQ(UQDateTimeControl::mf_setItem(dialog.hwnd(), IDC_DATE, IDC_TIME, beyond), 0);
    EXPECT_EQ(shown(dialog.item(IDC_TIME)), "2001-02-03 04:05:06") << "the time picker is left alone";
}

TEST(UQDateTimeControl, TheFormatSettersUseTheConfiguredPatterns) {
    TestDialog dialog;
    UQNumberFormatter::mf_configure(L"dd.MM.yyyy", L"HH-mm", L',');
    UQDateTimeControl::mf_setItem(dialog.hwnd(), IDC_DATE, IDC_TIME, fileTime(2024, 3, 5, 23, 15, 30));
    EXPECT_NE(UQDateTimeControl::mf_setItemDateFormat(dialog.hwnd(), IDC_DATE), 0);
    EXPECT_NE(UQDateTimeControl::mf_setTimeFormat(dialog.item(IDC_TIME)), 0);
    wchar_t szText[64] = {0};
    GetWindowTextW(dialog.item(IDC_DATE), szText, 64);
    EXPECT_STREQ(szText, L"05.03.2024");
    GetWindowTextW(dialog.item(IDC_TIME), szText, 64);
    EXPECT_STREQ(szText, L"23-15");
    UQNumberFormatter::mf_resetConfiguration();
    EXPECT_NE(UQDateTimeControl::mf_setDateFormat(dialog.item(IDC_DATE)), 0);
    EXPECT_NE(UQDateTimeControl::mf_setItemTimeFormat(dialog.hwnd(), IDC_TIME), 0);
    GetWindowTextW(dialog.item(IDC_DATE), szText, 64);
    EXPECT_STREQ(szText, L"2024-03-05");
    GetWindowTextW(dialog.item(IDC_TIME), szText, 64);
    EXPECT_STREQ(szText, L"23:15:30");
}

TEST(UQDateTimeControl, ItemFormsPassAMissingItemOnUntested) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    UQFileTime read(777);
    // The null handle answers 0 to every message, which reads as GDT_VALID with nothing in it.
    EXPECT_EQ(UQDateTimeControl::mf_getItem(dialog.hwnd(), IDC_MISSING, read), 1);
    EXPECT_EQ(read, UQFileTime(777));
    EXPECT_EQ(UQDateTimeControl::mf_setItem(dialog.hwnd(), IDC_MISSING, fileTime(2024, 1, 1, 0, 0, 0)), 0);
    const LogLine lookup{'E', "UQWindow::mf_getItem",
                         "Failure getting item with id=4242:\r\n    " +
                             errorText(UQErrno::_E_::ItemNotFound, dwError)};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{lookup, lookup}));
}
