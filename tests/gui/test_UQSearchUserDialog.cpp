// The user search dialog driven as a user drives it: choose an authority, type a filter, list, sort,
// select, OK or Cancel; Enter in the filter; the authority remembered for the next time; tool tips; and
// authorities that do not answer, have no users, or are gone.
#include "DialogDriver.h"
#include "PanelsTestSupport.h"

#include "guibase/panels/UQSearchUserDialog.h"
#include "guibase/settings/RegistrySandbox.h"
#include "korlang_ids.h"

#include <algorithm>
#include <memory>

using namespace panelstest;
using registrytest::RegistrySandbox;
using toolkittest::itemText;
using toolkittest::pressInList;
using toolkittest::selectedRows;
using toolkittest::textOf;

namespace {

const char* const DIRECTORY = "# test domain\n"
                              "controller\tDC01\tDC01\tprimary\n"
                              "user\tS-1-5-21-7-8-9-1001\tabc\tAlice Brown\n"
                              "user\tS-1-5-21-7-8-9-1002\tABC\t-\n"
                              "user\tS-1-5-21-7-8-9-1003\tabcd\tArne Becker\n"
                              "user\tS-1-5-21-7-8-9-1004\tzoe\tZoe Young\n"
                              "user\tS-1-5-21-7-8-9-1005\tMike\tMike Reed\n"
                              "controller\tDC02\tDC02\t-\n"
                              "user\tS-1-5-21-7-8-9-2001\tbob\tBob King\n"
                              "controller\tDC03\tDC03\t-\n"
                              "silent\n"
                              "controller\tDC04\tDC04\t-\n";

const std::string START = "Choose where to search and press List to list the users.";
const char* const LIST = "UQQuotaPanel::mf_implOnUpdateList";

HWND item(HWND _hDlg, int _nId) {
    return GetDlgItem(_hDlg, _nId);
}

void chooseAuthority(HWND _hDlg, int _nIndex) {
    SendMessageW(item(_hDlg, IDC_SEARCH_USER_AUTHORITY), CB_SETCURSEL, static_cast<WPARAM>(_nIndex), 0);
    SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_SEARCH_USER_AUTHORITY, CBN_SELENDOK),
                 reinterpret_cast<LPARAM>(item(_hDlg, IDC_SEARCH_USER_AUTHORITY)));
}

void setFilter(HWND _hDlg, const wchar_t* _pszFilter) {
    SetWindowTextW(item(_hDlg, IDC_SEARCH_USER_FILTER), _pszFilter);
}

void pressList(HWND _hDlg) {
    SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_SEARCH_USER_LIST_BUTTON, BN_CLICKED),
                 reinterpret_cast<LPARAM>(item(_hDlg, IDC_SEARCH_USER_LIST_BUTTON)));
}

void selectRow(HWND _hDlg, int _nRow) {
    LVITEMW state;
    ZeroMemory(&state, sizeof state);
    state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    state.state = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(item(_hDlg, IDC_SEARCH_USER_LIST), LVM_SETITEMSTATE, static_cast<WPARAM>(_nRow),
                 reinterpret_cast<LPARAM>(&state));
}

bool visible(HWND _hDlg, int _nId) {
    return IsWindowVisible(item(_hDlg, _nId)) != FALSE;
}

bool enabled(HWND _hDlg, int _nId) {
    return IsWindowEnabled(item(_hDlg, _nId)) != FALSE;
}

std::string localName() {
    return utf8(UQDomain::mf_getLocalComputer()->mf_getName());
}

CString savedAuthority(const RegistrySandbox& _sandbox) {
    wchar_t szValue[256] = {};
    DWORD dwSize = sizeof szValue;
    if (RegGetValueW(_sandbox.user(), L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient",
                     L"SearchUserAuthority", RRF_RT_REG_SZ, nullptr, szValue, &dwSize) != ERROR_SUCCESS)
        return L"<none>";
    return szValue;
}

class UQSearchUserDialogTest : public ::testing::Test {
protected:
    void SetUp() override { toolkittest::initCommonControls(); }

    RegistrySandbox m_sandbox;
    ScratchFile m_directory{"directory.txt", DIRECTORY};
    UseDirectoryFile m_use{m_directory.mf_getPath()};
    UQSearchUserDialog m_dialog;
};

} // namespace

