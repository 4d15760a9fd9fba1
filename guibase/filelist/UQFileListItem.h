#pragma once

#include "guibase/filelist/UQFileListItemVersion.h"
#include "interfaces/korbase.h"

// One line of a file result list: a path, what happened to it (result text and severity), whether the
// user selected it, and its server versions, the highest of which is selected. The item owns its versions.
class KORGUIBASE_API UQFileListItem {
public:
    typedef UQArray<UQFileListItem*, UQFileListItem*> Array;
    typedef UQArray<UQFileListItemVersion*, UQFileListItemVersion*> VersionArray;

    // With one version.
    UQFileListItem(const CString& _sPath, std::uint32_t _uVersion, const UQFileSize& _size,
                   const UQFileTime& _lastWriteTime, const CString& _sResult, const UQSeverity& _severity);
    // With no version. _bCompleteUsingFilesystem is reserved: non-zero throws _E_::NotImplemented.
    UQFileListItem(const CString& _sPath, int _bCompleteUsingFilesystem, const CString& _sResult,
                   const UQSeverity& _severity);
    // Copies path, result, severity and the versions; the copy starts unselected, with its highest version
    // selected.
    UQFileListItem(const UQFileListItem& _other);
    UQFileListItem& operator=(const UQFileListItem&) = delete;
    virtual ~UQFileListItem();

    // Items live in memory from UQAllocation so that lists can be tested for allocation failures; a plain
    // `new` still throws std::bad_alloc when memory is short.
    static void* operator new(std::size_t _nBytes);
    static void* operator new(std::size_t, void* _pPlace) noexcept { return _pPlace; }
    static void operator delete(void* _p) noexcept;
    static void operator delete(void*, void*) noexcept {}

    const CString& mf_getPath() const noexcept { return m_sPath; }
    const CString& mf_getResult() const noexcept { return m_sResult; }
    const UQSeverity& mf_getSeverity() const noexcept { return m_severity; }
    int mf_isSelected() const noexcept { return m_bSelected; }
    void mf_setSelected(int _bSelected) noexcept { m_bSelected = _bSelected; }

    // The selected version's number, size and time; no selected version throws _E_::Range.
    std::uint32_t mf_getVersion() const;
    const UQFileSize& mf_getSize() const;
    const UQFileTime& mf_getLastWriteTime() const;

    void mf_addVersion(std::uint32_t _uVersion, const UQFileSize& _size, const UQFileTime& _lastWriteTime);
    void mf_setVersionIndex(int _nIndex);
    int mf_getVersionIndex() const noexcept { return m_nSelectedVersion; }
    int mf_getVersionCount() const noexcept { return static_cast<int>(m_versions.GetSize()); }
    // Sorts by number and selects the highest again (the last when ascending, the first when descending).
    void mf_sortVersions(int _bAscending);
    // Appends the version pointers to an empty array; the item keeps them.
    void mf_getVersions(VersionArray& _rVersions) const;

    // "1 - 3", "1, 2, 5": the version numbers from the last index down to the first.
    CString mf_getRangesDisplayString() const;
    // "<file part> - <date> - <time>" of the selected version.
    CString mf_getSelectedVersionDisplayString() const;
    CString mf_toString() const { return mf_getSelectedVersionDisplayString(); }

    // Clears result, severity and selection; the versions stay.
    void mf_reset() noexcept;

    // In place by path (ordinal, case-sensitive); an array that never held anything logs a warning.
    static void mf_sortByPath(Array& _rItems, int _bAscending);
    // By result text in the given direction, equal results by path ascending.
    static void mf_sortByResult(Array& _rItems, int _bAscending);
    // Binary search of an array sorted by path in that direction; null when absent.
    static const UQFileListItem* mf_findByPath(const CString& _sPath, Array& _rItems, int _bAscending);

protected:
    void mf_implAddVersion(std::uint32_t _uVersion, const UQFileSize& _size,
                           const UQFileTime& _lastWriteTime);
    const UQFileListItemVersion* mf_implGetSelectedVersionItem() const;
    void mf_implDeleteVersions() noexcept;

private:
    CString m_sPath;
    CString m_sResult;
    UQSeverity m_severity;
    int m_bSelected;
    VersionArray m_versions;
    int m_nSelectedVersion;
};
