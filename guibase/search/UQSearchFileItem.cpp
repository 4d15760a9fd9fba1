#include "guibase/search/UQSearchFileItem.h"

#include "compat/afxsortkey.h"
#include "guibase/foundation/UQReport.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace {

const UQSearchFileItem* itemAt(const void* _pP) {
    return *static_cast<const UQSearchFileItem* const*>(_pP);
}

// The version whose state an item is sorted by: the selected one, or the latest of an unselected item.
const UQSearchFileVersion* shownVersion(const UQSearchFileItem* _pItem) {
    const UQSearchFileVersion* version = _pItem->mf_getSelectedVersion();
    return version != nullptr ? version : _pItem->mf_getLatestVersion();
}

int pathAscending(const void* _pA, const void* _pB) {
    return UQPath::mf_compare(itemAt(_pA)->mf_getPath(), itemAt(_pB)->mf_getPath());
}

int pathDescending(const void* _pA, const void* _pB) {
    return pathAscending(_pB, _pA);
}

int statusAscending(const void* _pA, const void* _pB) {
    const int c = shownVersion(itemAt(_pA))
                      ->mf_getStatusString()
                      .Compare(shownVersion(itemAt(_pB))->mf_getStatusString());
    return c != 0 ? c : pathAscending(_pA, _pB);
}

int statusDescending(const void* _pA, const void* _pB) {
    const int c = shownVersion(itemAt(_pB))
                      ->mf_getStatusString()
                      .Compare(shownVersion(itemAt(_pA))->mf_getStatusString());
    return c != 0 ? c : pathAscending(_pA, _pB);
}

int security(const void* _pP) {
    return shownVersion(itemAt(_pP))->mf_getQueryData()->mf_hasSecurity() ? 1 : 0;
}

// A flag of the shown version first (ascending: without before with), then the path.
template <int (*FLAG)(const void*)> int flagAscending(const void* _pA, const void* _pB) {
    const int c = FLAG(_pA) - FLAG(_pB);
    return c != 0 ? c : pathAscending(_pA, _pB);
}

template <int (*FLAG)(const void*)> int flagDescending(const void* _pA, const void* _pB) {
    const int c = FLAG(_pB) - FLAG(_pA);
    return c != 0 ? c : pathAscending(_pA, _pB);
}

int streams(const void* _pP) {
    return shownVersion(itemAt(_pP))->mf_getQueryData()->mf_hasADStreams() ? 1 : 0;
}

// What a keyed sort orders by besides the path: nothing, the status text, or a flag of the shown version.
enum class Primary { NONE, STATUS, SECURITY, STREAMS };

struct FreeDeleter {
    void operator()(void* _p) const noexcept { std::free(_p); }
};

// The rank of each status text in the order of the text comparison; equal texts share a rank.
class StatusRanks {
public:
    std::uint32_t rankOf(const CString& _sText) {
        for (std::size_t i = 0; i < m_texts.size(); ++i)
            if (m_texts[i] == &_sText || m_texts[i]->Compare(_sText) == 0)
                return static_cast<std::uint32_t>(i);
        m_texts.push_back(&_sText);
        return static_cast<std::uint32_t>(m_texts.size() - 1);
    }
    // Turns the indices handed out into ranks.
    std::vector<std::uint32_t> ranks() const {
        std::vector<std::uint32_t> order(m_texts.size());
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = static_cast<std::uint32_t>(i);
        std::sort(order.begin(), order.end(), [this](std::uint32_t _a, std::uint32_t _b) {
            return m_texts[_a]->Compare(*m_texts[_b]) < 0;
        });
        std::vector<std::uint32_t> rank(order.size());
        for (std::size_t i = 0; i < order.size(); ++i)
            rank[order[i]] = static_cast<std::uint32_t>(i);
        return rank;
    }

private:
    std::vector<const CString*> m_texts;
};