TEST_F(UQSearchUserDialogTest, OpensOnThePrimaryControllerWithoutQueryingAnyone) {
    std::vector<std::string> authorities, users;
    std::string sTitle, sStart, sFilter, sColumn;
    int nSelected = -2;
    bool bStartShown = false, bOk = true;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sTitle = textOf(_hDlg);
        authorities = comboTexts(item(_hDlg, IDC_SEARCH_USER_AUTHORITY));
        nSelected =
            static_cast<int>(SendMessageW(item(_hDlg, IDC_SEARCH_USER_AUTHORITY), CB_GETCURSEL, 0, 0));
        sStart = itemText(_hDlg, IDC_SEARCH_USER_START);
        bStartShown = visible(_hDlg, IDC_SEARCH_USER_START);
        sFilter = itemText(_hDlg, IDC_SEARCH_USER_FILTER);
        users = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        bOk = enabled(_hDlg, IDC_SEARCH_USER_OK);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    EXPECT_EQ(sTitle, "Search User");
    EXPECT_EQ(authorities,
              (std::vector<std::string>{localName() + "  (local computer)",
                                        "DC01  (primary domain controller)", "DC02", "DC03", "DC04"}));
    EXPECT_EQ(nSelected, 1);
    EXPECT_EQ(sStart, START);
    EXPECT_TRUE(bStartShown);
    EXPECT_EQ(sFilter, "*");
    EXPECT_EQ(users, std::vector<std::string>());
    EXPECT_FALSE(bOk);
    EXPECT_EQ(m_dialog.mf_getResultUser(), nullptr);
    EXPECT_EQ(savedAuthority(m_sandbox), L"<none>");
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQSearchUserDialogTest, AFilterListSortSelectAndOkChoosesTheUser) {
    std::vector<std::string> filtered, descending;
    bool bStartAfter = true;
    int nArrow = 0;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        setFilter(_hDlg, L"a?c");
        pressList(_hDlg);
        filtered = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        bStartAfter = visible(_hDlg, IDC_SEARCH_USER_START);
        // A click on the column header sorts descending.
        NMLISTVIEW click;
        ZeroMemory(&click, sizeof click);
        click.hdr.hwndFrom = item(_hDlg, IDC_SEARCH_USER_LIST);
        click.hdr.idFrom = IDC_SEARCH_USER_LIST;
        click.hdr.code = LVN_COLUMNCLICK;
        click.iItem = -1;
        SendMessageW(_hDlg, WM_NOTIFY, IDC_SEARCH_USER_LIST, reinterpret_cast<LPARAM>(&click));
        descending = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        HDITEMW header;
        ZeroMemory(&header, sizeof header);
        header.mask = HDI_FORMAT;
        SendMessageW(ListView_GetHeader(item(_hDlg, IDC_SEARCH_USER_LIST)), HDM_GETITEMW, 0,
                     reinterpret_cast<LPARAM>(&header));
        nArrow = header.fmt & (HDF_SORTUP | HDF_SORTDOWN);
        selectRow(_hDlg, 0);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_OK);
    });
    LogCheck log;
    EXPECT_EQ(m_dialog.mf_show(nullptr), 1);
    ASSERT_EQ(filtered.size(), 2u);
    EXPECT_EQ(filtered[0] == "abc" || filtered[0] == "ABC", true);
    EXPECT_EQ(filtered[1] == "abc" || filtered[1] == "ABC", true);
    EXPECT_NE(filtered[0], filtered[1]);
    EXPECT_FALSE(bStartAfter);
    EXPECT_EQ(descending.size(), 2u);
    EXPECT_EQ(nArrow, HDF_SORTDOWN);
    ASSERT_NE(m_dialog.mf_getResultUser(), nullptr);
    EXPECT_EQ(utf8(m_dialog.mf_getResultUser()->mf_getDisplayName()), descending[0]);
    ASSERT_NE(m_dialog.mf_getResultAuthority(), nullptr);
    EXPECT_EQ(utf8(m_dialog.mf_getResultAuthority()->mf_getName()), "DC01");
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQSearchUserDialogTest, AnEmptyFilterOrAStarListsEveryoneSorted) {
    std::vector<std::string> all, starred;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        setFilter(_hDlg, L"");
        pressList(_hDlg);
        all = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        setFilter(_hDlg, L"*");
        pressList(_hDlg);
        starred = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all[2], "abcd");
    EXPECT_EQ(all[3], "Mike");
    EXPECT_EQ(all[4], "zoe");
    EXPECT_EQ(starred, all);
}

