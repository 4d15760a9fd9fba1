#include "UQClientTour.h"

#include "KorClientIds.h"
#include "Screenshot.h"
#include "UQClientSample.h"
#include "UQClientWindow.h"
#include "UQMigrationWizard.h"
#include "UQRetrieval.h"

#include "compat/utf8.h"
#include "interfaces/korbase.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <deque>
#include <functional>
#include <map>

namespace {

const DWORD TIME_LIMIT_MS = 240000;
// The wizard frame's Next button.
const int ITEM_NEXT = 440;

std::wstring className(HWND _hWnd) {
    wchar_t szClass[64] = {};
    GetClassNameW(_hWnd, szClass, 64);
    return szClass;
}

std::wstring windowText(HWND _hWnd) {
    wchar_t szText[128] = {};
    GetWindowTextW(_hWnd, szText, 128);
    return szText;
}

// The visible windows of the program, for the tour's trace: caption, whether it takes input, the visible
// panel dialogs inside it and the state of a wizard's Next button.
std::wstring describeWindows() {
    std::wstring sText;
    EnumWindows(
        [](HWND _hWnd, LPARAM _lParam) -> BOOL {
            std::wstring& rText = *reinterpret_cast<std::wstring*>(_lParam);
            DWORD dwProcess = 0;
            const DWORD dwThread = GetWindowThreadProcessId(_hWnd, &dwProcess);
            if (dwProcess != GetCurrentProcessId() || !IsWindowVisible(_hWnd))
                return TRUE;
            rText += L"[" + className(_hWnd) + L" '" + windowText(_hWnd) + L"'";
            if (dwThread != GetCurrentThreadId())
                rText += L" thread " + std::to_wstring(dwThread);
            if (!IsWindowEnabled(_hWnd))
                rText += L" disabled";
            int nPanels = 0;
            for (HWND hChild = GetWindow(_hWnd, GW_CHILD); hChild != nullptr;
                 hChild = GetWindow(hChild, GW_HWNDNEXT))
                nPanels += IsWindowVisible(hChild) && className(hChild) == L"#32770" ? 1 : 0;
            if (nPanels > 0)
                rText += L" panels " + std::to_wstring(nPanels);
            if (HWND hNext = GetDlgItem(_hWnd, ITEM_NEXT))
                rText += L" next '" + windowText(hNext) + (IsWindowEnabled(hNext) ? L"' on" : L"' off");
            rText += L"] ";
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&sText));
    return sText.empty() ? L"nothing" : sText;
}

HWND findDialog(const std::wstring& _sCaption) {
    struct Search {
        std::wstring sCaption;
        HWND hFound;
    } search{_sCaption, nullptr};
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND _hWnd, LPARAM _lParam) -> BOOL {
            Search& s = *reinterpret_cast<Search*>(_lParam);
            wchar_t szClass[16] = {};
            wchar_t szText[256] = {};
            GetClassNameW(_hWnd, szClass, 16);
            GetWindowTextW(_hWnd, szText, 256);
            if (IsWindowVisible(_hWnd) && std::wstring(szClass) == L"#32770" && s.sCaption == szText) {
                s.hFound = _hWnd;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

HWND visiblePanel(HWND _hFrame, int _nItemId) {
    HWND hItem = nullptr;
    for (HWND hChild = GetWindow(_hFrame, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT))
        if (IsWindowVisible(hChild) && (hItem = GetDlgItem(hChild, _nItemId)) != nullptr)
            return hChild;
    return nullptr;
}

void click(HWND _hDlg, int _nId) {
    PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(_nId, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(_hDlg, _nId)));
}

class Script {
public:
    using Step = std::function<bool()>;
    Script(const std::wstring& _sPictures, UQClientTour::Summary& _rSummary)
        : m_sPictures(_sPictures), m_rSummary(_rSummary), m_uDeadline(GetTickCount64() + TIME_LIMIT_MS) {
        s_pScript = this;
        m_uTimer = SetTimer(nullptr, 0, 40, &Script::mf_tick);
    }
    ~Script() {
        KillTimer(nullptr, m_uTimer);
        s_pScript = nullptr;
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    void then(const wchar_t* _pszName, Step _step) { m_steps.push_back({_pszName, std::move(_step)}); }
    void picture(HWND _hWnd, const wchar_t* _pszName) {
        SetForegroundWindow(_hWnd);
        SendMessageW(_hWnd, WM_NCACTIVATE, TRUE, 0);
        SendMessageW(_hWnd, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL), 0);
        const std::wstring sPath = m_sPictures + L"\\" + _pszName + L".png";
        const std::string sFailure = screenshot::save(_hWnd, sPath);
        if (sFailure.empty())
            m_rSummary.pictures.push_back(sPath);
        else
            m_rSummary.failures.push_back(L"picture " + sPath + L": " +
                                          std::wstring(sFailure.begin(), sFailure.end()));
    }
    bool finished() const { return m_steps.empty(); }

private:
    static void CALLBACK mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept {
        if (s_pScript == nullptr || s_pScript->m_bBusy)
            return;
        s_pScript->m_bBusy = true;
        try {
            s_pScript->mf_onTick();
        } catch (...) {
            s_pScript->m_rSummary.failures.push_back(L"unexpected exception in the tour");
            s_pScript->m_steps.clear();
        }
        s_pScript->m_bBusy = false;
    }
    void mf_onTick() {
        if (m_bEnding) {
            mf_endDialogs();
            return;
        }
        if (m_steps.empty())
            return;
        const std::wstring sState = describeWindows();
        if (sState != m_sLastState) {
            m_sLastState = sState;
            m_trace.push_back(std::to_wstring(GetTickCount64() - m_uStart) + L" ms, step '" +
                              m_steps.front().first + L"': " + sState);
        }
        if (GetTickCount64() > m_uDeadline) {
            m_rSummary.failures.push_back(std::wstring(L"step '") + m_steps.front().first +
                                          L"' timed out; on the screen: " + sState);
            m_steps.clear();
            m_bEnding = true;
            mf_endDialogs();
            return;
        }
        if (m_steps.front().second())
            m_steps.pop_front();
    }
    // Past the time limit every dialog of the program is ended on every tick, the boxes that ending one
    // opens included, so that the program reports and exits.
    static void mf_endDialogs() {
        EnumWindows(
            [](HWND _hWnd, LPARAM) -> BOOL {
                DWORD dwProcess = 0;
                const DWORD dwThread = GetWindowThreadProcessId(_hWnd, &dwProcess);
                if (dwProcess != GetCurrentProcessId() || !IsWindowVisible(_hWnd) ||
                    className(_hWnd) != L"#32770")
                    return TRUE;
                if (dwThread == GetCurrentThreadId())
                    EndDialog(_hWnd, IDCANCEL);
                else
                    PostMessageW(_hWnd, WM_COMMAND, IDCANCEL, 0);
                return TRUE;
            },
            0);
    }

public:
    const std::vector<std::wstring>& trace() const { return m_trace; }

private:
    static Script* s_pScript;
    std::wstring m_sPictures;
    UQClientTour::Summary& m_rSummary;
    std::deque<std::pair<const wchar_t*, Step>> m_steps;
    UINT_PTR m_uTimer;
    ULONGLONG m_uDeadline;
    bool m_bBusy = false;
    bool m_bEnding = false;
    ULONGLONG m_uStart = GetTickCount64();
    std::wstring m_sLastState;
    std::vector<std::wstring> m_trace;
};

Script* Script::s_pScript = nullptr;

// The value of the pattern list as the registry keeps it.
bool patternRemembered(const std::wstring& _sPattern) {
    // The key the registry service writes the GUI's user values to.
    const std::wstring sKey = UQRegistry::mf_getUserKey().GetString();
    DWORD dwBytes = 0;
    if (RegGetValueW(HKEY_CURRENT_USER, sKey.c_str(), UQClientWindow::PATTERN_LIST_VALUE, RRF_RT_REG_MULTI_SZ,
                     nullptr, nullptr, &dwBytes) != ERROR_SUCCESS)
        return false;
    std::vector<wchar_t> buffer(dwBytes / sizeof(wchar_t) + 2, L'\0');
    if (RegGetValueW(HKEY_CURRENT_USER, sKey.c_str(), UQClientWindow::PATTERN_LIST_VALUE, RRF_RT_REG_MULTI_SZ,
                     nullptr, buffer.data(), &dwBytes) != ERROR_SUCCESS)
        return false;
    for (const wchar_t* p = buffer.data(); *p != L'\0'; p += wcslen(p) + 1)
        if (_sPattern == p)
            return true;
    return false;
}

} // namespace

int UQClientTour::mf_run(const std::wstring& _sFolder, int _nFiles, Summary& _rSummary) {
    const std::wstring sRoot = UQSafeFile::mf_absolute(_sFolder);
    const std::wstring sFiles = sRoot + L"\\files";
    const std::wstring sServer = sRoot + L"\\server";
    const std::wstring sRetrieved = sRoot + L"\\retrieved";
    const std::wstring sPictures = sRoot + L"\\pictures";
    UQClientSample::mf_removeTree(sFiles);
    UQClientSample::mf_removeTree(sServer);
    UQClientSample::mf_removeTree(sRetrieved);
    std::wstring sReason;
    std::map<std::wstring, std::string> hashes;
    CreateDirectoryW(UQSafeFile::mf_long(sRoot).c_str(), nullptr);
    CreateDirectoryW(UQSafeFile::mf_long(sPictures).c_str(), nullptr);
    if (!UQClientSample::mf_generate(sFiles, _nFiles, hashes, sReason)) {
        _rSummary.failures.push_back(L"sample: " + sReason);
        return 1;
    }
    _rSummary.nFiles = static_cast<int>(hashes.size());
    const std::wstring sPattern = sFiles + L"\\*";

    UQClientWindow window(sServer, sFiles);
    window.mf_setRetrieveFolder(sRetrieved);
    Script script(sPictures, _rSummary);
    HWND hMain = nullptr;
    auto main = [&] { return hMain = findDialog(L"History search - Stormex HSM Client"); };
    HWND hFrame = nullptr;
    std::wstring sStep;

    script.then(L"tip", [&] {
        HWND hTip = findDialog(L"Tip");
        if (hTip == nullptr)
            return false;
        script.picture(hTip, L"korclient-tip");
        click(hTip, IDC_INFORMATION_OK);
        return true;
    });
    script.then(L"start", [&] {
        if (main() == nullptr || findDialog(L"Tip") != nullptr || !IsWindowEnabled(hMain))
            return false;
        script.picture(hMain, L"korclient-start");
        click(hMain, IDC_MAIN_MIGRATE);
        return true;
    });
    const struct {
        const wchar_t* pszPicture;
        int nItem;
    } PANELS[] = {{L"korclient-migrate-folder", IDC_CLIENT_FOLDER_EDIT},
                  {L"korclient-migrate-class", IDC_CLIENT_CLASS_COMBO},
                  {L"korclient-migrate-backup", IDC_CLIENT_BACKUP_CHECK},
                  {L"korclient-migrate-execute", IDC_CLIENT_RUN_LIST}};
    // The frame is found through the wizard itself, as a user finds it by its place on the screen: its
    // caption is a text of the program, not a key.
    const auto frame = [&]() -> HWND {
        const UQMigrationWizard* pWizard = window.mf_getMigrationWizard();
        HWND hWizard = pWizard != nullptr ? pWizard->mf_getHandle() : nullptr;
        return hWizard != nullptr && IsWindowVisible(hWizard) && IsWindowEnabled(hWizard) ? hWizard : nullptr;
    };
    for (const auto& panel : PANELS) {
        script.then(panel.pszPicture, [&, panel] {
            hFrame = frame();
            if (hFrame == nullptr || !IsWindowEnabled(GetDlgItem(hFrame, ITEM_NEXT)) ||
                visiblePanel(hFrame, panel.nItem) == nullptr)
                return false;
            script.picture(hFrame, panel.pszPicture);
            click(hFrame, ITEM_NEXT);
            return true;
        });
    }
    script.then(L"migration done", [&] {
        hFrame = frame();
        HWND hPanel = hFrame != nullptr ? visiblePanel(hFrame, IDC_CLIENT_RUN_LIST) : nullptr;
        if (hPanel == nullptr || !IsWindowEnabled(GetDlgItem(hPanel, IDC_CLIENT_RUN_SAVE)) ||
            !IsWindowEnabled(GetDlgItem(hFrame, ITEM_NEXT)))
            return false;
        SendDlgItemMessageW(hPanel, IDC_CLIENT_RUN_LIST, LVM_ENSUREVISIBLE, 0, FALSE);
        script.picture(hFrame, L"korclient-migrate-done");
        click(hFrame, ITEM_NEXT);
        return true;
    });
    script.then(L"search", [&] {
        if (window.mf_getMigrationWizard() != nullptr || main() == nullptr || !IsWindowEnabled(hMain))
            return false;
        // Every file is a stub now that names a stored version which verifies.
        UQServerDirectory server(sServer);
        for (const auto& entry : hashes) {
            UQVersionRecord stub;
            UQOwnedHandle version;
            UQVersionRecord header;
            std::wstring sWhy;
            if (UQRetrieval::mf_readStub(sFiles + L"\\" + entry.first, stub, sWhy) &&
                server.mf_openVersion(stub.m_uVolume, stub.m_uPosition, stub.m_sObjectPath, stub.m_uVersion,
                                      &stub, version, header, sWhy) &&
                stub.m_sSha256 == entry.second)
                ++_rSummary.nStubs;
        }
        // Typed into the combo's edit field, as a user types it: the combo then drops its selection.
        COMBOBOXINFO combo{};
        combo.cbSize = sizeof(combo);
        GetComboBoxInfo(GetDlgItem(hMain, IDC_MAIN_PATTERN), &combo);
        SendMessageW(combo.hwndItem, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(sPattern.c_str()));
        click(hMain, IDC_MAIN_SEARCH);
        return true;
    });
    script.then(L"results", [&] {
        if (main() == nullptr || !IsWindowEnabled(hMain) || findDialog(L"History search") != nullptr ||
            window.mf_getShownCount() == 0)
            return false;
        // Every sample file is among the results with the version its migration stored.
        std::map<std::wstring, int> found;
        const UQSearchFileItem::Array& shown = window.mf_getShownItems();
        for (INT_PTR i = 0; i < shown.GetSize(); ++i)
            found[shown[i]->mf_getPath().mf_getPath().GetString()] = shown[i]->mf_getVersionCount();
        for (const auto& entry : hashes) {
            const auto it = found.find(sFiles + L"\\" + entry.first);
            _rSummary.nVersionsFound += it != found.end() && it->second >= 1 ? 1 : 0;
        }
        LVITEMW state{};
        state.stateMask = LVIS_SELECTED;
        state.state = LVIS_SELECTED;
        SendDlgItemMessageW(hMain, IDC_MAIN_LIST, LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                            reinterpret_cast<LPARAM>(&state));
        script.picture(hMain, L"korclient-search-results");
        click(hMain, IDC_MAIN_RETRIEVE);
        return true;
    });
    const struct {
        const wchar_t* pszCaption;
        const wchar_t* pszPicture;
        int nNext;
    } RESULTS[] = {{L"Retrieve", L"korclient-retrieve-results", IDC_MAIN_RECALL},
                   {L"Recall", L"korclient-recall-results", IDC_MAIN_HELP}};
    for (const auto& result : RESULTS) {
        script.then(result.pszPicture, [&, result] {
            HWND hResults = findDialog(result.pszCaption);
            if (hResults == nullptr || GetDlgItem(hResults, IDC_RESULTS_LIST) == nullptr)
                return false;
            script.picture(hResults, result.pszPicture);
            click(hResults, IDOK);
            PostMessageW(hMain, WM_COMMAND, MAKEWPARAM(result.nNext, BN_CLICKED), 0);
            return true;
        });
    }
    script.then(L"help", [&] {
        HWND hHelp = findDialog(UQClientWindow::HELP_CAPTION);
        if (hHelp == nullptr)
            return false;
        script.picture(hHelp, L"korclient-help");
        click(hHelp, IDCANCEL);
        PostMessageW(hMain, WM_COMMAND, MAKEWPARAM(IDC_MAIN_RENAME, BN_CLICKED), 0);
        return true;
    });
    script.then(L"rename", [&] {
        HWND hEditor = findDialog(L"Rename search");
        if (hEditor == nullptr)
            return false;
        script.picture(hEditor, L"korclient-rename");
        click(hEditor, IDOK);
        return true;
    });
    script.then(L"close", [&] {
        if (findDialog(L"Rename search") != nullptr || main() == nullptr)
            return false;
        PostMessageW(hMain, WM_CLOSE, 0, 0);
        return true;
    });
    if (window.mf_show() != 0)
        _rSummary.failures.push_back(L"the main window could not be shown");
    if (!script.finished())
        _rSummary.failures.push_back(L"the tour did not reach its end");

    for (const UQFileOutcome& outcome : window.mf_getMigrationOutcomes())
        if (outcome.eSeverity == UQFileOutcome::GREEN)
            ++_rSummary.nMigrated;
    for (const auto& entry : hashes) {
        if (UQClientSample::mf_hashFile(sRetrieved + L"\\" + entry.first) == entry.second) {
            ++_rSummary.nRetrieved;
            WIN32_FILE_ATTRIBUTE_DATA data{};
            if (GetFileAttributesExW(UQSafeFile::mf_long(sRetrieved + L"\\" + entry.first).c_str(),
                                     GetFileExInfoStandard, &data))
                _rSummary.nBytesRetrieved +=
                    (static_cast<long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
        }
        if (UQClientSample::mf_hashFile(sFiles + L"\\" + entry.first) == entry.second)
            ++_rSummary.nRecalled;
    }
    _rSummary.bPatternRemembered = patternRemembered(sPattern) ? 1 : 0;
    const auto expect = [&](int _nGot, const wchar_t* _pszWhat) {
        if (_nGot != _rSummary.nFiles)
            _rSummary.failures.push_back(std::wstring(_pszWhat) + L": " + std::to_wstring(_nGot) + L" of " +
                                         std::to_wstring(_rSummary.nFiles));
    };
    expect(_rSummary.nMigrated, L"files migrated");
    expect(_rSummary.nStubs, L"stubs naming a stored version");
    expect(_rSummary.nVersionsFound, L"versions found by the history search");
    expect(_rSummary.nRetrieved, L"retrieved files equal to the original");
    expect(_rSummary.nRecalled, L"recalled files equal to the original");
    if (!_rSummary.bPatternRemembered)
        _rSummary.failures.push_back(L"the registry does not hold the pattern list");
    const std::wstring sText = mf_format(_rSummary);
    UQSafeFile::mf_writeFileAtomically(sRoot + L"\\summary.txt",
                                       uqfmt::wideToUtf8(sText.data(), sText.size()), 1);
    std::wstring sTrace;
    for (const std::wstring& sLine : script.trace())
        sTrace += sLine + L"\n";
    UQSafeFile::mf_writeFileAtomically(sRoot + L"\\trace.txt",
                                       uqfmt::wideToUtf8(sTrace.data(), sTrace.size()), 1);
    return _rSummary.failures.empty() ? 0 : 1;
}

std::wstring UQClientTour::mf_format(const Summary& _summary) {
    std::wstring sText = L"korclient tour\n";
    sText += L"  sample files:                     " + std::to_wstring(_summary.nFiles) + L"\n";
    sText += L"  migrated:                         " + std::to_wstring(_summary.nMigrated) + L"\n";
    sText += L"  stubs naming a verified version:  " + std::to_wstring(_summary.nStubs) + L"\n";
    sText += L"  versions found by the search:     " + std::to_wstring(_summary.nVersionsFound) + L"\n";
    sText += L"  retrieved, equal to the original: " + std::to_wstring(_summary.nRetrieved) + L" (" +
             std::to_wstring(_summary.nBytesRetrieved) + L" bytes)\n";
    sText += L"  recalled, equal to the original:  " + std::to_wstring(_summary.nRecalled) + L"\n";
    sText += L"  pattern list in the registry:     " +
             std::wstring(_summary.bPatternRemembered ? L"yes" : L"no") + L"\n";
    sText += L"pictures:\n";
    for (const std::wstring& sPicture : _summary.pictures)
        sText += L"  " + sPicture + L"\n";
    if (_summary.failures.empty())
        sText += L"every step passed\n";
    for (const std::wstring& sFailure : _summary.failures)
        sText += L"FAILED: " + sFailure + L"\n";
    return sText;
}
