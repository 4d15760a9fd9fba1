// A domain controller of the directory file as a SID authority. Internal to korutil.
#pragma once

#include "interfaces/korutil.h"

class UQControllerAuthority : public UQSidAuthority {
public:
    UQControllerAuthority(const CString& _sFile, const UQDirectoryController& _controller);
    ~UQControllerAuthority() override;

    // Reads the directory file again, so that a query sees the controller as it is now: its listed users,
    // then its generated ones. A controller marked silent, or gone from the file, does not answer.
    void mf_queryDisplayUsers(UQArray<UQSid*, UQSid*>& _rUsers) const override;

    const CString& mf_getFile() const noexcept { return m_sFile; }

private:
    CString m_sFile;
};
