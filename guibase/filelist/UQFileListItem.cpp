#include "guibase/filelist/UQFileListItem.h"

#include "guibase/foundation/UQReport.h"

#include <cstdlib>
#include <new>

namespace {

const UQFileListItem* itemAt(const void* _pP) {
    return *static_cast<const UQFileListItem* const*>(_pP);
}

int pathAscending(const void* _pA, const void* _pB) {
    return itemAt(_pA)->mf_getPath().Compare(itemAt(_pB)->mf_getPath());
}
int pathDescending(const void* _pA, const void* _pB) {
    return itemAt(_pB)->mf_getPath().Compare(itemAt(_pA)->mf_getPath());
}

int resultAscending(const void* _pA, const void* _pB) {
    const int r = itemAt(_pA)->mf_getResult().Compare(itemAt(_pB)->mf_getResult());
    return r != 0 ? r : pathAscending(_pA, _pB);
}

// Equal results stay in ascending path order in both directions.
int resultDescending(const void* _pA, const void* _pB) {
    const int r = itemAt(_pB)->mf_getResult().Compare(itemAt(_pA)->mf_getResult());
    return r != 0 ? r : pathAscending(_pA, _pB);
}

void sortItems(UQFileListItem::Array& _rItems, int (*_pCompare)(const void*, const void*),
               const wchar_t* _pszFunction) {
    if (_rItems.GetData() == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_W, _pszFunction, L"No file list items to sort");
        return;
    }
    std::qsort(_rItems.GetData(), static_cast<std::size_t>(_rItems.GetSize()), sizeof(UQFileListItem*),
               _pCompare);
}

} // namespace

void* UQFileListItem::operator new(std::size_t _nBytes) {
    return UQAllocation::mf_allocateOrThrow(_nBytes);
}

void UQFileListItem::operator delete(void* _p) noexcept {
    UQAllocation::mf_free(_p);
}

UQFileListItem::UQFileListItem(const CString& _sPath, std::uint32_t _uVersion, const UQFileSize& _size,
                               const UQFileTime& _lastWriteTime, const CString& _sResult,
                               const UQSeverity& _severity)
    : m_sPath(_sPath), m_sResult(_sResult), m_severity(_severity), m_bSelected(0), m_nSelectedVersion(-1) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::UQFileListItem::1";
    try {
        mf_implAddVersion(_uVersion, _size, _lastWriteTime);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrappedInline(
            e, _sFunction_,
            L"Failure adding version to file list: %s\r\n%sFile-version=%lu, file-size=%s, "
            L"last-write-time=%s",
            UQLog::TAB, _uVersion, _size.mf_toString(), _lastWriteTime.mf_toString());
        mf_implDeleteVersions();
        throw UQErrno(e);
    }
}

UQFileListItem::UQFileListItem(const CString& _sPath, int _bCompleteUsingFilesystem, const CString& _sResult,
                               const UQSeverity& _severity)
    : m_sPath(_sPath), m_sResult(_sResult), m_severity(_severity), m_bSelected(0), m_nSelectedVersion(-1) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::UQFileListItem::2";
    if (_bCompleteUsingFilesystem != 0)
        UQReport::mf_fail(UQErrno::_E_::NotImplemented, _sFunction_,
                          L"Option _bCompleteUsingFilesystem not yet implemented");
}

UQFileListItem::UQFileListItem(const UQFileListItem& _other)
    : m_sPath(_other.m_sPath), m_sResult(_other.m_sResult), m_severity(_other.m_severity), m_bSelected(0),
      m_nSelectedVersion(-1) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::UQFileListItem::3";
    UQErrnoData error;
    try {
        for (INT_PTR i = 0; i < _other.m_versions.GetSize(); ++i) {
            const UQFileListItemVersion* v = _other.m_versions[i];
            mf_implAddVersion(v->mf_getVersion(), v->mf_getSize(), v->mf_getLastWriteTime());
        }
    } catch (const UQErrno& e) {
        error =
            UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure adding file list item version: %s");
    }
    if (error) {
        try {
            mf_implDeleteVersions();
        } catch (const UQErrno& e) {
            UQReport::mf_logWrappedInline(e, _sFunction_, L"Failure cleaning up file list item versions: %s");
        }
        throw UQErrno(error);
    }
}

