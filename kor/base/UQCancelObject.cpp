#include "interfaces/korbase.h"

#include "kor/KorReport.h"

UQCancelObject::UQCancelObject() noexcept : m_pCancelSwitch(nullptr) {}

UQCancelObject::UQCancelObject(const UQCancelObject& _other) noexcept
    : UVCancelObject(), m_pCancelSwitch(_other.m_pCancelSwitch.load()) {}

UQCancelObject& UQCancelObject::operator=(const UQCancelObject& _other) noexcept {
    m_pCancelSwitch.exchange(_other.m_pCancelSwitch.load());
    return *this;
}

UQCancelObject::~UQCancelObject() = default;

void UQCancelObject::mf_installCancelSwitch(UQCancelSwitch* _pSwitch) {
    static const wchar_t* const _sFunction_ = L"UQCancelObject::mf_installCancelSwitch";
    if (_pSwitch == nullptr)
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Parameter), _sFunction_,
                             L"Resetting cancel switch to NULL is not allowed");
    if (m_pCancelSwitch.load() != nullptr)
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::AlreadyInitialized), _sFunction_,
                             L"Cancel switch is already set");
    m_pCancelSwitch.exchange(_pSwitch);
}

UQCancelSwitch* UQCancelObject::mf_getCancelSwitch() const noexcept {
    return m_pCancelSwitch.load();
}

void UQCancelObject::mf_cancel() noexcept {
    UQCancelSwitch* pSwitch = m_pCancelSwitch.load();
    if (pSwitch != nullptr)
        pSwitch->mf_implTryCancel();
}

void UQCancelObject::mf_implPropagateCancelSwitch(UQCancelObject& _rTarget, int _bOverwrite) {
    static const wchar_t* const _sFunction_ = L"UQCancelObject::mf_implPropagateCancelSwitch";
    UQCancelSwitch* pSwitch = m_pCancelSwitch.load();
    if (pSwitch == nullptr)
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Initialization), _sFunction_,
                             L"No cancel switch to propagate");
    if (_bOverwrite == 0 && _rTarget.m_pCancelSwitch.load() != nullptr)
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::AlreadyInitialized), _sFunction_,
                             L"Target cancle switch is already initialized");
    _rTarget.m_pCancelSwitch.exchange(pSwitch);
}
