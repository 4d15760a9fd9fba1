#pragma once

#include "guibase/search/UQSearchFileVersion.h"
#include "interfaces/korarchiver.h"
#include "interfaces/korbase.h"

// One file of a search result with all its stored versions, oldest first, and at most one of them
// selected. The item owns its versions (and through them their records).
class KORGUIBASE_API UQSearchFileItem : public UVQueryItem {
public:
    typedef UQArray<UQSearchFileItem*, UQSearchFileItem*> Array;
    typedef UQArray<UQSearchFileVersion*, UQSearchFileVersion*> VersionArray;

    // Not selected, with the one version given, which the item owns from now on. A null version throws
    // _E_::Parameter.
    explicit UQSearchFileItem(UQSearchFileVersion* _pVersion);
    // A copy holds versions of its own, each on a clone of the record, and selects the version in the same
    // place as the original. A clone that fails throws its error and leaves nothing behind.
    UQSearchFileItem(const UQSearchFileItem& _other);
    UQSearchFileItem& operator=(const UQSearchFileItem& _other);

    // The latest version's record; none throws _E_::Internal.
    const UQQueryData& mf_getQueryData() const override;
    ~UQSearchFileItem() override;

    // Items live in memory from UQAllocation so that a search list's close can be tested for allocation
    // failures.
    static void* operator new(std::size_t _nBytes);
    static void* operator new(std::size_t, void* _pPlace) noexcept { return _pPlace; }
    static void operator delete(void* _p) noexcept;
    static void operator delete(void*, void*) noexcept {}

    // The last version in ascending order; null when there is none.
    const UQSearchFileVersion* mf_getLatestVersion() const noexcept;
    const UQSearchFileVersion* mf_getSelectedVersion() const noexcept { return m_pSelectedVersion; }
    int mf_isSelected() const noexcept { return m_pSelectedVersion != nullptr ? 1 : 0; }
    // _bSelect 0 clears the selection. Otherwise UQQueryPatternVersion::LATEST selects the latest version,
    // and any other number is compared with the oldest version's number until the two are equal, which
    // then is selected: the call never moves on to a later version, so it returns only for the oldest
    // version's own number. Callers select by LATEST or by that number.
    void mf_setSelected(int _bSelect, unsigned long _uVersion);
    // Appends the versions to an empty array (the item keeps them), oldest first when _bAscending is
    // non-zero; a non-empty array throws _E_::Parameter.
    void mf_getVersions(int _bAscending, VersionArray& _rVersions) const;
    int mf_getVersionCount() const noexcept { return m_versions.mf_getCount(); }

    // The oldest version's file path.
    const UQPath& mf_getPath() const;
    CString mf_getUNCPath() const;
    // The latest record's display path.
    CString mf_getPathDisplayString() const;
    // The version numbers, oldest first, as runs: "1 - 3, 5, 7, 8".
    CString mf_getRangesDisplayString() const;
    // Catalogue text 4519 (yes) when the latest record carries security data, else 3545 (no).
    CString mf_getSecurityDisplayString() const;
    // The same for alternate data streams.
    CString mf_getADStreamsDisplayString() const;

    // In place with qsort (not stable); an array that never held anything only logs a warning. Path: by
    // the oldest version's file path (UQPath::mf_compare). Status (the status text, ordinal), security and
    // alternate data streams (without before with when ascending): by the selected version, equal ones by
    // path ascending in both directions; an item without a selection is ordered by its latest version.
    static void mf_sortByPath(Array& _rItems, int _bAscending);
    static void mf_sortByStatus(Array& _rItems, int _bAscending);
    static void mf_sortBySecurity(Array& _rItems, int _bAscending);
    static void mf_sortByADStreams(Array& _rItems, int _bAscending);

private:
    friend class UQSearchList;
    // The tests add versions out of order, which the list never does.
    friend struct UQSearchFileItemTestAccess;

    // Links the version in before the first one with a greater number, so equal numbers keep the order in
    // which they came. A null version throws _E_::Parameter.
    void mf_implAddVersion(UQSearchFileVersion* _pVersion);
    UQSearchFileVersion* mf_implGetOldest() const noexcept;
    UQSearchFileVersion* mf_implGetLatest() const noexcept;
    // The version of this item at the place _pVersion has in _other's list; null for null.
    UQSearchFileVersion* mf_implCorresponding(const UQSearchFileItem& _other,
                                              const UQSearchFileVersion* _pVersion) const noexcept;

    UQLinkedList m_versions;
    UQSearchFileVersion* m_pSelectedVersion;
};
