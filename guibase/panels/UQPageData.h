#pragma once

#include "interfaces/korutil.h"

// What the user search dialog keeps of one authority: the authority (not owned), the filter typed for it,
// its users (owned; empty until first listed) and those that pass the filter (borrowed from the users).
class KORGUIBASE_API UQPageData {
public:
    explicit UQPageData(UQSidAuthority* _pAuthority);
    UQPageData(const UQPageData&) = delete;
    UQPageData& operator=(const UQPageData&) = delete;
    virtual ~UQPageData();

    // Deletes the users and empties both arrays.
    void mf_deleteUsers() noexcept;

    UQSidAuthority* m_pAuthority;
    CString m_sFilter;
    UQArray<UQSid*, UQSid*> m_apUsers;
    UQArray<UQSid*, UQSid*> m_apFilteredUsers;
};
