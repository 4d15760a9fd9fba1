// What a screen reader learns of the owner-drawn status bar: its own IAccessible through WM_GETOBJECT
// (role status bar, one child per part named by the part's text, the parts' places), and a name-change
// event when a part shows another text. Wine hands the bar's own object back from
// AccessibleObjectFromWindow and delivers NotifyWinEvent to SetWinEventHook, as Windows does; what Windows'
// readers then make of it (speech, UI Automation's bridge) is not there under Wine.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQStatusBar.h"
#include "korlang_ids.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <oleacc.h>

#include <string>
#include <vector>

namespace {

VARIANT child(long _lId) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_I4;
    value.lVal = _lId;
    return value;
}

std::string nameOf(IAccessible* _pAccessible, long _lChild) {
    BSTR bsName = nullptr;
    if (_pAccessible->get_accName(child(_lChild), &bsName) != S_OK || bsName == nullptr)
        return "(no name)";
    const std::string sName = utf8(CString(bsName));
    SysFreeString(bsName);
    return sName;
}

long roleOf(IAccessible* _pAccessible, long _lChild) {
    VARIANT role;
    VariantInit(&role);
    return _pAccessible->get_accRole(child(_lChild), &role) == S_OK && role.vt == VT_I4 ? role.lVal : -1;
}

struct Event {
    HWND hWnd;
    LONG lObject;
    LONG lChild;
};
std::vector<Event> g_events;

void CALLBACK noteEvent(HWINEVENTHOOK, DWORD, HWND _hWnd, LONG _lObject, LONG _lChild, DWORD, DWORD) {
    g_events.push_back({_hWnd, _lObject, _lChild});
}

class StatusBarAccessible : public ::testing::Test {
protected:
    void SetUp() override {
        toolkittest::initCommonControls();
        m_pFiles = new toolkittest::NamedStatusItem(40, L"Files");
        m_pStore = new toolkittest::NamedStatusItem(60, L"Store");
        m_bar.mf_addItem(m_pFiles);
        m_bar.mf_addItem(m_pStore);
        m_hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                    toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&m_bar));
        ASSERT_NE(m_hDlg, nullptr);
        m_bar.mf_onInitDialog(m_hDlg, nullptr);
        m_pFiles->mf_updateContent(toolkittest::languageIcon(IDI_SEVERITY_GREEN, 16), L"1 234 files");
        m_pStore->mf_updateContent(nullptr, L"Store: R&D.kst");
        ShowWindow(m_hDlg, SW_SHOW);
        toolkittest::setClientSize(m_hDlg, 500, 100);
        toolkittest::pumpMessages();
    }
    void TearDown() override {
        if (m_hDlg != nullptr)
            DestroyWindow(m_hDlg);
    }

    UQStatusBar m_bar;
    toolkittest::NamedStatusItem* m_pFiles = nullptr;
    toolkittest::NamedStatusItem* m_pStore = nullptr;
    HWND m_hDlg = nullptr;
};

} // namespace

