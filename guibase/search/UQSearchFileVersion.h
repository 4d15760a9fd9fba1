#pragma once

#include "interfaces/korarchiver.h"
#include "interfaces/korbase.h"

// One stored version of a file in a search result: the query data it owns and the state that the data
// had when the version was made. Only the search list makes versions; items own them.
class KORGUIBASE_API UQSearchFileVersion : public UQLinkedListItem {
public:
    // Takes ownership of the record; a null record throws _E_::Parameter. When the constructor throws, the
    // record stays the caller's.
    explicit UQSearchFileVersion(const UQQueryData* _pQueryData);
    // Two versions sharing one record would both delete it: a copy is made of a clone instead (see
    // UQSearchFileItem's copy).
    UQSearchFileVersion(const UQSearchFileVersion&) = delete;
    UQSearchFileVersion& operator=(const UQSearchFileVersion&) = delete;
    ~UQSearchFileVersion() override;

    // Versions live in memory from UQAllocation so that a search list's close can be tested for
    // allocation failures.
    static void* operator new(std::size_t _nBytes);
    static void* operator new(std::size_t, void* _pPlace) noexcept { return _pPlace; }
    static void operator delete(void* _p) noexcept;
    static void operator delete(void*, void*) noexcept {}

    const UQQueryData* mf_getQueryData() const noexcept { return m_pQueryData; }
    const UQPath& mf_getPath() const { return m_pQueryData->mf_getPath(); }
    std::uint32_t mf_getVersion() const { return m_pQueryData->mf_getVersion(); }
    const UQFileSize& mf_getSize() const { return m_pQueryData->mf_getSize(); }
    const UQFileTime& mf_getLastWriteTime() const { return m_pQueryData->mf_getLastWriteTime(); }

    // Asked of the record each time.
    int mf_isEventBased() const { return m_pQueryData->mf_isEventBased() ? 1 : 0; }
    int mf_isDeletionStarted() const { return m_pQueryData->mf_isDeletionStarted() ? 1 : 0; }
    int mf_isProtected() const { return m_pQueryData->mf_isProtected() ? 1 : 0; }
    // Event based and its deletion started.
    int mf_isDeleted() const;
    // Not event based, with an expiry time.
    int mf_isExpiring() const;
    // Not deleted, and either event based or without an expiry time.
    int mf_isAvailable() const;

    // The status text fixed when the version was made: available, expiring or deleted, each plain or
    // protected (catalogue texts 3102, 3104, 3530, 3532, 3343, 3345).
    const CString& mf_getStatusString() const noexcept { return m_asStatus[m_iStatus]; }
    // 0..5, an index into those texts: odd means protected.
    int mf_getStatusIndex() const noexcept { return m_iStatus; }

private:
    friend class UQSearchList;
    // Reads the status texts from the catalogue unless done before. Not thread-safe: the list calls it
    // before it makes versions on more than one thread.
    static void mf_implLoadStatusTexts();
    const UQQueryData* m_pQueryData;
    int m_iStatus;

    static CString m_asStatus[6];
    static int m_bStatusInitialized;
};