TEST_F(UQSearchUserDialogTest, LongAndQuestionMarkFiltersMatchOnlyWhatTheySay) {
    std::vector<std::string> longFilter, threeAny, oneAny;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        const std::wstring sLong(300, L'a');
        setFilter(_hDlg, sLong.c_str());
        pressList(_hDlg);
        longFilter = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        setFilter(_hDlg, L"???");
        pressList(_hDlg);
        threeAny = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        setFilter(_hDlg, L"?");
        pressList(_hDlg);
        oneAny = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(longFilter, std::vector<std::string>());
    EXPECT_EQ(threeAny.size(), 3u); // abc, ABC, zoe
    EXPECT_EQ(threeAny[2], "zoe");
    EXPECT_EQ(oneAny, std::vector<std::string>());
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQSearchUserDialogTest, ChoosingTheSameAuthorityAgainChangesNothing) {
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        chooseAuthority(_hDlg, 1);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'D', "UQSearchUserDialog::mf_implOnUpdateAuthority",
                                                  "Authority page has not changed, nothing to do ..."}}));
    EXPECT_EQ(savedAuthority(m_sandbox), L"<none>");
}

TEST_F(UQSearchUserDialogTest, EachPageKeepsItsFilterAndListAndTheLocalComputerIsRememberedForNextTime) {
    std::string sFilterBack;
    std::vector<std::string> backOnDc01;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        setFilter(_hDlg, L"m*");
        pressList(_hDlg);
        chooseAuthority(_hDlg, 2);
        chooseAuthority(_hDlg, 1);
        sFilterBack = itemText(_hDlg, IDC_SEARCH_USER_FILTER);
        backOnDc01 = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        chooseAuthority(_hDlg, 0);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(sFilterBack, "m*");
    EXPECT_EQ(backOnDc01, (std::vector<std::string>{"Mike"}));
    EXPECT_EQ(utf8(savedAuthority(m_sandbox)), localName());

    int nSelected = -2;
    std::string sStart;
    DialogDriver next;
    next.then([&](HWND _hDlg) {
        nSelected =
            static_cast<int>(SendMessageW(item(_hDlg, IDC_SEARCH_USER_AUTHORITY), CB_GETCURSEL, 0, 0));
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    UQSearchUserDialog again;
    again.mf_show(nullptr);
    EXPECT_EQ(nSelected, 0);
}

TEST_F(UQSearchUserDialogTest, AnUnmarkedControllerOrAGoneAuthorityIsNotRestored) {
    for (const wchar_t* pszSaved : {L"DC02", L"DC99"}) {
        ASSERT_EQ(RegSetKeyValueW(m_sandbox.user(), L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient",
                                  L"SearchUserAuthority", REG_SZ, pszSaved,
                                  static_cast<DWORD>((wcslen(pszSaved) + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
        int nSelected = -2;
        DialogDriver driver;
        driver.then([&](HWND _hDlg) {
            nSelected =
                static_cast<int>(SendMessageW(item(_hDlg, IDC_SEARCH_USER_AUTHORITY), CB_GETCURSEL, 0, 0));
            DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
        });
        LogCheck log;
        UQSearchUserDialog dialog;
        dialog.mf_show(nullptr);
        EXPECT_EQ(nSelected, 1) << utf8(pszSaved);
        EXPECT_EQ(log.lines(), std::vector<LogLine>()) << utf8(pszSaved);
    }
}

TEST_F(UQSearchUserDialogTest, OkWithoutASelectedEntryEndsWithZero) {
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        pressList(_hDlg);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_OK);
    });
    LogCheck log;
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    EXPECT_EQ(m_dialog.mf_getResultUser(), nullptr);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQSearchUserDialog::mf_implSetResults", "No sid selected"}}));
}

// The list of users from the keyboard: the arrows, Home and End move the one selected user (the list takes
// one at a time, so Shift does not extend it), OK is enabled once a user is selected, and Ctrl+1 sorts the
// list as a click on its header does.
TEST_F(UQSearchUserDialogTest, TheKeyboardMovesInTheListAndCtrlOneSortsIt) {
    std::vector<std::vector<int>> moves;
    std::vector<std::size_t> counts;
    std::vector<std::string> listed, sorted;
    std::string sChosen;
    bool bOkBefore = true;
    bool bOkAfter = false;
    int nArrow = 0;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        pressList(_hDlg);
        HWND hList = item(_hDlg, IDC_SEARCH_USER_LIST);
        listed = listTexts(hList);
        bOkBefore = enabled(_hDlg, IDC_SEARCH_USER_OK);
        SendMessageW(_hDlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(hList), TRUE);
        const std::pair<WPARAM, bool> keys[] = {
            {VK_HOME, false}, {VK_DOWN, false}, {VK_END, false}, {VK_UP, false}, {VK_UP, true}};
        for (const auto& key : keys) {
            pressInList(hList, key.first, key.second);
            moves.push_back(selectedRows(hList));
            counts.push_back(static_cast<std::size_t>(SendMessageW(hList, LVM_GETSELECTEDCOUNT, 0, 0)));
        }
        bOkAfter = enabled(_hDlg, IDC_SEARCH_USER_OK);
        const std::vector<std::string> shown = listTexts(hList);
        sChosen = moves.back().size() == 1 ? shown[static_cast<std::size_t>(moves.back()[0])] : "";
        pressInList(hList, '1', false, true);
        sorted = listTexts(hList);
        HDITEMW header;
        ZeroMemory(&header, sizeof header);
        header.mask = HDI_FORMAT;
        SendMessageW(ListView_GetHeader(hList), HDM_GETITEMW, 0, reinterpret_cast<LPARAM>(&header));
        nArrow = header.fmt & (HDF_SORTUP | HDF_SORTDOWN);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    EXPECT_FALSE(driver.timedOut());
    ASSERT_EQ(listed.size(), 5u);
    EXPECT_EQ(moves, (std::vector<std::vector<int>>{{0}, {1}, {4}, {3}, {2}}));
    EXPECT_EQ(counts, (std::vector<std::size_t>{1, 1, 1, 1, 1}));
    EXPECT_FALSE(bOkBefore);
    EXPECT_TRUE(bOkAfter);
    EXPECT_EQ(sChosen, listed[2]);
    // Descending, names that differ only in case in either order.
    ASSERT_EQ(sorted.size(), 5u);
    EXPECT_EQ(std::vector<std::string>(sorted.begin(), sorted.begin() + 3),
              (std::vector<std::string>{"zoe", "Mike", "abcd"}));
    EXPECT_TRUE(std::is_permutation(sorted.begin(), sorted.end(), listed.begin()));
    EXPECT_EQ(nArrow, HDF_SORTDOWN);
}

TEST_F(UQSearchUserDialogTest, EnterInTheFilterListsAndKeepsTheDialogOpen) {
    std::vector<std::string> afterEnter, afterApply;
    LONG_PTR nApplyResult = 0;
    bool bStillOpen = false;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        HWND hFilter = item(_hDlg, IDC_SEARCH_USER_FILTER);
        SetFocus(hFilter);
        setFilter(_hDlg, L"z*");
        // The key as the dialog's modal loop hands it to the dialog manager.
        MSG key = {hFilter, WM_KEYDOWN, VK_RETURN, 1, 0, {0, 0}};
        IsDialogMessageW(_hDlg, &key);
        afterEnter = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        bStillOpen = IsWindowVisible(_hDlg) != FALSE;
        // As a property page hears Enter.
        setFilter(_hDlg, L"b*");
        NMHDR apply;
        ZeroMemory(&apply, sizeof apply);
        apply.hwndFrom = _hDlg;
        apply.code = PSN_APPLY;
        SetFocus(hFilter);
        SendMessageW(_hDlg, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&apply));
        nApplyResult = GetWindowLongPtrW(_hDlg, DWLP_MSGRESULT);
        afterApply = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    EXPECT_EQ(afterEnter, (std::vector<std::string>{"zoe"}));
    EXPECT_TRUE(bStillOpen);
    EXPECT_EQ(nApplyResult, PSNRET_INVALID_NOCHANGEPAGE);
    EXPECT_EQ(afterApply, std::vector<std::string>());
}

TEST_F(UQSearchUserDialogTest, AnAuthorityThatDoesNotAnswerIsToldAndTheDialogStaysUsable) {
    std::string sBox, sStart;
    std::vector<std::string> afterwards;
    DialogDriver driver;
    driver
        .then([&](HWND _hDlg) {
            chooseAuthority(_hDlg, 3);
            pressList(_hDlg); // the message box is handled by the next step, inside this call
            sStart = itemText(_hDlg, IDC_SEARCH_USER_START);
            chooseAuthority(_hDlg, 2);
            pressList(_hDlg);
            afterwards = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
            DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
        })
        .then([&](HWND _hBox) {
            sBox = itemText(_hBox, IDC_MESSAGE_TEXT);
            DialogDriver::click(_hBox, IDC_MESSAGE_BUTTON2);
        });
    LogCheck log;
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    const std::string sReason =
        "A resource could not be loaded.\r\nThe domain controller 'DC03' does not answer";
    EXPECT_EQ(sBox, sReason);
    EXPECT_EQ(sStart, sReason + "\r\n\r\n" + START);
    EXPECT_EQ(afterwards, (std::vector<std::string>{"bob"}));
    const std::string sError = toolkittest::errorText(UQErrno::_E_::Resource, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQControllerAuthority::mf_queryDisplayUsers",
                                 "Domain controller 'DC03' does not answer"}));
    EXPECT_EQ(lines[1].function, "UQSearchUserDialog::mf_implCreateSidArray");
    EXPECT_EQ(
        lines[1].text.rfind("Failure querying users of sid authority 'DC03':\r\n    [E] _E_::Resource", 0),
        0u)
        << lines[1].text;
    EXPECT_EQ(lines[2].function, LIST);
    EXPECT_EQ(lines[2].text.rfind(
                  "Failure creating sid-quota array (authority='DC03'):\r\n    [E] _E_::Resource", 0),
              0u)
        << lines[2].text;
    (void)sError;
}

