// The owner-drawn status bar in high-contrast colour sets (white on black, black on white): every pixel of
// each part outside its icon and text is one of the current system colours, and the text is drawn in the
// system's button text colour. Wine answers SPI_SETHIGHCONTRAST with error 1439 and SPI_GETHIGHCONTRAST
// always with "off", so the colours are switched with SetSysColors, which Wine follows as Windows does; the
// colours are restored afterwards.
#include "Screenshot.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQStatusBar.h"
#include "korlang_ids.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <uxtheme.h>

#include <cstdio>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

// The colours a high-contrast set changes, and the ones the bar's frame may use.
const int CHANGED[] = {COLOR_BTNFACE, COLOR_BTNTEXT, COLOR_3DSHADOW,   COLOR_3DHILIGHT, COLOR_3DDKSHADOW,
                       COLOR_3DLIGHT, COLOR_WINDOW,  COLOR_WINDOWTEXT, COLOR_GRAYTEXT,  COLOR_WINDOWFRAME};

// Puts back the colours in use before, also when a check fails.
class SystemColours {
public:
    SystemColours() {
        for (int nIndex : CHANGED)
            m_before.push_back(GetSysColor(nIndex));
    }
    ~SystemColours() { SetSysColors(static_cast<int>(m_before.size()), CHANGED, m_before.data()); }
    SystemColours(const SystemColours&) = delete;
    SystemColours& operator=(const SystemColours&) = delete;

    void set(COLORREF _crText, COLORREF _crBack) {
        const COLORREF colours[] = {_crBack, _crText, _crText, _crText, _crText,
                                    _crBack, _crBack, _crText, _crText, _crText};
        ASSERT_TRUE(SetSysColors(static_cast<int>(std::size(CHANGED)), CHANGED, colours));
    }

private:
    std::vector<COLORREF> m_before;
};

// The bar as drawn on the screen, pixel by pixel (0x00BBGGRR), row after row.
std::vector<COLORREF> pixelsOf(HWND _hBar, int _nWidth, int _nHeight) {
    std::vector<std::uint8_t> rgb;
    std::vector<COLORREF> pixels;
    if (!screenshot::captureClient(_hBar, RECT{0, 0, _nWidth, _nHeight}, rgb))
        return pixels;
    for (std::size_t i = 0; i + 2 < rgb.size(); i += 3)
        pixels.push_back(RGB(rgb[i], rgb[i + 1], rgb[i + 2]));
    return pixels;
}

std::string hex(COLORREF _cr) {
    char szText[16];
    std::snprintf(szText, sizeof szText, "%06lx", static_cast<unsigned long>(_cr));
    return szText;
}

} // namespace

TEST(StatusBarColours, InHighContrastEveryPixelOutsideIconAndTextIsASystemColourAndTheTextIsTheSystemText) {
    toolkittest::initCommonControls();
    SystemColours colours;
    UQStatusBar bar;
    toolkittest::NamedStatusItem* pFiles = new toolkittest::NamedStatusItem(40, L"Files");
    toolkittest::NamedStatusItem* pStore = new toolkittest::NamedStatusItem(60, L"Store");
    bar.mf_addItem(pFiles);
    bar.mf_addItem(pStore);
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                   toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&bar));
    ASSERT_NE(hDlg, nullptr);
    bar.mf_onInitDialog(hDlg, nullptr);
    pFiles->mf_updateContent(toolkittest::languageIcon(IDI_SEVERITY_GREEN, 16), L"1 234 files");
    pStore->mf_updateContent(toolkittest::languageIcon(IDI_BLANK, 16), L"Store: history.kst");
    ShowWindow(hDlg, SW_SHOW);
    toolkittest::setClientSize(hDlg, 500, 100);
    toolkittest::pumpMessages();
    HWND hBar = bar.mf_getWindowHandle();
    // Windows draws without visual styles in high contrast; Wine 8 keeps its theme (whose colours are no
    // system colours) unless the window is told to do without.
    ASSERT_EQ(SetWindowTheme(hBar, L" ", L" "), S_OK);
    RECT rcBar;
    GetClientRect(hBar, &rcBar);
    HFONT hFont = reinterpret_cast<HFONT>(SendMessageW(hBar, WM_GETFONT, 0, 0));

    const struct {
        const char* pszName;
        COLORREF crText;
        COLORREF crBack;
    } sets[] = {{"white on black", RGB(255, 255, 255), RGB(0, 0, 0)},
                {"black on white", RGB(0, 0, 0), RGB(255, 255, 255)}};
    for (const auto& set : sets) {
        SCOPED_TRACE(set.pszName);
        colours.set(set.crText, set.crBack);
        toolkittest::pumpMessages();
        std::set<COLORREF> system;
        for (int nIndex = 0; nIndex <= COLOR_MENUBAR; ++nIndex)
            system.insert(GetSysColor(nIndex));
        const std::vector<COLORREF> pixels = pixelsOf(hBar, rcBar.right, rcBar.bottom);
        ASSERT_EQ(pixels.size(), static_cast<std::size_t>(rcBar.right * rcBar.bottom));
        const wchar_t* const texts[] = {L"1 234 files", L"Store: history.kst"};
        const toolkittest::NamedStatusItem* const items[] = {pFiles, pStore};
        for (int nPart = 0; nPart < 2; ++nPart) {
            // The part as its item last drew it (WM_DRAWITEM's rectangle, inside the part's border).
            const RECT rcPart = items[nPart]->mf_getRectangle();
            ASSERT_GT(rcPart.right, rcPart.left);
            const RECT rcIcon = {rcPart.left + 6, rcPart.top + 1, rcPart.left + 22, rcPart.top + 17};
            HDC hDC = GetDC(hBar);
            HGDIOBJ hOld = SelectObject(hDC, hFont);
            RECT rcText = {rcPart.left + 28, rcPart.top, rcPart.right, rcPart.bottom};
            DrawTextW(hDC, texts[nPart], -1, &rcText, DT_SINGLELINE | DT_VCENTER | DT_CALCRECT);
            SelectObject(hDC, hOld);
            ReleaseDC(hBar, hDC);
            // DT_CALCRECT keeps the top: the drawn line is centred in the part.
            const int nLine = rcText.bottom - rcText.top;
            rcText.top = rcPart.top + (rcPart.bottom - rcPart.top - nLine) / 2 - 1;
            rcText.bottom = rcText.top + nLine + 2;
            int nOther = 0;
            int nTextPixels = 0;
            std::string sFirstOther;
            for (int y = rcPart.top; y < rcPart.bottom; ++y) {
                for (int x = rcPart.left; x < rcPart.right; ++x) {
                    const POINT point = {x, y};
                    const COLORREF cr = pixels[static_cast<std::size_t>(y * rcBar.right + x)];
                    if (PtInRect(&rcIcon, point))
                        continue;
                    if (PtInRect(&rcText, point)) {
                        nTextPixels += cr == GetSysColor(COLOR_BTNTEXT) ? 1 : 0;
                        continue;
                    }
                    if (system.count(cr) == 0 && nOther++ == 0)
                        sFirstOther = hex(cr) + " at " + std::to_string(x) + "," + std::to_string(y);
                }
            }
            EXPECT_EQ(nOther, 0) << "part " << nPart << ": pixels in no system colour, the first "
                                 << sFirstOther;
            EXPECT_GT(nTextPixels, 20) << "part " << nPart << ": the text is not in the system's text colour";
        }
    }
    DestroyWindow(hDlg);
}
