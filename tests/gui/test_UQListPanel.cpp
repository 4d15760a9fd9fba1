// UQListPanel on a real report list view: columns, widths that fill the list, sort arrows, the image list,
// item texts, data, icons and the selection.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQListPanel.h"
#include "korlang_ids.h"

#include <map>

using namespace toolkittest;

namespace {

int formatOf(HWND _hList, int _nColumn) {
    LVCOLUMNW column;
    ZeroMemory(&column, sizeof column);
    column.mask = LVCF_FMT;
    SendMessageW(_hList, LVM_GETCOLUMNW, _nColumn, reinterpret_cast<LPARAM>(&column));
    return column.fmt & LVCFMT_JUSTIFYMASK;
}

std::vector<int> widthsOf(HWND _hList) {
    std::vector<int> widths;
    for (int i = 0; i < UQListPanel::mf_getColumnCount(_hList); ++i)
        widths.push_back(UQListPanel::mf_getColumnWidth(_hList, i));
    return widths;
}

int headerFormatOf(HWND _hList, int _nColumn) {
    HDITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = HDI_FORMAT;
    SendMessageW(UQListPanel::mf_getHeader(_hList), HDM_GETITEMW, _nColumn, reinterpret_cast<LPARAM>(&item));
    return item.fmt;
}

void insertItems(HWND _hList, int _nCount) {
    for (int i = 0; i < _nCount; ++i) {
        LVITEMW item;
        ZeroMemory(&item, sizeof item);
        item.mask = LVIF_TEXT;
        item.iItem = i;
        std::wstring text = L"item " + std::to_wstring(i);
        item.pszText = const_cast<LPWSTR>(text.c_str());
        SendMessageW(_hList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
}

int widthIn(HWND _hList, const std::wstring& _text) {
    HDC hDC = GetDC(_hList);
    SIZE size = {0, 0};
    GetTextExtentPoint32W(hDC, _text.c_str(), static_cast<int>(_text.size()), &size);
    ReleaseDC(_hList, hDC);
    return size.cx;
}

// A text exactly _nTarget pixels wide in the list's device context, made of letters of different widths;
// empty when the font has no such combination.
std::wstring textOfWidth(HWND _hList, int _nTarget) {
    std::map<int, wchar_t> letters;
    for (const wchar_t* p = L"Wmwabcdefghijklnopqrstuvxyz.:!|"; *p != L'\0'; ++p) {
        const int nWidth = widthIn(_hList, std::wstring(1, *p));
        if (nWidth > 0)
            letters.emplace(nWidth, *p);
    }
    std::vector<int> from(static_cast<std::size_t>(_nTarget) + 1, -1);
    from[0] = 0;
    for (int w = 1; w <= _nTarget; ++w) {
        for (const auto& letter : letters) {
            if (letter.first <= w && from[w - letter.first] >= 0) {
                from[w] = letter.first;
                break;
            }
        }
    }
    if (from[_nTarget] < 0)
        return std::wstring();
    std::wstring text;
    for (int w = _nTarget; w > 0; w -= from[w])
        text += letters[from[w]];
    return text;
}

int focusedRow(HWND _hList) {
    return static_cast<int>(SendMessageW(_hList, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
}

class UQListPanelTest : public ::testing::Test {
protected:
    HWND list() const { return m_dialog.item(IDC_LIST); }

    TestDialog m_dialog;
};

// Columns written in place.
class columns : public UQListColumnInfos {
public:
    columns(std::initializer_list<UQListColumnInfo> _infos) {
        for (const UQListColumnInfo& info : _infos)
            Add(info);
    }
};

} // namespace

// --- columns ------------------------------------------------------------------------------------------

TEST_F(UQListPanelTest, InsertColumnsGivesEachItsTextWidthAndFormat) {
    UQListPanel::mf_insertColumns(
        list(),
        columns({{L"Name", 120, LVCFMT_LEFT}, {L"Size", 60, LVCFMT_RIGHT}, {L"State", 80, LVCFMT_CENTER}}));
    EXPECT_EQ(UQListPanel::mf_getColumnCount(list()), 3);
    EXPECT_EQ(widthsOf(list()), (std::vector<int>{120, 60, 80}));
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 1), L"Size");
    EXPECT_EQ(formatOf(list(), 0), LVCFMT_LEFT);
    EXPECT_EQ(formatOf(list(), 1), LVCFMT_RIGHT);
    EXPECT_EQ(formatOf(list(), 2), LVCFMT_CENTER);
}

TEST_F(UQListPanelTest, ARightAlignedColumnInsertedAtIndexZeroIsOneRightAlignedFirstColumn) {
    UQListPanel::mf_insertColumn(list(), 0, L"Size", 80, LVCFMT_RIGHT);
    EXPECT_EQ(UQListPanel::mf_getColumnCount(list()), 1);
    EXPECT_EQ(formatOf(list(), 0), LVCFMT_RIGHT);
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 0), L"Size");
    EXPECT_EQ(UQListPanel::mf_getColumnWidth(list(), 0), 80);
    EXPECT_NE(headerFormatOf(list(), 0) & HDF_RIGHT, 0);
}