TEST_F(UQSearchUserDialogTest, AnAuthorityWithoutUsersListsNothing) {
    std::vector<std::string> users;
    bool bStart = true;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        chooseAuthority(_hDlg, 4);
        pressList(_hDlg);
        users = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        bStart = visible(_hDlg, IDC_SEARCH_USER_START);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(users, std::vector<std::string>());
    EXPECT_FALSE(bStart);
    EXPECT_EQ(utf8(savedAuthority(m_sandbox)), "DC04");
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQSearchUserDialogTest, TheToolTipShowsTheSecondTextAndTheSid) {
    std::string sWithName, sWithout;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        setFilter(_hDlg, L"a*");
        pressList(_hDlg); // ABC, abc, abcd in some order of the first two
        HWND hList = item(_hDlg, IDC_SEARCH_USER_LIST);
        const std::vector<std::string> rows = listTexts(hList);
        for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
            // Wine's list view never sends LVN_GETINFOTIPW; the test sends it as Windows would.
            wchar_t szTip[256] = {};
            NMLVGETINFOTIPW tip;
            ZeroMemory(&tip, sizeof tip);
            tip.hdr.hwndFrom = hList;
            tip.hdr.idFrom = IDC_SEARCH_USER_LIST;
            tip.hdr.code = LVN_GETINFOTIPW;
            tip.pszText = szTip;
            tip.cchTextMax = 256;
            tip.iItem = i;
            SendMessageW(_hDlg, WM_NOTIFY, IDC_SEARCH_USER_LIST, reinterpret_cast<LPARAM>(&tip));
            if (rows[i] == "abc")
                sWithName = utf8(szTip);
            if (rows[i] == "ABC")
                sWithout = utf8(szTip);
        }
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(sWithName, "Alice Brown\r\nS-1-5-21-7-8-9-1001");
    EXPECT_EQ(sWithout, "S-1-5-21-7-8-9-1002");
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], (LogLine{'G', "f_SearchUserDialogCallback",
                                 "Received tooltip event (LVN_GETINFOTIP), item=0, subitem=0 ..."}));
}

