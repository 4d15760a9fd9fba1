#include "guibase/filelist/UQFileListItemVersion.h"

#include "guibase/foundation/UQReport.h"

#include <cstdlib>
#include <new>

namespace {

// The difference taken as a signed 32-bit number: versions more than 2^31 apart compare reversed, which
// is how the product has always ordered them.
int compareAscending(const void* a, const void* b) {
    const auto* va = *static_cast<UQFileListItemVersion* const*>(a);
    const auto* vb = *static_cast<UQFileListItemVersion* const*>(b);
    return static_cast<std::int32_t>(va->mf_getVersion() - vb->mf_getVersion());
}

int compareDescending(const void* a, const void* b) {
    const auto* va = *static_cast<UQFileListItemVersion* const*>(a);
    const auto* vb = *static_cast<UQFileListItemVersion* const*>(b);
    return static_cast<std::int32_t>(vb->mf_getVersion() - va->mf_getVersion());
}

} // namespace

UQFileListItemVersion::UQFileListItemVersion(std::uint32_t version, const UQFileSize& size,
                                             const UQFileTime& lastWriteTime)
    : m_uVersion(version), m_size(size), m_lastWriteTime(lastWriteTime) {}

UQFileListItemVersion::UQFileListItemVersion(const UQFileListItemVersion& other) = default;

UQFileListItemVersion& UQFileListItemVersion::operator=(const UQFileListItemVersion& other) {
    m_uVersion = other.m_uVersion;
    m_size = other.m_size;
    m_lastWriteTime = other.m_lastWriteTime;
    return *this;
}

UQFileListItemVersion::~UQFileListItemVersion() = default;

UQFileListItemVersion* UQFileListItemVersion::mf_implCreate(std::uint32_t version, const UQFileSize& size,
                                                            const UQFileTime& lastWriteTime) {
    return UQAllocation::mf_create<UQFileListItemVersion>(version, size, lastWriteTime);
}

void UQFileListItemVersion::mf_implDestroy(UQFileListItemVersion* pVersion) noexcept {
    if (pVersion != nullptr) {
        pVersion->~UQFileListItemVersion();
        UQAllocation::mf_free(pVersion);
    }
}

void UQFileListItemVersion::mf_sort(UQArray<UQFileListItemVersion*, UQFileListItemVersion*>& versions,
                                    int bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListItemVersion::mf_sort";
    if (versions.GetData() == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"No file list item versions to sort");
        return;
    }
    std::qsort(versions.GetData(), static_cast<std::size_t>(versions.GetSize()),
               sizeof(UQFileListItemVersion*), bAscending ? compareAscending : compareDescending);
}
