// The version resources of the shipped DLLs and programs, read back the way Explorer and installers read
// them.
#include "compat/win32.h"

#include "versioned_files.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::wstring binDirectory() {
    std::vector<wchar_t> buffer(32768);
    const DWORD n = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    std::wstring path(buffer.data(), n);
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

struct VersionBlock {
    std::vector<BYTE> data;

    // The StringFileInfo value of the block's first translation; empty when it has none.
    std::wstring mf_string(const wchar_t* _pName) const {
        struct Translation {
            WORD wLanguage;
            WORD wCodePage;
        };
        Translation* pTranslation = nullptr;
        UINT uBytes = 0;
        if (!VerQueryValueW(data.data(), L"\\VarFileInfo\\Translation",
                            reinterpret_cast<void**>(&pTranslation), &uBytes) ||
            uBytes < sizeof(Translation))
            return std::wstring();
        wchar_t key[128];
        swprintf(key, 128, L"\\StringFileInfo\\%04x%04x\\%ls", pTranslation->wLanguage,
                 pTranslation->wCodePage, _pName);
        wchar_t* pValue = nullptr;
        if (!VerQueryValueW(data.data(), key, reinterpret_cast<void**>(&pValue), &uBytes) || uBytes == 0)
            return std::wstring();
        return std::wstring(pValue);
    }
};

VersionBlock readVersion(const std::wstring& _sPath) {
    VersionBlock block;
    DWORD dwHandle = 0;
    const DWORD dwSize = GetFileVersionInfoSizeW(_sPath.c_str(), &dwHandle);
    if (dwSize == 0)
        return block;
    block.data.resize(dwSize);
    if (!GetFileVersionInfoW(_sPath.c_str(), 0, dwSize, block.data.data()))
        block.data.clear();
    return block;
}

bool endsWith(const std::wstring& _sText, const wchar_t* _pEnd) {
    const std::wstring end(_pEnd);
    return _sText.size() >= end.size() && _sText.compare(_sText.size() - end.size(), end.size(), end) == 0;
}

} // namespace

TEST(VersionResources, EveryShippedFileCarriesTheProjectVersionAndNames) {
    ASSERT_GE(sizeof(KOR_VERSIONED_FILES) / sizeof(KOR_VERSIONED_FILES[0]), 7u)
        << "the five libraries, the language module and at least one program";
    for (const wchar_t* pFile : KOR_VERSIONED_FILES) {
        SCOPED_TRACE(testing::Message() << "file " << std::string(pFile, pFile + wcslen(pFile)));
        const VersionBlock block = readVersion(binDirectory() + pFile);
        ASSERT_FALSE(block.data.empty());

        VS_FIXEDFILEINFO* pFixed = nullptr;
        UINT uBytes = 0;
        ASSERT_TRUE(VerQueryValueW(block.data.data(), L"\\", reinterpret_cast<void**>(&pFixed), &uBytes));
        ASSERT_EQ(uBytes, sizeof(VS_FIXEDFILEINFO));
        EXPECT_EQ(pFixed->dwSignature, 0xFEEF04BDu);
        EXPECT_EQ(pFixed->dwFileVersionMS, KOR_VERSION_MS);
        EXPECT_EQ(pFixed->dwFileVersionLS, KOR_VERSION_LS);
        EXPECT_EQ(pFixed->dwProductVersionMS, KOR_VERSION_MS);
        EXPECT_EQ(pFixed->dwProductVersionLS, KOR_VERSION_LS);
        EXPECT_EQ(pFixed->dwFileType, endsWith(pFile, L".exe") ? DWORD(VFT_APP) : DWORD(VFT_DLL));

        EXPECT_EQ(block.mf_string(L"CompanyName"), KOR_COMPANY_NAME);
        EXPECT_EQ(block.mf_string(L"ProductName"), KOR_PRODUCT_NAME);
        EXPECT_EQ(block.mf_string(L"OriginalFilename"), pFile);
        EXPECT_EQ(block.mf_string(L"FileVersion"), KOR_VERSION_TEXT);
        EXPECT_EQ(block.mf_string(L"ProductVersion"), KOR_VERSION_TEXT);
        EXPECT_FALSE(block.mf_string(L"FileDescription").empty());
        EXPECT_TRUE(block.mf_string(L"NoSuchValue").empty());
    }
}

TEST(VersionResources, AFileWithoutOneHasNoVersionBlock) {
    // The test program itself ships nowhere and carries no version resource.
    std::vector<wchar_t> self(32768);
    ASSERT_GT(GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size())), 0u);
    DWORD dwHandle = 0;
    SetLastError(0xdeadbeef);
    EXPECT_EQ(GetFileVersionInfoSizeW(self.data(), &dwHandle), 0u);
    EXPECT_NE(GetLastError(), 0xdeadbeefu);
}

TEST(VersionResources, AMissingFileHasNoVersionBlock) {
    DWORD dwHandle = 0;
    SetLastError(0xdeadbeef);
    EXPECT_EQ(GetFileVersionInfoSizeW((binDirectory() + L"no-such-file.dll").c_str(), &dwHandle), 0u);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
}