TEST_F(UQSearchUserDialogTest, AMissingDirectoryFileLeavesADialogWithoutAuthorities) {
    UQDomain::mf_setDirectoryFile(m_directory.mf_getPath() + L".missing");
    std::vector<std::string> authorities{"x"};
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        authorities = comboTexts(item(_hDlg, IDC_SEARCH_USER_AUTHORITY));
        pressList(_hDlg);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    EXPECT_EQ(m_dialog.mf_show(nullptr), 0);
    EXPECT_EQ(authorities, std::vector<std::string>());
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].function, "UQDirectoryFile::mf_read");
    EXPECT_EQ(lines[1].function, "UQSearchUserDialog::mf_implOnInitDialog");
    EXPECT_EQ(lines[1].text.rfind("Failure getting sid authorities:\r\n    [E] _E_::File", 0), 0u)
        << lines[1].text;
    EXPECT_EQ(lines[2], (LogLine{'E', LIST, "Page index out of range: -1 >= 0"}));
}

TEST_F(UQSearchUserDialogTest, TheLocalComputerListsItsAccountsWithTheirSids) {
    std::vector<std::string> users;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        chooseAuthority(_hDlg, 0);
        pressList(_hDlg);
        users = listTexts(item(_hDlg, IDC_SEARCH_USER_LIST));
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    LogCheck log;
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
    UQArray<UQSid*, UQSid*> direct;
    UQDomain::mf_getLocalComputer()->mf_queryDisplayUsers(direct);
    ASSERT_GT(direct.GetSize(), 0);
    EXPECT_EQ(users.size(), static_cast<std::size_t>(direct.GetSize()));
    for (INT_PTR i = 0; i < direct.GetSize(); ++i) {
        EXPECT_EQ(utf8(direct[i]->mf_getSidString()).rfind("S-1-5-", 0), 0u)
            << utf8(direct[i]->mf_getDisplayName());
        delete direct[i];
    }
}

