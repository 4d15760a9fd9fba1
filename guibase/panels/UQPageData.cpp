#include "guibase/panels/UQPageData.h"

UQPageData::UQPageData(UQSidAuthority* _pAuthority) : m_pAuthority(_pAuthority), m_sFilter(L"*") {}

UQPageData::~UQPageData() {
    mf_deleteUsers();
}

void UQPageData::mf_deleteUsers() noexcept {
    m_apFilteredUsers.RemoveAll();
    for (INT_PTR i = 0; i < m_apUsers.GetSize(); ++i)
        delete m_apUsers.GetAt(i);
    m_apUsers.RemoveAll();
}
