#pragma once

#include "interfaces/korbase.h"

// One attribute record: key, then value.
struct KORGUIBASE_API UQAttribute {
    CString m_sKey;
    CString m_sValue;
};

// Attribute records looked up by exact key. The list owns its records.
class KORGUIBASE_API UQAttributeList : public UQArray<UQAttribute*, UQAttribute*> {
public:
    UQAttributeList() = default;
    UQAttributeList(const UQAttributeList& _other);
    UQAttributeList& operator=(const UQAttributeList& _other);
    ~UQAttributeList() override;

    void mf_addAttribute(const CString& _sKey, const CString& _sValue);
    // The first record whose key equals _sKey (case-sensitive); none: _E_::ItemNotFound.
    CString& mf_getAttributeValue(const CString& _sKey);
    void mf_clear() noexcept;
};
