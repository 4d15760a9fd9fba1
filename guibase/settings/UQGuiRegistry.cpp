#include "guibase/settings/UQGuiRegistry.h"

#include "guibase/foundation/UQReport.h"

#include <optional>

namespace {

const wchar_t* const MIGRATION = L"Migration";
const wchar_t* const BACKUP = L"Backup";
const wchar_t* const RETRIEVE = L"Retrieve";

const wchar_t* const MGMT_CLASS_DEFAULT = L"MgmtClassDefault";
const wchar_t* const BACKUP_BEFORE_MIGRATE = L"BackupBeforeMigrate";
const wchar_t* const BACKUP_OPTION_FILE_DEFAULT = L"BackupOptionFileDefault";
const wchar_t* const FILE_SECURITY_DEFAULT = L"FileSecurityDefault";
const wchar_t* const AD_STREAM_DEFAULT = L"ADStreamDefault";
const wchar_t* const BACKUP_OPTION_FILES_MRU = L"BackupOptionFilesMru";
const wchar_t* const HISTORY_SEARCH_ROOT = L"HistorySearchRoot";

// Let the server choose the management class, the backup client the option file.
const wchar_t* const SERVER_MGMT_CLASS = L"<VRS server default mgmt class>";
const wchar_t* const DYNAMIC_OPTION_FILE = L"<B/A client chooses options file>";
const wchar_t* const DEFAULT = L"DEFAULT";
// Catalogue text: the display name of the dynamic option file.
const unsigned DYNAMIC_OPTION_FILE_TEXT = 3144;

const wchar_t* const BACKUP_CLIENT_KEY = L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient";
const wchar_t* const BACKUP_CLIENT_PATH = L"Path";
const wchar_t* const OPTION_FILE_NAME = L"kor.opt";

const wchar_t* trueFalse(int _nB) noexcept {
    return _nB ? L"true" : L"false";
}

CString dynamicOptionFileText() {
    return UQString(DYNAMIC_OPTION_FILE_TEXT);
}

// "DEFAULT <display name>": the dynamic MRU entry as the GUI shows it.
CString translatedDynamicOptionFile() {
    CString s;
    s.Format(L"%s <%s>", DEFAULT, dynamicOptionFileText());
    return s;
}

// An entry that holds the placeholder or its display name, translated or not, stands for the dynamic
// option file.
bool isDynamicOptionFile(const CString& _sEntry, const CString& _sDisplayName) {
    return _sEntry.Find(DYNAMIC_OPTION_FILE) >= 0 || _sEntry.Find(_sDisplayName) >= 0;
}

// A registry read that failed and goes on with a default: the wrapped failure and the default it returns.
void logReturningTrue(const UQErrno& _error, const wchar_t* _pszFunction, const wchar_t* _pszName) {
    UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction,
                     L"Failure getting registry value '%s':\r\n%s%s\r\n%sReturning default %d (%s)...",
                     _pszName, UQLog::TAB, _error.mf_toString(), UQLog::TAB, 1, L"true");
}

void logReturningEmpty(const UQErrno& _error, const wchar_t* _pszFunction, const wchar_t* _pszName) {
    UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction,
                     L"Failure getting registry value '%s':\r\n%s%s\r\n%sReturning empty value ...", _pszName,
                     UQLog::TAB, _error.mf_toString(), UQLog::TAB);
}

