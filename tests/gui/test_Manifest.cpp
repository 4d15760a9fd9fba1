// The manifest every program of the library links: read back from the program's own resources, and the
// DPI awareness it gives the process.
#include "ToolkitTestSupport.h"

#include <string>

namespace {

// The manifest resource of this program; empty when it has none.
std::string ownManifest() {
    HRSRC hResource = FindResourceW(nullptr, CREATEPROCESS_MANIFEST_RESOURCE_ID, RT_MANIFEST);
    if (hResource == nullptr)
        return std::string();
    HGLOBAL hData = LoadResource(nullptr, hResource);
    const DWORD dwSize = SizeofResource(nullptr, hResource);
    const void* pData = hData != nullptr ? LockResource(hData) : nullptr;
    return pData != nullptr ? std::string(static_cast<const char*>(pData), dwSize) : std::string();
}

} // namespace

TEST(Manifest, AsksForCommonControlsVersion6) {
    const std::string sManifest = ownManifest();
    ASSERT_FALSE(sManifest.empty());
    EXPECT_NE(sManifest.find("name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\""),
              std::string::npos)
        << sManifest;
}

TEST(Manifest, DeclaresPerMonitorV2WithPerMonitorAsTheFallback) {
    const std::string sManifest = ownManifest();
    EXPECT_NE(sManifest.find("<dpiAwareness xmlns=\"http://schemas.microsoft.com/SMI/2016/WindowsSettings\">"
                             "PerMonitorV2, PerMonitor</dpiAwareness>"),
              std::string::npos)
        << sManifest;
    EXPECT_NE(
        sManifest.find("<dpiAware xmlns=\"http://schemas.microsoft.com/SMI/2005/WindowsSettings\">true/pm"
                       "</dpiAware>"),
        std::string::npos)
        << sManifest;
}

TEST(Manifest, MakesTheProcessDpiAware) {
    // Windows and Wine both apply dpiAware from the manifest before the program runs.
    EXPECT_TRUE(IsProcessDPIAware());
    using GetAwareness = DPI_AWARENESS(WINAPI*)(DPI_AWARENESS_CONTEXT);
    using GetContext = DPI_AWARENESS_CONTEXT(WINAPI*)();
    HMODULE hUser = GetModuleHandleW(L"user32.dll");
    const auto pfnAwareness = reinterpret_cast<GetAwareness>(
        reinterpret_cast<void*>(GetProcAddress(hUser, "GetAwarenessFromDpiAwarenessContext")));
    const auto pfnContext = reinterpret_cast<GetContext>(
        reinterpret_cast<void*>(GetProcAddress(hUser, "GetThreadDpiAwarenessContext")));
    if (pfnAwareness == nullptr || pfnContext == nullptr)
        GTEST_SKIP() << "this system predates the DPI awareness contexts";
    EXPECT_EQ(pfnAwareness(pfnContext()), DPI_AWARENESS_PER_MONITOR_AWARE);
}
