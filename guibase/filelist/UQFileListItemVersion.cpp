#include "guibase/filelist/UQFileListItemVersion.h"

#include "guibase/foundation/UQReport.h"

#include <cstdlib>
#include <new>

namespace {

// The difference taken as a signed 32-bit number: versions more than 2^31 apart compare reversed, which
// is how the product has always ordered them.
int compareAscending(const void* _pA, const void* _pB) {
    const auto* va = *static_cast<UQFileListItemVersion* const*>(_pA);
    const auto* vb = *static_cast<UQFileListItemVersion* const*>(_pB);
    return static_cast<std::int32_t>(va->mf_getVersion() - vb->mf_getVersion());
}

int compareDescending(const void* _pA, const void* _pB) {
    const auto* va = *static_cast<UQFileListItemVersion* const*>(_pA);
    const auto* vb = *static_cast<UQFileListItemVersion* const*>(_pB);
    return static_cast<std::int32_t>(vb->mf_getVersion() - va->mf_getVersion());
}

} // namespace

UQFileListItemVersion::UQFileListItemVersion(std::uint32_t _uVersion, const UQFileSize& _size,
                                             const UQFileTime& _lastWriteTime)
    : m_uVersion(_uVersion), m_size(_size), m_lastWriteTime(_lastWriteTime) {}

UQFileListItemVersion::UQFileListItemVersion(const UQFileListItemVersion& _other) = default;

UQFileListItemVersion& UQFileListItemVersion::operator=(const UQFileListItemVersion& _other) {
    m_uVersion = _other.m_uVersion;
    m_size = _other.m_size;
    m_lastWriteTime = _other.m_lastWriteTime;
    return *this;
}

UQFileListItemVersion::~UQFileListItemVersion() = default;

UQFileListItemVersion* UQFileListItemVersion::mf_implCreate(std::uint32_t _uVersion, const UQFileSize& _size,
                                                            const UQFileTime& _lastWriteTime) {
    return UQAllocation::mf_create<UQFileListItemVersion>(_uVersion, _size, _lastWriteTime);
}

void UQFileListItemVersion::mf_implDestroy(UQFileListItemVersion* _pVersion) noexcept {
    if (_pVersion != nullptr) {
        _pVersion->~UQFileListItemVersion();
        UQAllocation::mf_free(_pVersion);
    }
}

void UQFileListItemVersion::mf_sort(UQArray<UQFileListItemVersion*, UQFileListItemVersion*>& _rVersions,
                                    int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListItemVersion::mf_sort";
    if (_rVersions.GetData() == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"No file list item versions to sort");
        return;
    }
    std::qsort(_rVersions.GetData(), static_cast<std::size_t>(_rVersions.GetSize()),
               sizeof(UQFileListItemVersion*), _bAscending ? compareAscending : compareDescending);
}
