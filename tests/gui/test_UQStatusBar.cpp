// The status bar in a real dialog: parts laid out by percentages on a bar of a known width, owner drawing
// into a memory DC, right clicks inside and outside the drawn parts, the context menus taken from the
// container's submenus by title, updates, and the items the bar owns.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQStatusBar.h"
#include "korlang_ids.h"

#include <memory>
#include <string>
#include <vector>

using namespace toolkittest;

namespace {

const std::string TAB = "    ";
const char* const SET_PARTS = "UQStatusBar::mf_implSetStatusBarParts";

// An item as a program derives it: a name, an update that counts (or fails), and a note when deleted.
class TestItem : public UQStatusBarItem {
public:
    TestItem(unsigned long _ulWidth, const wchar_t* _pszName, std::vector<std::string>* _pDeleted = nullptr)
        : UQStatusBarItem(_ulWidth), m_sName(_pszName), m_pDeleted(_pDeleted) {}
    ~TestItem() override {
        if (m_pDeleted != nullptr)
            m_pDeleted->push_back(utf8(m_sName));
    }
    CString mf_getName() const override { return m_sName; }
    void mf_update() override {
        ++m_nUpdates;
        if (m_bFail)
            throw UQErrno(UQErrno::_E_::File);
    }

    CString m_sName;
    std::vector<std::string>* m_pDeleted;
    int m_nUpdates = 0;
    bool m_bFail = false;
};

// The dialog with its bar, 600 pixels wide.
class StatusDialog {
public:
    explicit StatusDialog(UQStatusBar& _bar, bool _bMenus = true) : m_bar(_bar) {
        initCommonControls();
        m_hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                    toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&_bar));
        EXPECT_NE(m_hDlg, nullptr);
        m_hMenus =
            _bMenus ? LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_STATUS_MENUS)) : nullptr;
        EXPECT_EQ(_bar.mf_onInitDialog(m_hDlg, m_hMenus), 1);
        ShowWindow(m_hDlg, SW_SHOW);
        setClientSize(m_hDlg, 600, 200);
        pumpMessages();
    }
    ~StatusDialog() { DestroyWindow(m_hDlg); }
    StatusDialog(const StatusDialog&) = delete;
    StatusDialog& operator=(const StatusDialog&) = delete;

    std::vector<int> edges() const {
        HWND hBar = m_bar.mf_getWindowHandle();
        const int nParts = static_cast<int>(SendMessageW(hBar, SB_GETPARTS, 0, 0));
        std::vector<int> edges(static_cast<std::size_t>(nParts), 0);
        SendMessageW(hBar, SB_GETPARTS, static_cast<WPARAM>(nParts), reinterpret_cast<LPARAM>(edges.data()));
        return edges;
    }
    int barWidth() const {
        RECT rc;
        GetClientRect(m_bar.mf_getWindowHandle(), &rc);
        return rc.right - rc.left;
    }

    UQStatusBar& m_bar;
    HWND m_hDlg = nullptr;
    HMENU m_hMenus = nullptr;
};

// A memory DC with a white 300x24 bitmap to draw one part into.
class Canvas {
public:
    Canvas() {
        HDC hScreen = GetDC(nullptr);
        m_hDC = CreateCompatibleDC(hScreen);
        m_hBitmap = CreateCompatibleBitmap(hScreen, WIDTH, HEIGHT);
        ReleaseDC(nullptr, hScreen);
        m_hOld = SelectObject(m_hDC, m_hBitmap);
        RECT rc = {0, 0, WIDTH, HEIGHT};
        FillRect(m_hDC, &rc, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    }
    ~Canvas() {
        SelectObject(m_hDC, m_hOld);
        DeleteObject(m_hBitmap);
        DeleteDC(m_hDC);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // Pixels that are not white in the rectangle.
    int inked(int _nLeft, int _nTop, int _nRight, int _nBottom) const {
        int n = 0;
        for (int y = _nTop; y < _nBottom; ++y)
            for (int x = _nLeft; x < _nRight; ++x)
                n += GetPixel(m_hDC, x, y) != RGB(255, 255, 255) ? 1 : 0;
        return n;
    }

    static const int WIDTH = 300;
    static const int HEIGHT = 24;
    HDC m_hDC;
    HBITMAP m_hBitmap;
    HGDIOBJ m_hOld;
};

DRAWITEMSTRUCT drawItem(HDC _hDC, UINT _uItem, RECT _rc) {
    DRAWITEMSTRUCT dis;
    ZeroMemory(&dis, sizeof dis);
    dis.CtlType = ODT_STATIC;
    dis.CtlID = UQStatusBar::CONTROL_ID;
    dis.itemID = _uItem;
    dis.hDC = _hDC;
    dis.rcItem = _rc;
    return dis;
}

} // namespace

TEST(UQStatusBar, ThirtyThirtyFortyOnASixHundredPixelBar) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(30, L"Files"));
    bar.mf_addItem(new TestItem(30, L"Selection"));
    bar.mf_addItem(new TestItem(40, L"Store"));
    StatusDialog dialog(bar);
    ASSERT_EQ(dialog.barWidth(), 600);
    EXPECT_EQ(dialog.edges(), (std::vector<int>{180, 360, -1}));
    EXPECT_EQ(GetDlgCtrlID(bar.mf_getWindowHandle()), 1039);
    EXPECT_GT(bar.mf_getWindowHeight(), 0);
}

