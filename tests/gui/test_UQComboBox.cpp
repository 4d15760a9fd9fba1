// UQComboBox on a real drop-down combo box: items, data, selection, text limits and the records of every
// answer the control refuses.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQComboBox.h"

using namespace toolkittest;

namespace {

std::vector<std::string> itemsOf(HWND _hCombo) {
    std::vector<std::string> items;
    const int nCount = static_cast<int>(SendMessageW(_hCombo, CB_GETCOUNT, 0, 0));
    for (int i = 0; i < nCount; ++i) {
        std::vector<wchar_t> text(SendMessageW(_hCombo, CB_GETLBTEXTLEN, i, 0) + 1, L'\0');
        SendMessageW(_hCombo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text.data()));
        items.push_back(utf8(text.data()));
    }
    return items;
}

std::vector<std::string> utf8All(const UQArray<CString>& _as) {
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < _as.GetSize(); ++i)
        out.push_back(utf8(_as[i]));
    return out;
}

LogLine lookupLine(DWORD _dwError) {
    return LogLine{'E', "UQWindow::mf_getItem",
                   "Failure getting item with id=4242:\r\n    " +
                       errorText(UQErrno::_E_::ItemNotFound, _dwError)};
}

} // namespace

// --- items and data -----------------------------------------------------------------------------------

TEST(UQComboBox, AddTextAppendsInOrderAndReadsBackTrimmed) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_addItemText(dialog.hwnd(), IDC_COMBO, L"  padded  "), 1);
    EXPECT_EQ(UQComboBox::mf_addText(hCombo, TextList({L"b", L"a"})), 1);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"  padded  ", "b", "a"}));
    EXPECT_EQ(UQComboBox::mf_getCount(hCombo), 3);
    CString sText;
    EXPECT_EQ(UQComboBox::mf_getText(hCombo, 0, sText), 1);
    EXPECT_EQ(sText, L"padded");
    TextList asTexts({L"kept"});
    EXPECT_EQ(UQComboBox::mf_getItemText(dialog.hwnd(), IDC_COMBO, asTexts), 1);
    EXPECT_EQ(utf8All(asTexts), (std::vector<std::string>{"kept", "padded", "b", "a"}));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQComboBox, DataTravelsWithItsItem) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    int first = 1;
    int second = 2;
    UQComboBox::mf_addTextAndData(hCombo, L"first", &first);
    UQComboBox::mf_addItemTextAndData(dialog.hwnd(), IDC_COMBO, L"second", &second);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_getData(hCombo, 1), &second);
    EXPECT_EQ(UQComboBox::mf_getItemData(dialog.hwnd(), IDC_COMBO, 0), &first);
    SendMessageW(hCombo, CB_SETCURSEL, 1, 0);
    EXPECT_EQ(UQComboBox::mf_getSelectionData(hCombo), &second);
    CString sText;
    EXPECT_EQ(UQComboBox::mf_getItemSelectionTextAndData(dialog.hwnd(), IDC_COMBO, sText), &second);
    EXPECT_EQ(sText, L"second");
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQComboBox, DataOfAnIndexBeyondTheListIsNullWithAGuiRecord) {
    TestDialog dialog;
    UQComboBox::mf_addText(dialog.item(IDC_COMBO), L"only");
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_getData(dialog.item(IDC_COMBO), 5), nullptr);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "UQComboBox::mf_getData", "Failure querying combobox data"}}));
}

TEST(UQComboBox, RemoveAllEmptiesTheList) {
    TestDialog dialog;
    UQComboBox::mf_addText(dialog.item(IDC_COMBO), TextList({L"a", L"b"}));
    UQComboBox::mf_removeItemAll(dialog.hwnd(), IDC_COMBO);
    EXPECT_EQ(UQComboBox::mf_getCount(dialog.item(IDC_COMBO)), 0);
    UQComboBox::mf_addText(dialog.item(IDC_COMBO), L"c");
    UQComboBox::mf_removeAll(dialog.item(IDC_COMBO));
    EXPECT_EQ(itemsOf(dialog.item(IDC_COMBO)), std::vector<std::string>{});
}

TEST(UQComboBox, SetMinVisibleLogsItsAnswer) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_NE(UQComboBox::mf_setItemMinVisible(dialog.hwnd(), IDC_COMBO, 5), 0);
    EXPECT_EQ(UQComboBox::mf_setMinVisible(dialog.item(IDC_LABEL), 5), 0) << "a static control refuses it";
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'D', "UQComboBox::mf_setMinVisible",
                                     "Successfully set minimum visible items of combobox to 5"},
                                    {'D', "UQComboBox::mf_setMinVisible",
                                     "Failure setting minimum visible items of combobox to 5"}}));
}

