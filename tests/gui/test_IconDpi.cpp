// Icons are chosen for the DPI their window is drawn at: a message box's severity icon, the help dialog's
// icon and the user search's list images have the size of that DPI, and follow when the dialog is told of
// another DPI (Wine never sends WM_DPICHANGED; the test sends it as Windows would). access_tests runs this at
// 96 DPI, access_tests_dpi120/144/192 at the DPI their prefix starts with. An icon that is replaced, or
// whose dialog is gone, is destroyed: GetGuiResources answers 0 under Wine (Windows counts), so every icon
// handle seen is also asked whether it still names an icon.
#include "DialogDriver.h"
#include "PanelsTestSupport.h"
#include "ToolkitTestSupport.h"

#include "guibase/panels/UQSearchUserDialog.h"
#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQHelpDialog.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "korlang_ids.h"
#include "support/ScratchFile.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

using namespace toolkittest;

namespace {

const DWORD DIALOG_LIMIT_MS = 8000;

UINT systemDpi() {
    HDC hScreen = GetDC(nullptr);
    const int nDpi = GetDeviceCaps(hScreen, LOGPIXELSY);
    ReleaseDC(nullptr, hScreen);
    return static_cast<UINT>(nDpi);
}

// Windows' small icon at a DPI: 16 pixels at 96, scaled with the DPI.
int smallIconAt(UINT _uDpi) {
    return MulDiv(16, static_cast<int>(_uDpi), 96);
}

// The width and height of an icon's image; 0 when the handle names no icon (any longer).
SIZE iconSize(HICON _hIcon) {
    SIZE size = {0, 0};
    ICONINFO info = {};
    if (_hIcon == nullptr || !GetIconInfo(_hIcon, &info))
        return size;
    BITMAP bitmap = {};
    if (info.hbmColor != nullptr && GetObjectW(info.hbmColor, sizeof bitmap, &bitmap) != 0) {
        size = {bitmap.bmWidth, bitmap.bmHeight};
    } else if (GetObjectW(info.hbmMask, sizeof bitmap, &bitmap) != 0) {
        // A monochrome icon keeps its AND and XOR masks one above the other.
        size = {bitmap.bmWidth, bitmap.bmHeight / 2};
    }
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr)
        DeleteObject(info.hbmColor);
    return size;
}

bool isIcon(HICON _hIcon) {
    ICONINFO info = {};
    if (_hIcon == nullptr || !GetIconInfo(_hIcon, &info))
        return false;
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr)
        DeleteObject(info.hbmColor);
    return true;
}

// Tells the dialog of a new DPI as Windows does, with the rectangle Windows would suggest: the window
// scaled from its top left corner.
void changeDpi(HWND _hDlg, UINT _uFrom, UINT _uTo) {
    RECT rc;
    GetWindowRect(_hDlg, &rc);
    RECT rcSuggested = {
        rc.left, rc.top,
        rc.left + MulDiv(rc.right - rc.left, static_cast<int>(_uTo), static_cast<int>(_uFrom)),
        rc.top + MulDiv(rc.bottom - rc.top, static_cast<int>(_uTo), static_cast<int>(_uFrom))};
    SendMessageW(_hDlg, WM_DPICHANGED, MAKEWPARAM(_uTo, _uTo), reinterpret_cast<LPARAM>(&rcSuggested));
}

// What a static control showed at one DPI.
struct Shown {
    UINT uDpi;
    HICON hIcon;
    SIZE size;
    // Whether it was the same image as the language module's icon at that size, while it was shown.
    bool bLanguageIcon;
};

// The icon of a static control at the dialog's DPI, at twice and one and a half times that, and back.
std::vector<Shown> iconsAtChangingDpis(HWND _hDlg, int _nItem, WORD _wIconId) {
    const UINT uDpi = systemDpi();
    std::vector<Shown> shown;
    auto note = [&](UINT _uDpi) {
        const HICON hIcon = reinterpret_cast<HICON>(SendDlgItemMessageW(_hDlg, _nItem, STM_GETICON, 0, 0));
        const SIZE size = iconSize(hIcon);
        shown.push_back({_uDpi, hIcon, size, sameIcon(hIcon, languageIcon(_wIconId, size.cx))});
    };
    note(uDpi);
    UINT uFrom = uDpi;
    for (UINT uTo : {2 * uDpi, uDpi * 3 / 2, uDpi}) {
        changeDpi(_hDlg, uFrom, uTo);
        note(uTo);
        uFrom = uTo;
    }
    return shown;
}

