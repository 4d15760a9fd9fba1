#include "guibase/settings/UQGuiRegistry.h"

#include "guibase/foundation/UQReport.h"

#include <optional>

namespace {

const wchar_t* const kMigration = L"Migration";
const wchar_t* const kBackup = L"Backup";
const wchar_t* const kRetrieve = L"Retrieve";

const wchar_t* const kMgmtClassDefault = L"MgmtClassDefault";
const wchar_t* const kBackupBeforeMigrate = L"BackupBeforeMigrate";
const wchar_t* const kBackupOptionFileDefault = L"BackupOptionFileDefault";
const wchar_t* const kFileSecurityDefault = L"FileSecurityDefault";
const wchar_t* const kADStreamDefault = L"ADStreamDefault";
const wchar_t* const kBackupOptionFilesMru = L"BackupOptionFilesMru";
const wchar_t* const kHistorySearchRoot = L"HistorySearchRoot";

// Let the server choose the management class, the backup client the option file.
const wchar_t* const kServerMgmtClass = L"<VRS server default mgmt class>";
const wchar_t* const kDynamicOptionFile = L"<B/A client chooses options file>";
const wchar_t* const kDefault = L"DEFAULT";
// Catalogue text: the display name of the dynamic option file.
const unsigned kDynamicOptionFileText = 3144;

const wchar_t* const kBackupClientKey = L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient";
const wchar_t* const kBackupClientPath = L"Path";
const wchar_t* const kOptionFileName = L"kor.opt";

const wchar_t* trueFalse(int _nB) noexcept {
    return _nB ? L"true" : L"false";
}

CString dynamicOptionFileText() {
    return UQString(kDynamicOptionFileText);
}

// "DEFAULT <display name>": the dynamic MRU entry as the GUI shows it.
CString translatedDynamicOptionFile() {
    CString s;
    s.Format(L"%s <%s>", kDefault, dynamicOptionFileText());
    return s;
}

// An entry that holds the placeholder or its display name, translated or not, stands for the dynamic
// option file.
bool isDynamicOptionFile(const CString& _sEntry, const CString& _sDisplayName) {
    return _sEntry.Find(kDynamicOptionFile) >= 0 || _sEntry.Find(_sDisplayName) >= 0;
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
    const CString sKey = UQRegistry::mf_getRegistryRoot(kMigration);
    if (UQRegistry::mf_exists(kMgmtClassDefault, sKey, HKEY_LOCAL_MACHINE)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Migration class default '%s' already initialized",
                         kMgmtClassDefault);
        return;
    }
    try {
        UQRegistry::mf_setValue(kMgmtClassDefault, kServerMgmtClass, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                kMgmtClassDefault);
        throw;
    }
    // The text speaks of an option file; it has always read so.
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Initialized default management class:\r\n%s'HKLM\\%s\\%s'\r\n%swith default backup "
                     L"option file '%s'",
                     UQLog::TAB, sKey, kMgmtClassDefault, UQLog::TAB, kServerMgmtClass);
}

void UQGuiRegistry::mf_implInitializeBackupBeforeMigrate() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeBackupBeforeMigrate";
    const CString sKey = UQRegistry::mf_getRegistryRoot(kBackup);
    if (UQRegistry::mf_exists(kBackupBeforeMigrate, sKey, HKEY_LOCAL_MACHINE)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Backup-before-migrate '%s' already initialized",
                         kBackupBeforeMigrate);
        return;
    }
    try {
        UQRegistry::mf_setValue(kBackupBeforeMigrate, 1, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                kBackupBeforeMigrate);
        throw;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Initialized backup-before-migrate:\r\n%s'HKLM\\%s\\%s'\r\n%swith %d (%s)", UQLog::TAB,
                     sKey, kBackupBeforeMigrate, UQLog::TAB, 1, L"true");
}

void UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile";
    const CString sKey = UQRegistry::mf_getRegistryRoot(kBackup);
    if (UQRegistry::mf_exists(kBackupOptionFileDefault, sKey, HKEY_LOCAL_MACHINE)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                         L"Backup option file default '%s' already initialized", kBackupOptionFileDefault);
        return;
    }
    CString sDirectory;
    try {
        UQRegistry::mf_getValue(kBackupClientPath, sDirectory, kBackupClientKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Could not get B/A client installation path from registry:\r\n%s%s");
        throw;
    }
    CString sPath = UQPath::mf_appendFile(sDirectory, kOptionFileName);
    if (!UQPath::mf_exists(sPath)) {
        // An empty default stands for the dynamic option file.
        UQReport::mf_log(
            UQLogData::LEVEL_G, _sFunction_,
            L"Backup option file default '%s' does not exist\r\n%sInitializing default backup option "
            L"files '%s' empty (dynamic option file)",
            sPath, UQLog::TAB, kBackupOptionFileDefault);
        sPath.Empty();
    }
    try {
        UQRegistry::mf_setValue(kBackupOptionFileDefault, sPath, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                kBackupOptionFileDefault);
        throw;
    }
    UQReport::mf_log(
        UQLogData::LEVEL_G, _sFunction_,
        L"Initialized default backup option file:\r\n%s'HKLM\\%s\\%s'\r\n%swith default backup option "
        L"file '%s'",
        UQLog::TAB, sKey, kBackupOptionFileDefault, UQLog::TAB, sPath);
}

void UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU";
    int bExists = 0;
    try {
        bExists = UQRegistry::mf_exists(kBackupOptionFilesMru, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Failure checking registry value '%s' for existence:\r\n%s%s",
                                kBackupOptionFilesMru);
        return;
    }
    if (bExists) {
        UQArray<CString> asEntries;
        try {
            UQRegistry::mf_getValues(kBackupOptionFilesMru, asEntries, L"", HKEY_CURRENT_USER);
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure reading registry values '%s':\r\n%s%s",
                                    kBackupOptionFilesMru);
            return;
        }
        for (INT_PTR i = 0; i < asEntries.GetSize(); ++i) {
            if (asEntries[i] == kDynamicOptionFile) {
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                 L"Successfully checked registry '%s' for dynamic option file:\r\n%s'%s'",
                                 kBackupOptionFilesMru, UQLog::TAB, kDynamicOptionFile);
                return;
            }
        }
    }
    try {
        // Its result does not matter here: an entry that is there already is as good as one added.
        mf_updateTranslatedBackupOptionFilePathMRU(kDynamicOptionFile, 0);
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                         L"Successfully added dynamic option file '%s' to registry key '%s'",
                         kDynamicOptionFile, kBackupOptionFilesMru);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_,
                                L"Failure adding dynamic options file '%s' to registry key '%s':\r\n%s%s",
                                kDynamicOptionFile, kBackupOptionFilesMru);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Management class

CString UQGuiRegistry::mf_getDefaultMgmtClass() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getDefaultMgmtClass";
    CString sValue;
    try {
        UQRegistry::mf_getValue(kMgmtClassDefault, sValue, UQRegistry::mf_getRegistryRoot(kMigration),
                                HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningEmpty(e, _sFunction_, kMgmtClassDefault);
        return CString();
    }
    return sValue == kServerMgmtClass ? CString(kDefault) : sValue;
}

int UQGuiRegistry::mf_setDefaultMgmtClass(const CString& _sMgmtClass) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultMgmtClass";
    CString sKey;
    try {
        sKey = UQRegistry::mf_getRegistryRoot(kMigration);
        UQRegistry::mf_setValue(kMgmtClassDefault, _sMgmtClass, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                kMgmtClassDefault);
        return 0;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Set default management class:\r\n%s'HKLM\\%s\\%s'\r\n%sto '%s'", UQLog::TAB, sKey,
                     kMgmtClassDefault, UQLog::TAB, _sMgmtClass);
    return 1;
}

// ---------------------------------------------------------------------------------------------------------
// Flags

int UQGuiRegistry::mf_isDefaultBackupBeforeMigrate() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultBackupBeforeMigrate";
    // Seeded by mf_initialize, so read without creating it.
    int nValue = 1;
    try {
        UQRegistry::mf_getValue(kBackupBeforeMigrate, nValue, UQRegistry::mf_getRegistryRoot(kBackup),
                                HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningTrue(e, _sFunction_, kBackupBeforeMigrate);
        return 1;
    }
    return nValue;
}

int UQGuiRegistry::mf_setDefaultBackupBeforeMigrate(int _bBackupBeforeMigrate) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultBackupBeforeMigrate";
    return setFlag(_sFunction_, kBackup, kBackupBeforeMigrate, _bBackupBeforeMigrate,
                   L"Set backup-before-migrate:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultMigrationFileSecurity() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultMigrationFileSecurity";
    return getFlagOrCreate(_sFunction_, kMigration, kFileSecurityDefault);
}

int UQGuiRegistry::mf_setDefaultMigrationFileSecurity(int _bFileSecurity) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultMigrationFileSecurity";
    return setFlag(_sFunction_, kMigration, kFileSecurityDefault, _bFileSecurity,
                   L"Set migration-file-security:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultRetrieveFileSecurity() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultRetrieveFileSecurity";
    return getFlagOrCreate(_sFunction_, kRetrieve, kFileSecurityDefault);
}

int UQGuiRegistry::mf_setDefaultRetrieveFileSecurity(int _bFileSecurity) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultRetrieveFileSecurity";
    return setFlag(_sFunction_, kRetrieve, kFileSecurityDefault, _bFileSecurity,
                   L"Set retrieval-file-security:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultMigrationADStreams() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultMigrationADStreams";
    return getFlagOrCreate(_sFunction_, kMigration, kADStreamDefault);
}

