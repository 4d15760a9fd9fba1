// The file operations of the client that take nothing on disk for granted: long paths, links that must not
// be followed, and writes that become visible only once they are complete and on disk.
#pragma once

#include "compat/UQHandle.h"

#include <windows.h>

#include <cstdint>
#include <string>

class UQSafeFile {
public:
    // What a handle's file is now: enough to tell whether it changed between two looks.
    struct Stamp {
        DWORD dwAttributes = 0;
        std::uint64_t uSize = 0;
        std::uint64_t uLastWriteTime = 0; // FILETIME ticks
        FILETIME ftLastWrite{};
    };

    // The absolute form of a path the user gave ("C:\x", "\\host\share\x", relative to the current folder)
    // without a trailing '\'; empty when the system cannot make one.
    static std::wstring mf_absolute(const std::wstring& _sPath);
    // The form that passes any length to the system ("\\?\C:\x", "\\?\UNC\host\share\x").
    static std::wstring mf_long(const std::wstring& _sAbsolute);
    // Where the handle's file really is, as an absolute path without "\\?\"; empty when unknown.
    // _sOpened is the path the handle was opened by.
    static std::wstring mf_finalPath(HANDLE _hFile, const std::wstring& _sOpened);
    // The case-blind form of a path, for comparing names as the file system does.
    static std::wstring mf_upper(std::wstring _sPath);
    // Whether _sPath is _sFolder or lies below it (case-blind).
    static bool mf_isWithin(const std::wstring& _sPath, const std::wstring& _sFolder);
    // The system's text for an error number, one line.
    static std::wstring mf_systemText(DWORD _dwError);

    // Opens a file for reading without following a link at its last part. 0 with the system error.
    static DWORD mf_openRead(const std::wstring& _sAbsolute, UQFileHandle& _rHandle);
    // The folder as a handle, which keeps it from being renamed or replaced while it is held.
    static DWORD mf_openFolder(const std::wstring& _sAbsolute, UQFileHandle& _rHandle);
    // The handle's attributes, size and last write time; 0, or the system error. Far cheaper under Wine than
    // GetFileInformationByHandle, which also fills in the volume's serial number.
    static DWORD mf_stamp(HANDLE _hFile, Stamp& _rStamp);
    // Reads up to _nMax bytes from the start of a file; the error, or 0.
    static DWORD mf_readStart(HANDLE _hFile, std::size_t _nMax, std::string& _rsText);
    static DWORD mf_writeAll(HANDLE _hFile, const void* _pData, std::size_t _nBytes);
    // A new file that did not exist (never an existing one, never through a link), open for reading, writing
    // and being renamed.
    static DWORD mf_createNew(const std::wstring& _sAbsolute, UQFileHandle& _rHandle);
    // Writes a whole small file durably under a temporary name beside _sTarget and moves it over _sTarget
    // in one step (_bReplace: an existing file is replaced). Nothing is left behind on failure.
    static DWORD mf_writeFileAtomically(const std::wstring& _sTarget, const std::string& _sContent,
                                        int _bReplace);
    // Gives a complete temporary file, open by mf_createNew, its name in one step (_bReplace: an existing
    // file of that name is replaced). Renamed through its handle: it is surely the file that was written, and
    // no second open by name is paid.
    static DWORD mf_commit(HANDLE _hTemporary, const std::wstring& _sTarget, int _bReplace);
    // A name beside _sTarget for its temporary file, unique in this process.
    static std::wstring mf_temporaryName(const std::wstring& _sTarget);
    // Creates the folders of _sRelative below _sRoot one by one. A part that exists must be a real folder
    // that lies where its name says (not a junction or link that leads elsewhere); 0, or the error with
    // _rsReason.
    static DWORD mf_createFolders(const std::wstring& _sRoot, const std::wstring& _sRelative,
                                  std::wstring& _rsReason);

    // Test seam: a write failure that the next mf_writeAll answers after _nBytesLeft more bytes (0: none).
    static void mf_injectWriteFailure(std::uint64_t _uBytesLeft, DWORD _dwError) noexcept;
};
