#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

#include "kor/archiver/HistoryText.h"

#include "compat/afxsortkey.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace {

// The versions of one file read from a store share one path text: those compare equal without a look at
// the characters.
int compareObjectPaths(const UQPath& _a, const UQPath& _b) noexcept {
    const CString& a = _a;
    const CString& b = _b;
    return a.GetString() == b.GetString() ? 0 : UQPath::mf_compare(a, b);
}

// Top-down merge sort with a buffer of half the range. Stable, and it only moves plain values, so the
// order is all that can change; the comparisons never throw.
template <class T, class Less>
void mergeSort(T* _pItems, std::size_t _nCount, T* _pBuffer, const Less& _less) {
    if (_nCount <= 16) {
        for (std::size_t i = 1; i < _nCount; ++i) {
            const T item = _pItems[i];
            std::size_t j = i;
            for (; j > 0 && _less(item, _pItems[j - 1]); --j)
                _pItems[j] = _pItems[j - 1];
            _pItems[j] = item;
        }
        return;
    }
    const std::size_t half = _nCount / 2;
    mergeSort(_pItems, half, _pBuffer, _less);
    mergeSort(_pItems + half, _nCount - half, _pBuffer, _less);
    if (!_less(_pItems[half], _pItems[half - 1]))
        return;
    std::copy(_pItems, _pItems + half, _pBuffer);
    const T* left = _pBuffer;
    const T* const leftEnd = _pBuffer + half;
    const T* right = _pItems + half;
    const T* const end = _pItems + _nCount;
    T* out = _pItems;
    while (left < leftEnd && right < end)
        *out++ = _less(*right, *left) ? *right++ : *left++;
    while (left < leftEnd)
        *out++ = *left++;
}

// A buffer of plain values from UQAllocation; no memory logs and throws _E_::Memory.
template <class T> class SortBuffer {
public:
    SortBuffer(std::size_t _nCount, const wchar_t* _pszFunction) : m_p(nullptr) {
        if (_nCount == 0)
            return;
        if (_nCount > SIZE_MAX / sizeof(T)) {
            UQKorReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"No memory for %I64u sort entries",
                                static_cast<std::uint64_t>(_nCount));
            throw UQErrno(UQErrno::_E_::Memory);
        }
        m_p = static_cast<T*>(UQAllocation::mf_allocate(_nCount * sizeof(T)));
        if (m_p == nullptr) {
            UQKorReport::mf_log(
                UQLogData::LEVEL_E, _pszFunction, L"No memory for %I64u sort entries (%I64u bytes)",
                static_cast<std::uint64_t>(_nCount), static_cast<std::uint64_t>(_nCount * sizeof(T)));
            throw UQErrno(UQErrno::_E_::Memory);
        }
    }
    SortBuffer(const SortBuffer&) = delete;
    SortBuffer& operator=(const SortBuffer&) = delete;
    ~SortBuffer() { UQAllocation::mf_free(m_p); }
    T* get() const noexcept { return m_p; }

private:
    T* m_p;
};

// An item with the record it shows, taken once before sorting.
struct KeyedItem {
    const UQQueryData* pData;
    UVQueryItem* pItem;
};

template <class Less>
void sortItems(UVQueryItem** _pItems, INT_PTR _nCount, const wchar_t* _pszFunction, const Less& _less) {
    if (_pItems == nullptr || _nCount < 2)
        return;
    const std::size_t n = static_cast<std::size_t>(_nCount);
    // One allocation for the keyed items and the merge buffer behind them.
    SortBuffer<KeyedItem> buffer(n + n / 2, _pszFunction);
    KeyedItem* keyed = buffer.get();
    for (std::size_t i = 0; i < n; ++i)
        keyed[i] = KeyedItem{&_pItems[i]->mf_getQueryData(), _pItems[i]};
    mergeSort(keyed, n, keyed + n, _less);
    for (std::size_t i = 0; i < n; ++i)
        _pItems[i] = keyed[i].pItem;
}