TEST_F(UQListPanelTest, ACentredFirstColumnInFrontOfOthersKeepsTheOthersAfterIt) {
    UQListPanel::mf_insertColumn(list(), 0, UQListColumnInfo(L"Path", 100, LVCFMT_LEFT));
    UQListPanel::mf_insertColumn(list(), 0, UQListColumnInfo(L"State", 50, LVCFMT_CENTER));
    EXPECT_EQ(UQListPanel::mf_getColumnCount(list()), 2);
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 0), L"State");
    EXPECT_EQ(formatOf(list(), 0), LVCFMT_CENTER);
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 1), L"Path");
}

TEST_F(UQListPanelTest, RemoveColumnAndTheColumnQueries) {
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 10, 0}, {L"B", 20, 0}}));
    EXPECT_EQ(UQListPanel::mf_hasColumn(list(), 1), 1);
    UQListPanel::mf_removeColumn(list(), 0);
    EXPECT_EQ(UQListPanel::mf_getColumnCount(list()), 1);
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 0), L"B");
    EXPECT_EQ(UQListPanel::mf_hasColumn(list(), 1), 0);
    EXPECT_EQ(UQListPanel::mf_getColumnWidth(list(), 1), 0);
    EXPECT_EQ(UQListPanel::mf_getHeaderWidth(list(), 0), 20);
    EXPECT_EQ(UQListPanel::mf_getHeaderWidth(list(), 1), -1);
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 1), L"");
}

TEST_F(UQListPanelTest, HeaderTextsAreReadUpTo511Characters) {
    UQListPanel::mf_insertColumn(list(), 0, CString(L'h', 600), 100, 0);
    EXPECT_EQ(UQListPanel::mf_getHeaderText(list(), 0), CString(L'h', 511));
}

TEST_F(UQListPanelTest, SetColumnWidthAndItsFailure) {
    UQListPanel::mf_insertColumn(list(), 0, L"A", 10, 0);
    LogCheck log;
    UQListPanel::mf_setColumnWidth(list(), 0, 77);
    EXPECT_EQ(UQListPanel::mf_getColumnWidth(list(), 0), 77);
    UQListPanel::mf_setColumnWidth(list(), 9, 50);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'G', "UQListPanel::mf_setColumnWidth",
                                                  "Failure setting width=50 of column with index=9"}}));
}

TEST_F(UQListPanelTest, TheWidthSumIsZeroWithoutColumns) {
    EXPECT_EQ(UQListPanel::mf_calcColumnWidthSum(list()), 0);
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 10, 0}, {L"B", 25, 0}, {L"C", 7, 0}}));
    EXPECT_EQ(UQListPanel::mf_calcColumnWidthSum(list()), 42);
}

// --- computed widths ----------------------------------------------------------------------------------

TEST_F(UQListPanelTest, TwoEmptyTextsAnswerTwentyWhateverTheListHolds) {
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 0, L"", L"", 0), 20);
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 100, 0}, {L"B", 300, 0}}));
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 1, L"", L"", 1), 20);
}

