#pragma once

#include "interfaces/korbase.h"

// The client's GUI defaults in the registry (docs/registry.md names every value). Machine-wide defaults
// live in HKEY_LOCAL_MACHINE under the "Migration", "Backup" and "Retrieve" sub keys of the product's root;
// the option-file MRU and the history search root in the per-user key. Every call reads or writes the
// registry anew: there is no state in memory.
//
// Two placeholders let the server or the backup client decide: "<VRS server default mgmt class>" is shown
// as "DEFAULT", "<B/A client chooses options file>" as "DEFAULT <text 3144>", and the MRU operations
// translate it both ways. Getters never throw: they log and answer their defaults. Setters log and answer 0,
// except mf_setDefaultBackupOptionFilePath, which throws.
class KORGUIBASE_API UQGuiRegistry {
public:
    // Seeds the missing machine-wide defaults and the dynamic MRU entry; never overwrites a value and never
    // throws UQErrno.
    static void mf_initialize();

    // "DEFAULT" when the stored class is the server placeholder.
    static CString mf_getDefaultMgmtClass();
    // Writes the text as given; "DEFAULT" is not mapped back.
    static int mf_setDefaultMgmtClass(const CString& _sMgmtClass);

    static int mf_isDefaultBackupBeforeMigrate();
    static int mf_setDefaultBackupBeforeMigrate(int _bBackupBeforeMigrate);
    // These four create a missing value with 1.
    static int mf_isDefaultMigrationFileSecurity();
    static int mf_setDefaultMigrationFileSecurity(int _bFileSecurity);
    static int mf_isDefaultRetrieveFileSecurity();
    static int mf_setDefaultRetrieveFileSecurity(int _bFileSecurity);
    static int mf_isDefaultMigrationADStreams();
    static int mf_setDefaultMigrationADStreams(int _bADStreams);
    static int mf_isDefaultRetrieveADStreams();
    static int mf_setDefaultRetrieveADStreams(int _bADStreams);

    // An empty path means the dynamic option file.
    static CString mf_getDefaultBackupOptionFilePath();
    // Throws UQErrno on failure.
    static int mf_setDefaultBackupOptionFilePath(const CString& _sPath);

    // The stored MRU with the dynamic entry translated; the translated entry is always there. _rasPaths must
    // be empty. On failure it is emptied and the answer is 0.
    static int mf_getTranslatedBackupOptionFilePathMRU(UQArray<CString>& _rasPaths);
    // Stores the list sorted case-blind, exact duplicates removed, the dynamic entry untranslated.
    static int mf_setTranslatedBackupOptionFilePathMRU(const UQArray<CString>& _asPaths);
    // Adds the path unless present (ignoring case), or removes its first entry (ignoring case); 1 when the
    // MRU changed.
    static int mf_updateTranslatedBackupOptionFilePathMRU(const CString& _sPath, int _bRemove);

    // Empty when not set.
    static CString mf_getHistorySearchRoot();
    static int mf_setHistorySearchRoot(const CString& _sRoot);

private:
    static void mf_implInitializeDefaultMgmtClass();
    static void mf_implInitializeBackupBeforeMigrate();
    static void mf_implInitializeDefaultBackupOptionFile();
    static void mf_implInitializeBackupOptionFilePathMRU();
};