// The object paths of _nCount records (none null) sorted as _uFlags say, then by position: writes the
// records' positions in that order to _pOrder. Each path is folded once into an order key, instead of at
// every comparison. Answers false, with nothing written, when a path has no key (a unit beyond U+FFFF) or
// the keys would not fit the arena's 32-bit offsets; the comparison then sorts. No memory throws
// _E_::Memory.
template <class VersionOf>
bool sortByPathKeys(const UQQueryData* const* _ppData, std::size_t _nCount, unsigned _uFlags,
                    const VersionOf& _versionOf, std::uint32_t* _pOrder, const wchar_t* _pszFunction) {
    if (_nCount > UINT32_MAX)
        return false;
    SortBuffer<AfxSortKey> keyBuffer(_nCount, _pszFunction);
    AfxSortKey* keys = keyBuffer.get();
    // The records lie scattered in memory: their lengths are read on both threads, then summed in order.
    auto measure = [&](std::size_t _nFrom, std::size_t _nTo) {
        for (std::size_t i = _nFrom; i < _nTo; ++i)
            keys[i].nUnits = static_cast<std::uint32_t>(
                AfxSortKeyTailUnits(static_cast<const CString&>(_ppData[i]->mf_getObjectPath()).GetLength()));
    };
    AfxRunOnTwoThreads(_nCount, measure);
    std::uint64_t units = 0;
    for (std::size_t i = 0; i < _nCount; ++i) {
        keys[i].uOffset = static_cast<std::uint32_t>(units);
        units += keys[i].nUnits;
        if (units > UINT32_MAX)
            return false;
    }
    SortBuffer<std::uint16_t> arena(units > 0 ? static_cast<std::size_t>(units) : 1, _pszFunction);
    // Folding is most of the work besides the sort itself: a large array's second half on a second thread.
    bool built[2] = {true, true};
    auto build = [&](std::size_t _nFrom, std::size_t _nTo) {
        for (std::size_t i = _nFrom; i < _nTo; ++i) {
            const UQQueryData* data = _ppData[i];
            const CString& path = data->mf_getObjectPath();
            if (!AfxMakeSortKey(path.GetString(), path.GetLength(), AFX_KEY_PATH, arena.get(),
                                keys[i].uOffset, keys[i]))
                built[_nFrom == 0 ? 0 : 1] = false;
            keys[i].uTie = _versionOf(data);
            keys[i].uIndex = static_cast<std::uint32_t>(i);
        }
    };
    AfxRunOnTwoThreads(_nCount, build);
    if (!built[0] || !built[1])
        return false;
    AfxSortByKeys(keys, _nCount, arena.get(), _uFlags);
    for (std::size_t i = 0; i < _nCount; ++i)
        _pOrder[i] = keys[i].uIndex;
    return true;
}

unsigned pathSortFlags(int _bPathAscending, int _bVersionAscending) noexcept {
    return (_bPathAscending ? 0u : AFX_SORT_KEY_DESCENDING) |
           (_bVersionAscending ? 0u : AFX_SORT_TIE_DESCENDING);
}

} // namespace

UQQueryData::UQQueryData(const CString& _sObjectPath, const CString& _sFilePath, std::uint32_t _uVersion,
                         const UQFileTime& _lastWriteTime, const UQFileSize& _size, std::uint32_t _uFlags,
                         const UQExpiryTime& _expiry, const AccessKey& _access)
    : m_objectPath(_sObjectPath),
      m_filePath(_sFilePath.IsEmpty() || _sFilePath.GetString() == _sObjectPath.GetString() ||
                         _sFilePath == _sObjectPath
                     ? _sObjectPath
                     : _sFilePath),
      m_uVersion(_uVersion), m_uFlags(_uFlags & FLAG_ALL), m_lastWriteTime(_lastWriteTime), m_size(_size),
      m_expiry(_expiry), m_access(_access) {}

UQQueryData::UQQueryData(const UQQueryData& _other) = default;

UQQueryData& UQQueryData::operator=(const UQQueryData& _other) = default;

UQQueryData::~UQQueryData() = default;

void* UQQueryData::operator new(std::size_t _nBytes) {
    return UQAllocation::mf_allocateOrThrow(_nBytes);
}

void UQQueryData::operator delete(void* _p) noexcept {
    UQAllocation::mf_free(_p);
}

UQQueryData* UQQueryData::mf_clone() const {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_clone";
    UQQueryData* pClone = UQAllocation::mf_create<UQQueryData>(*this);
    if (pClone == nullptr) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"No memory to clone query data:\r\n%s%s",
                            UQLog::TAB, mf_toString());
        throw UQErrno(UQErrno::_E_::Memory);
    }
    return pClone;
}

std::uint32_t UQQueryData::mf_getVersion() const {
    return m_uVersion;
}

const UQFileTime& UQQueryData::mf_getLastWriteTime() const {
    return m_lastWriteTime;
}

const UQFileSize& UQQueryData::mf_getSize() const {
    return m_size;
}

int UQQueryData::mf_hasSecurity() const {
    return (m_uFlags & FLAG_SECURITY) != 0;
}

int UQQueryData::mf_hasADStreams() const {
    return (m_uFlags & FLAG_AD_STREAMS) != 0;
}

int UQQueryData::mf_isEventBased() const {
    return (m_uFlags & FLAG_EVENT_BASED) != 0;
}

int UQQueryData::mf_isProtected() const {
    return (m_uFlags & FLAG_PROTECTED) != 0;
}

int UQQueryData::mf_isDeletionStarted() const {
    return (m_uFlags & FLAG_DELETION_STARTED) != 0;
}

UQExpiryTime UQQueryData::mf_getExpiryTime() const {
    return m_expiry;
}

CString UQQueryData::mf_toString() const {
    CString text;
    text.Format(L"Object='%s', file='%s', version=%lu, size=%I64d, last-write-time=%s, flags=%s, expiry=%s, "
                L"access=%lu:%I64u",
                m_objectPath.mf_getPath(), m_filePath.mf_getPath(), m_uVersion, m_size.mf_getValue(),
                korhistory::formatTime(m_lastWriteTime.mf_getValue()), korhistory::formatFlags(m_uFlags),
                m_expiry.mf_isSet() ? korhistory::formatTime(m_expiry.uFileTime) : std::string("none"),
                m_access.uVolume, m_access.uPosition);
    return text;
}

