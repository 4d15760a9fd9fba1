#include "guibase/panels/UQMgmtClassPanel.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQComboBox.h"
#include "guibase/toolkit/UQWindow.h"

namespace {

const int ITEM_CLASS_COMBO = 1027;
const int ITEM_DESCRIPTION = 1031;
const int ITEM_RETAIN_VERS = 1033;
const int ITEM_RETAIN_INIT = 1034;
const int ITEM_RETAIN_MIN = 1035;
const int ITEM_DEST_NAME = 1036;

const unsigned TEXT_DAYS = 3312;
const unsigned TEXT_DEFAULT_DESCRIPTION = 3320;
const unsigned TEXT_DEFAULT_SUFFIX = 4542;
const unsigned TEXT_DEFAULT_ATTRIBUTES = 4548;
// The attribute texts of the server's default class are the tail of string 4548 from this index on.
const int DEFAULT_ATTRIBUTES_CUT = 122;

const wchar_t* const DEFAULT_NAME = L"DEFAULT";

struct Label {
    int nId;
    unsigned uText;
};
const Label LABELS[] = {{30106, 3354}, {30145, 4256}, {30146, 4258}, {30147, 4257}, {30148, 3357}};
// Labels that only some dialogs have.
const Label OPTIONAL_LABELS[] = {{244, 4535}, {30149, 3855}, {30144, 4346}};

} // namespace

UQMgmtClassPanel::UQMgmtClassPanel() {
    m_sDefaultDisplayName.Format(L"%s <%s>", DEFAULT_NAME, UQString(TEXT_DEFAULT_SUFFIX).mf_getText());
}

UQMgmtClassPanel::~UQMgmtClassPanel() {
    mf_implCleanup();
}

int UQMgmtClassPanel::mf_onInitDialog(HWND _hDlg, const CString& _sClassName) {
    static const wchar_t* const _sFunction_ = L"UQMgmtClassPanel::mf_onInitDialog";
    for (const Label& label : LABELS)
        UQWindow::mf_setItemText(_hDlg, label.nId, UQString(label.uText));
    for (const Label& label : OPTIONAL_LABELS) {
        if (UQWindow::mf_hasItem(_hDlg, label.nId))
            UQWindow::mf_setItemText(_hDlg, label.nId, UQString(label.uText));
    }
    m_warningPanel.mf_onInitDialog(_hDlg);
    if (m_classes.GetSize() > 0)
        mf_implCleanup();
    try {
        const UQHost host;
        UQArchiverMain::mf_getMgmtClasses(m_classes, host, CString());
        UQAllocation::mf_appendOrDelete(m_classes,
                                        UQArchiverMain::mf_getMgmtClass(DEFAULT_NAME, host, CString()));
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure querying management classes:\r\n%s%s\r\n%sContinuing ...", UQLog::TAB,
                         e.mf_toString(), UQLog::TAB);
    }
    HWND hCombo = UQWindow::mf_getItem(_hDlg, ITEM_CLASS_COMBO);
    for (INT_PTR i = 0; i < m_classes.GetSize(); ++i) {
        const UQQueryMgmtClassData* pClass = m_classes[i];
        if (pClass == nullptr)
            continue;
        const CString& sName = pClass->mf_getName();
        UQComboBox::mf_addTextAndData(
            hCombo, sName.Compare(DEFAULT_NAME) == 0 ? m_sDefaultDisplayName : sName, pClass);
    }
    mf_setMgmtClassName(_hDlg, _sClassName);
    return 1;
}

