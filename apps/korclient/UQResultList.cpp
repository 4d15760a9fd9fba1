#include "UQResultList.h"

#include "UQSafeFile.h"

#include "compat/utf8.h"
#include "guibase/filelist/UQFileList.h"
#include "guibase/toolkit/UQListPanel.h"
#include "interfaces/korarchiver.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <algorithm>

void UQResultList::mf_prepare(HWND _hList) {
    UQListPanel::mf_initFullRowSelect(_hList);
    UQListPanel::mf_createImageList(_hList);
    UQListPanel::mf_addIcon(_hList, IDI_SEVERITY_GREEN);
    UQListPanel::mf_addIcon(_hList, IDI_SEVERITY_YELLOW);
    UQListPanel::mf_addIcon(_hList, IDI_SEVERITY_RED);
    // Paths are long and results short: the file column takes most of the width.
    UQListPanel::mf_insertColumn(_hList, 0, L"File", 300, LVCFMT_LEFT);
    UQListPanel::mf_insertColumn(_hList, 1, L"Result", 120, LVCFMT_LEFT);
    UQListPanel::mf_adjustColumnWidths(_hList, 1);
}

void UQResultList::mf_fill(HWND _hList, const std::vector<UQFileOutcome>& _outcomes) {
    UQFileList list;
    for (const UQFileOutcome& outcome : _outcomes) {
        const std::size_t nSlash = outcome.sPath.rfind(L'\\');
        const std::wstring sFolder =
            nSlash == std::wstring::npos ? std::wstring() : outcome.sPath.substr(0, nSlash);
        const std::wstring sName =
            nSlash == std::wstring::npos ? outcome.sPath : outcome.sPath.substr(nSlash + 1);
        list.mf_add(UQSourceEvent(CString(sFolder.c_str()), CString(sName.c_str()),
                                  UQSeverity(static_cast<int>(outcome.eSeverity)),
                                  CString(outcome.sResult.c_str())));
    }
    list.mf_close();
    list.mf_sort(1);
    UQFileListItem::Array items;
    list.mf_getList(items);
    SendMessageW(_hList, LVM_DELETEALLITEMS, 0, 0);
    for (INT_PTR i = 0; i < items.GetSize(); ++i) {
        const UQFileListItem& item = *items[i];
        LVITEMW row{};
        row.mask = LVIF_TEXT | LVIF_IMAGE;
        row.iItem = static_cast<int>(i);
        row.pszText = const_cast<wchar_t*>(item.mf_getPath().GetString());
        row.iImage = item.mf_getSeverity().mf_isRed() ? 2 : item.mf_getSeverity().mf_isYellow() ? 1 : 0;
        const int nRow =
            static_cast<int>(SendMessageW(_hList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row)));
        UQListPanel::mf_setText(item.mf_getResult(), _hList, nRow, 1);
    }
}

std::wstring UQResultList::mf_summary(const std::vector<UQFileOutcome>& _outcomes) {
    const auto count = [&](UQFileOutcome::SEVERITY _e) {
        return std::count_if(_outcomes.begin(), _outcomes.end(),
                             [&](const UQFileOutcome& _o) { return _o.eSeverity == _e; });
    };
    return std::to_wstring(_outcomes.size()) + L" files: " + std::to_wstring(count(UQFileOutcome::GREEN)) +
           L" done, " + std::to_wstring(count(UQFileOutcome::YELLOW)) + L" with warnings, " +
           std::to_wstring(count(UQFileOutcome::RED)) + L" failed";
}

int UQResultList::mf_saveListing(const std::vector<UQFileOutcome>& _outcomes, const std::wstring& _sFile,
                                 std::wstring& _rsError) {
    std::vector<UQFileOutcome> sorted = _outcomes;
    std::sort(sorted.begin(), sorted.end(),
              [](const UQFileOutcome& _a, const UQFileOutcome& _b) { return _a.sPath < _b.sPath; });
    std::string sText = "# Listing excerpt written by korclient\n";
    try {
        for (const UQFileOutcome& outcome : sorted) {
            const UQListingWriter::STATUS eStatus =
                outcome.eSeverity == UQFileOutcome::GREEN    ? UQListingWriter::STATUS_MIGRATED
                : outcome.eSeverity == UQFileOutcome::YELLOW ? UQListingWriter::STATUS_WARNING
                                                             : UQListingWriter::STATUS_FAILED;
            sText += UQListingWriter::mf_formatLine(CString(outcome.sPath.c_str()), outcome.uVersion, eStatus,
                                                    CString(outcome.sResult.c_str()));
        }
    } catch (const UQErrno& e) {
        // The writer has logged it; nothing is written.
        _rsError = e.mf_getDetail().GetString();
        return 0;
    }
    const DWORD dwError = UQSafeFile::mf_writeFileAtomically(UQSafeFile::mf_absolute(_sFile), sText, 1);
    if (dwError != 0) {
        _rsError = L"The listing excerpt '" + _sFile + L"' cannot be written (system error " +
                   std::to_wstring(dwError) + L")";
        return 0;
    }
    _rsError.clear();
    return 1;
}