CString UQQueryData::mf_getPathDisplayString() const {
    return UQPath::mf_getUNCPath(m_filePath);
}

void UQQueryData::mf_sortByPathAndVersion(int _bPathAscending, int _bVersionAscending,
                                          UQArray<UQQueryData*, UQQueryData*>& _rData) {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_sortByPathAndVersion::1";
    const INT_PTR count = _rData.GetSize();
    if (count < 2)
        return;
    const std::size_t n = static_cast<std::size_t>(count);
    UQQueryData** data = _rData.GetData();
    if (std::find(data, data + n, nullptr) == data + n) {
        // The sorted positions, then the records in their order, in one buffer.
        SortBuffer<std::uint64_t> order(n, _sFunction_);
        std::uint32_t* positions = reinterpret_cast<std::uint32_t*>(order.get());
        UQQueryData** sorted = reinterpret_cast<UQQueryData**>(order.get());
        if (sortByPathKeys(
                data, n, pathSortFlags(_bPathAscending, _bVersionAscending),
                [](const UQQueryData* _pData) noexcept { return _pData->m_uVersion; }, positions,
                _sFunction_)) {
            // Positions fill the first half of the buffer; placed from the back, no record lands on a
            // position not yet read.
            for (std::size_t i = n; i-- > 0;)
                sorted[i] = data[positions[i]];
            std::copy(sorted, sorted + n, data);
            return;
        }
    }
    const auto less = [_bPathAscending, _bVersionAscending](const UQQueryData* _pA,
                                                            const UQQueryData* _pB) noexcept {
        if (_pA == nullptr || _pB == nullptr)
            return _pA != nullptr && _pB == nullptr;
        const int c = compareObjectPaths(_pA->m_objectPath, _pB->m_objectPath);
        if (c != 0)
            return _bPathAscending ? c < 0 : c > 0;
        return _bVersionAscending ? _pA->m_uVersion < _pB->m_uVersion : _pA->m_uVersion > _pB->m_uVersion;
    };
    SortBuffer<UQQueryData*> buffer(n / 2, _sFunction_);
    mergeSort(data, n, buffer.get(), less);
}

void UQQueryData::mf_sortByPathAndVersion(int _bPathAscending, int _bVersionAscending, UVQueryItem** _ppItems,
                                          INT_PTR _nCount) {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_sortByPathAndVersion::2";
    if (_ppItems == nullptr || _nCount < 2)
        return;
    const std::size_t n = static_cast<std::size_t>(_nCount);
    {
        // The records the items show, asked for before anything moves; then the sorted positions.
        SortBuffer<const UQQueryData*> data(n, _sFunction_);
        for (std::size_t i = 0; i < n; ++i)
            data.get()[i] = &_ppItems[i]->mf_getQueryData();
        SortBuffer<std::uint32_t> positions(n, _sFunction_);
        if (sortByPathKeys(
                data.get(), n, pathSortFlags(_bPathAscending, _bVersionAscending),
                [](const UQQueryData* _pData) noexcept { return _pData->m_uVersion; }, positions.get(),
                _sFunction_)) {
            // Each cycle of the permutation moved along once; a moved position is marked as its own.
            std::uint32_t* to = positions.get();
            for (std::size_t i = 0; i < n; ++i) {
                if (to[i] == i)
                    continue;
                UVQueryItem* first = _ppItems[i];
                std::size_t j = i;
                while (to[j] != i) {
                    const std::size_t from = to[j];
                    _ppItems[j] = _ppItems[from];
                    to[j] = static_cast<std::uint32_t>(j);
                    j = from;
                }
                _ppItems[j] = first;
                to[j] = static_cast<std::uint32_t>(j);
            }
            return;
        }
    }
    sortItems(_ppItems, _nCount, _sFunction_,
              [_bPathAscending, _bVersionAscending](const KeyedItem& _a, const KeyedItem& _b) noexcept {
                  const int c = compareObjectPaths(_a.pData->m_objectPath, _b.pData->m_objectPath);
                  if (c != 0)
                      return _bPathAscending ? c < 0 : c > 0;
                  return _bVersionAscending ? _a.pData->m_uVersion < _b.pData->m_uVersion
                                            : _a.pData->m_uVersion > _b.pData->m_uVersion;
              });
}

void UQQueryData::mf_sortByAccessOrder(UVQueryItem** _ppItems, INT_PTR _nCount) {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_sortByAccessOrder";
    sortItems(_ppItems, _nCount, _sFunction_, [](const KeyedItem& _a, const KeyedItem& _b) noexcept {
        const AccessKey& x = _a.pData->m_access;
        const AccessKey& y = _b.pData->m_access;
        if (x.uVolume != y.uVolume)
            return x.uVolume < y.uVolume;
        if (x.uPosition != y.uPosition)
            return x.uPosition < y.uPosition;
        const int c = compareObjectPaths(_a.pData->m_objectPath, _b.pData->m_objectPath);
        if (c != 0)
            return c < 0;
        return _a.pData->m_uVersion < _b.pData->m_uVersion;
    });
}
