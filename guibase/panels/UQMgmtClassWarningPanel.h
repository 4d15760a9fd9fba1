#pragma once

#include "guibase/toolkit/UQMessagePanel.h"
#include "interfaces/korbase.h"

// The message area below a management class's attributes: the class's user comment and, when backend
// entries are protected by holds, what that means for the class.
class KORGUIBASE_API UQMgmtClassWarningPanel : public UQMessagePanel {
public:
    static constexpr unsigned long PROTECTION_NONE = 0;
    static constexpr unsigned long PROTECTION_HOLD = 1;

    // Reads "BackendEntryProtection" (HKEY_LOCAL_MACHINE, the product's "Options" key), writing 0 when it
    // is missing. A value other than 0 or 1 is logged and taken as 0; a failed read is logged and thrown.
    UQMgmtClassWarningPanel();
    UQMgmtClassWarningPanel(const UQMgmtClassWarningPanel& _other) = default;
    UQMgmtClassWarningPanel& operator=(const UQMgmtClassWarningPanel& _other) = default;
    ~UQMgmtClassWarningPanel() override;

    int mf_isBackendEntryProtection() const noexcept;
    // The comment under the title of string 3943; under holds, the note of string 4529 with the
    // information icon for event-based classes and for classes whose versions are kept for a limited time.
    void mf_setMessage(const CString& _sComment, const UQSeverity& _severity, const CString& _sRetainInit,
                       const CString& _sRetainVers);
    using UQMessagePanel::mf_setMessage;

private:
    unsigned long m_ulBackendEntryProtection;
};