// Reads a flag with mf_getOrSetValue, so that a missing value is created with 1.
int getFlagOrCreate(const wchar_t* _pszFunction, const wchar_t* _pszSubKey, const wchar_t* _pszName) {
    int nValue = 1;
    try {
        UQRegistry::mf_getOrSetValue(_pszName, nValue, UQRegistry::mf_getRegistryRoot(_pszSubKey),
                                     HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningTrue(e, _pszFunction, _pszName);
        return 1;
    }
    return nValue;
}

// Writes a machine-wide flag; _pszSuccess takes tab, key, name, tab, value and its truth.
int setFlag(const wchar_t* _pszFunction, const wchar_t* _pszSubKey, const wchar_t* _pszName, int _nValue,
            const wchar_t* _pszSuccess) {
    CString sKey;
    try {
        sKey = UQRegistry::mf_getRegistryRoot(_pszSubKey);
        UQRegistry::mf_setValue(_pszName, _nValue, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _pszFunction, L"Failure setting registry value '%s':\r\n%s%s", _pszName);
        return 0;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _pszFunction, _pszSuccess, UQLog::TAB, sKey, _pszName, UQLog::TAB,
                     _nValue, trueFalse(_nValue));
    return 1;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Seeding

void UQGuiRegistry::mf_initialize() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_initialize";
    // Each step on its own: one that fails leaves the others to run.
    try {
        mf_implInitializeDefaultMgmtClass();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure initializing default management class:\r\n%s%s");
    }
    try {
        mf_implInitializeBackupBeforeMigrate();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure initializing backup-before-migrate:\r\n%s%s");
    }
    try {
        mf_implInitializeDefaultBackupOptionFile();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure initializing default backup option file:\r\n%s%s");
    }
    try {
        mf_implInitializeBackupOptionFilePathMRU();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure initializing backup option file MRU:\r\n%s%s");
    }
}

void UQGuiRegistry::mf_implInitializeDefaultMgmtClass() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeDefaultMgmtClass";
    const CString sKey = UQRegistry::mf_getRegistryRoot(MIGRATION);
    if (UQRegistry::mf_exists(MGMT_CLASS_DEFAULT, sKey, HKEY_LOCAL_MACHINE)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Migration class default '%s' already initialized",
                         MGMT_CLASS_DEFAULT);
        return;
    }
    try {
        UQRegistry::mf_setValue(MGMT_CLASS_DEFAULT, SERVER_MGMT_CLASS, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                MGMT_CLASS_DEFAULT);
        throw;
    }
    // The text speaks of an option file; it has always read so.
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Initialized default management class:\r\n%s'HKLM\\%s\\%s'\r\n%swith default backup "
                     L"option file '%s'",
                     UQLog::TAB, sKey, MGMT_CLASS_DEFAULT, UQLog::TAB, SERVER_MGMT_CLASS);
}

void UQGuiRegistry::mf_implInitializeBackupBeforeMigrate() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeBackupBeforeMigrate";
    const CString sKey = UQRegistry::mf_getRegistryRoot(BACKUP);
    if (UQRegistry::mf_exists(BACKUP_BEFORE_MIGRATE, sKey, HKEY_LOCAL_MACHINE)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Backup-before-migrate '%s' already initialized",
                         BACKUP_BEFORE_MIGRATE);
        return;
    }
    try {
        UQRegistry::mf_setValue(BACKUP_BEFORE_MIGRATE, 1, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                BACKUP_BEFORE_MIGRATE);
        throw;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Initialized backup-before-migrate:\r\n%s'HKLM\\%s\\%s'\r\n%swith %d (%s)", UQLog::TAB,
                     sKey, BACKUP_BEFORE_MIGRATE, UQLog::TAB, 1, L"true");
}

void UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile";
    const CString sKey = UQRegistry::mf_getRegistryRoot(BACKUP);
    if (UQRegistry::mf_exists(BACKUP_OPTION_FILE_DEFAULT, sKey, HKEY_LOCAL_MACHINE)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                         L"Backup option file default '%s' already initialized", BACKUP_OPTION_FILE_DEFAULT);
        return;
    }
    CString sDirectory;
    try {
        UQRegistry::mf_getValue(BACKUP_CLIENT_PATH, sDirectory, BACKUP_CLIENT_KEY, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Could not get B/A client installation path from registry:\r\n%s%s");
        throw;
    }
    CString sPath = UQPath::mf_appendFile(sDirectory, OPTION_FILE_NAME);
    if (!UQPath::mf_exists(sPath)) {
        // An empty default stands for the dynamic option file.
        UQReport::mf_log(
            UQLogData::LEVEL_G, _sFunction_,
            L"Backup option file default '%s' does not exist\r\n%sInitializing default backup option "
            L"files '%s' empty (dynamic option file)",
            sPath, UQLog::TAB, BACKUP_OPTION_FILE_DEFAULT);
        sPath.Empty();
    }
    try {
        UQRegistry::mf_setValue(BACKUP_OPTION_FILE_DEFAULT, sPath, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                BACKUP_OPTION_FILE_DEFAULT);
        throw;
    }
    UQReport::mf_log(
        UQLogData::LEVEL_G, _sFunction_,
        L"Initialized default backup option file:\r\n%s'HKLM\\%s\\%s'\r\n%swith default backup option "
        L"file '%s'",
        UQLog::TAB, sKey, BACKUP_OPTION_FILE_DEFAULT, UQLog::TAB, sPath);
}

void UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU";
    int bExists = 0;
    try {
        bExists = UQRegistry::mf_exists(BACKUP_OPTION_FILES_MRU, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Failure checking registry value '%s' for existence:\r\n%s%s",
                                BACKUP_OPTION_FILES_MRU);
        return;
    }
    if (bExists) {
        UQArray<CString> asEntries;
        try {
            UQRegistry::mf_getValues(BACKUP_OPTION_FILES_MRU, asEntries, L"", HKEY_CURRENT_USER);
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure reading registry values '%s':\r\n%s%s",
                                    BACKUP_OPTION_FILES_MRU);
            return;
        }
        for (INT_PTR i = 0; i < asEntries.GetSize(); ++i) {
            if (asEntries[i] == DYNAMIC_OPTION_FILE) {
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                 L"Successfully checked registry '%s' for dynamic option file:\r\n%s'%s'",
                                 BACKUP_OPTION_FILES_MRU, UQLog::TAB, DYNAMIC_OPTION_FILE);
                return;
            }
        }
    }
    try {
        // Its result does not matter here: an entry that is there already is as good as one added.
        mf_updateTranslatedBackupOptionFilePathMRU(DYNAMIC_OPTION_FILE, 0);
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                         L"Successfully added dynamic option file '%s' to registry key '%s'",
                         DYNAMIC_OPTION_FILE, BACKUP_OPTION_FILES_MRU);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Failure adding dynamic options file '%s' to registry key '%s':\r\n%s%s",
                                DYNAMIC_OPTION_FILE, BACKUP_OPTION_FILES_MRU);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Management class

CString UQGuiRegistry::mf_getDefaultMgmtClass() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getDefaultMgmtClass";
    CString sValue;
    try {
        UQRegistry::mf_getValue(MGMT_CLASS_DEFAULT, sValue, UQRegistry::mf_getRegistryRoot(MIGRATION),
                                HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningEmpty(e, _sFunction_, MGMT_CLASS_DEFAULT);
        return CString();
    }
    return sValue == SERVER_MGMT_CLASS ? CString(DEFAULT) : sValue;
}

int UQGuiRegistry::mf_setDefaultMgmtClass(const CString& _sMgmtClass) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultMgmtClass";
    CString sKey;
    try {
        sKey = UQRegistry::mf_getRegistryRoot(MIGRATION);
        UQRegistry::mf_setValue(MGMT_CLASS_DEFAULT, _sMgmtClass, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                MGMT_CLASS_DEFAULT);
        return 0;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Set default management class:\r\n%s'HKLM\\%s\\%s'\r\n%sto '%s'", UQLog::TAB, sKey,
                     MGMT_CLASS_DEFAULT, UQLog::TAB, _sMgmtClass);
    return 1;
}

// ---------------------------------------------------------------------------------------------------------
// Flags

int UQGuiRegistry::mf_isDefaultBackupBeforeMigrate() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultBackupBeforeMigrate";
    // Seeded by mf_initialize, so read without creating it.
    int nValue = 1;
    try {
        UQRegistry::mf_getValue(BACKUP_BEFORE_MIGRATE, nValue, UQRegistry::mf_getRegistryRoot(BACKUP),
                                HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningTrue(e, _sFunction_, BACKUP_BEFORE_MIGRATE);
        return 1;
    }
    return nValue;
}

int UQGuiRegistry::mf_setDefaultBackupBeforeMigrate(int _bBackupBeforeMigrate) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultBackupBeforeMigrate";
    return setFlag(_sFunction_, BACKUP, BACKUP_BEFORE_MIGRATE, _bBackupBeforeMigrate,
                   L"Set backup-before-migrate:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultMigrationFileSecurity() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultMigrationFileSecurity";
    return getFlagOrCreate(_sFunction_, MIGRATION, FILE_SECURITY_DEFAULT);
}

