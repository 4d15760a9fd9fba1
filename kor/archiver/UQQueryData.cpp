#include "interfaces/korarchiver.h"

#include "kor/archiver/HistoryText.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace {

template <class... A>
void logError(const wchar_t* function, const wchar_t* format, const A&... args) noexcept {
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(UQLogData::LEVEL_E, function, format, args...);
}

// The versions of one file read from a store share one path text: those compare equal without a look at
// the characters.
int compareObjectPaths(const UQPath& _a, const UQPath& _b) noexcept {
    const CString& a = _a;
    const CString& b = _b;
    return a.GetString() == b.GetString() ? 0 : UQPath::mf_compare(a, b);
}

// Top-down merge sort with a buffer of half the range. Stable, and it only moves plain values, so the
// order is all that can change; the comparisons never throw.
template <class T, class Less> void mergeSort(T* items, std::size_t count, T* buffer, const Less& less) {
    if (count <= 16) {
        for (std::size_t i = 1; i < count; ++i) {
            const T item = items[i];
            std::size_t j = i;
            for (; j > 0 && less(item, items[j - 1]); --j)
                items[j] = items[j - 1];
            items[j] = item;
        }
        return;
    }
    const std::size_t half = count / 2;
    mergeSort(items, half, buffer, less);
    mergeSort(items + half, count - half, buffer, less);
    if (!less(items[half], items[half - 1]))
        return;
    std::copy(items, items + half, buffer);
    const T* left = buffer;
    const T* const leftEnd = buffer + half;
    const T* right = items + half;
    const T* const end = items + count;
    T* out = items;
    while (left < leftEnd && right < end)
        *out++ = less(*right, *left) ? *right++ : *left++;
    while (left < leftEnd)
        *out++ = *left++;
}

// A buffer of plain values from UQAllocation; no memory logs and throws _E_::Memory.
template <class T> class SortBuffer {
public:
    SortBuffer(std::size_t count, const wchar_t* function) : m_p(nullptr) {
        if (count == 0)
            return;
        if (count > SIZE_MAX / sizeof(T)) {
            logError(function, L"No memory for %I64u sort entries", static_cast<std::uint64_t>(count));
            throw UQErrno(UQErrno::_E_::Memory);
        }
        m_p = static_cast<T*>(UQAllocation::mf_allocate(count * sizeof(T)));
        if (m_p == nullptr) {
            logError(function, L"No memory for %I64u sort entries (%I64u bytes)",
                     static_cast<std::uint64_t>(count), static_cast<std::uint64_t>(count * sizeof(T)));
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
void sortItems(UVQueryItem** items, INT_PTR count, const wchar_t* function, const Less& less) {
    if (items == nullptr || count < 2)
        return;
    const std::size_t n = static_cast<std::size_t>(count);
    // One allocation for the keyed items and the merge buffer behind them.
    SortBuffer<KeyedItem> buffer(n + n / 2, function);
    KeyedItem* keyed = buffer.get();
    for (std::size_t i = 0; i < n; ++i)
        keyed[i] = KeyedItem{&items[i]->mf_getQueryData(), items[i]};
    mergeSort(keyed, n, keyed + n, less);
    for (std::size_t i = 0; i < n; ++i)
        items[i] = keyed[i].pItem;
}

} // namespace

UQQueryData::UQQueryData(const CString& objectPath, const CString& filePath, std::uint32_t version,
                         const UQFileTime& lastWriteTime, const UQFileSize& size, std::uint32_t flags,
                         const UQExpiryTime& expiry, const AccessKey& access)
    : m_objectPath(objectPath),
      m_filePath(filePath.IsEmpty() || filePath.GetString() == objectPath.GetString() ||
                         filePath == objectPath
                     ? objectPath
                     : filePath),
      m_uVersion(version), m_uFlags(flags & FLAG_ALL), m_lastWriteTime(lastWriteTime), m_size(size),
      m_expiry(expiry), m_access(access) {}

UQQueryData::UQQueryData(const UQQueryData& other) = default;

UQQueryData& UQQueryData::operator=(const UQQueryData& other) = default;

UQQueryData::~UQQueryData() = default;

void* UQQueryData::operator new(std::size_t bytes) {
    void* memory = UQAllocation::mf_allocate(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void UQQueryData::operator delete(void* p) noexcept {
    UQAllocation::mf_free(p);
}

UQQueryData* UQQueryData::mf_clone() const {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_clone";
    void* memory = UQAllocation::mf_allocate(sizeof(UQQueryData));
    if (memory == nullptr) {
        logError(_sFunction_, L"No memory to clone query data:\r\n%s%s", UQLog::TAB, mf_toString());
        throw UQErrno(UQErrno::_E_::Memory);
    }
    return new (memory) UQQueryData(*this);
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

void UQQueryData::mf_sortByPathAndVersion(int bPathAscending, int bVersionAscending,
                                          UQArray<UQQueryData*, UQQueryData*>& data) {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_sortByPathAndVersion::1";
    const INT_PTR count = data.GetSize();
    if (count < 2)
        return;
    const auto less = [bPathAscending, bVersionAscending](const UQQueryData* a,
                                                          const UQQueryData* b) noexcept {
        if (a == nullptr || b == nullptr)
            return a != nullptr && b == nullptr;
        const int c = compareObjectPaths(a->m_objectPath, b->m_objectPath);
        if (c != 0)
            return bPathAscending ? c < 0 : c > 0;
        return bVersionAscending ? a->m_uVersion < b->m_uVersion : a->m_uVersion > b->m_uVersion;
    };
    SortBuffer<UQQueryData*> buffer(static_cast<std::size_t>(count) / 2, _sFunction_);
    mergeSort(data.GetData(), static_cast<std::size_t>(count), buffer.get(), less);
}

void UQQueryData::mf_sortByPathAndVersion(int bPathAscending, int bVersionAscending, UVQueryItem** items,
                                          INT_PTR count) {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_sortByPathAndVersion::2";
    sortItems(items, count, _sFunction_,
              [bPathAscending, bVersionAscending](const KeyedItem& a, const KeyedItem& b) noexcept {
                  const int c = compareObjectPaths(a.pData->m_objectPath, b.pData->m_objectPath);
                  if (c != 0)
                      return bPathAscending ? c < 0 : c > 0;
                  return bVersionAscending ? a.pData->m_uVersion < b.pData->m_uVersion
                                           : a.pData->m_uVersion > b.pData->m_uVersion;
              });
}

void UQQueryData::mf_sortByAccessOrder(UVQueryItem** items, INT_PTR count) {
    static const wchar_t* const _sFunction_ = L"UQQueryData::mf_sortByAccessOrder";
    sortItems(items, count, _sFunction_, [](const KeyedItem& a, const KeyedItem& b) noexcept {
        const AccessKey& x = a.pData->m_access;
        const AccessKey& y = b.pData->m_access;
        if (x.uVolume != y.uVolume)
            return x.uVolume < y.uVolume;
        if (x.uPosition != y.uPosition)
            return x.uPosition < y.uPosition;
        const int c = compareObjectPaths(a.pData->m_objectPath, b.pData->m_objectPath);
        if (c != 0)
            return c < 0;
        return a.pData->m_uVersion < b.pData->m_uVersion;
    });
}