void UQMgmtClassPanel::mf_onUpdateDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQMgmtClassPanel::mf_onUpdateDialog";
    HWND hCombo = UQWindow::mf_getItem(_hDlg, ITEM_CLASS_COMBO);
    const int nSelection = UQComboBox::mf_getSelection(hCombo);
    UQQueryMgmtClassData* pClass =
        nSelection >= 0 ? static_cast<UQQueryMgmtClassData*>(UQComboBox::mf_getData(hCombo, nSelection))
                        : nullptr;
    CString sDescription, sRetainVers, sRetainInit, sRetainMin, sDestName, sComment;
    UQSeverity severity = UQSeverity::Error;
    if (pClass != nullptr) {
        // A missing attribute ends the update here.
        UQAttributeList& attributes = pClass->mf_getAttributes();
        sDescription = pClass->mf_getDescription();
        sRetainVers = attributes.mf_getAttributeValue(L"retainVers");
        sRetainInit = attributes.mf_getAttributeValue(L"retainInit");
        sRetainMin = attributes.mf_getAttributeValue(L"retainMin");
        sDestName = attributes.mf_getAttributeValue(L"destName");
        const CString sDays = UQString(TEXT_DAYS).mf_getText();
        sRetainVers += L" ";
        sRetainVers += sDays;
        if (sRetainInit.Compare(L"CREATE") != 0) {
            sRetainMin += L" ";
            sRetainMin += sDays;
        } else {
            sRetainMin = L"-";
        }
        try {
            severity = pClass->mf_queryUserComment(sComment, 1);
        } catch (const UQErrno& e) {
            sComment.Empty();
            severity = UQSeverity::Error;
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                             L"Failure querying user comment for management class '%s':\r\n%s%s",
                             pClass->mf_getName(), UQLog::TAB, e.mf_toString());
        }
    } else if (nSelection >= 0) {
        // The server's default class without data of its own, named "<VRS server default mgmt class>".
        sDescription = UQString(TEXT_DEFAULT_DESCRIPTION).mf_getText();
        const CString sText = UQString(TEXT_DEFAULT_ATTRIBUTES).mf_getText();
        const CString sTail =
            sText.GetLength() > DEFAULT_ATTRIBUTES_CUT ? sText.Mid(DEFAULT_ATTRIBUTES_CUT) : CString();
        sRetainVers = sRetainInit = sRetainMin = sDestName = sTail;
    }
    UQWindow::mf_setItemText(_hDlg, ITEM_DESCRIPTION, sDescription);
    UQWindow::mf_setItemText(_hDlg, ITEM_RETAIN_INIT, sRetainInit);
    UQWindow::mf_setItemText(_hDlg, ITEM_RETAIN_VERS, sRetainVers);
    UQWindow::mf_setItemText(_hDlg, ITEM_RETAIN_MIN, sRetainMin);
    UQWindow::mf_setItemText(_hDlg, ITEM_DEST_NAME, sDestName);
    m_warningPanel.mf_setMessage(sComment, severity, sRetainInit, sRetainVers);
}

CString UQMgmtClassPanel::mf_getMgmtClassName(HWND _hDlg) const {
    CString sText;
    UQWindow::mf_getItemText(_hDlg, ITEM_CLASS_COMBO, sText);
    return sText == m_sDefaultDisplayName ? CString(DEFAULT_NAME) : sText;
}

void UQMgmtClassPanel::mf_setMgmtClassName(HWND _hDlg, const CString& _sClassName) {
    const CString sText = _sClassName.Compare(DEFAULT_NAME) == 0 ? m_sDefaultDisplayName : _sClassName;
    UQComboBox::mf_selectText(UQWindow::mf_getItem(_hDlg, ITEM_CLASS_COMBO), sText, 0);
    mf_onUpdateDialog(_hDlg);
}

int UQMgmtClassPanel::mf_hasMgmtClassName(const CString& _sClassName) {
    for (INT_PTR i = 0; i < m_classes.GetSize(); ++i) {
        if (m_classes[i] != nullptr && m_classes[i]->mf_getName().Compare(_sClassName) == 0)
            return 1;
    }
    return 0;
}

void UQMgmtClassPanel::mf_implCleanup() noexcept {
    static const wchar_t* const _sFunction_ = L"UQMgmtClassPanel::mf_implCleanup";
    const INT_PTR nCount = m_classes.GetSize();
    for (INT_PTR i = 0; i < nCount; ++i) {
        try {
            delete m_classes.GetAt(i);
        } catch (const UQErrno& e) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                             L"Failure deleting management class data with index=%d:\r\n%s%s",
                             static_cast<int>(i), UQLog::TAB, e.mf_toString());
        } catch (...) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                             L"Failure deleting management class data with index=%d:\r\n%s%s",
                             static_cast<int>(i), UQLog::TAB, L"Unexpected exception");
        }
    }
    m_classes.RemoveAll();
}