int UQGuiRegistry::mf_setDefaultMigrationADStreams(int _bADStreams) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultMigrationADStreams";
    return setFlag(_sFunction_, kMigration, kADStreamDefault, _bADStreams,
                   L"Set migration-alternate-data-streams:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

int UQGuiRegistry::mf_isDefaultRetrieveADStreams() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_isDefaultRetrieveADStreams";
    return getFlagOrCreate(_sFunction_, kRetrieve, kADStreamDefault);
}

int UQGuiRegistry::mf_setDefaultRetrieveADStreams(int _bADStreams) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultRetrieveADStreams";
    return setFlag(_sFunction_, kRetrieve, kADStreamDefault, _bADStreams,
                   L"Set retrieval-alternate-data-streams:\r\n%s'HKLM\\%s\\%s'\r\n%sto %d (%s)");
}

// ---------------------------------------------------------------------------------------------------------
// Default backup option file

CString UQGuiRegistry::mf_getDefaultBackupOptionFilePath() {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getDefaultBackupOptionFilePath";
    CString sPath;
    try {
        UQRegistry::mf_getValue(kBackupOptionFileDefault, sPath, UQRegistry::mf_getRegistryRoot(kBackup),
                                HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        logReturningEmpty(e, _sFunction_, kBackupOptionFileDefault);
        return CString();
    }
    return sPath;
}

int UQGuiRegistry::mf_setDefaultBackupOptionFilePath(const CString& _sPath) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setDefaultBackupOptionFilePath";
    CString sKey;
    try {
        sKey = UQRegistry::mf_getRegistryRoot(kBackup);
        UQRegistry::mf_setValue(kBackupOptionFileDefault, _sPath, 0, sKey, HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        // Unlike its siblings it throws, and its record names the backup-before-migrate value: both as the
        // product has always had them.
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                kBackupBeforeMigrate);
        throw;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                     L"Set default backup option file:\r\n%s'HKLM\\%s\\%s'\r\n%sto '%s'", UQLog::TAB, sKey,
                     kBackupOptionFileDefault, UQLog::TAB, _sPath);
    return 1;
}

// ---------------------------------------------------------------------------------------------------------
// Option file MRU

int UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(UQArray<CString>& _rasPaths) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU";
    try {
        if (UQRegistry::mf_exists(kBackupOptionFilesMru, L"", HKEY_CURRENT_USER))
            UQRegistry::mf_getValues(kBackupOptionFilesMru, _rasPaths, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure reading registry values '%s':\r\n%s%s",
                                kBackupOptionFilesMru);
        _rasPaths.RemoveAll();
        return 0;
    }
    const CString sTranslated = translatedDynamicOptionFile();
    int nReplaced = 0;
    for (INT_PTR i = 0; i < _rasPaths.GetSize(); ++i) {
        if (_rasPaths[i] == kDynamicOptionFile) {
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
        asEntries.Add(isDynamicOptionFile(_asPaths[i], sDisplayName) ? CString(kDynamicOptionFile)
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
        UQRegistry::mf_setValues(kBackupOptionFilesMru, asEntries, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure sorting/writing registry values '%s':\r\n%s%s",
                                kBackupOptionFilesMru);
        return 0;
    }
    return 1;
}

int UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(const CString& _sPath, int _bRemove) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU";
    const CString sEntry =
        isDynamicOptionFile(_sPath, dynamicOptionFileText()) ? CString(kDynamicOptionFile) : _sPath;
    UQArray<CString> asEntries;
    // Held from the read to the write, so that another thread or process adding at the same time neither
    // loses its entry nor makes this one lost.
    std::optional<UQRegistryUpdate> update;
    try {
        update.emplace(kBackupOptionFilesMru, L"", HKEY_CURRENT_USER);
        if (UQRegistry::mf_exists(kBackupOptionFilesMru, L"", HKEY_CURRENT_USER))
            UQRegistry::mf_getValues(kBackupOptionFilesMru, asEntries, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure reading registry values '%s':\r\n%s%s",
                                kBackupOptionFilesMru);
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
                                    kBackupOptionFilesMru);
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
                                kBackupOptionFilesMru);
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
        if (UQRegistry::mf_exists(kHistorySearchRoot, L"", HKEY_CURRENT_USER))
            UQRegistry::mf_getValue(kHistorySearchRoot, sRoot, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        logReturningEmpty(e, _sFunction_, kHistorySearchRoot);
        return CString();
    }
    return sRoot;
}

int UQGuiRegistry::mf_setHistorySearchRoot(const CString& _sRoot) {
    static const wchar_t* const _sFunction_ = L"UQGuiRegistry::mf_setHistorySearchRoot";
    try {
        UQRegistry::mf_setValue(kHistorySearchRoot, _sRoot, 0, L"", HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry value '%s':\r\n%s%s",
                                kHistorySearchRoot);
        return 0;
    }
    return 1;
}
