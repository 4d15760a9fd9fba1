// The kernel32 subset the library uses. On Windows this is <windows.h>; elsewhere korcompat provides the
// same functions with Windows' exact ranges, failures and last-error values.
#pragma once

#if defined(_WIN32)
// Not WIN32_LEAN_AND_MEAN: consumers of the shell, the common dialogs and COM get the whole of
// <windows.h>; one that wants less defines it before the first include.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else

#include "compat/compat_api.h"

#include <cstdint>

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef std::uint32_t DWORD;
typedef std::int32_t LONG;
typedef std::uint32_t UINT;
typedef std::int64_t LONGLONG;
typedef std::uint64_t ULONGLONG;
typedef void* HANDLE;
typedef wchar_t WCHAR;
typedef const wchar_t* LPCWSTR;
typedef wchar_t* LPWSTR;

#define TRUE 1
#define FALSE 0
#define INFINITE 0xFFFFFFFFu
#define WAIT_OBJECT_0 0x00000000u
#define WAIT_TIMEOUT 0x00000102u
#define WAIT_FAILED 0xFFFFFFFFu

#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_PATH_NOT_FOUND 3u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_OUTOFMEMORY 14u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_INSUFFICIENT_BUFFER 122u
#define ERROR_ALREADY_EXISTS 183u
#define ERROR_MORE_DATA 234u
#define ERROR_NO_MORE_ITEMS 259u
#define ERROR_CANCELLED 1223u

typedef struct _FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME, *LPFILETIME;

typedef struct _SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
} SYSTEMTIME, *LPSYSTEMTIME;

// Opaque: a recursive mutex lives behind it.
typedef struct _CRITICAL_SECTION {
    void* impl;
} CRITICAL_SECTION, *LPCRITICAL_SECTION;

typedef struct _SECURITY_ATTRIBUTES SECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;

// The two registry hives the product uses, as opaque handles with Windows' values, so that code passes
// and compares them alike on every platform. korbase's UQRegistry maps them onto its own store.
typedef struct HKEY__* HKEY;
#define HKEY_CURRENT_USER ((HKEY)(std::intptr_t)(LONG)0x80000001u)
#define HKEY_LOCAL_MACHINE ((HKEY)(std::intptr_t)(LONG)0x80000002u)

extern "C" {
KORCOMPAT_API void SetLastError(DWORD _dwErrCode);
KORCOMPAT_API DWORD GetLastError(void);
KORCOMPAT_API DWORD GetCurrentThreadId(void);
KORCOMPAT_API DWORD GetCurrentProcessId(void);

KORCOMPAT_API void InitializeCriticalSection(LPCRITICAL_SECTION _pcs);
KORCOMPAT_API void EnterCriticalSection(LPCRITICAL_SECTION _pcs);
KORCOMPAT_API BOOL TryEnterCriticalSection(LPCRITICAL_SECTION _pcs);
KORCOMPAT_API void LeaveCriticalSection(LPCRITICAL_SECTION _pcs);
KORCOMPAT_API void DeleteCriticalSection(LPCRITICAL_SECTION _pcs);

KORCOMPAT_API HANDLE CreateEventW(LPSECURITY_ATTRIBUTES _psa, BOOL _bManualReset, BOOL _bInitialState,
                                  LPCWSTR _pszName);
KORCOMPAT_API BOOL SetEvent(HANDLE _hEvent);
KORCOMPAT_API BOOL ResetEvent(HANDLE _hEvent);
KORCOMPAT_API DWORD WaitForSingleObject(HANDLE _hHandle, DWORD _dwMilliseconds);
KORCOMPAT_API BOOL CloseHandle(HANDLE _hObject);
KORCOMPAT_API void Sleep(DWORD _dwMilliseconds);

KORCOMPAT_API BOOL FileTimeToSystemTime(const FILETIME* _pft, LPSYSTEMTIME _pst);
KORCOMPAT_API BOOL SystemTimeToFileTime(const SYSTEMTIME* _pst, LPFILETIME _pft);
KORCOMPAT_API void GetSystemTimeAsFileTime(LPFILETIME _pft);
KORCOMPAT_API void GetSystemTime(LPSYSTEMTIME _pst);
}

#endif