TEST_F(UQListPanelTest, WithoutFillTheWiderTextAndTwoPixels) {
    const int nShort = widthIn(list(), L"Size");
    const int nLong = widthIn(list(), L"Last write time");
    ASSERT_LT(nShort, nLong);
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 0, L"Size", L"", 0), nShort + 2);
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 0, L"Size", L"Last write time", 0), nLong + 2);
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 0, L"Last write time", L"Size", 0), nLong + 2);
}

TEST_F(UQListPanelTest, FillTakesTheRestOfTheListWhenTheTextFitsIntoIt) {
    setClientSize(list(), 400, 100);
    RECT rc;
    GetClientRect(list(), &rc);
    ASSERT_EQ(rc.right, 400);
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 100, 0}, {L"B", 60, 0}, {L"C", 100, 0}}));
    const std::wstring text50 = textOfWidth(list(), 50);
    ASSERT_EQ(widthIn(list(), text50), 50) << "a text 50 pixels wide";
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 1, text50.c_str(), L"", 1), 200);
}

TEST_F(UQListPanelTest, FillGivesAWiderTextItsOwnWidthAndTwoPixels) {
    setClientSize(list(), 400, 100);
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 100, 0}, {L"B", 60, 0}, {L"C", 100, 0}}));
    const std::wstring text250 = textOfWidth(list(), 250);
    ASSERT_EQ(widthIn(list(), text250), 250) << "a text 250 pixels wide";
    // The second text is not measured with fill.
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 1, text250.c_str(), L"a much longer second text", 1),
              252);
}

TEST_F(UQListPanelTest, FillInAListWithoutColumnsTakesTheWholeClientWidth) {
    setClientSize(list(), 300, 100);
    EXPECT_EQ(UQListPanel::mf_calcColumnWidth(list(), 0, L"x", L"", 1), 300);
}

TEST_F(UQListPanelTest, AdjustColumnWidthsScalesToTheClientWidthLessTheScrollBar) {
    setClientSize(list(), 500, 100);
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 100, 0}, {L"B", 100, 0}, {L"C", 200, 0}}));
    UQListPanel::mf_adjustColumnWidths(list(), 1);
    // 484 / 400 = 1.21: 242 and 121, and the first column 484 - 363.
    EXPECT_EQ(widthsOf(list()), (std::vector<int>{121, 121, 242}));
}

TEST_F(UQListPanelTest, AdjustColumnWidthsPutsRoundingLossesIntoTheFirstColumn) {
    setClientSize(list(), 500, 100);
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 100, 0}, {L"B", 100, 0}, {L"C", 100, 0}}));
    UQListPanel::mf_adjustColumnWidths(list(), 0);
    // 500 / 300: 166 twice, and 500 - 332 for the first.
    EXPECT_EQ(widthsOf(list()), (std::vector<int>{168, 166, 166}));
    EXPECT_EQ(UQListPanel::mf_calcColumnWidthSum(list()), 500);
}

// --- header -------------------------------------------------------------------------------------------

TEST_F(UQListPanelTest, SortIconsAreAddedAndNeverCleared) {
    UQListPanel::mf_insertColumns(list(), columns({{L"A", 50, 0}, {L"B", 50, 0}}));
    UQListPanel::mf_setHeaderSortIcon(list(), 0, UQSortOrder(UQSortOrder::ASCENDING));
    EXPECT_NE(headerFormatOf(list(), 0) & HDF_SORTUP, 0);
    EXPECT_EQ(headerFormatOf(list(), 0) & HDF_SORTDOWN, 0);
    UQListPanel::mf_setHeaderSortIcon(list(), 1, UQSortOrder(UQSortOrder::DESCENDING));
    EXPECT_NE(headerFormatOf(list(), 1) & HDF_SORTDOWN, 0);
    EXPECT_NE(headerFormatOf(list(), 0) & HDF_SORTUP, 0) << "the other column keeps its arrow";
    UQListPanel::mf_setHeaderSortIcon(list(), 0, UQSortOrder(7));
    EXPECT_NE(headerFormatOf(list(), 0) & HDF_SORTDOWN, 0) << "every value but 1 is the down arrow";
    EXPECT_NE(headerFormatOf(list(), 0) & HDF_SORTUP, 0) << "the up arrow stays";
}

