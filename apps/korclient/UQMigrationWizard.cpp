#include "UQMigrationWizard.h"

#include "UQMigration.h"
#include "UQResultList.h"

#include "compat/UQHandle.h"
#include "guibase/foundation/UQReport.h"
#include "guibase/panels/UQSearchUserDialog.h"
#include "guibase/settings/UQGuiBackupOptions.h"
#include "guibase/settings/UQGuiBrowseDialog.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "guibase/toolkit/UQCheckBox.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "guibase/toolkit/UQWindow.h"
#include "interfaces/korarchiver.h"
#include "korlang_ids.h"

const wchar_t* const UQMigrationWizard::CAPTION = L"Migrate files";

namespace {

// The frame's Next button.
const unsigned short ITEM_NEXT = 440;

// A panel whose buttons and work the wizard handles.
class ClientPanel : public UQWizardPanel {
public:
    ClientPanel(UQMigrationWizard& _wizard, int _nIndex, unsigned _uTitle, unsigned _uTemplate, int _bExecute)
        : UQWizardPanel(_wizard, _nIndex, _uTitle, _uTemplate, _bExecute), m_rWizard(_wizard) {}
    int mf_onCommand(unsigned short _usCode, unsigned short _usId) override {
        return m_rWizard.mf_onPanelCommand(*this, _usCode, _usId);
    }
    void mf_execute() override { m_rWizard.mf_run(*this); }
    void mf_setResult(const UQErrnoData& _result) { mf_setExecutionResult(_result); }

private:
    UQMigrationWizard& m_rWizard;
};

std::wstring itemText(HWND _hPanel, int _nId) {
    HWND hItem = GetDlgItem(_hPanel, _nId);
    const int nLength = hItem != nullptr ? GetWindowTextLengthW(hItem) : 0;
    std::wstring sText(static_cast<std::size_t>(nLength) + 1, L'\0');
    if (nLength > 0)
        GetWindowTextW(hItem, &sText[0], nLength + 1);
    sText.resize(static_cast<std::size_t>(nLength));
    return sText;
}

// What the run posts to its own panel: the window's thread alone touches the windows, so that a wizard
// that closes and waits for its run never waits on a run that waits for a window.
const unsigned short RUN_PROGRESS = 0x7F01;
const unsigned short RUN_FINISHED = 0x7F02;

} // namespace

UQMigrationWizard::UQMigrationWizard(UQServerDirectory& _rServer, const std::wstring& _sFolder)
    : m_rServer(_rServer), m_sFolder(_sFolder), m_bBackup(0), m_bRan(0), m_bProgressPosted(false) {
    mf_installCancelSwitch(&m_cancel);
    m_sMgmtClass = UQGuiRegistry::mf_getDefaultMgmtClass();
    m_bBackup = UQGuiRegistry::mf_isDefaultBackupBeforeMigrate();
    m_sOptionFile = UQGuiRegistry::mf_getDefaultBackupOptionFilePath().GetString();
    mf_addPanel(new ClientPanel(*this, PANEL_FOLDER, 9701, IDD_CLIENT_PANEL_FOLDER, 0));
    mf_addPanel(new ClientPanel(*this, PANEL_CLASS, 9702, IDD_CLIENT_PANEL_CLASS, 0));
    mf_addPanel(new ClientPanel(*this, PANEL_BACKUP, 9703, IDD_CLIENT_PANEL_BACKUP, 0));
    mf_addPanel(new ClientPanel(*this, PANEL_RUN, 9704, IDD_CLIENT_PANEL_RUN, 1));
}

UQMigrationWizard::~UQMigrationWizard() = default;

void UQMigrationWizard::mf_implCancelWizard(int _nResult) {
    // A run in progress ends after the file at hand; the base then waits for it.
    m_cancel.mf_implTryCancel(UQErrnoData(UQErrno::_W_::UserCanceled));
    UQWizard::mf_implCancelWizard(_nResult);
}

