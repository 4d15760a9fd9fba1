#pragma once

#include "interfaces/korbase.h"

// The two backup choices made before a migration: back the files up first, and with which option file
// (empty: the dynamic option file the backup client writes itself). Option files are checked by the
// backup client's own validation.
class KORGUIBASE_API UQGuiBackupOptions {
public:
    UQGuiBackupOptions();
    UQGuiBackupOptions(const UQGuiBackupOptions& _other) = default;
    UQGuiBackupOptions& operator=(const UQGuiBackupOptions& _other) = default;
    virtual ~UQGuiBackupOptions();

    int mf_isBackupBeforeMigrate() const noexcept { return m_bBackupBeforeMigrate; }
    void mf_setBackupBeforeMigrate(int _bBackupBeforeMigrate) noexcept {
        m_bBackupBeforeMigrate = _bBackupBeforeMigrate;
    }
    const CString& mf_getOptionsFilePath() const noexcept { return m_sOptionsFilePath; }
    void mf_setOptionsFilePath(const CString& _sPath) { m_sOptionsFilePath = _sPath; }

    // The GUI default for backing up first and the backup client's "kor.opt"; throws after logging when
    // the client's installation path cannot be read.
    void mf_initializeDefaults();

    // "kor.opt" and "opt".
    static CString mf_getOptionsFileDefaultName();
    static CString mf_getOptionsFileDefaultExtension();
    // The backup client's installation folder: "Path" under
    // HKEY_LOCAL_MACHINE\SOFTWARE\Corvex\Stormex\CurrentVersion\BackupClient. Throws after logging.
    static CString mf_getOptionsFileDefaultDirectory();
    // That folder with "kor.opt".
    static CString mf_getOptionsFileDefaultPath();
    // 1 when the backup client finds the option file valid; otherwise 0 with the client's error data in
    // _rError (an invalid file is logged at LEVEL_G only).
    static int mf_validateOptionsFile(const CString& _sPath, UQErrnoData& _rError);

private:
    int m_bBackupBeforeMigrate;
    CString m_sOptionsFilePath;
};
