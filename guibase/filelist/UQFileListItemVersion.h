#pragma once

#include "interfaces/korbase.h"

class UQFileListItem;

// One server version of a file: number, size and last write time. Only UQFileListItem creates and
// deletes versions; callers see them through the item.
class KORGUIBASE_API UQFileListItemVersion {
public:
    UQFileListItemVersion(const UQFileListItemVersion& _other);
    UQFileListItemVersion& operator=(const UQFileListItemVersion& _other);

    std::uint32_t mf_getVersion() const noexcept { return m_uVersion; }
    const UQFileSize& mf_getSize() const noexcept { return m_size; }
    const UQFileTime& mf_getLastWriteTime() const noexcept { return m_lastWriteTime; }

    // By version number, in place; non-zero _bAscending for ascending. An array that never held anything
    // only logs a warning.
    static void mf_sort(UQArray<UQFileListItemVersion*, UQFileListItemVersion*>& _rVersions, int _bAscending);

private:
    friend class UQFileListItem;
    // Made in memory that tests can make fail (mf_implCreate).
    friend class UQAllocation;

    UQFileListItemVersion(std::uint32_t _uVersion, const UQFileSize& _size, const UQFileTime& _lastWriteTime);
    virtual ~UQFileListItemVersion();

    // Null when memory is short; an injected allocation error comes out as UQErrno.
    static UQFileListItemVersion* mf_implCreate(std::uint32_t _uVersion, const UQFileSize& _size,
                                                const UQFileTime& _lastWriteTime);
    static void mf_implDestroy(UQFileListItemVersion* _pVersion) noexcept;

    std::uint32_t m_uVersion;
    UQFileSize m_size;
    UQFileTime m_lastWriteTime;
};
