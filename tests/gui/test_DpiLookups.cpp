// The library's DLLs load where user32 lacks the newer DPI calls (Wine 8 has neither
// SetDialogDpiChangeBehavior nor SetDialogControlDpiChangeBehavior): the calls are looked up, never imported.
#include "ToolkitTestIds.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQDpi.h"
#include "guibase/toolkit/UQStatusBar.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const char* const LOOKED_UP[] = {"SetDialogDpiChangeBehavior", "SetDialogControlDpiChangeBehavior"};

bool runningUnderWine() {
    const HMODULE hNtdll = GetModuleHandleW(L"ntdll.dll");
    return hNtdll != nullptr && GetProcAddress(hNtdll, "wine_get_version") != nullptr;
}

// The names a loaded module imports from user32.dll, read from its import directory.
std::vector<std::string> user32ImportsOf(HMODULE _hModule) {
    std::vector<std::string> names;
    const BYTE* pBase = reinterpret_cast<const BYTE*>(_hModule);
    const IMAGE_DOS_HEADER* pDos = reinterpret_cast<const IMAGE_DOS_HEADER*>(pBase);
    const IMAGE_NT_HEADERS* pNt = reinterpret_cast<const IMAGE_NT_HEADERS*>(pBase + pDos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory = pNt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0)
        return names;
    for (const IMAGE_IMPORT_DESCRIPTOR* pImport =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(pBase + directory.VirtualAddress);
         pImport->Name != 0; ++pImport) {
        if (lstrcmpiA(reinterpret_cast<const char*>(pBase + pImport->Name), "user32.dll") != 0)
            continue;
        const DWORD dwThunks =
            pImport->OriginalFirstThunk != 0 ? pImport->OriginalFirstThunk : pImport->FirstThunk;
        for (const IMAGE_THUNK_DATA* pThunk = reinterpret_cast<const IMAGE_THUNK_DATA*>(pBase + dwThunks);
             pThunk->u1.AddressOfData != 0; ++pThunk) {
            if (IMAGE_SNAP_BY_ORDINAL(pThunk->u1.Ordinal))
                continue;
            const IMAGE_IMPORT_BY_NAME* pName =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(pBase + pThunk->u1.AddressOfData);
            names.emplace_back(reinterpret_cast<const char*>(pName->Name));
        }
    }
    return names;
}

} // namespace

TEST(DpiLookups, EveryDllOfTheLibraryLoadsAndImportsNoneOfTheLookedUpCalls) {
    for (const wchar_t* pszDll : {L"korguibase.dll", L"korlang_en.dll", L"korlang_de.dll"}) {
        const HMODULE hModule = LoadLibraryW(pszDll);
        ASSERT_NE(hModule, nullptr) << utf8(CString(pszDll)) << " does not load, error " << GetLastError();
        const std::vector<std::string> imports = user32ImportsOf(hModule);
        if (lstrcmpiW(pszDll, L"korguibase.dll") == 0) {
            EXPECT_FALSE(imports.empty()) << "the import directory was not read";
        }
        for (const std::string& sImport : imports)
            for (const char* pszName : LOOKED_UP)
                EXPECT_NE(sImport, pszName) << utf8(CString(pszDll)) << " imports it";
        FreeLibrary(hModule);
    }
}

TEST(DpiLookups, AMissingCallIsAnsweredNotCalled) {
    toolkittest::initCommonControls();
    bool bSystemHasThem = true;
    for (const char* pszName : LOOKED_UP)
        bSystemHasThem =
            bSystemHasThem && GetProcAddress(GetModuleHandleW(L"user32.dll"), pszName) != nullptr;
    // Wine 8 lacks both; Windows 10 1703 and later has both.
    if (runningUnderWine()) {
        EXPECT_FALSE(bSystemHasThem);
    }
    EXPECT_EQ(UQDpi::mf_hasDialogDpiChangeBehavior(), bSystemHasThem ? 1 : 0);
    UQStatusBar bar;
    bar.mf_addItem(new toolkittest::NamedStatusItem(100, L"Files"));
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                   toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&bar));
    ASSERT_NE(hDlg, nullptr);
    EXPECT_EQ(UQDpi::mf_setDialogDpiChangeBehavior(hDlg, 0, 0), bSystemHasThem ? 1 : 0);
    // The status bar asks for it on creation and comes up either way.
    EXPECT_EQ(bar.mf_onInitDialog(hDlg, nullptr), 1);
    EXPECT_NE(bar.mf_getWindowHandle(), nullptr);
    DestroyWindow(hDlg);
}
