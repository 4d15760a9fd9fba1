// The client's migration wizard: the folder and its owner, the management class, the backup before
// migration, then the run on the wizard's worker thread with its results.
#pragma once

#include "UQFileOutcome.h"
#include "UQServerDirectory.h"

#include "guibase/panels/UQMgmtClassPanel.h"
#include "guibase/wizard/UQWizard.h"

#include <memory>
#include <mutex>
#include <vector>

class UQMigrationWizard : public UQWizard {
public:
    enum PANEL { PANEL_FOLDER = 0, PANEL_CLASS = 1, PANEL_BACKUP = 2, PANEL_RUN = 3 };
    static const wchar_t* const CAPTION;

    UQMigrationWizard(UQServerDirectory& _rServer, const std::wstring& _sFolder);
    ~UQMigrationWizard() override;

    // The frame is captioned for what it does; the library's default caption names no task.
    void mf_implInitWizard() override;
    void mf_implInitPanel(UQWizardPanel& _panel) override;
    // Cancel ends a run in progress before the wizard closes.
    void mf_implCancelWizard(int _nResult) override;
    void mf_implReadPanel(UQWizardPanel& _panel, int _bForward) override;

    // Next on the backup panel checks the option file first and names what is wrong with it (file and line).
    int mf_onCommand(unsigned short _usNotificationCode, unsigned short _usControlId) override;
    // The panels' own buttons.
    int mf_onPanelCommand(UQWizardPanel& _panel, unsigned short _usCode, unsigned short _usId);
    // The run, on the worker thread.
    void mf_run(UQWizardPanel& _panel);

    const std::wstring& mf_getFolder() const noexcept { return m_sFolder; }
    std::vector<UQFileOutcome> mf_getOutcomes();
    const std::wstring& mf_getFailure() const noexcept { return m_sFailure; }

private:
    // Whether the option file can be used; else the reason with the file and line.
    static int mf_implCheckOptionFile(const std::wstring& _sFile, std::wstring& _rsReason);
    // The run's results in the panel, on the window's thread.
    void mf_implShowRun(UQWizardPanel& _panel);

    UQServerDirectory& m_rServer;
    std::wstring m_sFolder;
    std::wstring m_sOwner;
    CString m_sMgmtClass;
    int m_bBackup;
    std::wstring m_sOptionFile;
    std::unique_ptr<UQMgmtClassPanel> m_pClassPanel;
    std::mutex m_mutex;
    std::vector<UQFileOutcome> m_outcomes;
    std::wstring m_sFailure;
    std::wstring m_sProgress;
    int m_bRan;
    bool m_bProgressPosted;
    UQCancelSwitch m_cancel;
};