void UQMigrationWizard::mf_implInitWizard() {
    SetWindowTextW(mf_getHandle(), CAPTION);
    UQWizard::mf_implInitWizard();
}

void UQMigrationWizard::mf_implInitPanel(UQWizardPanel& _panel) {
    HWND hPanel = _panel.mf_getHandle();
    switch (_panel.mf_getIndex()) {
    case PANEL_FOLDER:
        SetDlgItemTextW(hPanel, IDC_CLIENT_FOLDER_EDIT, m_sFolder.c_str());
        SetDlgItemTextW(hPanel, IDC_CLIENT_OWNER_EDIT, m_sOwner.c_str());
        break;
    case PANEL_CLASS:
        m_pClassPanel.reset(new UQMgmtClassPanel());
        m_pClassPanel->mf_onInitDialog(hPanel, m_sMgmtClass);
        break;
    case PANEL_BACKUP:
        UQCheckBox::mf_setItemChecked(hPanel, IDC_CLIENT_BACKUP_CHECK, m_bBackup);
        SetDlgItemTextW(hPanel, IDC_CLIENT_OPTION_FILE_EDIT, m_sOptionFile.c_str());
        break;
    case PANEL_RUN:
        UQResultList::mf_prepare(GetDlgItem(hPanel, IDC_CLIENT_RUN_LIST));
        break;
    default:
        break;
    }
}

void UQMigrationWizard::mf_implReadPanel(UQWizardPanel& _panel, int _bForward) {
    static const wchar_t* const _sFunction_ = L"UQMigrationWizard::mf_implReadPanel";
    HWND hPanel = _panel.mf_getHandle();
    switch (_panel.mf_getIndex()) {
    case PANEL_FOLDER: {
        m_sFolder = itemText(hPanel, IDC_CLIENT_FOLDER_EDIT);
        m_sOwner = itemText(hPanel, IDC_CLIENT_OWNER_EDIT);
        if (!_bForward)
            break;
        const std::wstring sAbsolute = UQSafeFile::mf_absolute(m_sFolder);
        const DWORD dwAttributes = sAbsolute.empty()
                                       ? INVALID_FILE_ATTRIBUTES
                                       : GetFileAttributesW(UQSafeFile::mf_long(sAbsolute).c_str());
        if (dwAttributes == INVALID_FILE_ATTRIBUTES || !(dwAttributes & FILE_ATTRIBUTE_DIRECTORY))
            throw UQErrno(UQErrnoData(UQErrno::_E_::File),
                          CString((L"'" + m_sFolder + L"' is no folder that can be migrated").c_str()));
        m_sFolder = sAbsolute;
        break;
    }
    case PANEL_CLASS:
        if (m_pClassPanel)
            m_sMgmtClass = m_pClassPanel->mf_getMgmtClassName(hPanel);
        break;
    case PANEL_BACKUP: {
        int bChecked = 0;
        UQCheckBox::mf_isItemChecked(hPanel, IDC_CLIENT_BACKUP_CHECK, bChecked);
        m_bBackup = bChecked;
        m_sOptionFile = itemText(hPanel, IDC_CLIENT_OPTION_FILE_EDIT);
        if (_bForward && m_bBackup && !m_sOptionFile.empty()) {
            UQErrnoData error;
            if (!UQGuiBackupOptions::mf_validateOptionsFile(CString(m_sOptionFile.c_str()), error)) {
                UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Option file '%s' refused",
                                 m_sOptionFile.c_str());
                throw UQErrno(error);
            }
        }
        break;
    }
    default:
        break;
    }
}

