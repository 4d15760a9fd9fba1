#include "UQClientTour.h"

#include "KorClientIds.h"
#include "Screenshot.h"
#include "UQClientSample.h"
#include "UQClientWindow.h"
#include "UQDialogScript.h"
#include "UQMigrationWizard.h"
#include "UQRetrieval.h"

#include "compat/utf8.h"
#include "interfaces/korbase.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <map>

namespace {

const DWORD TIME_LIMIT_MS = 240000;
// The wizard frame's Next button.
const int ITEM_NEXT = 440;

// Saves a picture of _hWnd as the user sees it: active, with focus and access keys shown as a keyboard
// user sees them.
void picture(HWND _hWnd, const std::wstring& _sFolder, const wchar_t* _pszName,
             UQClientTour::Summary& _rSummary) {
    SetForegroundWindow(_hWnd);
    SendMessageW(_hWnd, WM_NCACTIVATE, TRUE, 0);
    SendMessageW(_hWnd, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL), 0);
    const std::wstring sPath = _sFolder + L"\\" + _pszName + L".png";
    const std::string sFailure = screenshot::save(_hWnd, sPath);
    if (sFailure.empty())
        _rSummary.pictures.push_back(sPath);
    else
        _rSummary.failures.push_back(L"picture " + sPath + L": " +
                                     uqfmt::utf8ToWide(sFailure.data(), sFailure.size()));
}