UQFileListItem::~UQFileListItem() {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::~UQFileListItem";
    try {
        mf_implDeleteVersions();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrappedInline(e, _sFunction_, L"Failure deleting file item versions: %s");
    }
}

void UQFileListItem::mf_implDeleteVersions() noexcept {
    for (INT_PTR i = 0; i < m_versions.GetSize(); ++i)
        UQFileListItemVersion::mf_implDestroy(m_versions[i]);
    m_versions.RemoveAll();
    m_nSelectedVersion = -1;
}

void UQFileListItem::mf_implAddVersion(std::uint32_t _uVersion, const UQFileSize& _size,
                                       const UQFileTime& _lastWriteTime) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_implAddVersion";
    UQFileListItemVersion* pVersion = nullptr;
    try {
        pVersion = UQFileListItemVersion::mf_implCreate(_uVersion, _size, _lastWriteTime);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrappedInline(
            e, _sFunction_,
            L"Failure adding file item version: %s\r\n%sVersion=%lu, size=%s, last write time=%s", UQLog::TAB,
            _uVersion, _size.mf_toString(), _lastWriteTime.mf_toString());
        throw;
    }
    if (pVersion == nullptr) {
        UQReport::mf_fail(
            UQErrno::_E_::Memory, _sFunction_,
            L"No memory for adding file item version\r\n%sVersion=%lu, size=%s, last write time=%s",
            UQLog::TAB, _uVersion, _size.mf_toString(), _lastWriteTime.mf_toString());
    }
    try {
        m_versions.Add(pVersion);
    } catch (...) {
        UQFileListItemVersion::mf_implDestroy(pVersion);
        throw;
    }
    // Only a greater number takes the selection: of equal numbers the first added stays selected.
    if (m_nSelectedVersion == -1 || _uVersion > m_versions[m_nSelectedVersion]->mf_getVersion())
        m_nSelectedVersion = static_cast<int>(m_versions.GetSize() - 1);
}

void UQFileListItem::mf_addVersion(std::uint32_t _uVersion, const UQFileSize& _size,
                                   const UQFileTime& _lastWriteTime) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_addVersion";
    try {
        mf_implAddVersion(_uVersion, _size, _lastWriteTime);
    } catch (const UQErrno& e) {
        // The record carries the second text as it stands, placeholders and all: the log readers expect
        // this shape.
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure adding file list entry version: %s\r\n",
                         L"%sVersion=%lu, size=%s, last write time=%s", e.mf_toString(), UQLog::TAB,
                         _uVersion, _size.mf_toString(), _lastWriteTime.mf_toString());
        throw UQErrno(e);
    }
}

void UQFileListItem::mf_setVersionIndex(int _nIndex) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_setVersionIndex";
    if (_nIndex < 0 || _nIndex >= m_versions.GetSize())
        UQReport::mf_fail(UQErrno::_E_::Range, _sFunction_, L"Index %d out of range", _nIndex);
    m_nSelectedVersion = _nIndex;
}

const UQFileListItemVersion* UQFileListItem::mf_implGetSelectedVersionItem() const {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_implGetSelectedVersionItem";
    if (m_nSelectedVersion < 0 || m_nSelectedVersion >= m_versions.GetSize())
        UQReport::mf_fail(UQErrno::_E_::Range, _sFunction_, L"Index %d out of range", m_nSelectedVersion);
    return m_versions[m_nSelectedVersion];
}

