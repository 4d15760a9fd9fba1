#include "interfaces/korbase.h"

#include "kor/base/UQRegistryStore.h"

#include <utility>

UQRegistryUpdate::UQRegistryUpdate(const CString& _sName, const CString& _sKey, HKEY _hHive)
    : m_pLock(nullptr), m_sName(_sName), m_sKey(_sKey), m_hHive(_hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistryUpdate::UQRegistryUpdate";
    m_pLock = UQRegistry::mf_implBeginUpdate(_sFunction_, _sName, _sKey, _hHive);
}

UQRegistryUpdate::~UQRegistryUpdate() {
    mf_implRelease();
}

UQRegistryUpdate::UQRegistryUpdate(UQRegistryUpdate&& _other) noexcept
    : m_pLock(std::exchange(_other.m_pLock, nullptr)), m_sName(std::move(_other.m_sName)),
      m_sKey(std::move(_other.m_sKey)), m_hHive(_other.m_hHive) {}

UQRegistryUpdate& UQRegistryUpdate::operator=(UQRegistryUpdate&& _other) noexcept {
    if (this != &_other) {
        mf_implRelease();
        m_pLock = std::exchange(_other.m_pLock, nullptr);
        m_sName = std::move(_other.m_sName);
        m_sKey = std::move(_other.m_sKey);
        m_hHive = _other.m_hHive;
    }
    return *this;
}

void UQRegistryUpdate::mf_commit() {
    static const wchar_t* const _sFunction_ = L"UQRegistryUpdate::mf_commit";
    UQRegistry::mf_implCommitUpdate(_sFunction_, m_pLock, m_sName, m_sKey, m_hHive);
}

void UQRegistryUpdate::mf_implRelease() noexcept {
    korregistry::endUpdate(m_pLock);
    m_pLock = nullptr;
}