void expectSmallIconsOfTheirDpi(const std::vector<Shown>& _shown, WORD _wIconId, const char* _pszWhere) {
    ASSERT_EQ(_shown.size(), 4u) << _pszWhere;
    for (std::size_t i = 0; i < _shown.size(); ++i) {
        const Shown& shown = _shown[i];
        ASSERT_NE(shown.hIcon, nullptr) << _pszWhere << " shows no icon at " << shown.uDpi << " DPI";
        EXPECT_EQ(shown.size.cx, smallIconAt(shown.uDpi)) << _pszWhere << " at " << shown.uDpi << " DPI";
        EXPECT_EQ(shown.size.cy, smallIconAt(shown.uDpi)) << _pszWhere << " at " << shown.uDpi << " DPI";
        // Where the icon file has an image of that size, it is that image.
        if (shown.size.cx == 16 || shown.size.cx == 32) {
            EXPECT_TRUE(shown.bLanguageIcon) << _pszWhere << " at " << shown.uDpi << " DPI";
        }
        if (i > 0) {
            EXPECT_NE(shown.hIcon, _shown[i - 1].hIcon) << _pszWhere << ": a new icon for a new DPI";
        }
    }
    std::printf("%s: icons of %ld, %ld, %ld and %ld px at %u, %u, %u and %u DPI\n", _pszWhere,
                _shown[0].size.cx, _shown[1].size.cx, _shown[2].size.cx, _shown[3].size.cx, _shown[0].uDpi,
                _shown[1].uDpi, _shown[2].uDpi, _shown[3].uDpi);
}

// Every icon but the last is gone once the next was shown; _bAll: the last is gone too (the dialog is).
void expectReplacedIconsDestroyed(const std::vector<Shown>& _shown, bool _bAll, const char* _pszWhere) {
    for (std::size_t i = 0; i < _shown.size(); ++i) {
        const bool bLast = i + 1 == _shown.size();
        if (!bLast || _bAll) {
            EXPECT_FALSE(isIcon(_shown[i].hIcon))
                << _pszWhere << ": the icon of " << _shown[i].uDpi << " DPI (no. " << i << ") is still there";
        }
    }
}

void showWarningBox() {
    UQMessageBox box(L"Migrate 12 files?", UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO,
                     L"Migration");
    box.mf_show(nullptr, 1);
}

} // namespace