// The qsort orders by keys: each item's path folded once (AFX_KEY_PATH) instead of at every comparison,
// the status text or flag as the tie that decides first. Equal items keep their order, one of the orders
// qsort may give. Answers false, with nothing moved, when there is no memory for the keys or a path has no
// key; qsort with the comparison then sorts.
bool sortByKeys(UQSearchFileItem** _ppItems, std::size_t _nCount, Primary _primary,
                int _bAscending) noexcept {
    if (_nCount > UINT32_MAX)
        return false;
    std::uint64_t units = 0;
    for (std::size_t i = 0; i < _nCount; ++i)
        units += AfxSortKeyTailUnits(static_cast<const CString&>(_ppItems[i]->mf_getPath()).GetLength());
    if (units >= UINT32_MAX)
        return false;
    std::unique_ptr<AfxSortKey, FreeDeleter> keys(
        static_cast<AfxSortKey*>(std::malloc(_nCount * sizeof(AfxSortKey))));
    std::unique_ptr<std::uint16_t, FreeDeleter> arena(static_cast<std::uint16_t*>(
        std::malloc((static_cast<std::size_t>(units) + 1) * sizeof(std::uint16_t))));
    if (!keys || !arena)
        return false;
    AfxSortKey* key = keys.get();
    std::uint32_t offset = 0;
    try {
        StatusRanks statusRanks;
        for (std::size_t i = 0; i < _nCount; ++i) {
            const UQSearchFileItem* item = _ppItems[i];
            const CString& path = item->mf_getPath();
            if (!AfxMakeSortKey(path.GetString(), path.GetLength(), AFX_KEY_PATH, arena.get(), offset,
                                key[i]))
                return false;
            offset += static_cast<std::uint32_t>(AfxSortKeyTailUnits(path.GetLength()));
            key[i].uIndex = static_cast<std::uint32_t>(i);
            switch (_primary) {
            case Primary::NONE:
                key[i].uTie = 0;
                break;
            case Primary::STATUS:
                key[i].uTie = statusRanks.rankOf(shownVersion(item)->mf_getStatusString());
                break;
            case Primary::SECURITY:
                key[i].uTie = shownVersion(item)->mf_getQueryData()->mf_hasSecurity() ? 1 : 0;
                break;
            case Primary::STREAMS:
                key[i].uTie = shownVersion(item)->mf_getQueryData()->mf_hasADStreams() ? 1 : 0;
                break;
            }
        }
        if (_primary == Primary::STATUS) {
            const std::vector<std::uint32_t> rank = statusRanks.ranks();
            for (std::size_t i = 0; i < _nCount; ++i)
                key[i].uTie = rank[key[i].uTie];
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    // Path sorts go by the key in the direction asked; the others by the tie in that direction, equal
    // ties by path ascending.
    const unsigned flags =
        _primary == Primary::NONE
            ? (_bAscending ? 0u : static_cast<unsigned>(AFX_SORT_KEY_DESCENDING))
            : AFX_SORT_TIE_FIRST | (_bAscending ? 0u : static_cast<unsigned>(AFX_SORT_TIE_DESCENDING));
    AfxSortByKeys(key, _nCount, arena.get(), flags);
    // Each cycle of the permutation moved along once; a placed position is marked as its own.
    for (std::size_t i = 0; i < _nCount; ++i) {
        if (key[i].uIndex == i)
            continue;
        UQSearchFileItem* first = _ppItems[i];
        std::size_t j = i;
        while (key[j].uIndex != i) {
            const std::size_t from = key[j].uIndex;
            _ppItems[j] = _ppItems[from];
            key[j].uIndex = static_cast<std::uint32_t>(j);
            j = from;
        }
        _ppItems[j] = first;
        key[j].uIndex = static_cast<std::uint32_t>(j);
    }
    return true;
}

void sortItems(UQSearchFileItem::Array& _rItems, int (*_pCompare)(const void*, const void*), Primary _primary,
               int _bAscending, const wchar_t* _pszFunction) {
    if (_rItems.GetData() == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_W, _pszFunction, L"No file list items to sort");
        return;
    }
    const std::size_t count = static_cast<std::size_t>(_rItems.GetSize());
    if (count < 2 || sortByKeys(_rItems.GetData(), count, _primary, _bAscending))
        return;
    std::qsort(_rItems.GetData(), count, sizeof(UQSearchFileItem*), _pCompare);
}

// Copies of an item's versions stand on clones of the records, so that every version owns its own.
UQLinkedListItem* f_cloneSearchFileVersion(const UQLinkedListItem& _item) {
    std::unique_ptr<const UQQueryData> record(
        static_cast<const UQSearchFileVersion&>(_item).mf_getQueryData()->mf_clone());
    UQSearchFileVersion* pVersion = UQAllocation::mf_create<UQSearchFileVersion>(record.get());
    // The version owns the record from here on.
    if (pVersion != nullptr)
        static_cast<void>(record.release());
    return pVersion;
}

} // namespace

