// What the panel tests share: the class file and the directory file pointed at for one test, and the
// management class test dialog opened modeless.
#pragma once

#include "PanelsTestIds.h"
#include "ToolkitTestSupport.h"
#include "support/ScratchFile.h"

#include "interfaces/korarchiver.h"
#include "interfaces/korutil.h"

#include <string>

namespace panelstest {

// The archiver answers from _sFile while the object lives.
class UseClassFile {
public:
    explicit UseClassFile(const CString& _sFile) { UQArchiverMain::mf_setMgmtClassFile(_sFile); }
    ~UseClassFile() { UQArchiverMain::mf_setMgmtClassFile(CString()); }
    UseClassFile(const UseClassFile&) = delete;
    UseClassFile& operator=(const UseClassFile&) = delete;
};

// The domain is the directory file _sFile while the object lives.
class UseDirectoryFile {
public:
    explicit UseDirectoryFile(const CString& _sFile) { UQDomain::mf_setDirectoryFile(_sFile); }
    ~UseDirectoryFile() { UQDomain::mf_setDirectoryFile(CString()); }
    UseDirectoryFile(const UseDirectoryFile&) = delete;
    UseDirectoryFile& operator=(const UseDirectoryFile&) = delete;
};

// The management class test dialog (IDD_MGMT_CLASS_TEST), modeless and shown; destroyed with the object.
class MgmtClassDialog {
public:
    MgmtClassDialog();
    ~MgmtClassDialog();
    MgmtClassDialog(const MgmtClassDialog&) = delete;
    MgmtClassDialog& operator=(const MgmtClassDialog&) = delete;

    HWND hwnd() const noexcept { return m_hDlg; }

private:
    HWND m_hDlg;
};

// The texts of the combo box's entries, in order.
std::vector<std::string> comboTexts(HWND _hCombo);
// The texts of a list view's items, in order.
std::vector<std::string> listTexts(HWND _hList);

} // namespace panelstest