TEST(UQStatusBar, FiftyAndFortyNineReachTheRightEdge) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(50, L"Files"));
    bar.mf_addItem(new TestItem(49, L"Store"));
    StatusDialog dialog(bar);
    EXPECT_EQ(dialog.edges(), (std::vector<int>{300, -1}));
}

TEST(UQStatusBar, SixtyAndFiftyWarnAboutTheSecondItem) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(60, L"Files"));
    bar.mf_addItem(new TestItem(50, L"Store"));
    StatusDialog dialog(bar);
    LogCheck log;
    bar.mf_onSizeEvent(600, 200);
    EXPECT_EQ(dialog.edges()[0], 360);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', SET_PARTS, "Statusbar item 1 width exceeds total width (110%)"}}));
}

TEST(UQStatusBar, WidthsOfZeroAndTwoHundredPercent) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(0, L"Empty"));
    bar.mf_addItem(new TestItem(200, L"Wide"));
    StatusDialog dialog(bar);
    LogCheck log;
    bar.mf_onSizeEvent(600, 200);
    EXPECT_EQ(dialog.edges()[0], 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', SET_PARTS, "Statusbar item 1 width exceeds total width (200%)"}}));
}

TEST(UQStatusBar, EachItemGetsTheSubmenuTitledWithItsIndex) {
    UQStatusBar bar;
    TestItem* pFiles = new TestItem(30, L"Files");
    TestItem* pSelection = new TestItem(30, L"Selection");
    TestItem* pStore = new TestItem(40, L"Store");
    bar.mf_addItem(pFiles);
    bar.mf_addItem(pSelection);
    bar.mf_addItem(pStore);
    StatusDialog dialog(bar);
    // Parts are hit only once drawn.
    Canvas canvas;
    const RECT parts[] = {{0, 0, 180, 20}, {180, 0, 360, 20}, {360, 0, 600, 20}};
    for (UINT i = 0; i < 3; ++i)
        EXPECT_EQ(bar.mf_onDrawItem(drawItem(canvas.m_hDC, i, parts[i])), 1);
    LogCheck log;
    EXPECT_EQ(bar.mf_getContextMenu(10, 10), nullptr);
    HMENU hSelection = bar.mf_getContextMenu(200, 10);
    ASSERT_NE(hSelection, nullptr);
    EXPECT_EQ(GetMenuItemID(hSelection, 0), static_cast<UINT>(IDM_STATUS_REFRESH));
    HMENU hStore = bar.mf_getContextMenu(500, 10);
    ASSERT_NE(hStore, nullptr);
    EXPECT_EQ(GetMenuItemID(hStore, 0), static_cast<UINT>(IDM_STATUS_SERVER));
    // Item 0 has no menu: its record is written, and nothing is answered.
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "UQStatusBarItem::mf_onContextMenu", "Files: Context menu ..."},
                                    {'G', "UQStatusBarItem::mf_onContextMenu", "Selection: Context menu ..."},
                                    {'G', "UQStatusBarItem::mf_onContextMenu", "Store: Context menu ..."}}));
}