void* UQSearchFileItem::operator new(std::size_t _nBytes) {
    return UQAllocation::mf_allocateOrThrow(_nBytes);
}

void UQSearchFileItem::operator delete(void* _p) noexcept {
    UQAllocation::mf_free(_p);
}

UQSearchFileItem::UQSearchFileItem(UQSearchFileVersion* _pVersion)
    : m_versions(1, &f_cloneSearchFileVersion), m_pSelectedVersion(nullptr) {
    mf_implAddVersion(_pVersion);
}

UQSearchFileItem::UQSearchFileItem(const UQSearchFileItem& _other)
    : UVQueryItem(_other), m_versions(_other.m_versions), m_pSelectedVersion(nullptr) {
    m_pSelectedVersion = mf_implCorresponding(_other, _other.m_pSelectedVersion);
}

UQSearchFileItem& UQSearchFileItem::operator=(const UQSearchFileItem& _other) {
    if (this != &_other) {
        // The list's assignment leaves this item as it was when a clone fails.
        m_versions = _other.m_versions;
        m_pSelectedVersion = mf_implCorresponding(_other, _other.m_pSelectedVersion);
    }
    return *this;
}

UQSearchFileItem::~UQSearchFileItem() {
    m_pSelectedVersion = nullptr;
    m_versions.mf_clearList(1);
}

UQSearchFileVersion* UQSearchFileItem::mf_implGetOldest() const noexcept {
    return static_cast<UQSearchFileVersion*>(m_versions.mf_getHead());
}

UQSearchFileVersion* UQSearchFileItem::mf_implGetLatest() const noexcept {
    return static_cast<UQSearchFileVersion*>(m_versions.mf_getTail());
}

UQSearchFileVersion*
UQSearchFileItem::mf_implCorresponding(const UQSearchFileItem& _other,
                                       const UQSearchFileVersion* _pVersion) const noexcept {
    if (_pVersion == nullptr)
        return nullptr;
    const UQLinkedListItem* theirs = _other.m_versions.mf_getHead();
    UQLinkedListItem* ours = m_versions.mf_getHead();
    while (theirs != nullptr && ours != nullptr) {
        if (theirs == _pVersion)
            return static_cast<UQSearchFileVersion*>(ours);
        theirs = _other.m_versions.mf_getNext(theirs);
        ours = m_versions.mf_getNext(ours);
    }
    return nullptr;
}

void UQSearchFileItem::mf_implAddVersion(UQSearchFileVersion* _pVersion) {
    static const wchar_t* const _sFunction_ = L"UQSearchFileItem::mf_implAddVersion";
    if (_pVersion == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"NULL == _pVersion");
    const std::uint32_t number = _pVersion->mf_getVersion();
    // The list is ascending: when the latest is not greater, no version is, and the walk is saved.
    const UQSearchFileVersion* latest = mf_implGetLatest();
    if (latest == nullptr || latest->mf_getVersion() <= number) {
        m_versions.mf_addTail(_pVersion);
        return;
    }
    for (UQLinkedListItem* item = m_versions.mf_getHead(); item != nullptr;
         item = m_versions.mf_getNext(item)) {
        if (static_cast<UQSearchFileVersion*>(item)->mf_getVersion() > number) {
            // A null position puts it at the head.
            m_versions.mf_insertAfter(m_versions.mf_getPrevious(item), _pVersion);
            return;
        }
    }
    m_versions.mf_addTail(_pVersion);
}

const UQQueryData& UQSearchFileItem::mf_getQueryData() const {
    static const wchar_t* const _sFunction_ = L"UQSearchFileItem::mf_getQueryData";
    const UQSearchFileVersion* latest = mf_implGetLatest();
    if (latest == nullptr || latest->mf_getQueryData() == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Internal, _sFunction_, L"Found latest version without query data");
    return *latest->mf_getQueryData();
}

const UQSearchFileVersion* UQSearchFileItem::mf_getLatestVersion() const noexcept {
    return mf_implGetLatest();
}

