// korclient: the client's window program.
//   korclient                          the window on a fresh sample below the temporary folder
//   korclient --sample DIR             the same in DIR
//   korclient --server DIR --folder D  the window on an existing server folder
//   korclient --tour DIR [--files N]   walks migrate, search, retrieve and recall by itself (see docs/)
//   korclient --migrate FOLDER SERVER  migrates without windows and prints each file's result
#include "UQClientSample.h"
#include "UQClientTour.h"
#include "UQClientWindow.h"
#include "UQMigration.h"
#include "UQResultList.h"

#include "compat/utf8.h"
#include "guibase/settings/UQGuiRegistry.h"

#include <commctrl.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <map>
#include <mutex>
#include <string>

namespace {

void print(const std::wstring& _sText) {
    const std::string sUtf8 = uqfmt::wideToUtf8(_sText.data(), _sText.size());
    std::fwrite(sUtf8.data(), 1, sUtf8.size(), stdout);
    std::fflush(stdout);
}

int usage() {
    print(L"usage: korclient [--sample DIR | --server DIR --folder DIR | --tour DIR [--files N] | "
          L"--migrate FOLDER SERVER]\n");
    return 2;
}

int migrateOnly(const std::wstring& _sFolder, const std::wstring& _sServer) {
    // A crash right after the N-th step of kind K of the migration ("K:N"), for the tests that prove nothing
    // is lost by one. The stubs put in place until then are counted into KOR_TEST_STEP_REPORT first: steps
    // come from two threads, so the test cannot count them itself.
    const wchar_t* pszStep = _wgetenv(L"KOR_TEST_TERMINATE_AT_STEP");
    if (pszStep != nullptr && *pszStep != L'\0') {
        static const int s_nKind = _wtoi(pszStep);
        static const int s_nTarget =
            std::wcschr(pszStep, L':') != nullptr ? _wtoi(std::wcschr(pszStep, L':') + 1) : 0;
        static const wchar_t* const s_pszReport = _wgetenv(L"KOR_TEST_STEP_REPORT");
        static std::mutex s_mutex;
        static int s_anSeen[5] = {};
        UQMigration::mf_setStepHook([](int _nStep) {
            const std::lock_guard<std::mutex> lock(s_mutex);
            if (_nStep < 1 || _nStep > 4 || ++s_anSeen[_nStep] != s_nTarget || _nStep != s_nKind)
                return;
            if (s_pszReport != nullptr) {
                const std::string sStubs = std::to_string(s_anSeen[4]);
                const UQFileHandle report(CreateFileW(s_pszReport, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                      FILE_ATTRIBUTE_NORMAL, nullptr));
                DWORD dwWritten = 0;
                WriteFile(report.mf_get(), sStubs.data(), static_cast<DWORD>(sStubs.size()), &dwWritten,
                          nullptr);
            }
            TerminateProcess(GetCurrentProcess(), 9);
        });
    }
    UQServerDirectory server(UQSafeFile::mf_absolute(_sServer));
    UQMigration migration(server, UQSafeFile::mf_absolute(_sFolder));
    std::vector<UQFileOutcome> outcomes;
    std::wstring sReason;
    if (!migration.mf_run(nullptr, nullptr, outcomes, sReason)) {
        print(sReason + L"\n");
        return 1;
    }
    int nFailed = 0;
    for (const UQFileOutcome& outcome : outcomes) {
        print(outcome.sPath + L"\t" + outcome.sResult + L"\n");
        nFailed += outcome.eSeverity == UQFileOutcome::RED ? 1 : 0;
    }
    print(UQResultList::mf_summary(outcomes) + L"\n");
    return nFailed == 0 ? 0 : 1;
}

int sampleWindow(const std::wstring& _sFolder) {
    const std::wstring sRoot = UQSafeFile::mf_absolute(_sFolder);
    const std::wstring sFiles = sRoot + L"\\files";
    const std::wstring sServer = sRoot + L"\\server";
    UQClientSample::mf_removeTree(sFiles);
    UQClientSample::mf_removeTree(sServer);
    CreateDirectoryW(UQSafeFile::mf_long(sRoot).c_str(), nullptr);
    std::map<std::wstring, std::string> hashes;
    std::wstring sReason;
    if (!UQClientSample::mf_generate(sFiles, 300, hashes, sReason)) {
        print(L"korclient: " + sReason + L"\n");
        return 1;
    }
    // The server starts with a history of the sample: its files are migrated before the window opens.
    UQServerDirectory server(sServer);
    UQMigration migration(server, sFiles);
    std::vector<UQFileOutcome> outcomes;
    if (!migration.mf_run(nullptr, nullptr, outcomes, sReason)) {
        print(L"korclient: " + sReason + L"\n");
        return 1;
    }
    print(L"korclient: sample of " + std::to_wstring(hashes.size()) + L" files in " + sFiles + L", server " +
          sServer + L"\n");
    UQClientWindow window(sServer, sFiles);
    return window.mf_show();
}

} // namespace

int wmain(int _nArgs, wchar_t** _ppArgs) {
    INITCOMMONCONTROLSEX controls{sizeof(controls),
                                  ICC_WIN95_CLASSES | ICC_DATE_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    UQGuiRegistry::mf_initialize();
    std::map<std::wstring, std::wstring> options;
    std::vector<std::wstring> plain;
    for (int i = 1; i < _nArgs; ++i) {
        const std::wstring sArg = _ppArgs[i];
        if (sArg.compare(0, 2, L"--") == 0 && sArg != L"--migrate" && i + 1 < _nArgs)
            options[sArg] = _ppArgs[++i];
        else
            plain.push_back(sArg);
    }
    if (!plain.empty() && plain[0] == L"--migrate")
        return plain.size() == 3 ? migrateOnly(plain[1], plain[2]) : usage();
    if (!plain.empty())
        return usage();
    if (options.count(L"--tour")) {
        const int nFiles = options.count(L"--files") ? _wtoi(options[L"--files"].c_str()) : 300;
        UQClientTour::Summary summary;
        const int nResult = UQClientTour::mf_run(options[L"--tour"], nFiles > 0 ? nFiles : 300, summary);
        print(UQClientTour::mf_format(summary));
        return nResult;
    }
    if (options.count(L"--server") && options.count(L"--folder")) {
        UQClientWindow window(UQSafeFile::mf_absolute(options[L"--server"]),
                              UQSafeFile::mf_absolute(options[L"--folder"]));
        return window.mf_show();
    }
    if (options.count(L"--sample"))
        return sampleWindow(options[L"--sample"]);
    if (!options.empty())
        return usage();
    wchar_t szTemp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, szTemp);
    return sampleWindow(std::wstring(szTemp) + L"korclient-sample");
}
