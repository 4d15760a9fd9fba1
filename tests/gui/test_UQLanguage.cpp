// The language module: found beside korbase.dll, loaded once as an image resource, holding the same
// texts as the message catalogue and the icons the dialogs use.
#include "ToolkitTestSupport.h"

#include "korlang_ids.h"

using namespace toolkittest;

TEST(UQLanguage, TheUserLanguageModuleIsFoundBesideKorbase) {
    LogCheck log;
    HMODULE hModule = UQLanguage::mf_getUserLanguageHandle();
    ASSERT_NE(hModule, nullptr);
    EXPECT_NE(FindResourceW(hModule, MAKEINTRESOURCEW(IDI_SEVERITY_GREEN), RT_GROUP_ICON), nullptr);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQLanguage, IsLoadedOnceForEveryWayOfAskingForIt) {
    HMODULE hUser = UQLanguage::mf_getUserLanguageHandle();
    EXPECT_EQ(UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT), hUser);
    EXPECT_EQ(UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_UK)), hUser);
    // A language without a module of its own falls back to English.
    EXPECT_EQ(UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT)), hUser);
}

TEST(UQLanguage, HoldsEveryTextOfTheCatalogueUnchanged) {
    HMODULE hModule = UQLanguage::mf_getUserLanguageHandle();
    ASSERT_NE(hModule, nullptr);
    int nTexts = 0;
    for (unsigned uNumber = 0; uNumber <= 0xFFFF; ++uNumber) {
        if (!UQString::mf_exists(uNumber))
            continue;
        ++nTexts;
        const wchar_t* pszText = nullptr;
        // With a zero buffer size LoadStringW points at the text in the module.
        const int nLength = LoadStringW(hModule, uNumber, reinterpret_cast<LPWSTR>(&pszText), 0);
        ASSERT_GT(nLength, 0) << "text " << uNumber << " is missing from the language module";
        EXPECT_EQ(CString(pszText, nLength), UQString(uNumber).mf_getText()) << "text " << uNumber;
    }
    EXPECT_GT(nTexts, 20);
    const wchar_t* pszText = nullptr;
    EXPECT_EQ(LoadStringW(hModule, 9, reinterpret_cast<LPWSTR>(&pszText), 0), 0)
        << "a number the catalogue lacks";
}

TEST(UQLanguage, HoldsTheSeverityAndUserIconsInSmallAndLargeSizes) {
    HMODULE hModule = UQLanguage::mf_getUserLanguageHandle();
    for (int nId : {IDI_SEVERITY_GREEN, IDI_SEVERITY_YELLOW, IDI_SEVERITY_RED, IDI_BLANK, IDI_USER}) {
        for (int nSize : {16, 32}) {
            HICON hIcon =
                static_cast<HICON>(LoadImageW(hModule, MAKEINTRESOURCEW(nId), IMAGE_ICON, nSize, nSize, 0));
            ASSERT_NE(hIcon, nullptr) << "icon " << nId << " at " << nSize;
            ICONINFO info;
            ASSERT_TRUE(GetIconInfo(hIcon, &info));
            BITMAP bitmap;
            GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
            EXPECT_EQ(bitmap.bmWidth, nSize) << "icon " << nId;
            DeleteObject(info.hbmMask);
            if (info.hbmColor != nullptr)
                DeleteObject(info.hbmColor);
            DestroyIcon(hIcon);
        }
    }
}
