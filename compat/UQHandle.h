// Owned handles: one move-only owner for every kind of handle the tree frees by hand, with a traits class
// per kind that names the value meaning "absent" and the function that closes the handle; a non-owning
// view of a handle; and a scope-exit helper for the clean-ups that are not a handle. Header only, so that
// every library (compat, kor, guibase, apps) uses the same owner.
#pragma once

#include "compat/win32.h"

#include <cstdio>
#include <utility>

#if defined(_WIN32)
#include <commctrl.h>
#endif

// Traits: typedef Type; static Type mf_absent() noexcept; static void mf_close(Type) noexcept.
template <class TRAITS> class UQHandle {
public:
    typedef typename TRAITS::Type Type;

    UQHandle() noexcept : m_hHandle(TRAITS::mf_absent()) {}
    explicit UQHandle(Type _hHandle) noexcept : m_hHandle(_hHandle) {}
    UQHandle(UQHandle&& _other) noexcept : m_hHandle(_other.mf_release()) {}
    UQHandle& operator=(UQHandle&& _other) noexcept {
        if (this != &_other)
            mf_reset(_other.mf_release());
        return *this;
    }
    UQHandle(const UQHandle&) = delete;
    UQHandle& operator=(const UQHandle&) = delete;
    ~UQHandle() { mf_reset(); }

    Type mf_get() const noexcept { return m_hHandle; }
    int mf_isValid() const noexcept { return m_hHandle != TRAITS::mf_absent() ? 1 : 0; }
    explicit operator bool() const noexcept { return m_hHandle != TRAITS::mf_absent(); }

    // Gives the handle up without closing it.
    Type mf_release() noexcept {
        Type hHandle = m_hHandle;
        m_hHandle = TRAITS::mf_absent();
        return hHandle;
    }
    // Closes the handle held (if any) and holds _hHandle instead.
    void mf_reset(Type _hHandle = TRAITS::mf_absent()) noexcept {
        Type hOld = m_hHandle;
        m_hHandle = _hHandle;
        if (hOld != TRAITS::mf_absent())
            TRAITS::mf_close(hOld);
    }
    // Closes the handle held and hands out the place for an out-parameter that receives the next one.
    Type* mf_put() noexcept {
        mf_reset();
        return &m_hHandle;
    }

private:
    Type m_hHandle;
};

// A handle that someone else owns: passed around where a function only uses it.
template <class TRAITS> class UQHandleView {
public:
    typedef typename TRAITS::Type Type;

    UQHandleView() noexcept : m_hHandle(TRAITS::mf_absent()) {}
    UQHandleView(Type _hHandle) noexcept : m_hHandle(_hHandle) {}
    UQHandleView(const UQHandle<TRAITS>& _owner) noexcept : m_hHandle(_owner.mf_get()) {}

    Type mf_get() const noexcept { return m_hHandle; }
    int mf_isValid() const noexcept { return m_hHandle != TRAITS::mf_absent() ? 1 : 0; }
    explicit operator bool() const noexcept { return m_hHandle != TRAITS::mf_absent(); }

private:
    Type m_hHandle;
};

// Traits whose absent value is the null pointer (or null handle) and whose close is a plain function.
template <class TYPE, class RESULT, RESULT (*CLOSE)(TYPE)> struct UQNullHandleTraits {
    typedef TYPE Type;
    static Type mf_absent() noexcept { return nullptr; }
    static void mf_close(Type _hHandle) noexcept { CLOSE(_hHandle); }
};

// A C runtime file, closed with fclose.
struct UQStdFileTraits {
    typedef std::FILE* Type;
    static Type mf_absent() noexcept { return nullptr; }
    static void mf_close(Type _pFile) noexcept { std::fclose(_pFile); }
};

// A COM interface pointer: the owner holds one reference and releases it.
template <class COM_INTERFACE> struct UQComTraits {
    typedef COM_INTERFACE* Type;
    static Type mf_absent() noexcept { return nullptr; }
    static void mf_close(Type _pInterface) noexcept { _pInterface->Release(); }
};

// An event (CreateEventW), null when absent, closed with CloseHandle; kernel32 or its native stand-in.
struct UQEventTraits {
    typedef HANDLE Type;
    static Type mf_absent() noexcept { return nullptr; }
    static void mf_close(Type _hEvent) noexcept { CloseHandle(_hEvent); }
};

typedef UQHandle<UQStdFileTraits> UQStdFile;
typedef UQHandle<UQEventTraits> UQEventHandle;
template <class COM_INTERFACE> using UQComPtr = UQHandle<UQComTraits<COM_INTERFACE>>;

#if defined(_WIN32)
// A file of CreateFileW: INVALID_HANDLE_VALUE when absent.
struct UQFileHandleTraits {
    typedef HANDLE Type;
    static Type mf_absent() noexcept { return INVALID_HANDLE_VALUE; }
    static void mf_close(Type _hFile) noexcept { CloseHandle(_hFile); }
};
// GDI objects (fonts, brushes) are deleted with DeleteObject.
template <class GDI> struct UQGdiObjectTraits {
    typedef GDI Type;
    static Type mf_absent() noexcept { return nullptr; }
    static void mf_close(Type _hObject) noexcept { DeleteObject(_hObject); }
};

// A search of FindFirstFileW: INVALID_HANDLE_VALUE when absent, ended with FindClose.
struct UQFindHandleTraits {
    typedef HANDLE Type;
    static Type mf_absent() noexcept { return INVALID_HANDLE_VALUE; }
    static void mf_close(Type _hFind) noexcept { FindClose(_hFind); }
};

typedef UQHandle<UQFileHandleTraits> UQFileHandle;
typedef UQHandle<UQFindHandleTraits> UQFindHandle;
// A process or thread of CreateProcessW: null when absent, closed with CloseHandle.
typedef UQHandle<UQNullHandleTraits<HANDLE, BOOL, &CloseHandle>> UQProcessHandle;
typedef UQHandle<UQGdiObjectTraits<HFONT>> UQFont;
typedef UQHandle<UQGdiObjectTraits<HBRUSH>> UQBrush;
typedef UQHandle<UQNullHandleTraits<HICON, BOOL, &DestroyIcon>> UQIcon;
typedef UQHandle<UQNullHandleTraits<HIMAGELIST, BOOL, &ImageList_Destroy>> UQImageList;
typedef UQHandle<UQNullHandleTraits<HKEY, LONG, &RegCloseKey>> UQRegistryKey;
#endif

// Runs a clean-up when the scope is left, however it is left, unless dismissed first.
template <class FUNCTION> class UQScopeExit {
public:
    explicit UQScopeExit(FUNCTION _function) noexcept : m_function(std::move(_function)), m_bActive(1) {}
    UQScopeExit(const UQScopeExit&) = delete;
    UQScopeExit& operator=(const UQScopeExit&) = delete;
    ~UQScopeExit() {
        if (m_bActive)
            m_function();
    }
    void mf_dismiss() noexcept { m_bActive = 0; }

private:
    FUNCTION m_function;
    int m_bActive;
};
