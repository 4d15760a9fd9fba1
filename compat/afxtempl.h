// MFC's CArray with its exact growth rule. Elements that are trivially relocatable (pointers, plain
// values, CString) are moved by realloc, so the capped growth step costs no copying of the elements.
#pragma once

#include "compat/afx.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

typedef std::intptr_t INT_PTR;

class KORCOMPAT_API CMemoryException : public CException {
public:
    ~CMemoryException() override;
};

// Throws a pointer to MFC's static CMemoryException.
[[noreturn]] KORCOMPAT_API void AfxThrowMemoryException();

template <class T> struct AfxIsRelocatable : std::is_trivially_copyable<T> {};
template <> struct AfxIsRelocatable<CString> : std::true_type {};

template <class TYPE, class ARG_TYPE = const TYPE&> class CArray {
public:
    CArray() noexcept = default;
    CArray(const CArray&) = delete;
    CArray& operator=(const CArray&) = delete;
    virtual ~CArray() { freeAll(); }

    INT_PTR GetSize() const noexcept { return m_nSize; }
    INT_PTR GetCount() const noexcept { return m_nSize; }
    bool IsEmpty() const noexcept { return m_nSize == 0; }
    INT_PTR GetUpperBound() const noexcept { return m_nSize - 1; }
    // Not MFC, but the field is there: lets tests see the growth rule at work.
    INT_PTR GetAllocSize() const noexcept { return m_nMaxSize; }
    INT_PTR GetGrowBy() const noexcept { return m_nGrowBy; }

    void SetSize(INT_PTR _nNewSize, INT_PTR _nGrowBy = -1);
    void FreeExtra();
    void RemoveAll() { SetSize(0, -1); }

    const TYPE& GetAt(INT_PTR _nIndex) const {
        checkIndex(_nIndex);
        return m_pData[_nIndex];
    }
    TYPE& GetAt(INT_PTR _nIndex) {
        checkIndex(_nIndex);
        return m_pData[_nIndex];
    }
    void SetAt(INT_PTR _nIndex, ARG_TYPE _newElement) {
        checkIndex(_nIndex);
        m_pData[_nIndex] = _newElement;
    }
    TYPE& ElementAt(INT_PTR _nIndex) { return GetAt(_nIndex); }
    const TYPE& ElementAt(INT_PTR _nIndex) const { return GetAt(_nIndex); }
    const TYPE& operator[](INT_PTR _nIndex) const { return GetAt(_nIndex); }
    TYPE& operator[](INT_PTR _nIndex) { return GetAt(_nIndex); }
    const TYPE* GetData() const noexcept { return m_pData; }
    TYPE* GetData() noexcept { return m_pData; }

    void SetAtGrow(INT_PTR _nIndex, ARG_TYPE _newElement);
    INT_PTR Add(ARG_TYPE _newElement) {
        if (m_nSize < m_nMaxSize) {
            new (static_cast<void*>(m_pData + m_nSize)) TYPE(_newElement);
            return m_nSize++;
        }
        const INT_PTR nIndex = m_nSize;
        SetAtGrow(nIndex, _newElement);
        return nIndex;
    }
    INT_PTR Append(const CArray& _src);
    void Copy(const CArray& _src);
    void InsertAt(INT_PTR _nIndex, ARG_TYPE _newElement, INT_PTR _nCount = 1);
    void RemoveAt(INT_PTR _nIndex, INT_PTR _nCount = 1);

protected:
    void checkIndex(INT_PTR _nIndex) const {
        if (_nIndex < 0 || _nIndex >= m_nSize)
            AfxThrowInvalidArgException();
    }

    TYPE* m_pData = nullptr;
    INT_PTR m_nSize = 0;
    INT_PTR m_nMaxSize = 0;
    INT_PTR m_nGrowBy = 0;

private:
    static constexpr bool RELOCATABLE = AfxIsRelocatable<TYPE>::value;

    static void constructRange(TYPE* _p, INT_PTR _n) {
        if constexpr (std::is_trivially_copyable_v<TYPE>) {
            std::memset(static_cast<void*>(_p), 0, static_cast<std::size_t>(_n) * sizeof(TYPE));
        } else {
            for (INT_PTR i = 0; i < _n; ++i)
                new (static_cast<void*>(_p + i)) TYPE();
        }
    }
    static void destroyRange(TYPE* _p, INT_PTR _n) noexcept {
        if constexpr (!std::is_trivially_destructible_v<TYPE>) {
            for (INT_PTR i = 0; i < _n; ++i)
                _p[i].~TYPE();
        }
    }
    static TYPE* allocate(INT_PTR _n) {
        if (static_cast<std::size_t>(_n) > SIZE_MAX / sizeof(TYPE))
            AfxThrowInvalidArgException();
        void* p = std::malloc(static_cast<std::size_t>(_n) * sizeof(TYPE));
        if (p == nullptr)
            AfxThrowMemoryException();
        return static_cast<TYPE*>(p);
    }
    void reallocate(INT_PTR _nNewMax) {
        if constexpr (RELOCATABLE) {
            if (static_cast<std::size_t>(_nNewMax) > SIZE_MAX / sizeof(TYPE))
                AfxThrowInvalidArgException();
            void* p =
                std::realloc(static_cast<void*>(m_pData), static_cast<std::size_t>(_nNewMax) * sizeof(TYPE));
            if (p == nullptr)
                AfxThrowMemoryException();
            m_pData = static_cast<TYPE*>(p);
        } else {
            TYPE* p = allocate(_nNewMax);
            for (INT_PTR i = 0; i < m_nSize; ++i) {
                new (static_cast<void*>(p + i)) TYPE(std::move(m_pData[i]));
                m_pData[i].~TYPE();
            }
            std::free(m_pData);
            m_pData = p;
        }
        m_nMaxSize = _nNewMax;
    }
    void freeAll() noexcept {
        destroyRange(m_pData, m_nSize);
        std::free(m_pData);
        m_pData = nullptr;
        m_nSize = m_nMaxSize = 0;
    }
};

