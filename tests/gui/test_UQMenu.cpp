// UQMenu on the test dialog's menu bar and on menus built item by item.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQMenu.h"

using namespace toolkittest;

namespace {

UINT stateOf(HMENU _hMenu, UINT _uId) {
    MENUITEMINFOW info;
    ZeroMemory(&info, sizeof info);
    info.cbSize = sizeof info;
    info.fMask = MIIM_STATE;
    GetMenuItemInfoW(_hMenu, _uId, FALSE, &info);
    return info.fState;
}

} // namespace

TEST(UQMenu, GetSubMenuByTitleFindsTheTopLevelPopup) {
    TestDialog dialog;
    HMENU hBar = GetMenu(dialog.hwnd());
    ASSERT_NE(hBar, nullptr);
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hBar, L"File"), GetSubMenu(hBar, 0));
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hBar, L"Edit"), GetSubMenu(hBar, 1));
}

TEST(UQMenu, GetSubMenuByTitleIsCaseSensitiveAndWholeText) {
    TestDialog dialog;
    HMENU hBar = GetMenu(dialog.hwnd());
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hBar, L"file"), nullptr);
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hBar, L"Fil"), nullptr);
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hBar, L"File "), nullptr);
}

TEST(UQMenu, GetSubMenuByTitleOfAPlainCommandAnswersNull) {
    TestDialog dialog;
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(GetMenu(dialog.hwnd()), L"Help"), nullptr);
}

TEST(UQMenu, GetSubMenuByTitleSearchesTheTopLevelOnly) {
    TestDialog dialog;
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(GetMenu(dialog.hwnd()), L"Open..."), nullptr);
}

TEST(UQMenu, GetSubMenuByTitleSkipsSeparatorsAndBitmapsAndTakesTheFirstMatch) {
    HMENU hMenu = CreateMenu();
    HMENU hFirst = CreatePopupMenu();
    HMENU hSecond = CreatePopupMenu();
    HBITMAP hBitmap = CreateBitmap(8, 8, 1, 1, nullptr);
    AppendMenuW(hMenu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(hMenu, MF_BITMAP, IDM_BITMAP, reinterpret_cast<LPCWSTR>(hBitmap));
    AppendMenuW(hMenu, MF_POPUP, reinterpret_cast<UINT_PTR>(hFirst), L"Tools");
    AppendMenuW(hMenu, MF_POPUP, reinterpret_cast<UINT_PTR>(hSecond), L"Tools");
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hMenu, L"Tools"), hFirst);
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hMenu, L"Window"), nullptr);
    DestroyMenu(hMenu);
    DeleteObject(hBitmap);
}

TEST(UQMenu, GetSubMenuByTitleOfAnEmptyMenuAnswersNull) {
    HMENU hMenu = CreateMenu();
    EXPECT_EQ(UQMenu::mf_getSubMenuByTitle(hMenu, L"File"), nullptr);
    DestroyMenu(hMenu);
}

TEST(UQMenu, SetItemEnabledGraysAndEnablesByCommand) {
    TestDialog dialog;
    HMENU hFile = GetSubMenu(GetMenu(dialog.hwnd()), 0);
    UQMenu::mf_setItemEnabled(hFile, IDM_OPEN, 0);
    EXPECT_NE(stateOf(hFile, IDM_OPEN) & MFS_GRAYED, 0u);
    UQMenu::mf_setItemEnabled(hFile, IDM_SAVE, 1);
    EXPECT_EQ(stateOf(hFile, IDM_SAVE) & MFS_GRAYED, 0u);
}

TEST(UQMenu, SetItemCheckedReplacesTheWholeStateClearingGrayed) {
    TestDialog dialog;
    HMENU hFile = GetSubMenu(GetMenu(dialog.hwnd()), 0);
    ASSERT_NE(stateOf(hFile, IDM_SAVE) & MFS_GRAYED, 0u);
    UQMenu::mf_setItemChecked(hFile, IDM_SAVE, 1);
    EXPECT_EQ(stateOf(hFile, IDM_SAVE), static_cast<UINT>(MFS_CHECKED));
    UQMenu::mf_setItemEnabled(hFile, IDM_SAVE, 0);
    UQMenu::mf_setItemChecked(hFile, IDM_SAVE, 0);
    EXPECT_EQ(stateOf(hFile, IDM_SAVE), 0u);
}

TEST(UQMenu, SetItemCheckedClearsTheDefaultState) {
    TestDialog dialog;
    HMENU hEdit = GetSubMenu(GetMenu(dialog.hwnd()), 1);
    SetMenuDefaultItem(hEdit, IDM_WRAP, FALSE);
    ASSERT_NE(stateOf(hEdit, IDM_WRAP) & MFS_DEFAULT, 0u);
    UQMenu::mf_setItemChecked(hEdit, IDM_WRAP, 1);
    EXPECT_EQ(stateOf(hEdit, IDM_WRAP), static_cast<UINT>(MFS_CHECKED));
}
