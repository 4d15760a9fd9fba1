#include "interfaces/korbase.h"

#include "kor/KorReport.h"

UQAttributeList::UQAttributeList(const UQAttributeList& _other) : UQArray<UQAttribute*, UQAttribute*>() {
    *this = _other;
}

UQAttributeList& UQAttributeList::operator=(const UQAttributeList& _other) {
    if (this != &_other) {
        mf_clear();
        for (INT_PTR i = 0; i < _other.GetSize(); ++i)
            mf_addAttribute(_other[i]->m_sKey, _other[i]->m_sValue);
    }
    return *this;
}

UQAttributeList::~UQAttributeList() {
    mf_clear();
}

void UQAttributeList::mf_addAttribute(const CString& _sKey, const CString& _sValue) {
    UQAllocation::mf_appendOrDelete(*this, new UQAttribute{_sKey, _sValue});
}

CString& UQAttributeList::mf_getAttributeValue(const CString& _sKey) {
    static const wchar_t* const _sFunction_ = L"UQAttributeList::mf_getAttributeValue";
    for (INT_PTR i = 0; i < GetSize(); ++i) {
        UQAttribute* record = m_pData[i];
        if (record != nullptr && record->m_sKey.Compare(_sKey) == 0)
            return record->m_sValue;
    }
    UQKorReport::mf_fail(UQErrno(UQErrno::_E_::ItemNotFound), _sFunction_, L"Attribute key='%s' not found",
                         _sKey);
}

void UQAttributeList::mf_clear() noexcept {
    for (INT_PTR i = 0; i < GetSize(); ++i)
        delete m_pData[i];
    RemoveAll();
}
