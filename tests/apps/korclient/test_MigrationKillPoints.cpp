// korclient killed at many points of a migration of 200 files: after each kill every file is either intact or
// a stub whose version is stored and verifies, and the next run goes on from there. The program kills
// itself (TerminateProcess, no clean-up of any kind) after the chosen durable step, counted over its run.
#include "ClientTestSupport.h"
#include "UQRetrieval.h"
#include "UQServerDirectory.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace clienttest;

const int FILES = 200;
// Four durable steps per file: version stored, history record added, stub written beside, stub in place.
const int STEPS_PER_FILE = 4;
const DWORD RUN_LIMIT_MS = 120000;

// Runs korclient (beside this test) to migrate _sFolder into _sServer, killed after step _nKillAt (0: never);
// answers its exit code, or -1 when it could not run or did not end in time.
int runKorclient(const std::wstring& _sFolder, const std::wstring& _sServer, int _nKillAt) {
    wchar_t szSelf[MAX_PATH + 1] = {};
    GetModuleFileNameW(nullptr, szSelf, MAX_PATH);
    std::wstring sProgram = szSelf;
    sProgram = sProgram.substr(0, sProgram.rfind(L'\\') + 1) + L"korclient.exe";
    std::wstring sCommand = L"\"" + sProgram + L"\" --migrate \"" + _sFolder + L"\" \"" + _sServer + L"\"";
    SetEnvironmentVariableW(L"KOR_TEST_TERMINATE_AT_STEP",
                            _nKillAt > 0 ? std::to_wstring(_nKillAt).c_str() : nullptr);
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

    // Every file is intact or a stub whose stored version verifies; answers the number of stubs.
    int checkEveryFile(const std::wstring& _sFolder, const std::wstring& _sServer,
                       const std::string& _sWhen) {
        UQServerDirectory server(_sServer);
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
    // One migration of the 200 files, killed again and again: each run takes up where the killed one left
    // off and is killed after the given number of its own steps, which ends on every step kind in turn.
    const int KILL_AFTER[] = {1,  2,  3,  4,  5,  6,  7,  8,  41, 42, 43, 44,
                              25, 26, 27, 28, 13, 14, 15, 16, 9,  10, 11, 12};
    int nDone = 0;
    int nPoints = 0;
    for (int nSteps : KILL_AFTER) {
        const std::string sWhen = "kill " + std::to_string(nPoints + 1) + ", after " +
                                  std::to_string(nSteps) + " steps of the run (step " +
                                  std::to_string((nSteps - 1) % STEPS_PER_FILE + 1) + " of a file)";
        ASSERT_EQ(runKorclient(sFolder, sServer, nSteps), 9) << sWhen << ": the program did not stop there";
        // A file is a stub once its fourth step is done; the file at hand when the kill came is intact.
        nDone += nSteps / STEPS_PER_FILE;
        EXPECT_EQ(checkEveryFile(sFolder, sServer, sWhen), nDone) << sWhen;
        ++nPoints;
        if (HasFailure())
            return;
    }
    EXPECT_EQ(nPoints, 24);
    EXPECT_LT(nDone, FILES);
    // The run that is not killed migrates the rest: every file ends as a verified stub.
    ASSERT_EQ(runKorclient(sFolder, sServer, 0), 0) << "the last run failed";
    EXPECT_EQ(checkEveryFile(sFolder, sServer, "after the last run"), FILES);
}

} // namespace