int UQMigrationWizard::mf_onCommand(unsigned short _usNotificationCode, unsigned short _usControlId) {
    if (_usNotificationCode == 0 && _usControlId == ITEM_NEXT && mf_getCurrentIndex() == PANEL_BACKUP) {
        HWND hPanel = mf_getPanel(PANEL_BACKUP).mf_getHandle();
        int bChecked = 0;
        UQCheckBox::mf_isItemChecked(hPanel, IDC_CLIENT_BACKUP_CHECK, bChecked);
        const std::wstring sFile = itemText(hPanel, IDC_CLIENT_OPTION_FILE_EDIT);
        std::wstring sReason;
        if (bChecked && !sFile.empty() && !mf_implCheckOptionFile(sFile, sReason)) {
            UQMessageBox box(CString((L"The option file cannot be used:\r\n" + sReason).c_str()),
                             UQSeverity(UVSeverity::RED), UQMessageBox::BUTTONS_SINGLE, CAPTION);
            box.mf_show(mf_getHandle());
            return 1;
        }
    }
    return UQWizard::mf_onCommand(_usNotificationCode, _usControlId);
}

int UQMigrationWizard::mf_implCheckOptionFile(const std::wstring& _sFile, std::wstring& _rsReason) {
    static const wchar_t* const _sFunction_ = L"UQMigrationWizard::mf_implCheckOptionFile";
    UQBackup* pBackup = nullptr;
    const auto deleteBackup = [&] {
        try {
            if (pBackup != nullptr)
                UQBackup::mf_deleteInstance(pBackup);
        } catch (const UQErrno& e) {
            UQReport::mf_logWrappedInline(e, _sFunction_, L"Failure deleting backup instance: %s");
        }
    };
    const UQScopeExit<decltype(deleteBackup)> release(deleteBackup);
    int bValid = 0;
    try {
        pBackup = UQBackup::mf_createInstance(UQBackend::VRS);
        UQBackupOptions options;
        options.mf_setOptionsFilePath(CString(_sFile.c_str()));
        UQErrnoData error;
        bValid = UQBackup::mf_validateOptions(pBackup, options, error) ? 1 : 0;
        if (!bValid)
            _rsReason = L"'" + _sFile + L"' is not valid";
    } catch (const UQErrno& e) {
        // The detail names the file and the line.
        _rsReason = e.mf_getDetail().IsEmpty() ? std::wstring(e.mf_toString().GetString())
                                               : std::wstring(e.mf_getDetail().GetString());
    }
    if (!bValid)
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Option file refused: %s", _rsReason.c_str());
    return bValid;
}

int UQMigrationWizard::mf_onPanelCommand(UQWizardPanel& _panel, unsigned short _usCode,
                                         unsigned short _usId) {
    HWND hPanel = _panel.mf_getHandle();
    switch (_usId) {
    case IDC_CLIENT_FOLDER_BROWSE: {
        CString sPath(itemText(hPanel, IDC_CLIENT_FOLDER_EDIT).c_str());
        if (UQGuiBrowseDialog::mf_browseFolders(hPanel, L"Migrate files", L"Choose the folder to migrate:",
                                                CString(), sPath))
            SetDlgItemTextW(hPanel, IDC_CLIENT_FOLDER_EDIT, sPath.GetString());
        return 1;
    }
    case IDC_CLIENT_OWNER_CHOOSE: {
        UQSearchUserDialog dialog;
        if (dialog.mf_show(hPanel) && dialog.mf_getResultUser() != nullptr)
            SetDlgItemTextW(hPanel, IDC_CLIENT_OWNER_EDIT,
                            dialog.mf_getResultUser()->mf_getDisplayName().GetString());
        return 1;
    }
    case IDC_CLIENT_OPTION_FILE_BROWSE: {
        CString sPath;
        if (UQGuiBrowseDialog::mf_browseOptionFiles(hPanel, sPath))
            SetDlgItemTextW(hPanel, IDC_CLIENT_OPTION_FILE_EDIT, sPath.GetString());
        return 1;
    }
    case IDC_CLIENT_RUN_SAVE: {
        CString sPath;
        std::wstring sError;
        if (UQGuiBrowseDialog::mf_browseListingExcerptFiles(hPanel, L"migration", sPath) &&
            !UQResultList::mf_saveListing(mf_getOutcomes(), sPath.GetString(), sError)) {
            UQMessageBox box(CString((L"The listing excerpt was not saved:\r\n" + sError).c_str()),
                             UQSeverity(UVSeverity::RED), UQMessageBox::BUTTONS_SINGLE, CAPTION);
            box.mf_show(mf_getHandle());
        }
        return 1;
    }
    case IDC_CLIENT_RUN_TEXT:
        if (_usCode == RUN_PROGRESS) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_bProgressPosted = false;
            SetDlgItemTextW(hPanel, IDC_CLIENT_RUN_TEXT, m_sProgress.c_str());
        }
        return 1;
    case IDC_CLIENT_RUN_LIST:
        if (_usCode == RUN_FINISHED)
            mf_implShowRun(_panel);
        return 1;
    case IDC_CLIENT_CLASS_COMBO:
        if (_usCode == CBN_SELCHANGE && m_pClassPanel)
            m_pClassPanel->mf_onUpdateDialog(hPanel);
        return 1;
    default:
        return 0;
    }
}