// Whether the pattern list in the registry holds _sPattern, read back through the registry service from
// the user key the combo box writes to.
bool patternRemembered(const std::wstring& _sPattern) {
    UQArray<CString> patterns;
    try {
        UQRegistry::mf_getValues(UQClientWindow::PATTERN_LIST_VALUE, patterns, CString(), HKEY_CURRENT_USER);
    } catch (const UQErrno&) {
        return false;
    }
    for (INT_PTR i = 0; i < patterns.GetSize(); ++i)
        if (_sPattern == patterns[i].GetString())
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
    UQDialogScript script(TIME_LIMIT_MS);
    HWND hMain = nullptr;
    const auto main = [&]() -> HWND {
        hMain = window.mf_getHandle();
        return hMain != nullptr && IsWindowVisible(hMain) ? hMain : nullptr;
    };
    HWND hFrame = nullptr;
    const auto shoot = [&](HWND _hWnd, const wchar_t* _pszName) {
        picture(_hWnd, sPictures, _pszName, _rSummary);
    };

    script.mf_then(L"tip", [&] {
        HWND hTip = UQDialogScript::mf_findDialog(L"Tip");
        if (hTip == nullptr)
            return false;
        shoot(hTip, L"korclient-tip");
        UQDialogScript::mf_click(hTip, IDC_INFORMATION_OK);
        return true;
    });
    script.mf_then(L"start", [&] {
        if (main() == nullptr || UQDialogScript::mf_findDialog(L"Tip") != nullptr || !IsWindowEnabled(hMain))
            return false;
        shoot(hMain, L"korclient-start");
        UQDialogScript::mf_click(hMain, IDC_MAIN_MIGRATE);
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
        script.mf_then(panel.pszPicture, [&, panel] {
            hFrame = frame();
            if (hFrame == nullptr || !IsWindowEnabled(GetDlgItem(hFrame, ITEM_NEXT)) ||
                UQDialogScript::mf_findPanel(hFrame, panel.nItem) == nullptr)
                return false;
            shoot(hFrame, panel.pszPicture);
            UQDialogScript::mf_click(hFrame, ITEM_NEXT);
            return true;
        });
    }
    script.mf_then(L"migration done", [&] {
        hFrame = frame();
        HWND hPanel = hFrame != nullptr ? UQDialogScript::mf_findPanel(hFrame, IDC_CLIENT_RUN_LIST) : nullptr;
        if (hPanel == nullptr || !IsWindowEnabled(GetDlgItem(hPanel, IDC_CLIENT_RUN_SAVE)) ||
            !IsWindowEnabled(GetDlgItem(hFrame, ITEM_NEXT)))
            return false;
        SendDlgItemMessageW(hPanel, IDC_CLIENT_RUN_LIST, LVM_ENSUREVISIBLE, 0, FALSE);
        shoot(hFrame, L"korclient-migrate-done");
        UQDialogScript::mf_click(hFrame, ITEM_NEXT);
        return true;
    });
    script.mf_then(L"search", [&] {
        if (window.mf_getMigrationWizard() != nullptr || main() == nullptr || !IsWindowEnabled(hMain))
            return false;
        // Every file is a stub now that names a stored version which verifies.
        UQServerDirectory server(sServer);
        for (const auto& entry : hashes) {
            UQVersionRecord stub;
            UQFileHandle version;
            UQVersionRecord header;
            std::wstring sWhy;
            if (UQRetrieval::mf_readStub(sFiles + L"\\" + entry.first, stub, sWhy) &&
                server.mf_openVersion(stub.m_uVolume, stub.m_uPosition, stub.m_sObjectPath, stub.m_uVersion,
                                      &stub, version, header, sWhy) &&
                stub.m_sSha256 == entry.second)
                ++_rSummary.nStubs;
        }
        UQDialogScript::mf_type(GetDlgItem(hMain, IDC_MAIN_PATTERN), sPattern);
        UQDialogScript::mf_click(hMain, IDC_MAIN_SEARCH);
        return true;
    });
    script.mf_then(L"results", [&] {
        if (main() == nullptr || !IsWindowEnabled(hMain) ||
            UQDialogScript::mf_findDialog(L"History search") != nullptr || window.mf_getShownCount() == 0)
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
        shoot(hMain, L"korclient-search-results");
        UQDialogScript::mf_click(hMain, IDC_MAIN_RETRIEVE);
        return true;
    });
    const struct {
        const wchar_t* pszCaption;
        const wchar_t* pszPicture;
        int nNext;
    } RESULTS[] = {{L"Retrieve", L"korclient-retrieve-results", IDC_MAIN_RECALL},
                   {L"Recall", L"korclient-recall-results", IDC_MAIN_HELP}};
    for (const auto& result : RESULTS) {
        script.mf_then(result.pszPicture, [&, result] {
            HWND hResults = UQDialogScript::mf_findDialog(result.pszCaption);
            if (hResults == nullptr || GetDlgItem(hResults, IDC_RESULTS_LIST) == nullptr)
                return false;
            shoot(hResults, result.pszPicture);
            UQDialogScript::mf_click(hResults, IDOK);
            PostMessageW(hMain, WM_COMMAND, MAKEWPARAM(result.nNext, BN_CLICKED), 0);
            return true;
        });
    }
    script.mf_then(L"help", [&] {
        HWND hHelp = UQDialogScript::mf_findDialog(UQClientWindow::HELP_CAPTION);
        if (hHelp == nullptr)
            return false;
        shoot(hHelp, L"korclient-help");
        UQDialogScript::mf_click(hHelp, IDCANCEL);
        PostMessageW(hMain, WM_COMMAND, MAKEWPARAM(IDC_MAIN_RENAME, BN_CLICKED), 0);
        return true;
    });
    script.mf_then(L"rename", [&] {
        HWND hEditor = UQDialogScript::mf_findDialog(L"Rename search");
        if (hEditor == nullptr)
            return false;
        shoot(hEditor, L"korclient-rename");
        UQDialogScript::mf_click(hEditor, IDOK);
        return true;
    });
    script.mf_then(L"close", [&] {
        if (UQDialogScript::mf_findDialog(L"Rename search") != nullptr || main() == nullptr)
            return false;
        PostMessageW(hMain, WM_CLOSE, 0, 0);
        return true;
    });
    if (window.mf_show() != 0)
        _rSummary.failures.push_back(L"the main window could not be shown");
    for (const std::wstring& sFailure : script.mf_getFailures())
        _rSummary.failures.push_back(sFailure);
    if (!script.mf_isFinished() && script.mf_getFailures().empty())
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
    for (const std::wstring& sLine : script.mf_getTrace())
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