// --- image list ---------------------------------------------------------------------------------------

TEST_F(UQListPanelTest, AddIconWithoutAnImageListAnswersMinusOne) {
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_addIcon(list(), IDI_USER), -1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListPanel::mf_addIcon",
                                                  "Could not get image list from list panel"}}));
}

TEST_F(UQListPanelTest, IconsOfTheLanguageModuleAreAppendedToTheSmallImageList) {
    UQListPanel::mf_createImageList(list());
    HIMAGELIST hList = reinterpret_cast<HIMAGELIST>(SendMessageW(list(), LVM_GETIMAGELIST, LVSIL_SMALL, 0));
    ASSERT_NE(hList, nullptr);
    int cx = 0;
    int cy = 0;
    ImageList_GetIconSize(hList, &cx, &cy);
    EXPECT_EQ(cx, GetSystemMetrics(SM_CXSMICON));
    EXPECT_EQ(cy, GetSystemMetrics(SM_CYSMICON));
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_addIcon(list(), IDI_USER), 0);
    EXPECT_EQ(UQListPanel::mf_addIcon(list(), IDI_SEVERITY_GREEN), 1);
    EXPECT_EQ(ImageList_GetImageCount(hList), 2);
    EXPECT_EQ(log.count(), 0u);
    UQListPanel::mf_deleteImageList(list());
    EXPECT_EQ(SendMessageW(list(), LVM_GETIMAGELIST, LVSIL_SMALL, 0), 0);
}

TEST_F(UQListPanelTest, AnIconTheModuleLacksIsLoggedWithItsNumber) {
    UQListPanel::mf_createImageList(list());
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_addIcon(list(), 9999), -1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListPanel::mf_addIcon",
                                                  "Could not load icon with resource-id=9999"}}));
    UQListPanel::mf_deleteImageList(list());
}

TEST_F(UQListPanelTest, DeletingWithoutAnImageListDoesNothing) {
    UQListPanel::mf_deleteImageList(list());
    EXPECT_EQ(SendMessageW(list(), LVM_GETIMAGELIST, LVSIL_SMALL, 0), 0);
}

// --- items --------------------------------------------------------------------------------------------

TEST_F(UQListPanelTest, TextsOfItemsAndSubItemsRoundTrip) {
    UQListPanel::mf_insertColumns(list(), columns({{L"Path", 100, 0}, {L"Size", 50, 1}}));
    insertItems(list(), 2);
    EXPECT_EQ(UQListPanel::mf_getCount(list()), 2);
    UQListPanel::mf_setText(L"\\\\srv\\share\\a.doc", list(), 1, 0);
    UQListPanel::mf_setText(L"1.5 MB", list(), 1, 1);
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_getText(list(), 1, 0), L"\\\\srv\\share\\a.doc");
    EXPECT_EQ(UQListPanel::mf_getText(list(), 1, 1), L"1.5 MB");
    EXPECT_EQ(UQListPanel::mf_getText(list(), 0, 0), L"item 0");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQListPanelTest, TextsAreReadUpTo511Characters) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 1);
    UQListPanel::mf_setText(CString(L'p', 600), list(), 0, 0);
    EXPECT_EQ(UQListPanel::mf_getText(list(), 0, 0), CString(L'p', 511));
}

TEST_F(UQListPanelTest, ReadingAnItemThatIsNotThereAnswersTheFailureText) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 1);
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_getText(list(), 5, 0), L"<Failure Getting Item>");
    const void* pData = UQListPanel::mf_getData(list(), 6);
    EXPECT_EQ(pData, static_cast<const void*>(UQListPanel::FAILURE_TEXT));
    EXPECT_STREQ(static_cast<const wchar_t*>(pData), L"<Failure Getting Item>");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQListPanel::mf_getText", "Failure getting item with index=5 from list"},
                  {'E', "UQListPanel::mf_getData", "Failure getting item with index=6 from list"}}));
}