TEST(UQStatusBar, ANewItemCannotBeHitBeforeItIsDrawn) {
    TestItem item(100, L"Files");
    item.mf_onInitDialog(nullptr, CreatePopupMenu());
    LogCheck log;
    EXPECT_EQ(item.mf_getContextMenu(0, 0), nullptr);
    EXPECT_EQ(item.mf_getContextMenu(10, 10), nullptr);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQStatusBar, ARightClickOutsideEveryDrawnItemAnswersNoMenuAndNoRecord) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(50, L"Files"));
    bar.mf_addItem(new TestItem(50, L"Store"));
    StatusDialog dialog(bar);
    // The bar has drawn its parts by now: their rectangles are kept.
    LogCheck log;
    EXPECT_EQ(bar.mf_getContextMenu(700, 10), nullptr);
    EXPECT_EQ(bar.mf_getContextMenu(400, 30), nullptr);
    EXPECT_EQ(bar.mf_getContextMenu(-5, 10), nullptr);
    EXPECT_EQ(log.count(), 0u);
    EXPECT_NE(bar.mf_getContextMenu(400, 10), nullptr);
}

TEST(UQStatusBar, ADisabledContextMenuIsLoggedAndNotAnswered) {
    UQStatusBar bar;
    TestItem* pFiles = new TestItem(50, L"Files");
    bar.mf_addItem(new TestItem(50, L"Store"));
    bar.mf_addItem(pFiles);
    StatusDialog dialog(bar);
    Canvas canvas;
    bar.mf_onDrawItem(drawItem(canvas.m_hDC, 1, RECT{300, 0, 600, 20}));
    pFiles->mf_enableContextMenu(0);
    LogCheck log;
    EXPECT_EQ(bar.mf_getContextMenu(400, 10), nullptr);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'G', "UQStatusBarItem::mf_onContextMenu",
                                                  "Files: Context menu is disabled"}}));
}

TEST(UQStatusBar, WithoutAContainerOrItsSubmenusNoItemHasAMenu) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(50, L"Files"));
    bar.mf_addItem(new TestItem(50, L"Store"));
    StatusDialog dialog(bar, false);
    Canvas canvas;
    bar.mf_onDrawItem(drawItem(canvas.m_hDC, 1, RECT{300, 0, 600, 20}));
    EXPECT_EQ(bar.mf_getContextMenu(400, 10), nullptr);

    UQStatusBar emptyMenus;
    emptyMenus.mf_addItem(new TestItem(100, L"Files"));
    initCommonControls();
    HWND hDlg =
        CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                           toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&emptyMenus));
    emptyMenus.mf_onInitDialog(hDlg, CreatePopupMenu());
    emptyMenus.mf_onDrawItem(drawItem(canvas.m_hDC, 0, RECT{0, 0, 600, 20}));
    EXPECT_EQ(emptyMenus.mf_getContextMenu(10, 10), nullptr);
    DestroyWindow(hDlg);
}

TEST(UQStatusBar, AnItemDrawsItsIconAndTextAndKeepsItsRectangle) {
    UQStatusBar bar;
    TestItem* pFiles = new TestItem(100, L"Files");
    bar.mf_addItem(pFiles);
    StatusDialog dialog(bar);
    pFiles->mf_updateContent(languageIcon(IDI_SEVERITY_GREEN, 16), L"1 234 files found");
    Canvas canvas;
    const RECT rc = {0, 0, Canvas::WIDTH, 20};
    SetTextColor(canvas.m_hDC, RGB(0, 0, 0));
    EXPECT_EQ(bar.mf_onDrawItem(drawItem(canvas.m_hDC, 0, rc)), 1);
    EXPECT_EQ(canvas.inked(0, 0, 6, 20), 0);
    EXPECT_GT(canvas.inked(6, 1, 22, 17), 20);
    EXPECT_EQ(canvas.inked(22, 0, 28, 20), 0);
    EXPECT_GT(canvas.inked(28, 0, Canvas::WIDTH, 20), 20);
    const RECT kept = pFiles->mf_getRectangle();
    EXPECT_TRUE(EqualRect(&kept, &rc));
}

TEST(UQStatusBar, AnItemStartsWithItsPlaceholderText) {
    UQStatusBar bar;
    TestItem* pFiles = new TestItem(100, L"Files");
    bar.mf_addItem(pFiles);
    StatusDialog dialog(bar);
    Canvas first;
    bar.mf_onDrawItem(drawItem(first.m_hDC, 0, RECT{0, 0, Canvas::WIDTH, 20}));
    // "<not-initialized>" is drawn, and no icon.
    EXPECT_EQ(first.inked(6, 1, 22, 17), 0);
    EXPECT_GT(first.inked(28, 0, Canvas::WIDTH, 20), 20);
}

