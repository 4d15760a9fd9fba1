// Migrates the files of a folder to the server: each file's content becomes a stored version, then a
// record of the history store, and only then is the file replaced by a stub that names the version. Every
// step of a file is on disk before its next begins, so that an interruption at any moment leaves each file
// either whole or a stub whose version is stored. Records and stubs are written on a second thread while
// the next files are stored.
#pragma once

#include "UQFileOutcome.h"
#include "UQFinishQueue.h"
#include "UQServerDirectory.h"

#include "interfaces/korbase.h"

#include <functional>
#include <vector>

class UQMigration {
public:
    // Told after each file: files done, files in all, the file at hand.
    using Progress = std::function<void(int _nDone, int _nTotal, const std::wstring& _sFile)>;

    UQMigration(UQServerDirectory& _rServer, const std::wstring& _sSourceFolder);
    UQMigration(const UQMigration&) = delete;
    UQMigration& operator=(const UQMigration&) = delete;

    // Migrates every file below the source folder. 0 with the reason when the run cannot begin (no such
    // folder, the server cannot be written); otherwise 1 with one outcome per file met. A tripped cancel
    // switch ends the run between two files.
    int mf_run(const UQCancelSwitch* _pCancel, const Progress& _progress,
               std::vector<UQFileOutcome>& _rOutcomes, std::wstring& _rsReason);

    // Test seam: called after each durable step of a file (1 version stored, 2 history record added,
    // 3 stub written beside the file, 4 file replaced by the stub). Steps 2 to 4 come from the second
    // thread, when one could be started.
    static void mf_setStepHook(std::function<void(int _nStep)> _hook);

private:
    void mf_implListFiles(const std::wstring& _sFolder, std::vector<std::wstring>& _rFiles,
                          std::vector<UQFileOutcome>& _rOutcomes);
    // Stores one file's version: the item that records it and puts its stub in place, or a decided outcome.
    UQFinishQueue::Item mf_implMigrate(const std::wstring& _sFile, UQServerDirectory::State& _rState,
                                       UQServerDirectory::HistoryAppender& _rHistory);
    UQFileOutcome mf_implStore(const std::wstring& _sFile, UQServerDirectory::State& _rState,
                               UQServerDirectory::HistoryAppender& _rHistory, UQFinishQueue::Item& _rItem);

    UQServerDirectory& m_rServer;
    std::wstring m_sSource;
    std::wstring m_sRealSource;
};