namespace {

// Notes what the start message says while the authority is being asked.
class WatchingDialog : public UQSearchUserDialog {
public:
    HWND hDlg = nullptr;
    std::vector<std::string> duringQuery;
    std::vector<bool> shownDuringQuery;

protected:
    void mf_implCreateSidArray(UQSidAuthority& _rAuthority, UQArray<UQSid*, UQSid*>& _rUsers) override {
        duringQuery.push_back(itemText(hDlg, IDC_SEARCH_USER_START));
        shownDuringQuery.push_back(visible(hDlg, IDC_SEARCH_USER_START));
        UQSearchUserDialog::mf_implCreateSidArray(_rAuthority, _rUsers);
    }
};

} // namespace

TEST_F(UQSearchUserDialogTest, ThePleaseWaitTextShowsOnlyWhileAnAuthorityIsQueriedTheFirstTime) {
    WatchingDialog dialog;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        dialog.hDlg = _hDlg;
        pressList(_hDlg);
        pressList(_hDlg);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    dialog.mf_show(nullptr);
    EXPECT_EQ(dialog.duringQuery,
              (std::vector<std::string>{"Please wait while the users are queried ...", ""}));
    EXPECT_EQ(dialog.shownDuringQuery, (std::vector<bool>{true, false}));
}

TEST_F(UQSearchUserDialogTest, TheStartMessageAloneGetsItsOwnBackground) {
    INT_PTR nStart = 0, nLabel = 1;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        HDC hDC = GetDC(_hDlg);
        nStart = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                              reinterpret_cast<LPARAM>(item(_hDlg, IDC_SEARCH_USER_START)));
        nLabel = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                              reinterpret_cast<LPARAM>(item(_hDlg, IDC_SEARCH_USER_FILTER_LABEL)));
        ReleaseDC(_hDlg, hDC);
        DialogDriver::click(_hDlg, IDC_SEARCH_USER_CANCEL);
    });
    m_dialog.mf_show(nullptr);
    EXPECT_EQ(nStart, reinterpret_cast<INT_PTR>(GetSysColorBrush(20)));
    // Other statics get what the dialog manager gives them.
    EXPECT_NE(nLabel, nStart);
}
