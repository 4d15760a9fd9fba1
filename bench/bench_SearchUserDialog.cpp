// The user search dialog against plain Win32 (windows, under Wine). Listing: pressing the list button of a
// dialog that shows the previous listing of an authority of 50 000 users, until the new listing is filled
// and sorted, against the fastest plain way known to do the same (clear the list, query the same authority,
// sort the users by name, insert them in order with painting off and the item count set first); the same
// steps as the dialog's done plainly (insert, then LVM_SORTITEMS) are a second reference. Filtering those
// users by "a?c*" against a loop over the same names with the same matcher. Both plain sides are checked to
// show the dialog's order. Prints the medians and each ratio against its goal; exits 1 when a goal is
// missed.
#include "guibase/foundation/UQWildcard.h"
#include "guibase/panels/UQSearchUserDialog.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

const std::uint32_t USERS = 50000;
const int REPETITIONS = 5;
// A filter pass takes about a millisecond: many more runs, so that the median is not one scheduling hiccup.
const int FILTER_REPETITIONS = 201;
const double GOAL = 1.2;

double now() {
    static LARGE_INTEGER s_frequency = [] {
        LARGE_INTEGER f;
        QueryPerformanceFrequency(&f);
        return f;
    }();
    LARGE_INTEGER t;
    QueryPerformanceCounter(&t);
    return static_cast<double>(t.QuadPart) * 1000.0 / static_cast<double>(s_frequency.QuadPart);
}

double median(std::vector<double> _values) {
    std::sort(_values.begin(), _values.end());
    return _values[_values.size() / 2];
}

// Exposes the dialog's filtering step.
class BenchDialog : public UQSearchUserDialog {
public:
    void filter(UQPageData& _rPage) { mf_implFilterSidList(_rPage); }
};

struct Results {
    std::vector<double> list, bare, clear, query, bareSortItems, filter, bareFilter;
    std::size_t nListed = 0, nBare = 0, nFiltered = 0, nBareFiltered = 0;
    bool bSameOrder = false, bSameOrderSortItems = false;
};

Results g_results;
UQArray<UQSid*, UQSid*> g_users;
// The directory's controller whose users both sides list.
const UQSidAuthority* g_pController = nullptr;

