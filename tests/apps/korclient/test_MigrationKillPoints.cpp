// korclient killed at many points of a migration of 200 files: after each kill every file is either intact or
// a stub whose version is stored and verifies, and the next run goes on from there. The program kills
// itself (TerminateProcess, no clean-up of any kind) right after the chosen durable step of its run, and
// says first how many stubs it had put in place.
#include "ClientTestSupport.h"
#include "UQRetrieval.h"
#include "UQServerDirectory.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace clienttest;

const int FILES = 200;
const DWORD RUN_LIMIT_MS = 120000;

// Where a run is killed: right after the n-th durable step of a kind (1 version stored, 2 history record
// added, 3 stub written beside its file, 4 stub in place). 1 comes from the thread that stores, the others
// from the one that records and puts stubs in place.
struct KillPoint {
    int nKind;
    int nTimes;
};

// Runs korclient (beside this test) to migrate _sFolder into _sServer, killed at _kill (nKind 0: never);
// answers its exit code, or -1 when it could not run or did not end in time. _sReport receives the number of
// stubs the run put in place before its kill.
int runKorclient(const std::wstring& _sFolder, const std::wstring& _sServer, KillPoint _kill,
                 const std::wstring& _sReport) {
    wchar_t szSelf[MAX_PATH + 1] = {};
    GetModuleFileNameW(nullptr, szSelf, MAX_PATH);
    std::wstring sProgram = szSelf;
    sProgram = sProgram.substr(0, sProgram.rfind(L'\\') + 1) + L"korclient.exe";
    std::wstring sCommand = L"\"" + sProgram + L"\" --migrate \"" + _sFolder + L"\" \"" + _sServer + L"\"";
    const std::wstring sKill = std::to_wstring(_kill.nKind) + L":" + std::to_wstring(_kill.nTimes);
    SetEnvironmentVariableW(L"KOR_TEST_TERMINATE_AT_STEP", _kill.nKind > 0 ? sKill.c_str() : nullptr);
    SetEnvironmentVariableW(L"KOR_TEST_STEP_REPORT", _sReport.c_str());
    SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
    const UQFileHandle null(CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                        OPEN_EXISTING, 0, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = null.mf_get();
    startup.hStdOutput = null.mf_get();
    startup.hStdError = null.mf_get();
    PROCESS_INFORMATION process{};
    const BOOL bStarted = CreateProcessW(sProgram.c_str(), &sCommand[0], nullptr, nullptr, TRUE, 0, nullptr,
                                         nullptr, &startup, &process);
    SetEnvironmentVariableW(L"KOR_TEST_TERMINATE_AT_STEP", nullptr);
    SetEnvironmentVariableW(L"KOR_TEST_STEP_REPORT", nullptr);
    if (!bStarted)
        return -1;
    const UQProcessHandle thread(process.hThread);
    const UQProcessHandle child(process.hProcess);
    DWORD dwExit = static_cast<DWORD>(-1);
    if (WaitForSingleObject(child.mf_get(), RUN_LIMIT_MS) == WAIT_OBJECT_0)
        GetExitCodeProcess(child.mf_get(), &dwExit);
    else
        TerminateProcess(child.mf_get(), 1);
    return static_cast<int>(dwExit);
}

class MigrationKillPoints : public ::testing::Test {
protected:
    MigrationKillPoints() {
        for (int i = 0; i < FILES; ++i)
            originals[L"folder" + std::to_wstring(i % 7) + L"\\file" + std::to_wstring(i) + L".bin"] =
                contentOf(i, static_cast<std::size_t>(100 + (i * 7919) % 6000));
    }

    // Every file is intact or a stub whose stored version verifies and is recorded; answers the number of
    // stubs.
    int checkEveryFile(const std::wstring& _sFolder, const std::wstring& _sServer,
                       const std::string& _sWhen) {
        UQServerDirectory server(_sServer);
        UQServerDirectory::State state;
        std::wstring sStateWhy;
        const bool bState = server.mf_readState(state, sStateWhy) != 0;
        int nStubs = 0;
        for (const auto& file : originals) {
            const std::wstring sPath = _sFolder + L"\\" + file.first;
            const std::string sContent = readFile(sPath);
            if (sContent == file.second)
                continue;
            UQVersionRecord stub;
            UQVersionRecord header;
            UQFileHandle version;
            std::wstring sWhy;
            const bool bStub = UQRetrieval::mf_readStub(sPath, stub, sWhy) &&
                               server.mf_openVersion(stub.m_uVolume, stub.m_uPosition, stub.m_sObjectPath,
                                                     stub.m_uVersion, &stub, version, header, sWhy);
            std::string sStored;
            if (bStub)
                UQSafeFile::mf_readStart(version.mf_get(), file.second.size() + 1, sStored);
            EXPECT_TRUE(bStub && sStored == file.second)
                << _sWhen << ": " << utf8(file.first)
                << " is neither intact nor a verified stub: " << utf8(sWhy);
            // Versions of a file are recorded one after the other: the latest recorded is at least the
            // stub's.
            EXPECT_TRUE(bState &&
                        state.latestVersions[UQSafeFile::mf_upper(stub.m_sObjectPath)] >= stub.m_uVersion)
                << _sWhen << ": the stub of " << utf8(file.first) << " names version " << stub.m_uVersion
                << ", which the history store does not record " << utf8(sStateWhy);
            ++nStubs;
        }
        return nStubs;
    }

    std::map<std::wstring, std::string> originals;
};

TEST_F(MigrationKillPoints, KilledAtAnyStepNoFileIsLostAndTheNextRunGoesOn) {
    ScratchFolder scratch(L"kill");
    const std::wstring sFolder = scratch.path() + L"\\files";
    const std::wstring sServer = scratch.path() + L"\\server";
    for (const auto& file : originals)
        ASSERT_TRUE(writeFile(sFolder + L"\\" + file.first, file.second));
    const std::wstring sReport = scratch.path() + L"\\stubs.txt";
    // One migration of the 200 files, killed again and again: each run takes up where the killed one left
    // off and is killed at the given step, each kind in turn.
    const KillPoint KILL_AT[] = {{1, 1},  {2, 1},  {3, 1},  {4, 1},  {1, 2}, {2, 2}, {3, 2}, {4, 2},
                                 {1, 11}, {2, 11}, {3, 11}, {4, 11}, {1, 7}, {2, 7}, {3, 7}, {4, 7},
                                 {1, 4},  {2, 4},  {3, 4},  {4, 4},  {1, 3}, {2, 3}, {3, 3}, {4, 3}};
    int nDone = 0;
    int nPoints = 0;
    for (const KillPoint& kill : KILL_AT) {
        const std::string sWhen = "kill " + std::to_string(nPoints + 1) + ", after step " +
                                  std::to_string(kill.nKind) + " of file " + std::to_string(kill.nTimes) +
                                  " of the run";
        DeleteFileW(sReport.c_str());
        ASSERT_EQ(runKorclient(sFolder, sServer, kill, sReport), 9)
            << sWhen << ": the program did not stop there";
        const std::string sReported = readFile(sReport);
        ASSERT_FALSE(sReported.empty()) << sWhen << ": no count of stubs";
        const int nReported = std::stoi(sReported);
        // Stubs are put in place in the order of the files, each after its record and its own step 3.
        if (kill.nKind == 4)
            EXPECT_EQ(nReported, kill.nTimes) << sWhen;
        else if (kill.nKind >= 2)
            EXPECT_EQ(nReported, kill.nTimes - 1) << sWhen;
        else
            EXPECT_LT(nReported, kill.nTimes) << sWhen << ": a stub came before its version was stored";
        const int nStubs = checkEveryFile(sFolder, sServer, sWhen);
        // Killed on the thread that stores, the other may have put one more stub in place than it had
        // counted.
        EXPECT_GE(nStubs, nDone + nReported) << sWhen;
        EXPECT_LE(nStubs, nDone + nReported + (kill.nKind == 1 ? 1 : 0)) << sWhen;
        nDone = nStubs;
        ++nPoints;
        if (HasFailure())
            return;
    }
    EXPECT_EQ(nPoints, 24);
    EXPECT_LT(nDone, FILES);
    // The run that is not killed migrates the rest: every file ends as a verified stub.
    ASSERT_EQ(runKorclient(sFolder, sServer, KillPoint{0, 0}, sReport), 0) << "the last run failed";
    EXPECT_EQ(checkEveryFile(sFolder, sServer, "after the last run"), FILES);
}

} // namespace
