#include "guibase/foundation/UQAttributeList.h"

#include "guibase/foundation/UQReport.h"

UQAttributeList::UQAttributeList(const UQAttributeList& other) : UQArray<UQAttribute*, UQAttribute*>() {
    *this = other;
}

UQAttributeList& UQAttributeList::operator=(const UQAttributeList& other) {
    if (this != &other) {
        mf_clear();
        for (INT_PTR i = 0; i < other.GetSize(); ++i)
            mf_addAttribute(other[i]->m_sKey, other[i]->m_sValue);
    }
    return *this;
}

UQAttributeList::~UQAttributeList() {
    mf_clear();
}

void UQAttributeList::mf_addAttribute(const CString& key, const CString& value) {
    UQAllocation::mf_appendOrDelete(*this, new UQAttribute{key, value});
}

CString& UQAttributeList::mf_getAttributeValue(const CString& key) {
    static const wchar_t* const _sFunction_ = L"UQAttributeList::mf_getAttributeValue";
    for (INT_PTR i = 0; i < GetSize(); ++i) {
        UQAttribute* record = m_pData[i];
        if (record != nullptr && record->m_sKey.Compare(key) == 0)
            return record->m_sValue;
    }
    UQReport::mf_fail(UQErrno::_E_::ItemNotFound, _sFunction_, L"Attribute key='%s' not found", key);
}

void UQAttributeList::mf_clear() noexcept {
    for (INT_PTR i = 0; i < GetSize(); ++i)
        delete m_pData[i];
    RemoveAll();
}