int UQGuiRegistry::mf_setDefaultMigrationFileSecurity(int _bFileSecurity) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultMigrationFileSecurity";
    return setFlag(_sFunction_, MIGRATION, FILE_SECURITY_DEFAULT, _bFileSecurity,
                   L"Set migration-file-security:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultRetrieveFileSecurity() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultRetrieveFileSecurity";
    return getFlagOrCreate(_sFunction_, RETRIEVE, FILE_SECURITY_DEFAULT);
}

int UQGuiRegistry::mf_setDefaultRetrieveFileSecurity(int _bFileSecurity) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultRetrieveFileSecurity";
    return setFlag(_sFunction_, RETRIEVE, FILE_SECURITY_DEFAULT, _bFileSecurity,
                   L"Set retrieval-file-security:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultMigrationADStreams() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultMigrationADStreams";
    return getFlagOrCreate(_sFunction_, MIGRATION, AD_STREAM_DEFAULT);
}

int UQGuiRegistry::mf_setDefaultMigrationADStreams(int _bADStreams) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultMigrationADStreams";
    return setFlag(_sFunction_, MIGRATION, AD_STREAM_DEFAULT, _bADStreams,
                   L"Set migration-alternate-data-streams:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultRetrieveADStreams() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultRetrieveADStreams";
    return getFlagOrCreate(_sFunction_, RETRIEVE, AD_STREAM_DEFAULT);
}

int UQGuiRegistry::mf_setDefaultRetrieveADStreams(int _bADStreams) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultRetrieveADStreams";
    return setFlag(_sFunction_, RETRIEVE, AD_STREAM_DEFAULT, _bADStreams,
                   L"Set retrieval-alternate-data-streams:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

// ---------------------------------------------------------------------------------------------------------
// Default backup option file

CString UQGuiRegistry::mf_getDefaultBackupOptionFilePath() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getDefaultBackupOptionFilePath";
    CString sPath;
    try {
        UQRegistry::mf_getValue(BACKUP_OPTION_FILE_DEFAULT, sPath, UQRegistry::mf_getRegistryRoot(BACKUP),
                                HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningEmpty(e, _sFunction_, BACKUP_OPTION_FILE_DEFAULT);
        return CString();
    }
    return sPath;
}

int UQGuiRegistry::mf_setDefaultBackupOptionFilePath(const CString& _sPath) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultBackupOptionFilePath";
    CString sKey;
    try {
        sKey = UQRegistry::mf_getRegistryRoot(BACKUP);
        UQRegistry::mf_setValue(BACKUP_OPTION_FILE_DEFAULT, _sPath, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        // Unlike its siblings it throws, and its record names the backup-before-migrate value: both as the
        // product has always had them.
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                BACKUP_BEFORE_MIGRATE);
        throw;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Set default backup option file:\r\n%s'HKLM\\%s\\%s'\r\n%sto '%s'", UQLog::TAB, sKey,
                     BACKUP_OPTION_FILE_DEFAULT, UQLog::TAB, _sPath);
    return 1;
}

// ---------------------------------------------------------------------------------------------------------
// Option file MRU

int UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(UQArray<CString>& _rasPaths) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU";
    try {
        if (UQRegistry::mf_exists(BACKUP_OPTION_FILES_MRU, L"", HKEY_CURRENT_USER))
            UQRegistry::mf_getValues(BACKUP_OPTION_FILES_MRU, _rasPaths, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure reading registry values '%s':\r\n%s%s",
                                BACKUP_OPTION_FILES_MRU);
        _rasPaths.RemoveAll();
        return 0;
    }
    const CString sTranslated = translatedDynamicOptionFile();
    int nReplaced = 0;
    for (INT_PTR i = 0; i < _rasPaths.GetSize(); ++i) {
        if (_rasPaths[i] == DYNAMIC_OPTION_FILE) {
            _rasPaths[i] = sTranslated;
            ++nReplaced;
        }
    }
    // The GUI always offers the dynamic option file, also when the registry holds nothing.
    if (nReplaced == 0)
        _rasPaths.Add(sTranslated);
    return 1;
}

int UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(const UQArray<CString>& _asPaths) {
    // Spelled so in every record the product has ever written; log readers search for it.
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU";
    const CString sDisplayName = dynamicOptionFileText();
    UQArray<CString> asEntries;
    for (INT_PTR i = 0; i < _asPaths.GetSize(); ++i)
        asEntries.Add(isDynamicOptionFile(_asPaths[i], sDisplayName) ? CString(DYNAMIC_OPTION_FILE)
                                                                     : _asPaths[i]);
    try {
        if (asEntries.GetSize() >= 2) {
            // Case-blind and not stable: of entries equal but for case, either may come first, so only exact
            // neighbours are duplicates.
            asEntries.mf_sortPointerArray();
            for (INT_PTR i = 1; i < asEntries.GetSize();) {
                if (asEntries[i] == asEntries[i - 1])
                    asEntries.RemoveAt(i);
                else
                    ++i;
            }
        }
        UQRegistry::mf_setValues(BACKUP_OPTION_FILES_MRU, asEntries, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure sorting/writing registry values '%s':\r\n%s%s",
                                BACKUP_OPTION_FILES_MRU);
        return 0;
    }
    return 1;
}

int UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(const CString& _sPath, int _bRemove) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU";
    const CString sEntry =
        isDynamicOptionFile(_sPath, dynamicOptionFileText()) ? CString(DYNAMIC_OPTION_FILE) : _sPath;
    UQArray<CString> asEntries;
    // Held from the read to the write, so that another thread or process adding at the same time neither
    // loses its entry nor makes this one lost.
    std::optional<UQRegistryUpdate> update;
    try {
        update.emplace(BACKUP_OPTION_FILES_MRU, L"", HKEY_CURRENT_USER);
        if (UQRegistry::mf_exists(BACKUP_OPTION_FILES_MRU, L"", HKEY_CURRENT_USER))
            UQRegistry::mf_getValues(BACKUP_OPTION_FILES_MRU, asEntries, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure reading registry values '%s':\r\n%s%s",
                                BACKUP_OPTION_FILES_MRU);
        return 0;
    }
    if (!_bRemove) {
        for (INT_PTR i = 0; i < asEntries.GetSize(); ++i) {
            if (asEntries[i].CompareNoCase(sEntry) == 0) {
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                 L"Option file path '%s' exists, not added to MRU", sEntry);
                return 0;
            }
        }
        try {
            asEntries.Add(sEntry);
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure adding/sorting registry values '%s':\r\n%s%s",
                                    BACKUP_OPTION_FILES_MRU);
            return 0;
        }
    } else {
        INT_PTR nFound = -1;
        for (INT_PTR i = 0; i < asEntries.GetSize() && nFound < 0; ++i) {
            if (asEntries[i].CompareNoCase(sEntry) == 0)
                nFound = i;
        }
        if (nFound < 0) {
            UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                             L"Option file path does '%s' not exist, not removed from MRU", sEntry);
            return 0;
        }
        asEntries.RemoveAt(nFound);
    }
    try {
        // It logs its own failure; its 0 does not change what this call did to the list.
        mf_setTranslatedBackupOptionFilePathMRU(asEntries);
        update->mf_commit();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure sorting/writing registry values '%s':\r\n%s%s",
                                BACKUP_OPTION_FILES_MRU);
        return 0;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Option file path '%s' %s MRU", sEntry,
                     _bRemove ? L"removed from" : L"added to");
    return 1;
}

// ---------------------------------------------------------------------------------------------------------
// History search root

CString UQGuiRegistry::mf_getHistorySearchRoot() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getHistorySearchRoot";
    CString sRoot;
    try {
        if (UQRegistry::mf_exists(HISTORY_SEARCH_ROOT, L"", HKEY_CURRENT_USER))
            UQRegistry::mf_getValue(HISTORY_SEARCH_ROOT, sRoot, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        logReturningEmpty(e, _sFunction_, HISTORY_SEARCH_ROOT);
        return CString();
    }
    return sRoot;
}

int UQGuiRegistry::mf_setHistorySearchRoot(const CString& _sRoot) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setHistorySearchRoot";
    try {
        UQRegistry::mf_setValue(HISTORY_SEARCH_ROOT, _sRoot, 0, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                HISTORY_SEARCH_ROOT);
        return 0;
    }
    return 1;
}