template <class TYPE, class ARG_TYPE>
void CArray<TYPE, ARG_TYPE>::SetSize(INT_PTR _nNewSize, INT_PTR _nGrowBy) {
    if (_nNewSize < 0)
        AfxThrowInvalidArgException();
    if (_nGrowBy >= 0)
        m_nGrowBy = _nGrowBy;
    if (_nNewSize == 0) {
        freeAll();
    } else if (m_pData == nullptr) {
        const INT_PTR nAlloc = _nNewSize > m_nGrowBy ? _nNewSize : m_nGrowBy;
        m_pData = allocate(nAlloc);
        constructRange(m_pData, _nNewSize);
        m_nSize = _nNewSize;
        m_nMaxSize = nAlloc;
    } else if (_nNewSize <= m_nMaxSize) {
        if (_nNewSize > m_nSize)
            constructRange(m_pData + m_nSize, _nNewSize - m_nSize);
        else if (_nNewSize < m_nSize)
            destroyRange(m_pData + _nNewSize, m_nSize - _nNewSize);
        m_nSize = _nNewSize;
    } else {
        INT_PTR step = m_nGrowBy;
        if (step == 0) {
            step = m_nSize / 8;
            step = step < 4 ? 4 : (step > 1024 ? 1024 : step);
        }
        const INT_PTR nNewMax = _nNewSize < m_nMaxSize + step ? m_nMaxSize + step : _nNewSize;
        reallocate(nNewMax);
        constructRange(m_pData + m_nSize, _nNewSize - m_nSize);
        m_nSize = _nNewSize;
    }
}

template <class TYPE, class ARG_TYPE> void CArray<TYPE, ARG_TYPE>::FreeExtra() {
    if (m_nSize != m_nMaxSize) {
        if (m_nSize == 0) {
            freeAll();
        } else {
            reallocate(m_nSize);
        }
    }
}

template <class TYPE, class ARG_TYPE>
void CArray<TYPE, ARG_TYPE>::SetAtGrow(INT_PTR _nIndex, ARG_TYPE _newElement) {
    if (_nIndex < 0)
        AfxThrowInvalidArgException();
    if (_nIndex >= m_nSize) {
        // The element may live in our own buffer, which growing can move.
        TYPE copy(_newElement);
        SetSize(_nIndex + 1, -1);
        m_pData[_nIndex] = std::move(copy);
        return;
    }
    m_pData[_nIndex] = _newElement;
}

template <class TYPE, class ARG_TYPE> INT_PTR CArray<TYPE, ARG_TYPE>::Append(const CArray& _src) {
    if (this == &_src)
        AfxThrowInvalidArgException();
    const INT_PTR nOld = m_nSize;
    SetSize(m_nSize + _src.m_nSize);
    for (INT_PTR i = 0; i < _src.m_nSize; ++i)
        m_pData[nOld + i] = _src.m_pData[i];
    return nOld;
}

template <class TYPE, class ARG_TYPE> void CArray<TYPE, ARG_TYPE>::Copy(const CArray& _src) {
    if (this == &_src)
        return;
    SetSize(_src.m_nSize);
    for (INT_PTR i = 0; i < _src.m_nSize; ++i)
        m_pData[i] = _src.m_pData[i];
}

template <class TYPE, class ARG_TYPE>
void CArray<TYPE, ARG_TYPE>::InsertAt(INT_PTR _nIndex, ARG_TYPE _newElement, INT_PTR _nCount) {
    if (_nIndex < 0 || _nCount <= 0)
        AfxThrowInvalidArgException();
    TYPE copy(_newElement);
    if (_nIndex >= m_nSize) {
        SetSize(_nIndex + _nCount, -1);
    } else {
        const INT_PTR nOld = m_nSize;
        SetSize(m_nSize + _nCount, -1);
        for (INT_PTR i = nOld - 1; i >= _nIndex; --i)
            m_pData[i + _nCount] = std::move(m_pData[i]);
    }
    for (INT_PTR i = 0; i < _nCount; ++i)
        m_pData[_nIndex + i] = copy;
}

template <class TYPE, class ARG_TYPE>
void CArray<TYPE, ARG_TYPE>::RemoveAt(INT_PTR _nIndex, INT_PTR _nCount) {
    if (_nIndex < 0 || _nCount < 0 || _nIndex + _nCount > m_nSize)
        AfxThrowInvalidArgException();
    for (INT_PTR i = _nIndex; i + _nCount < m_nSize; ++i)
        m_pData[i] = std::move(m_pData[i + _nCount]);
    destroyRange(m_pData + m_nSize - _nCount, _nCount);
    m_nSize -= _nCount;
}
