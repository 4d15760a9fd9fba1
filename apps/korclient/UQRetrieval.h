// Brings stored versions back: retrieval writes them into a folder the user chose, under the names the
// server keeps for them; recall replaces a stub by its file's content. Each file is written under a
// temporary name, checked against its hash, and put in place in one step, so that a file is either whole
// or not there at all; nothing outside the chosen folder, and no file that exists already, is written.
#pragma once

#include "UQFileOutcome.h"
#include "UQFinishQueue.h"
#include "UQServerDirectory.h"

#include "interfaces/korbase.h"

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

class UQRetrieval {
public:
    struct Request {
        std::wstring sObjectPath;
        std::uint32_t uVersion = 0;
        std::uint32_t uVolume = 0;
        std::uint64_t uPosition = 0;
    };
    using Progress = std::function<void(int _nDone, int _nTotal, const std::wstring& _sFile)>;

    explicit UQRetrieval(const UQServerDirectory& _server);
    UQRetrieval(const UQRetrieval&) = delete;
    UQRetrieval& operator=(const UQRetrieval&) = delete;

    // Retrieves the versions in the order given (the backend's access order) into _sDestination, which
    // is created when missing. 0 with the reason when the folder cannot be used; else 1 with one outcome
    // per request. A tripped cancel switch ends the run between two files, after the files already written
    // (at most UQFinishQueue::DEPTH + 1) are finished.
    int mf_retrieve(const std::vector<Request>& _requests, const std::wstring& _sDestination,
                    const UQCancelSwitch* _pCancel, const Progress& _progress,
                    std::vector<UQFileOutcome>& _rOutcomes, std::wstring& _rsReason);
    // Replaces the stub _sStub by its content; a failure leaves the stub as it was.
    UQFileOutcome mf_recall(const std::wstring& _sStub);
    // Reads and parses a stub file; 0 with the reason when it is none or is damaged.
    static int mf_readStub(const std::wstring& _sPath, UQVersionRecord& _rRecord, std::wstring& _rsReason);

private:
    // What a run of retrievals looks up once: where the destination and the server folder really are, and
    // the folders below the destination already seen to be real folders (upper case, relative).
    struct Run {
        std::wstring sDestination;
        std::wstring sServerRoot;
        std::unordered_set<std::wstring> checkedFolders;
    };
    // Writes and checks one version under a temporary name: the item to finish, or a decided outcome.
    UQFinishQueue::Item mf_implWrite(const Request& _request, Run& _rRun);
    UQFileOutcome mf_implWriteTo(const Request& _request, Run& _rRun, UQFinishQueue::Item& _rItem);

    const UQServerDirectory& m_server;
};
