// The local computer as a SID authority. Internal to korutil.
#pragma once

#include "interfaces/korutil.h"

class UQLocalComputer : public UQSidAuthority {
public:
    UQLocalComputer();
    ~UQLocalComputer() override;

    // Windows: NetUserEnum over the local account database, each SID from LookupAccountNameW. Elsewhere:
    // getpwent, SIDs "S-1-22-1-<uid>" as Samba maps Unix users.
    void mf_queryDisplayUsers(UQArray<UQSid*, UQSid*>& _rUsers) const override;

private:
    static CString mf_implComputerName();
};
