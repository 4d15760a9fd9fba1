#include "guibase/foundation/UQReport.h"

#include <cstdlib>

namespace {

int compareNoCase(const void* _pA, const void* _pB) {
    const CString* sa = *static_cast<const CString* const*>(_pA);
    const CString* sb = *static_cast<const CString* const*>(_pB);
    return sa->CompareNoCase(*sb);
}

} // namespace

template <> void UQArray<CString, const CString&>::mf_sortPointerArray() {
    static const wchar_t* const _sFunction_ = L"UQArray::mf_sortPointerArray";
    const INT_PTR n = this->GetSize();
    if (n < 2)
        return; // nothing to order, nothing to allocate

    UQArray<CString, const CString&> copies;
    copies.SetSize(n);
    UQArray<CString*, CString*> pointers;
    pointers.SetSize(n);
    for (INT_PTR i = 0; i < n; ++i) {
        copies[i] = this->m_pData[i];
        pointers[i] = &copies[i];
    }

    const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(CString*);
    CString** buffer = static_cast<CString**>(UQAllocation::mf_allocate(bytes));
    if (buffer == nullptr) {
        UQReport::mf_fail(UQErrno::_E_::Memory, _sFunction_, L"No memory for %lu array entries (%lu bytes)",
                          static_cast<unsigned long>(n), static_cast<unsigned long>(bytes));
    }
    for (INT_PTR i = 0; i < n; ++i)
        buffer[i] = pointers[i];
    std::qsort(buffer, static_cast<std::size_t>(n), sizeof(CString*), compareNoCase);
    for (INT_PTR i = 0; i < n; ++i)
        pointers[i] = buffer[i];
    UQAllocation::mf_free(buffer);

    for (INT_PTR i = 0; i < n; ++i)
        this->m_pData[i] = *pointers[i];
}