TEST_F(UQListPanelTest, DataPointersTravelWithTheirItems) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 2);
    int first = 1;
    int second = 2;
    LogCheck log;
    UQListPanel::mf_setData(&first, list(), 0);
    UQListPanel::mf_setData(&second, list(), 1);
    EXPECT_EQ(UQListPanel::mf_getData(list(), 0), &first);
    EXPECT_EQ(UQListPanel::mf_getData(list(), 1), &second);
    UQListPanel::mf_setData(&first, list(), 4);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQListPanel::mf_setData", "Failure setting data pointer of item 4"}}));
}

TEST_F(UQListPanelTest, SetIconPicksTheImageAndItsFailureNamesTheImageIndex) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    UQListPanel::mf_createImageList(list());
    UQListPanel::mf_addIcon(list(), IDI_USER);
    UQListPanel::mf_addIcon(list(), IDI_SEVERITY_RED);
    insertItems(list(), 1);
    LogCheck log;
    UQListPanel::mf_setIcon(list(), 0, 1);
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_IMAGE;
    SendMessageW(list(), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(item.iImage, 1);
    UQListPanel::mf_setIcon(list(), 9, 3);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQListPanel::mf_setIcon", "Failure setting item to index=3"}}));
    UQListPanel::mf_deleteImageList(list());
}

// --- selection ----------------------------------------------------------------------------------------

TEST_F(UQListPanelTest, ExactlyOneSelectedItemIsTheSelectedIndex) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 3);
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_hasSelectedIndex(list()), 0);
    UQListPanel::mf_setSelectedIndex(list(), 2);
    EXPECT_EQ(UQListPanel::mf_hasSelectedIndex(list()), 1);
    EXPECT_EQ(UQListPanel::mf_getSelectedIndex(list()), 2);
    EXPECT_EQ(SendMessageW(list(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED), -1)
        << "selecting does not move the focus";
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQListPanelTest, TwoSelectedItemsAreNotExactlyOne) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 3);
    UQListPanel::mf_setSelectedIndex(list(), 0);
    UQListPanel::mf_setSelectedIndex(list(), 2);
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_getSelectedIndex(list()), -1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListPanel::mf_getSelectedIndex",
                                                  "Not exactly 1 list item selected"}}));
}

TEST_F(UQListPanelTest, NoSelectedItemIsNotExactlyOneEither) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 2);
    LogCheck log;
    EXPECT_EQ(UQListPanel::mf_getSelectedIndex(list()), -1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListPanel::mf_getSelectedIndex",
                                                  "Not exactly 1 list item selected"}}));
}

TEST_F(UQListPanelTest, SelectingMinusOneSelectsEveryItem) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    insertItems(list(), 4);
    UQListPanel::mf_setSelectedIndex(list(), -1);
    EXPECT_EQ(SendMessageW(list(), LVM_GETSELECTEDCOUNT, 0, 0), 4);
}

// --- keyboard -----------------------------------------------------------------------------------------

// The list panel's list as a keyboard user moves in it: the arrows, Home and End move the one selected
// row, and the selection that the panel reads is the one the keys made.
TEST_F(UQListPanelTest, ArrowsHomeAndEndMoveTheSelection) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    UQListPanel::mf_initFullRowSelect(list());
    insertItems(list(), 5);
    SetFocus(list());
    std::vector<std::vector<int>> seen;
    std::vector<int> indexes;
    for (WPARAM wKey : {VK_DOWN, VK_DOWN, VK_UP, VK_END, VK_HOME}) {
        pressInList(list(), wKey);
        seen.push_back(selectedRows(list()));
        indexes.push_back(UQListPanel::mf_getSelectedIndex(list()));
    }
    // The first Down lands on the first row: no row had the focus yet.
    EXPECT_EQ(seen, (std::vector<std::vector<int>>{{0}, {1}, {0}, {4}, {0}}));
    EXPECT_EQ(indexes, (std::vector<int>{0, 1, 0, 4, 0}));
    EXPECT_EQ(SendMessageW(list(), LVM_GETSELECTEDCOUNT, 0, 0), 1);
    EXPECT_EQ(focusedRow(list()), 0);
}