// --- text limits --------------------------------------------------------------------------------------

TEST(UQComboBox, AnItemTextOf255CharactersIsReadAnd256FailWithTheOutputUnchanged) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    const CString s255(L'x', 255);
    const CString s256(L'y', 256);
    UQComboBox::mf_addText(hCombo, s255);
    UQComboBox::mf_addText(hCombo, s256);
    LogCheck log;
    CString sText(L"before");
    EXPECT_EQ(UQComboBox::mf_getText(hCombo, 0, sText), 1);
    EXPECT_EQ(sText, s255);
    sText = L"before";
    EXPECT_EQ(UQComboBox::mf_getItemText(dialog.hwnd(), IDC_COMBO, 1, sText), 0);
    EXPECT_EQ(sText, L"before");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQComboBox::mf_getText::1",
                                     "Length of combobox entry with index=1 exceeds 255 chars"}}));
}

TEST(UQComboBox, AnIndexWithoutAnItemHasNoTextLength) {
    TestDialog dialog;
    LogCheck log;
    CString sText(L"before");
    EXPECT_EQ(UQComboBox::mf_getText(dialog.item(IDC_COMBO), 9, sText), 0);
    EXPECT_EQ(sText, L"before");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQComboBox::mf_getText::1",
                                     "Could not get text length of selected combobox item with index=9"}}));
}

TEST(UQComboBox, TheListReaderSkipsTextsOf512CharactersOrMore) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    const CString s511(L'k', 511);
    UQComboBox::mf_addText(hCombo, L"short");
    UQComboBox::mf_addText(hCombo, CString(L'z', 512));
    UQComboBox::mf_addText(hCombo, s511);
    LogCheck log;
    UQArray<CString> asTexts;
    EXPECT_EQ(UQComboBox::mf_getText(hCombo, asTexts), 1);
    ASSERT_EQ(asTexts.GetSize(), 2);
    EXPECT_EQ(asTexts[0], L"short");
    EXPECT_EQ(asTexts[1], s511);
    // The buffer's size is printed in bytes though the text says characters.
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQComboBox::mf_getText::2",
                                     "Buffer (1024 chars) too small to catch value with index=1"}}));
}

TEST(UQComboBox, TheListReaderOfAnEmptyControlAddsNothing) {
    TestDialog dialog;
    TextList asTexts({L"kept"});
    EXPECT_EQ(UQComboBox::mf_getText(dialog.item(IDC_COMBO), asTexts), 1);
    EXPECT_EQ(utf8All(asTexts), (std::vector<std::string>{"kept"}));
}

// --- selection ----------------------------------------------------------------------------------------

TEST(UQComboBox, SelectIndexSelectsAndReportsAnIndexBeyondTheList) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"a", L"b"}));
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_selectItemIndex(dialog.hwnd(), IDC_COMBO, 1), 1);
    EXPECT_EQ(UQComboBox::mf_getSelection(hCombo), 1);
    EXPECT_EQ(UQComboBox::mf_selectIndex(hCombo, 7), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQComboBox::mf_selectItem::1",
                                                  "Item with index=7 not found in combobox list"}}));
}

TEST(UQComboBox, SelectingMinusOneClearsTheSelectionAndReportsZero) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"a", L"b"}));
    UQComboBox::mf_selectIndex(hCombo, 0);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_selectIndex(hCombo, -1), 0);
    EXPECT_EQ(SendMessageW(hCombo, CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQComboBox::mf_selectItem::1",
                                                  "Item with index=-1 not found in combobox list"}}));
}

TEST(UQComboBox, ExactSelectionIsCaseSensitiveAndAlwaysReportsOne) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"foo");
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_selectText(hCombo, L"Foo", 1), 1);
    EXPECT_EQ(SendMessageW(hCombo, CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(UQComboBox::mf_selectItemText(dialog.hwnd(), IDC_COMBO, L"foo", 1), 1);
    EXPECT_EQ(SendMessageW(hCombo, CB_GETCURSEL, 0, 0), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQComboBox, ExactSelectionTakesTheFirstEqualEntry) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"x", L"same", L"same"}));
    EXPECT_EQ(UQComboBox::mf_selectText(hCombo, L"same", 1), 1);
    EXPECT_EQ(SendMessageW(hCombo, CB_GETCURSEL, 0, 0), 1);
}