// A list view made as the dialog's own: same styles, column, image list, place.
HWND makeBareList(HWND _hDlg) {
    HWND hList = GetDlgItem(_hDlg, IDC_SEARCH_USER_LIST);
    RECT rc;
    GetWindowRect(hList, &rc);
    MapWindowPoints(nullptr, _hDlg, reinterpret_cast<POINT*>(&rc), 2);
    HWND hBare = CreateWindowExW(static_cast<DWORD>(GetWindowLongPtrW(hList, GWL_EXSTYLE)), WC_LISTVIEWW, L"",
                                 static_cast<DWORD>(GetWindowLongPtrW(hList, GWL_STYLE)), rc.left, rc.top,
                                 rc.right - rc.left, rc.bottom - rc.top, _hDlg, nullptr, nullptr, nullptr);
    SendMessageW(hBare, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_INFOTIP | LVS_EX_LABELTIP,
                 LVS_EX_INFOTIP | LVS_EX_LABELTIP);
    LVCOLUMNW column;
    ZeroMemory(&column, sizeof column);
    column.mask = LVCF_WIDTH | LVCF_TEXT;
    column.cx = 300;
    column.pszText = const_cast<LPWSTR>(L"User");
    SendMessageW(hBare, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    HIMAGELIST hImages = ImageList_Create(GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                                          ILC_MASK | ILC_COLOR16, 0, 1);
    SendMessageW(hBare, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(hImages));
    return hBare;
}

// The names a list view shows, top to bottom.
std::vector<std::wstring> shownNames(HWND _hList) {
    const int nCount = static_cast<int>(SendMessageW(_hList, LVM_GETITEMCOUNT, 0, 0));
    std::vector<std::wstring> names;
    names.reserve(static_cast<std::size_t>(nCount));
    wchar_t szText[256];
    for (int i = 0; i < nCount; ++i) {
        LVITEMW item;
        ZeroMemory(&item, sizeof item);
        item.iSubItem = 0;
        item.pszText = szText;
        item.cchTextMax = 256;
        SendMessageW(_hList, LVM_GETITEMTEXTW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        names.emplace_back(szText);
    }
    return names;
}

// Case-blind by the system's own ordinal comparison, stable for equal names.
bool lessByName(const UQSid* _pA, const UQSid* _pB) {
    const CString& sA = _pA->mf_getDisplayName();
    const CString& sB = _pB->mf_getDisplayName();
    return CompareStringOrdinal(sA.GetString(), sA.GetLength(), sB.GetString(), sB.GetLength(), TRUE) ==
           CSTR_LESS_THAN;
}

int CALLBACK compareByName(LPARAM _lA, LPARAM _lB, LPARAM) {
    const UQSid* pA = reinterpret_cast<const UQSid*>(_lA);
    const UQSid* pB = reinterpret_cast<const UQSid*>(_lB);
    return lessByName(pA, pB) ? -1 : (lessByName(pB, pA) ? 1 : 0);
}

// Fills _hList with _users in their order, painting off and the item array allocated once.
void insertAll(HWND _hList, const std::vector<const UQSid*>& _users) {
    SendMessageW(_hList, LVM_SETITEMCOUNT, static_cast<WPARAM>(_users.size()), 0);
    for (std::size_t n = 0; n < _users.size(); ++n) {
        LVITEMW item;
        ZeroMemory(&item, sizeof item);
        item.mask = LVIF_TEXT | LVIF_IMAGE | LVIF_PARAM;
        item.iItem = static_cast<int>(n);
        item.pszText = const_cast<LPWSTR>(_users[n]->mf_getDisplayName().GetString());
        item.lParam = reinterpret_cast<LPARAM>(_users[n]);
        SendMessageW(_hList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
}

// The users one plain side holds; the previous listing's go when the next one starts, as the dialog's do.
struct PlainSide {
    HWND hList = nullptr;
    UQArray<UQSid*, UQSid*> users;

    void clear() {
        SendMessageW(hList, LVM_DELETEALLITEMS, 0, 0);
        for (INT_PTR n = 0; n < users.GetSize(); ++n)
            delete users[n];
        users.RemoveAll();
    }
};

void measure(HWND _hDlg) {
    HWND hList = GetDlgItem(_hDlg, IDC_SEARCH_USER_LIST);
    HWND hButton = GetDlgItem(_hDlg, IDC_SEARCH_USER_LIST_BUTTON);
    PlainSide limit, sameSteps;
    limit.hList = makeBareList(_hDlg);
    sameSteps.hList = makeBareList(_hDlg);
    for (int i = 0; i < REPETITIONS; ++i) {
        double t0 = now();
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_SEARCH_USER_LIST_BUTTON, BN_CLICKED),
                     reinterpret_cast<LPARAM>(hButton));
        g_results.list.push_back(now() - t0);
        g_results.nListed = static_cast<std::size_t>(SendMessageW(hList, LVM_GETITEMCOUNT, 0, 0));

        // The limit: the fastest plain way known to replace the previous listing with the same sorted list,
        // the users queried from the same authority as the dialog's.
        t0 = now();
        SendMessageW(limit.hList, WM_SETREDRAW, FALSE, 0);
        limit.clear();
        const double tCleared = now();
        g_pController->mf_queryDisplayUsers(limit.users);
        g_results.query.push_back(now() - tCleared);
        std::vector<const UQSid*> sorted(limit.users.GetData(),
                                         limit.users.GetData() + limit.users.GetSize());
        std::stable_sort(sorted.begin(), sorted.end(), lessByName);
        insertAll(limit.hList, sorted);
        SendMessageW(limit.hList, WM_SETREDRAW, TRUE, 0);
        RedrawWindow(limit.hList, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
        g_results.bare.push_back(now() - t0);
        g_results.clear.push_back(tCleared - t0);
        g_results.nBare = static_cast<std::size_t>(SendMessageW(limit.hList, LVM_GETITEMCOUNT, 0, 0));
        if (i == 0)
            g_results.bSameOrder = shownNames(limit.hList) == shownNames(hList);

        // The same steps as the dialog's, plainly: clear, query, insert in the authority's order, sort.
        t0 = now();
        SendMessageW(sameSteps.hList, WM_SETREDRAW, FALSE, 0);
        sameSteps.clear();
        g_pController->mf_queryDisplayUsers(sameSteps.users);
        std::vector<const UQSid*> unsorted(sameSteps.users.GetData(),
                                           sameSteps.users.GetData() + sameSteps.users.GetSize());
        insertAll(sameSteps.hList, unsorted);
        SendMessageW(sameSteps.hList, LVM_SORTITEMS, 1, reinterpret_cast<LPARAM>(compareByName));
        SendMessageW(sameSteps.hList, WM_SETREDRAW, TRUE, 0);
        RedrawWindow(sameSteps.hList, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
        g_results.bareSortItems.push_back(now() - t0);
        if (i == 0)
            g_results.bSameOrderSortItems = shownNames(sameSteps.hList) == shownNames(hList);
    }
    limit.clear();
    sameSteps.clear();
    DestroyWindow(limit.hList);
    DestroyWindow(sameSteps.hList);
    PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_SEARCH_USER_CANCEL, BN_CLICKED), 0);
}

void CALLBACK tick(HWND, UINT, UINT_PTR _uTimer, DWORD) {
    KillTimer(nullptr, _uTimer);
    HWND hDlg = GetActiveWindow();
    if (hDlg == nullptr || GetDlgItem(hDlg, IDC_SEARCH_USER_LIST) == nullptr) {
        std::fprintf(stderr, "the user search dialog is not the active window\n");
        std::exit(2);
    }
    measure(hDlg);
}

void measureFilter() {
    UQSidAuthority* pAuthority = UQDomain::mf_getLocalComputer();
    UQPageData page(pAuthority);
    page.m_apUsers.Copy(g_users);
    page.m_sFilter = L"a?c*";
    BenchDialog dialog;
    const auto runDialog = [&] {
        const double t0 = now();
        dialog.filter(page);
        g_results.filter.push_back(now() - t0);
        g_results.nFiltered = static_cast<std::size_t>(page.m_apFilteredUsers.GetSize());
    };
    const auto runPlain = [&] {
        const double t0 = now();
        const UQWildcard pattern(L"a?c*", 0);
        std::vector<const UQSid*> matches;
        for (INT_PTR n = 0; n < g_users.GetSize(); ++n) {
            if (pattern.mf_matches(g_users[n]->mf_getDisplayName()))
                matches.push_back(g_users[n]);
        }
        g_results.bareFilter.push_back(now() - t0);
        g_results.nBareFiltered = matches.size();
    };
    // Whichever side runs first after the other finds the users' names in the cache as the other left
    // them: the sides take turns at going first.
    for (int i = 0; i < FILTER_REPETITIONS; ++i) {
        if (i % 2 == 0) {
            runDialog();
            runPlain();
        } else {
            runPlain();
            runDialog();
        }
    }
    // The page's users are the benchmark's: the page must not delete them.
    page.m_apUsers.RemoveAll();
    page.m_apFilteredUsers.RemoveAll();
}

bool report(const char* _pszWhat, const std::vector<double>& _library, const std::vector<double>& _bare) {
    const double dLibrary = median(_library), dBare = median(_bare);
    const double dRatio = dLibrary / dBare;
    const bool bMet = dRatio <= GOAL;
    std::printf("%-44s %10.1f ms %10.1f ms %7.2fx  goal %.1fx %s\n", _pszWhat, dLibrary, dBare, dRatio, GOAL,
                bMet ? "met" : "MISSED");
    return bMet;
}

} // namespace

int wmain() {
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    wchar_t szTemp[MAX_PATH];
    GetTempPathW(MAX_PATH, szTemp);
    const std::wstring sFile = std::wstring(szTemp) + L"korguibase-bench-directory.txt";
    FILE* pFile = _wfopen(sFile.c_str(), L"wb");
    if (pFile == nullptr)
        return 2;
    std::fprintf(pFile, "controller\tBENCH-DC\tBENCH-DC\tprimary\ngenerate\t%u\t1\n", USERS);
    std::fclose(pFile);
    UQDomain::mf_setDirectoryFile(sFile.c_str());
    UQUserGenerator(USERS, 1).mf_generate(g_users);
    UQArray<UQSidAuthority*, UQSidAuthority*> controllers;
    UQDomain::mf_getDomainControllers(controllers);
    if (controllers.GetSize() != 1)
        return 2;
    g_pController = controllers[0];

    SetTimer(nullptr, 0, 200, tick);
    UQSearchUserDialog dialog;
    dialog.mf_show(nullptr);
    measureFilter();
    DeleteFileW(sFile.c_str());

    std::printf("%zu users listed by the dialog, %zu by the bare loop; %zu and %zu pass \"a?c*\"\n",
                g_results.nListed, g_results.nBare, g_results.nFiltered, g_results.nBareFiltered);
    std::printf("%-44s %13s %13s %8s\n", "comparison (medians: 5 listings, 201 filters)", "dialog", "plain",
                "ratio");
    bool bMet = report("list 50 000 users (press List to filled)", g_results.list, g_results.bare);
    std::printf("%-44s %10.1f ms (of the limit's time)\n", "  of which clearing the previous listing",
                median(g_results.clear));
    std::printf("%-44s %10.1f ms (of the limit's time)\n", "  of which querying the authority",
                median(g_results.query));
    // A second reference, not a limit: the dialog's own steps done plainly.
    std::printf("%-44s %10.1f ms %10.1f ms %7.2fx  (second reference)\n",
                "list 50 000, insert then LVM_SORTITEMS", median(g_results.list),
                median(g_results.bareSortItems), median(g_results.list) / median(g_results.bareSortItems));
    bMet = report("filter 50 000 users by \"a?c*\"", g_results.filter, g_results.bareFilter) && bMet;
    for (INT_PTR n = 0; n < g_users.GetSize(); ++n)
        delete g_users[n];
    const bool bSame = g_results.nListed == USERS && g_results.nBare == USERS &&
                       g_results.nFiltered == g_results.nBareFiltered && g_results.bSameOrder &&
                       g_results.bSameOrderSortItems;
    if (!bSame)
        std::printf("the two sides did not do the same work\n");
    return bMet && bSame ? 0 : 1;
}
