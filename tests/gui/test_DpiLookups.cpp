// The library's DLLs load where user32 lacks the newer DPI calls (Wine 8 has neither
// SetDialogDpiChangeBehavior nor SetDialogControlDpiChangeBehavior; Windows before 10 1607 lacks
// GetDpiForWindow and GetSystemMetricsForDpi, comctl32 before version 6 LoadIconWithScaleDown): the calls are
// looked up, never imported, and answered from the older calls where they are missing.
#include "ToolkitTestIds.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQDpi.h"
#include "guibase/toolkit/UQStatusBar.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const char* const LOOKED_UP[] = {"SetDialogDpiChangeBehavior", "SetDialogControlDpiChangeBehavior"};
const char* const LOOKED_UP_TOO[] = {"GetDpiForWindow", "GetSystemMetricsForDpi", "LoadIconWithScaleDown"};

bool runningUnderWine() {
    const HMODULE hNtdll = GetModuleHandleW(L"ntdll.dll");
    return hNtdll != nullptr && GetProcAddress(hNtdll, "wine_get_version") != nullptr;
}

// The names a loaded module imports from user32.dll and comctl32.dll, read from its import directory.
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
        const char* pszDll = reinterpret_cast<const char*>(pBase + pImport->Name);
        if (lstrcmpiA(pszDll, "user32.dll") != 0 && lstrcmpiA(pszDll, "comctl32.dll") != 0)
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
        for (const std::string& sImport : imports) {
            for (const char* pszName : LOOKED_UP)
                EXPECT_NE(sImport, pszName) << utf8(CString(pszDll)) << " imports it";
            for (const char* pszName : LOOKED_UP_TOO)
                EXPECT_NE(sImport, pszName) << utf8(CString(pszDll)) << " imports it";
        }
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

// The DPI of a window, a system metric at a DPI and an icon of a size: the system's answer where it has the
// calls (Wine 8 has all three), the same answer from the older calls otherwise.
TEST(DpiLookups, TheWindowsDpiTheMetricsOfADpiAndAnIconOfASize) {
    toolkittest::initCommonControls();
    HDC hScreen = GetDC(nullptr);
    const UINT uSystemDpi = static_cast<UINT>(GetDeviceCaps(hScreen, LOGPIXELSY));
    ReleaseDC(nullptr, hScreen);
    EXPECT_EQ(UQDpi::mf_getSystemDpi(), uSystemDpi);
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                   toolkittest::inertProcedure, 0);
    ASSERT_NE(hDlg, nullptr);
    EXPECT_EQ(UQDpi::mf_getWindowDpi(hDlg), uSystemDpi);
    EXPECT_EQ(UQDpi::mf_getWindowDpi(nullptr), uSystemDpi);
    DestroyWindow(hDlg);
    const HMODULE hUser = GetModuleHandleW(L"user32.dll");
    if (runningUnderWine()) {
        EXPECT_NE(GetProcAddress(hUser, "GetDpiForWindow"), nullptr);
        EXPECT_NE(GetProcAddress(hUser, "GetSystemMetricsForDpi"), nullptr);
    }
    EXPECT_EQ(UQDpi::mf_getSystemMetricForDpi(SM_CXSMICON, uSystemDpi), GetSystemMetrics(SM_CXSMICON));
    const int anSizes[][3] = {{16, 96, 16}, {16, 120, 20}, {16, 144, 24}, {16, 192, 32},
                              {32, 96, 32}, {32, 144, 48}, {21, 192, 42}, {16, 0, 16}};
    for (const auto& size : anSizes)
        EXPECT_EQ(UQDpi::mf_getIconSize(size[0], static_cast<UINT>(size[1])), size[2])
            << size[0] << " px at 96 DPI, at " << size[1] << " DPI";
    const HMODULE hLanguage = UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT);
    for (int nSize : {16, 24, 32, 40}) {
        HICON hIcon = UQDpi::mf_loadIcon(hLanguage, 10002, nSize);
        ASSERT_NE(hIcon, nullptr) << nSize;
        ICONINFO info = {};
        ASSERT_TRUE(GetIconInfo(hIcon, &info));
        BITMAP bitmap = {};
        GetObjectW(info.hbmColor != nullptr ? info.hbmColor : info.hbmMask, sizeof bitmap, &bitmap);
        EXPECT_EQ(bitmap.bmWidth, nSize);
        DeleteObject(info.hbmMask);
        if (info.hbmColor != nullptr)
            DeleteObject(info.hbmColor);
        EXPECT_TRUE(DestroyIcon(hIcon)) << "the caller owns the icon";
    }
    EXPECT_EQ(UQDpi::mf_loadIcon(hLanguage, 9999, 16), nullptr);
    EXPECT_EQ(UQDpi::mf_loadIcon(nullptr, 10002, 16), nullptr);
}