std::uint32_t UQFileListItem::mf_getVersion() const {
    return mf_implGetSelectedVersionItem()->mf_getVersion();
}
const UQFileSize& UQFileListItem::mf_getSize() const {
    return mf_implGetSelectedVersionItem()->mf_getSize();
}
const UQFileTime& UQFileListItem::mf_getLastWriteTime() const {
    return mf_implGetSelectedVersionItem()->mf_getLastWriteTime();
}

void UQFileListItem::mf_sortVersions(int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_sortVersions";
    try {
        UQFileListItemVersion::mf_sort(m_versions, _bAscending);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrappedInline(e, _sFunction_, L"Failure sorting file list item versions: %s");
        throw UQErrno(e);
    }
    m_nSelectedVersion = _bAscending ? static_cast<int>(m_versions.GetSize() - 1) : 0;
}

void UQFileListItem::mf_getVersions(VersionArray& _rVersions) const {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_getVersions";
    if (_rVersions.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"Parameter list is not empty");
    for (INT_PTR i = 0; i < m_versions.GetSize(); ++i)
        _rVersions.Add(m_versions[i]);
}

CString UQFileListItem::mf_getRangesDisplayString() const {
    CString text;
    std::uint32_t start = 0;
    std::uint32_t previous = 0;
    // A run is closed by its last number only: the start of every later run is not written. Compared in
    // 64 bits: 4294967295 + 1 is no 0 that could follow or close a run.
    auto closeRun = [&]() {
        if (std::uint64_t(previous) > std::uint64_t(start) + 1u)
            text.AppendFormat(L" - %lu", previous);
        else if (std::uint64_t(previous) == std::uint64_t(start) + 1u)
            text.AppendFormat(L", %lu", previous);
    };
    const INT_PTR count = m_versions.GetSize();
    for (INT_PTR i = count - 1; i >= 0; --i) {
        const std::uint32_t n = m_versions[i]->mf_getVersion();
        if (i == count - 1) {
            text.AppendFormat(L"%lu", n);
            start = previous = n;
        } else if (std::uint64_t(n) == std::uint64_t(previous) + 1u) {
            previous = n;
        } else {
            closeRun();
            start = previous = n;
        }
    }
    if (count > 0)
        closeRun();
    return text;
}

CString UQFileListItem::mf_getSelectedVersionDisplayString() const {
    const UQFileTime& time = mf_implGetSelectedVersionItem()->mf_getLastWriteTime();
    CString text;
    text.Format(L"%s - %s - %s", UQPath::mf_getFilePart(m_sPath), UQNumberFormatter::mf_formatDate(time),
                UQNumberFormatter::mf_formatTime(time));
    return text;
}

void UQFileListItem::mf_reset() noexcept {
    m_sResult.Empty();
    m_severity.mf_setValue(0);
    m_bSelected = 0;
}

void UQFileListItem::mf_sortByPath(Array& _rItems, int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_sortByPath";
    sortItems(_rItems, _bAscending ? pathAscending : pathDescending, _sFunction_);
}

void UQFileListItem::mf_sortByResult(Array& _rItems, int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_sortByResult";
    sortItems(_rItems, _bAscending ? resultAscending : resultDescending, _sFunction_);
}

const UQFileListItem* UQFileListItem::mf_findByPath(const CString& _sPath, Array& _rItems, int _bAscending) {
    if (_rItems.GetData() == nullptr)
        return nullptr;
    // The C libraries' bsearch probe different elements of an unsorted array (msvcrt merges b, a, b where
    // glibc does not), so the halving is done here, the same on every platform: middle = (low + high) / 2.
    // The path is compared as the sort compares two items' paths, without making an item of it.
    std::size_t low = 0;
    std::size_t high = static_cast<std::size_t>(_rItems.GetSize());
    UQFileListItem* const* data = _rItems.GetData();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const CString& probed = data[middle]->mf_getPath();
        const int c = _bAscending ? _sPath.Compare(probed) : probed.Compare(_sPath);
        if (c < 0)
            high = middle;
        else if (c > 0)
            low = middle + 1;
        else
            return data[middle];
    }
    return nullptr;
}