TEST_F(StatusBarAccessible, TheBarAnswersWithItsRoleOneNamedChildPerPartAndTheirPlaces) {
    HWND hBar = m_bar.mf_getWindowHandle();
    IAccessible* pAccessible = nullptr;
    ASSERT_EQ(AccessibleObjectFromWindow(hBar, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                         reinterpret_cast<void**>(&pAccessible)),
              S_OK);
    ASSERT_NE(pAccessible, nullptr);
    long lCount = 0;
    EXPECT_EQ(pAccessible->get_accChildCount(&lCount), S_OK);
    EXPECT_EQ(lCount, 2);
    EXPECT_EQ(roleOf(pAccessible, CHILDID_SELF), ROLE_SYSTEM_STATUSBAR);
    EXPECT_EQ(roleOf(pAccessible, 1), ROLE_SYSTEM_STATICTEXT);
    EXPECT_EQ(nameOf(pAccessible, 1), "1 234 files");
    EXPECT_EQ(nameOf(pAccessible, 2), "Store: R&D.kst") << "a text, not an access key";
    VARIANT none = child(3);
    BSTR bsName = nullptr;
    EXPECT_EQ(pAccessible->get_accName(none, &bsName), E_INVALIDARG) << "there is no third part";
    // The second part's place on the screen, and a point in it names it.
    RECT rcPart;
    SendMessageW(hBar, SB_GETRECT, 1, reinterpret_cast<LPARAM>(&rcPart));
    MapWindowPoints(hBar, nullptr, reinterpret_cast<POINT*>(&rcPart), 2);
    long lLeft = 0;
    long lTop = 0;
    long lWidth = 0;
    long lHeight = 0;
    EXPECT_EQ(pAccessible->accLocation(&lLeft, &lTop, &lWidth, &lHeight, child(2)), S_OK);
    EXPECT_EQ(lLeft, rcPart.left);
    EXPECT_EQ(lTop, rcPart.top);
    EXPECT_EQ(lWidth, rcPart.right - rcPart.left);
    EXPECT_EQ(lHeight, rcPart.bottom - rcPart.top);
    VARIANT hit;
    VariantInit(&hit);
    EXPECT_EQ(
        pAccessible->accHitTest((rcPart.left + rcPart.right) / 2, (rcPart.top + rcPart.bottom) / 2, &hit),
        S_OK);
    EXPECT_EQ(hit.vt, VT_I4);
    EXPECT_EQ(hit.lVal, 2);
    pAccessible->Release();
}

TEST_F(StatusBarAccessible, ANewTextRaisesANameChangeForItsPartAndTheSameTextNone) {
    HWINEVENTHOOK hHook = SetWinEventHook(EVENT_OBJECT_NAMECHANGE, EVENT_OBJECT_NAMECHANGE, nullptr,
                                          noteEvent, GetCurrentProcessId(), 0, WINEVENT_OUTOFCONTEXT);
    ASSERT_NE(hHook, nullptr);
    g_events.clear();
    m_pStore->mf_updateContent(nullptr, L"Store: other.kst");
    m_pStore->mf_updateContent(nullptr, L"Store: other.kst");
    // Out-of-context events arrive as messages: take them in, at most two seconds.
    HWND hBar = m_bar.mf_getWindowHandle();
    const ULONGLONG uDeadline = GetTickCount64() + 2000;
    const auto fromBar = [hBar] {
        int nCount = 0;
        for (const Event& event : g_events)
            nCount += event.hWnd == hBar ? 1 : 0;
        return nCount;
    };
    while (fromBar() == 0 && GetTickCount64() < uDeadline) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        toolkittest::pumpMessages();
    }
    toolkittest::pumpMessages();
    UnhookWinEvent(hHook);
    ASSERT_EQ(fromBar(), 1) << "one event for one change";
    for (const Event& event : g_events) {
        if (event.hWnd != hBar)
            continue;
        EXPECT_EQ(event.lObject, OBJID_CLIENT);
        EXPECT_EQ(event.lChild, 2);
    }
    IAccessible* pAccessible = nullptr;
    ASSERT_EQ(AccessibleObjectFromWindow(hBar, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                         reinterpret_cast<void**>(&pAccessible)),
              S_OK);
    EXPECT_EQ(nameOf(pAccessible, 2), "Store: other.kst");
    pAccessible->Release();
}

TEST_F(StatusBarAccessible, AnObjectKeptAfterTheBarIsGoneFailsInsteadOfReadingFreedItems) {
    IAccessible* pAccessible = nullptr;
    ASSERT_EQ(AccessibleObjectFromWindow(m_bar.mf_getWindowHandle(), static_cast<DWORD>(OBJID_CLIENT),
                                         __uuidof(IAccessible), reinterpret_cast<void**>(&pAccessible)),
              S_OK);
    DestroyWindow(m_hDlg);
    m_hDlg = nullptr;
    long lCount = -1;
    EXPECT_EQ(pAccessible->get_accChildCount(&lCount), E_FAIL);
    EXPECT_EQ(lCount, 0);
    EXPECT_EQ(nameOf(pAccessible, 1), "(no name)");
    pAccessible->Release();
}