TEST(UQStatusBar, DrawItemOfAnotherControlIsNotTheBars) {
    UQStatusBar bar;
    bar.mf_addItem(new TestItem(100, L"Files"));
    StatusDialog dialog(bar);
    Canvas canvas;
    DRAWITEMSTRUCT dis = drawItem(canvas.m_hDC, 0, RECT{0, 0, 100, 20});
    dis.CtlID = 1040;
    EXPECT_EQ(bar.mf_onDrawItem(dis), 0);
    EXPECT_EQ(canvas.inked(0, 0, Canvas::WIDTH, Canvas::HEIGHT), 0);
    EXPECT_EQ(thrownCategory([&] {
                  bar.mf_onDrawItem(drawItem(canvas.m_hDC, 1, RECT{0, 0, 100, 20}));
              }),
              "other exception");
}

TEST(UQStatusBar, TheBarsOwnDrawingReachesTheItems) {
    UQStatusBar bar;
    TestItem* pFiles = new TestItem(100, L"Files");
    bar.mf_addItem(pFiles);
    StatusDialog dialog(bar);
    RedrawWindow(bar.mf_getWindowHandle(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    pumpMessages();
    // The control asked its parent to draw the part: the item kept the part's rectangle.
    const RECT kept = pFiles->mf_getRectangle();
    EXPECT_GT(kept.right, kept.left);
}

TEST(UQStatusBar, UpdateReachesEveryItemAndLogsAFailingOne) {
    UQStatusBar bar;
    TestItem* pFiles = new TestItem(30, L"Files");
    TestItem* pFailing = new TestItem(30, L"Failing");
    TestItem* pStore = new TestItem(40, L"Store");
    pFailing->m_bFail = true;
    bar.mf_addItem(pFiles);
    bar.mf_addItem(pFailing);
    bar.mf_addItem(pStore);
    StatusDialog dialog(bar);
    LogCheck log;
    bar.mf_update();
    EXPECT_EQ(pFiles->m_nUpdates, 1);
    EXPECT_EQ(pFailing->m_nUpdates, 1);
    EXPECT_EQ(pStore->m_nUpdates, 1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQStatusBar::mf_update",
                                                  "Failure updating item 1 (Failing):\r\n" + TAB +
                                                      errorText(UQErrno::_E_::File, 0)}}));
}

TEST(UQStatusBar, ANullItemIsRefused) {
    UQStatusBar bar;
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { bar.mf_addItem(nullptr); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQStatusBar::mf_addItem", "NULL == _pStatusBarItem"}}));
}

TEST(UQStatusBar, ABarWithoutItemsKeepsOnePartAndLogsTheRefusedLayoutWithoutItsError) {
    UQStatusBar bar;
    LogCheck log;
    {
        StatusDialog dialog(bar);
        ASSERT_NE(bar.mf_getWindowHandle(), nullptr);
        bar.mf_update();
        EXPECT_EQ(bar.mf_getContextMenu(10, 10), nullptr);
        // The control refuses a layout of no parts and keeps its one part.
        EXPECT_EQ(dialog.edges().size(), 1u);
    }
    // Once when the bar is made, once when the dialog is sized; the record ends with its line break.
    const LogLine refused{'G', SET_PARTS, "Failure setting parts:\r\n"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{refused, refused}));
}

TEST(UQStatusBar, TheBarDeletesItsItemsInOrderAndItsMenuContainer) {
    std::vector<std::string> deleted;
    HMENU hMenus = nullptr;
    {
        UQStatusBar bar;
        bar.mf_addItem(new TestItem(30, L"Files", &deleted));
        bar.mf_addItem(new TestItem(30, L"Selection", &deleted));
        bar.mf_addItem(new TestItem(40, L"Store", &deleted));
        StatusDialog dialog(bar);
        hMenus = dialog.m_hMenus;
        {
            // A copy works on the same bar and deletes nothing.
            UQStatusBar copy(bar);
            EXPECT_EQ(copy.mf_getWindowHandle(), bar.mf_getWindowHandle());
        }
        EXPECT_TRUE(deleted.empty());
        EXPECT_TRUE(IsMenu(hMenus));
    }
    EXPECT_EQ(deleted, (std::vector<std::string>{"Files", "Selection", "Store"}));
    EXPECT_FALSE(IsMenu(hMenus));
}
