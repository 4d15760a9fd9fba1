#include "guibase/settings/UQGuiBackupOptions.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "interfaces/korarchiver.h"

namespace {

const wchar_t* const BACKUP_CLIENT_KEY = L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient";
const wchar_t* const BACKUP_CLIENT_PATH = L"Path";

} // namespace

UQGuiBackupOptions::UQGuiBackupOptions() : m_bBackupBeforeMigrate(1) {}

UQGuiBackupOptions::~UQGuiBackupOptions() = default;

void UQGuiBackupOptions::mf_initializeDefaults() {
    static const wchar_t* const _sFunction_ = L"UQGuiBackupOptions::mf_initializeDefaults";
    try {
        m_bBackupBeforeMigrate = UQGuiRegistry::mf_isDefaultBackupBeforeMigrate();
        m_sOptionsFilePath = mf_getOptionsFileDefaultPath();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure initializing default backup options:\r\n%s%s");
        throw;
    }
}

CString UQGuiBackupOptions::mf_getOptionsFileDefaultName() {
    return L"kor.opt";
}

CString UQGuiBackupOptions::mf_getOptionsFileDefaultExtension() {
    return L"opt";
}

CString UQGuiBackupOptions::mf_getOptionsFileDefaultDirectory() {
    static const wchar_t* const _sFunction_ = L"UQGuiBackupOptions::mf_getOptionsFileDefaultDirectory";
    CString sDirectory;
    try {
        UQRegistry::mf_getValue(BACKUP_CLIENT_PATH, sDirectory, BACKUP_CLIENT_KEY, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Could not get B/A client installation path from registry:\r\n%s%s");
        throw;
    }
    return sDirectory;
}

CString UQGuiBackupOptions::mf_getOptionsFileDefaultPath() {
    return UQPath::mf_appendFile(mf_getOptionsFileDefaultDirectory(), mf_getOptionsFileDefaultName());
}

int UQGuiBackupOptions::mf_validateOptionsFile(const CString& _sPath, UQErrnoData& _rError) {
    static const wchar_t* const _sFunction_ = L"UQGuiBackupOptions::mf_validateOptionsFile";
    UQBackup* pInstance = nullptr;
    int bValid = 0;
    try {
        pInstance = UQBackup::mf_createInstance(UQBackend::VRS);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure creating backup instance:\r\n%s%s");
        _rError = e.mf_getData();
        return 0;
    }
    try {
        UQBackupOptions options;
        options.mf_setOptionsFilePath(_sPath);
        bValid = UQBackup::mf_validateOptions(pInstance, options, _rError) != 0 ? 1 : 0;
    } catch (const UQErrno& e) {
        UQReport::mf_logError(UQLogData::LEVEL_G, e, _sFunction_, L"Backup options are not valid:\r\n%s%s");
        _rError = e.mf_getData();
        bValid = 0;
    }
    try {
        UQBackup::mf_deleteInstance(pInstance);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure deleting backup instance:\r\n%s%s");
    }
    return bValid;
}