void UQSearchFileItem::mf_setSelected(int _bSelect, unsigned long _uVersion) {
    if (_bSelect == 0) {
        m_pSelectedVersion = nullptr;
        return;
    }
    if (_uVersion == UQQueryPatternVersion::LATEST) {
        m_pSelectedVersion = mf_implGetLatest();
        return;
    }
    UQSearchFileVersion* oldest = mf_implGetOldest();
    if (oldest == nullptr)
        return;
    // The product's callers rely on this shape: the oldest version is compared until it matches, and no
    // later version is ever looked at. The volatile read keeps the comparison a real one on each round.
    for (;;) {
        const volatile unsigned long current = oldest->mf_getVersion();
        if (current == _uVersion)
            break;
    }
    m_pSelectedVersion = oldest;
}

void UQSearchFileItem::mf_getVersions(int _bAscending, VersionArray& _rVersions) const {
    static const wchar_t* const _sFunction_ = L"UQSearchFileItem::mf_getVersions";
    if (_rVersions.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_,
                          L"Search file version list parameter is not empty");
    if (_bAscending) {
        for (UQLinkedListItem* item = m_versions.mf_getHead(); item != nullptr;
             item = m_versions.mf_getNext(item))
            _rVersions.Add(static_cast<UQSearchFileVersion*>(item));
    } else {
        for (UQLinkedListItem* item = m_versions.mf_getTail(); item != nullptr;
             item = m_versions.mf_getPrevious(item))
            _rVersions.Add(static_cast<UQSearchFileVersion*>(item));
    }
}

const UQPath& UQSearchFileItem::mf_getPath() const {
    return mf_implGetOldest()->mf_getPath();
}

CString UQSearchFileItem::mf_getUNCPath() const {
    return UQPath::mf_getUNCPath(mf_getPath());
}

CString UQSearchFileItem::mf_getPathDisplayString() const {
    return mf_getQueryData().mf_getPathDisplayString();
}

CString UQSearchFileItem::mf_getRangesDisplayString() const {
    CString text;
    std::uint32_t start = 0;
    std::uint32_t end = 0;
    // A run of one adds nothing more, a run of two its second number, a longer run " - " and its end.
    // Compared in 64 bits: 4294967295 + 1 is no 0 that could follow or close a run.
    auto closeRun = [&]() {
        if (std::uint64_t(end) == std::uint64_t(start) + 1u)
            text.AppendFormat(L", %lu", end);
        else if (end != start)
            text.AppendFormat(L" - %lu", end);
    };
    bool first = true;
    for (UQLinkedListItem* item = m_versions.mf_getHead(); item != nullptr;
         item = m_versions.mf_getNext(item)) {
        const std::uint32_t n = static_cast<UQSearchFileVersion*>(item)->mf_getVersion();
        if (first) {
            text.AppendFormat(L"%lu", n);
            start = end = n;
            first = false;
        } else if (std::uint64_t(n) == std::uint64_t(end) + 1u) {
            end = n;
        } else {
            closeRun();
            text.AppendFormat(L", %lu", n);
            start = end = n;
        }
    }
    if (!first)
        closeRun();
    return text;
}

CString UQSearchFileItem::mf_getSecurityDisplayString() const {
    return UQString(mf_getQueryData().mf_hasSecurity() ? 4519u : 3545u).mf_getText();
}

CString UQSearchFileItem::mf_getADStreamsDisplayString() const {
    return UQString(mf_getQueryData().mf_hasADStreams() ? 4519u : 3545u).mf_getText();
}

void UQSearchFileItem::mf_sortByPath(Array& _rItems, int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQSearchFileItem::mf_sortByPath";
    sortItems(_rItems, _bAscending ? pathAscending : pathDescending, Primary::NONE, _bAscending, _sFunction_);
}

void UQSearchFileItem::mf_sortByStatus(Array& _rItems, int _bAscending) {
    // The product's logs name this sort as the file list's; log readers look for that name.
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_sortByStatus";
    sortItems(_rItems, _bAscending ? statusAscending : statusDescending, Primary::STATUS, _bAscending,
              _sFunction_);
}

void UQSearchFileItem::mf_sortBySecurity(Array& _rItems, int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_sortBySecurity";
    sortItems(_rItems, _bAscending ? flagAscending<security> : flagDescending<security>, Primary::SECURITY,
              _bAscending, _sFunction_);
}

void UQSearchFileItem::mf_sortByADStreams(Array& _rItems, int _bAscending) {
    // Shares the security sort's name in the log, as the product always has.
    static const wchar_t* const _sFunction_ = L"UQFileListItem::mf_sortBySecurity";
    sortItems(_rItems, _bAscending ? flagAscending<streams> : flagDescending<streams>, Primary::STREAMS,
              _bAscending, _sFunction_);
}
