// Groups a few search results into files with the platform-free core and prints what a history search
// shows for them.
#include "compat/utf8.h"
#include "guibase/search/UQSearchList.h"

#include <cstdio>
#include <string>

namespace {

std::string toUtf8(const CString& _sText) {
    return uqfmt::wideToUtf8(static_cast<const wchar_t*>(_sText),
                             static_cast<std::size_t>(_sText.GetLength()));
}

UQQueryData record(const wchar_t* _pPath, std::uint32_t _uVersion, std::uint32_t _uFlags) {
    // 2024-03-07 14:05:09 UTC in 100 ns units since 1601-01-01.
    const UQFileTime written(133542627090000000ull);
    return UQQueryData(_pPath, L"", _uVersion, written, UQFileSize(1024ull * _uVersion), _uFlags,
                       UQExpiryTime{0}, UQQueryData::AccessKey{1, 4096ull * _uVersion});
}

} // namespace

int main() {
    try {
        UQSearchList list;
        list.mf_add(record(L"C:\\Data\\report.docx", 2, 0));
        list.mf_add(record(L"C:\\Data\\budget.xlsx", 1, UQQueryData::FLAG_PROTECTED));
        list.mf_add(record(L"C:\\Data\\report.docx", 1, UQQueryData::FLAG_SECURITY));
        list.mf_add(record(L"C:\\Data\\report.docx", 3, 0));
        list.mf_close();

        UQSearchFileItem::Array files;
        list.mf_getFileList(files, 0, 0, 0, 0, 0, 0);
        std::printf("%u files, protected: %s\n", static_cast<unsigned>(list.mf_getFileItemCount()),
                    list.mf_hasProtectedItems() ? "yes" : "no");
        for (INT_PTR i = 0; i < files.GetSize(); ++i) {
            const UQSearchFileItem* pItem = files.GetAt(i);
            std::printf("%s: versions %s\n", toUtf8(pItem->mf_getPathDisplayString()).c_str(),
                        toUtf8(pItem->mf_getRangesDisplayString()).c_str());
        }
        return 0;
    } catch (const UQErrno& error) {
        std::fprintf(stderr, "consumer: %s\n", toUtf8(error.mf_toString()).c_str());
        return 1;
    }
}