TEST_F(UQListPanelTest, ShiftWithTheArrowsExtendsTheSelectionAndAPlainArrowEndsIt) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    UQListPanel::mf_initFullRowSelect(list());
    insertItems(list(), 5);
    SetFocus(list());
    pressInList(list(), VK_HOME);
    pressInList(list(), VK_DOWN, true);
    pressInList(list(), VK_DOWN, true);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(SendMessageW(list(), LVM_GETSELECTEDCOUNT, 0, 0), 3);
    {
        LogCheck log;
        EXPECT_EQ(UQListPanel::mf_getSelectedIndex(list()), -1) << "three rows are not one";
        EXPECT_EQ(log.count(), 1u);
    }
    pressInList(list(), VK_UP, true);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{0, 1}));
    pressInList(list(), VK_END, true);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{0, 1, 2, 3, 4}));
    pressInList(list(), VK_UP);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{3}));
}

TEST_F(UQListPanelTest, CtrlWithTheArrowsMovesOnlyTheFocusAndCtrlSpaceTogglesARow) {
    UQListPanel::mf_insertColumn(list(), 0, L"Path", 100, 0);
    UQListPanel::mf_initFullRowSelect(list());
    insertItems(list(), 5);
    SetFocus(list());
    pressInList(list(), VK_HOME);
    pressInList(list(), VK_DOWN, false, true);
    pressInList(list(), VK_DOWN, false, true);
    EXPECT_EQ(focusedRow(list()), 2);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{0})) << "Ctrl moves the focus alone";
    pressInList(list(), VK_SPACE, false, true);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{0, 2}));
    pressInList(list(), VK_SPACE, false, true);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{0})) << "a second Ctrl+Space takes the row out again";
    pressInList(list(), VK_SPACE);
    EXPECT_EQ(selectedRows(list()), (std::vector<int>{2})) << "Space alone selects the focused row alone";
}

TEST_F(UQListPanelTest, CtrlAndAColumnsNumberNameThatColumnForSorting) {
    UQListPanel::mf_insertColumns(list(),
                                  columns({{L"Name", 120, LVCFMT_LEFT}, {L"Size", 60, LVCFMT_RIGHT}}));
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    std::vector<int> withCtrl;
    for (WORD wKey : std::vector<WORD>{'1', '2', '3', '9', '0', 'A', VK_DOWN})
        withCtrl.push_back(UQListPanel::mf_getSortColumnOfKey(list(), wKey));
    // Ctrl+Alt is AltGr, which types a character on many keyboards.
    keys[VK_MENU] = 0x80;
    SetKeyboardState(keys);
    const int nWithAltGr = UQListPanel::mf_getSortColumnOfKey(list(), '1');
    keys[VK_MENU] = 0;
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
    const int nWithoutCtrl = UQListPanel::mf_getSortColumnOfKey(list(), '1');
    EXPECT_EQ(withCtrl, (std::vector<int>{0, 1, -1, -1, -1, -1, -1}));
    EXPECT_EQ(nWithAltGr, -1);
    EXPECT_EQ(nWithoutCtrl, -1);
}

// --- styles -------------------------------------------------------------------------------------------

TEST_F(UQListPanelTest, FullRowSelectAndTooltipsSetTheirExtendedStyles) {
    UQListPanel::mf_initFullRowSelect(list());
    UQListPanel::mf_initTooltips(list(), 0x10000 + 700);
    const DWORD dwStyles = static_cast<DWORD>(SendMessageW(list(), LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0));
    EXPECT_NE(dwStyles & LVS_EX_FULLROWSELECT, 0u);
    EXPECT_NE(dwStyles & LVS_EX_INFOTIP, 0u);
    EXPECT_NE(dwStyles & LVS_EX_LABELTIP, 0u);
    HWND hTooltip = reinterpret_cast<HWND>(SendMessageW(list(), LVM_GETTOOLTIPS, 0, 0));
    ASSERT_NE(hTooltip, nullptr);
    // Only the low 16 bits of the delay count.
    EXPECT_EQ(SendMessageW(hTooltip, TTM_GETDELAYTIME, TTDT_INITIAL, 0), 700);
}
