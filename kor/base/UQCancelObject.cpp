#include "interfaces/korbase.h"

#include "kor/base/KorReport.h"

UQCancelObject::UQCancelObject() noexcept : m_pCancelSwitch(nullptr) {}

UQCancelObject::UQCancelObject(const UQCancelObject& other) noexcept
    : UVCancelObject(), m_pCancelSwitch(other.m_pCancelSwitch.load()) {}

UQCancelObject& UQCancelObject::operator=(const UQCancelObject& other) noexcept {
    m_pCancelSwitch.exchange(other.m_pCancelSwitch.load());
    return *this;
}

UQCancelObject::~UQCancelObject() = default;

void UQCancelObject::mf_installCancelSwitch(UQCancelSwitch* pSwitch) {
    static const wchar_t* const _sFunction_ = L"UQCancelObject::mf_installCancelSwitch";
    if (pSwitch == nullptr)
        korreport::fail(UQErrno::_E_::Parameter, _sFunction_,
                        L"Resetting cancel switch to NULL is not allowed");
    if (m_pCancelSwitch.load() != nullptr)
        korreport::fail(UQErrno::_E_::AlreadyInitialized, _sFunction_, L"Cancel switch is already set");
    m_pCancelSwitch.exchange(pSwitch);
}

UQCancelSwitch* UQCancelObject::mf_getCancelSwitch() const noexcept {
    return m_pCancelSwitch.load();
}

void UQCancelObject::mf_cancel() noexcept {
    UQCancelSwitch* pSwitch = m_pCancelSwitch.load();
    if (pSwitch != nullptr)
        pSwitch->mf_implTryCancel();
}

void UQCancelObject::mf_implPropagateCancelSwitch(UQCancelObject& target, int bOverwrite) {
    static const wchar_t* const _sFunction_ = L"UQCancelObject::mf_implPropagateCancelSwitch";
    UQCancelSwitch* pSwitch = m_pCancelSwitch.load();
    if (pSwitch == nullptr)
        korreport::fail(UQErrno::_E_::Initialization, _sFunction_, L"No cancel switch to propagate");
    if (bOverwrite == 0 && target.m_pCancelSwitch.load() != nullptr)
        korreport::fail(UQErrno::_E_::AlreadyInitialized, _sFunction_,
                        L"Target cancle switch is already initialized");
    target.m_pCancelSwitch.exchange(pSwitch);
}