TEST(IconDpi, AMessageBoxShowsItsIconAtTheSizeOfItsDpiAndFollowsANewDpi) {
    initCommonControls();
    std::vector<Shown> shown;
    bool bReplacedGone = false;
    DialogDriver driver(DIALOG_LIMIT_MS);
    driver.then([&](HWND _hDlg) {
        shown = iconsAtChangingDpis(_hDlg, IDC_MESSAGE_ICON, IDI_SEVERITY_YELLOW);
        bReplacedGone = shown.size() == 4 && !isIcon(shown[0].hIcon) && !isIcon(shown[1].hIcon) &&
                        !isIcon(shown[2].hIcon) && isIcon(shown[3].hIcon);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    showWarningBox();
    EXPECT_FALSE(driver.timedOut());
    expectSmallIconsOfTheirDpi(shown, IDI_SEVERITY_YELLOW, "message box");
    EXPECT_TRUE(bReplacedGone)
        << "while the box was open, each replaced icon was destroyed and the last shown";
    expectReplacedIconsDestroyed(shown, true, "message box");
}

TEST(IconDpi, TheHelpDialogsIconFollowsItsDpi) {
    initCommonControls();
    std::vector<Shown> shown;
    DialogDriver driver(DIALOG_LIMIT_MS);
    driver.then([&](HWND _hDlg) {
        shown = iconsAtChangingDpis(_hDlg, IDC_HELP_ICON, IDI_SEVERITY_GREEN);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    UQHelpDialog help(L"Help", L"Type a pattern.");
    help.mf_show(nullptr);
    EXPECT_FALSE(driver.timedOut());
    expectSmallIconsOfTheirDpi(shown, IDI_SEVERITY_GREEN, "help dialog");
    expectReplacedIconsDestroyed(shown, true, "help dialog");
}

TEST(IconDpi, TheUserSearchListsImagesFollowItsDpi) {
    initCommonControls();
    registrytest::RegistrySandbox sandbox;
    ScratchFile directory("icon-dpi-directory.txt", "controller\tDC01\tDC01\tprimary\n"
                                                    "user\tS-1-5-21-7-8-9-1001\tabc\tAlice Brown\n");
    panelstest::UseDirectoryFile use(directory.mf_getPath());
    const UINT uDpi = systemDpi();
    std::vector<int> sizes;
    std::vector<int> counts;
    DialogDriver driver(DIALOG_LIMIT_MS);
    driver.then([&](HWND _hDlg) {
        HWND hList = GetDlgItem(_hDlg, IDC_SEARCH_USER_LIST);
        auto note = [&] {
            HIMAGELIST hImages =
                reinterpret_cast<HIMAGELIST>(SendMessageW(hList, LVM_GETIMAGELIST, LVSIL_SMALL, 0));
            int cx = 0;
            int cy = 0;
            ImageList_GetIconSize(hImages, &cx, &cy);
            sizes.push_back(cx);
            counts.push_back(hImages != nullptr ? ImageList_GetImageCount(hImages) : -1);
        };
        note();
        changeDpi(_hDlg, uDpi, 2 * uDpi);
        note();
        changeDpi(_hDlg, 2 * uDpi, uDpi);
        note();
        PostMessageW(_hDlg, WM_COMMAND, IDCANCEL, 0);
    });
    UQSearchUserDialog dialog;
    dialog.mf_show(nullptr);
    EXPECT_FALSE(driver.timedOut());
    EXPECT_EQ(sizes, (std::vector<int>{smallIconAt(uDpi), smallIconAt(2 * uDpi), smallIconAt(uDpi)}));
    EXPECT_EQ(counts, (std::vector<int>{1, 1, 1})) << "the user icon is in the list at every DPI";
}

// Many boxes, each told of three DPIs: every icon one of them showed is destroyed by the time it is closed.
TEST(IconDpi, ManyBoxesAtChangingDpisLeaveNoIconBehind) {
    initCommonControls();
    const int BOXES = 40;
    // One box first, so that what the process sets up once (the language module, classes) is counted out.
    {
        DialogDriver driver(DIALOG_LIMIT_MS);
        driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_CLOSE, 0, 0); });
        showWarningBox();
    }
    const DWORD dwGdiBefore = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    const DWORD dwUserBefore = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    int nIcons = 0;
    int nLeft = 0;
    int nNull = 0;
    for (int i = 0; i < BOXES; ++i) {
        std::vector<Shown> shown;
        DialogDriver driver(DIALOG_LIMIT_MS);
        driver.then([&](HWND _hDlg) {
            shown = iconsAtChangingDpis(_hDlg, IDC_MESSAGE_ICON, IDI_SEVERITY_YELLOW);
            PostMessageW(_hDlg, WM_CLOSE, 0, 0);
        });
        showWarningBox();
        ASSERT_FALSE(driver.timedOut()) << "box " << i;
        for (const Shown& one : shown) {
            ++nIcons;
            nNull += one.hIcon == nullptr ? 1 : 0;
            nLeft += isIcon(one.hIcon) ? 1 : 0;
        }
    }
    const DWORD dwGdiAfter = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    const DWORD dwUserAfter = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    std::printf("%d boxes: %d icons shown, %d left; GDI objects %lu -> %lu, USER objects %lu -> %lu\n", BOXES,
                nIcons, nLeft, static_cast<unsigned long>(dwGdiBefore),
                static_cast<unsigned long>(dwGdiAfter), static_cast<unsigned long>(dwUserBefore),
                static_cast<unsigned long>(dwUserAfter));
    EXPECT_EQ(nIcons, BOXES * 4);
    EXPECT_EQ(nNull, 0);
    EXPECT_EQ(nLeft, 0);
    EXPECT_EQ(dwGdiAfter, dwGdiBefore);
    EXPECT_EQ(dwUserAfter, dwUserBefore);
}