void UQMigrationWizard::mf_run(UQWizardPanel& _panel) {
    ClientPanel& panel = static_cast<ClientPanel&>(_panel);
    HWND hPanel = _panel.mf_getHandle();
    const auto post = [&](unsigned short _usId, unsigned short _usCode) {
        PostMessageW(hPanel, WM_COMMAND, MAKEWPARAM(_usId, _usCode), 0);
    };
    const auto progress = [&](const std::wstring& _sText) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_sProgress = _sText;
        // One message waits at a time, however many files go by meanwhile.
        if (!m_bProgressPosted) {
            m_bProgressPosted = true;
            post(IDC_CLIENT_RUN_TEXT, RUN_PROGRESS);
        }
    };
    progress(L"Migrating...");
    std::vector<UQFileOutcome> outcomes;
    std::wstring sReason;
    UQMigration migration(m_rServer, m_sFolder);
    const int bRan = migration.mf_run(
        &m_cancel,
        [&](int _nDone, int _nTotal, const std::wstring&) {
            progress(L"Migrating: " + std::to_wstring(_nDone) + L" of " + std::to_wstring(_nTotal));
        },
        outcomes, sReason);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_outcomes = std::move(outcomes);
        m_sFailure = bRan ? std::wstring() : sReason;
        m_bRan = bRan;
    }
    // Green lets the wizard finish (the one green category is the stub file's, which is what migration
    // leaves); the files' own failures are in the list.
    panel.mf_setResult(bRan ? UQErrnoData(UQErrno::_I_::StubFile) : UQErrnoData(UQErrno::_E_::File));
    post(IDC_CLIENT_RUN_LIST, RUN_FINISHED);
}

void UQMigrationWizard::mf_implShowRun(UQWizardPanel& _panel) {
    HWND hPanel = _panel.mf_getHandle();
    std::vector<UQFileOutcome> outcomes;
    int bRan = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        outcomes = m_outcomes;
        bRan = m_bRan;
        SetDlgItemTextW(hPanel, IDC_CLIENT_RUN_TEXT,
                        bRan ? UQResultList::mf_summary(outcomes).c_str() : m_sFailure.c_str());
    }
    UQResultList::mf_fill(GetDlgItem(hPanel, IDC_CLIENT_RUN_LIST), outcomes);
    EnableWindow(GetDlgItem(hPanel, IDC_CLIENT_RUN_SAVE), TRUE);
    if (bRan) {
        UQGuiRegistry::mf_setDefaultMgmtClass(m_sMgmtClass);
        UQGuiRegistry::mf_setDefaultBackupBeforeMigrate(m_bBackup);
    }
    mf_onPanelExecutionResult(_panel.mf_getExecutionResult());
}

std::vector<UQFileOutcome> UQMigrationWizard::mf_getOutcomes() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_outcomes;
}
