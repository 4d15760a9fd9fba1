// korclient's main window: the history search of the storage server, with retrieval and recall of what it
// finds and the migration wizard. Every window it opens is a dialog class of korguibase.
#pragma once

#include "UQFileOutcome.h"
#include "UQServerDirectory.h"

#include "compat/UQHandle.h"
#include "guibase/search/UQSearchList.h"
#include "guibase/toolkit/UQStatusBar.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

class UQMigrationWizard;

class UQClientWindow {
public:
    // The registry values of the pattern list (HKEY_CURRENT_USER, under the GUI's registry root).
    static const wchar_t* const PATTERN_LIST_VALUE;
    static const wchar_t* const PATTERN_SELECTION_VALUE;
    static const wchar_t* const TIP_VALUE;
    static const wchar_t* const HELP_CAPTION;

    UQClientWindow(const std::wstring& _sServer, const std::wstring& _sFolder);
    UQClientWindow(const UQClientWindow&) = delete;
    UQClientWindow& operator=(const UQClientWindow&) = delete;
    ~UQClientWindow();

    // Runs the window until the user closes it; 0 when it closed normally.
    int mf_show();
    // Where Retrieve puts files without asking (empty: the user picks a folder).
    void mf_setRetrieveFolder(const std::wstring& _sFolder) { m_sRetrieveFolder = _sFolder; }

    HWND mf_getHandle() const noexcept { return m_hDlg; }
    // The migration wizard while it is open, else null.
    const UQMigrationWizard* mf_getMigrationWizard() const noexcept { return m_pWizard; }
    UQSearchList& mf_getSearchList() noexcept { return m_searchList; }
    int mf_getShownCount() const noexcept { return static_cast<int>(m_shown.GetSize()); }
    const UQSearchFileItem::Array& mf_getShownItems() const noexcept { return m_shown; }
    const std::vector<UQFileOutcome>& mf_getMigrationOutcomes() const noexcept { return m_migrated; }
    const std::vector<UQFileOutcome>& mf_getRetrieveOutcomes() const noexcept { return m_retrieved; }
    const std::vector<UQFileOutcome>& mf_getRecallOutcomes() const noexcept { return m_recalled; }
    const std::wstring& mf_getLastError() const noexcept { return m_sLastError; }
    const std::wstring& mf_getSearchName() const noexcept { return m_sSearchName; }
    // The text of the status bar's part _nPart (0 files, 1 selection, 2 store); empty for no such part.
    std::wstring mf_getStatusText(int _nPart) const;

    INT_PTR mf_onInitDialog(HWND _hDlg);
    INT_PTR mf_onCommand(unsigned short _usCode, unsigned short _usId);
    INT_PTR mf_onNotify(const NMHDR& _header);
    INT_PTR mf_onDrawItem(const DRAWITEMSTRUCT& _item);
    void mf_onSize(int _nWidth, int _nHeight);
    void mf_onShowTip();
    // The window moved to a monitor of another DPI: the status bar's icons at that DPI's size.
    void mf_onDpiChanged(UINT _uDpi);

private:
    void mf_implSearch();
    void mf_implShow();
    void mf_implRetrieve();
    void mf_implRecall();
    void mf_implMigrate();
    void mf_implRename();
    void mf_implSortBy(int _nColumn);
    void mf_implGetRowText(NMLVDISPINFOW& _rInfo) const;
    int mf_implFindRow(const NMLVFINDITEMW& _find) const;
    void mf_implUpdateStatus();
    void mf_implShowResults(const wchar_t* _pszCaption, const std::vector<UQFileOutcome>& _outcomes);
    void mf_implError(const std::wstring& _sText, int _bWarning);
    void mf_implSelectFromList();
    void mf_implLoadStatusIcons(UINT _uDpi);

    UQServerDirectory m_server;
    std::wstring m_sFolder;
    std::wstring m_sRetrieveFolder;
    std::wstring m_sSearchName;
    std::wstring m_sLastError;
    HWND m_hDlg;
    HWND m_hList;
    const UQMigrationWizard* m_pWizard;
    UQSearchList m_searchList;
    UQSearchFileItem::Array m_shown;
    std::unique_ptr<UQStatusBar> m_pStatusBar;
    class StatusItem* m_apItems[3];
    // The status bar's icons at the small icon size of the window's DPI; the items only show them.
    UQIcon m_greenIcon;
    UQIcon m_blankIcon;
    int m_nSortColumn;
    int m_bSortAscending;
    std::vector<UQFileOutcome> m_migrated;
    std::vector<UQFileOutcome> m_retrieved;
    std::vector<UQFileOutcome> m_recalled;
};