TEST(UQComboBox, InexactSelectionIsTheControlsCaseBlindPrefixSearch) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"bar", L"foo"}));
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_selectText(hCombo, L"fo", 0), 1);
    EXPECT_EQ(SendMessageW(hCombo, CB_GETCURSEL, 0, 0), 1);
    EXPECT_EQ(UQComboBox::mf_selectText(hCombo, L"BA", 0), 1);
    EXPECT_EQ(SendMessageW(hCombo, CB_GETCURSEL, 0, 0), 0);
    EXPECT_EQ(UQComboBox::mf_selectText(hCombo, L"qux", 0), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQComboBox::mf_selectItem::2",
                                                  "Item 'qux' not found in combobox list"}}));
}

TEST(UQComboBox, WithoutASelectionTheSelectionReadersLogAtTheGuiLevel) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"a");
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_getItemSelection(dialog.hwnd(), IDC_COMBO), -1);
    CString sText(L"before");
    EXPECT_EQ(UQComboBox::mf_getSelectionText(hCombo, sText), 0);
    EXPECT_EQ(sText, L"before");
    EXPECT_EQ(UQComboBox::mf_getSelectionData(hCombo), nullptr);
    EXPECT_EQ(UQComboBox::mf_getSelectionTextAndData(hCombo, sText), nullptr);
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{{'G', "UQComboBox::mf_getSelection", "No combobox item selected"},
                              {'G', "UQComboBox::mf_getSelectionText", "No combobox item selected"},
                              {'G', "UQComboBox::mf_getSelectionData", "No combobox item selected"},
                              {'G', "UQComboBox::mf_getSelectionTextAndData", "No combobox item selected"}}));
}

TEST(UQComboBox, SelectionTextOfALongEntryFailsWithoutData) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    int data = 3;
    UQComboBox::mf_addTextAndData(hCombo, CString(L'q', 300), &data);
    UQComboBox::mf_selectIndex(hCombo, 0);
    LogCheck log;
    CString sText;
    EXPECT_EQ(UQComboBox::mf_getItemSelectionText(dialog.hwnd(), IDC_COMBO, sText), 0);
    EXPECT_EQ(UQComboBox::mf_getSelectionTextAndData(hCombo, sText), nullptr);
    EXPECT_EQ(UQComboBox::mf_getItemSelectionData(dialog.hwnd(), IDC_COMBO), &data);
    const LogLine tooLong{'E', "UQComboBox::mf_getText::1",
                          "Length of combobox entry with index=0 exceeds 255 chars"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{tooLong, tooLong}));
}

// --- queries ------------------------------------------------------------------------------------------

TEST(UQComboBox, HasTextFindsAWholeEntryIgnoringCase) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"foo");
    EXPECT_EQ(UQComboBox::mf_hasText(hCombo, L"foo"), 1);
    EXPECT_EQ(UQComboBox::mf_hasItemText(dialog.hwnd(), IDC_COMBO, L"FOO"), 1);
    EXPECT_EQ(UQComboBox::mf_hasText(hCombo, L"fo"), 0);
}

TEST(UQComboBox, HasIndexOfMinusOneLogsNegativeIndex) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"a");
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_hasIndex(hCombo, 0), 1);
    EXPECT_EQ(UQComboBox::mf_hasItemIndex(dialog.hwnd(), IDC_COMBO, 1), 0);
    EXPECT_EQ(UQComboBox::mf_hasIndex(hCombo, -1), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQComboBox::mf_hasIndex", "Negative index"}}));
}

// --- a missing control --------------------------------------------------------------------------------

TEST(UQComboBox, AMissingControlAnswersLikeOneThatRefusesEveryMessage) {
    TestDialog dialog;
    HWND hDlg = dialog.hwnd();
    const DWORD dwError = missingItemError(hDlg, IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_getItemCount(hDlg, IDC_MISSING), 0);
    EXPECT_EQ(UQComboBox::mf_getItemSelection(hDlg, IDC_MISSING), -1);
    EXPECT_EQ(UQComboBox::mf_hasItemIndex(hDlg, IDC_MISSING, 0), 0);
    EXPECT_EQ(UQComboBox::mf_hasItemText(hDlg, IDC_MISSING, L"a"), 0);
    EXPECT_EQ(UQComboBox::mf_selectItemText(hDlg, IDC_MISSING, L"a", 1), 1);
    EXPECT_EQ(UQComboBox::mf_addItemText(hDlg, IDC_MISSING, L"a"), 1);
    const LogLine lookup = lookupLine(dwError);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{lookup,
                                    {'G', "UQComboBox::mf_getCount", "Failure querying combobox count"},
                                    lookup,
                                    {'G', "UQComboBox::mf_getSelection", "No combobox item selected"},
                                    lookup,
                                    {'G', "UQComboBox::mf_hasIndex", "Failure querying combobox count"},
                                    lookup,
                                    lookup,
                                    {'G', "UQComboBox::mf_getCount", "Failure querying combobox count"},
                                    lookup}));
}
