#pragma once

#include "interfaces/korbase.h"

#include <atomic>

// Base of cancellable workers: holds the installed cancel switch (not owned).
class KORGUIBASE_API UQCancelObject : public UVCancelObject {
public:
    UQCancelObject() noexcept;
    // A copy shares the source's switch.
    UQCancelObject(const UQCancelObject& _other) noexcept;
    UQCancelObject& operator=(const UQCancelObject& _other) noexcept;
    ~UQCancelObject() override;

    // Null: _E_::Parameter; a switch already installed: _E_::AlreadyInitialized.
    void mf_installCancelSwitch(UQCancelSwitch* _pSwitch) override;
    UQCancelSwitch* mf_getCancelSwitch() const noexcept override;
    void mf_cancel() noexcept override;
    // Gives _rTarget this object's switch. No switch here: _E_::Initialization; the target has one and
    // _bOverwrite is 0: _E_::AlreadyInitialized.
    virtual void mf_implPropagateCancelSwitch(UQCancelObject& _rTarget, int _bOverwrite);

private:
    std::atomic<UQCancelSwitch*> m_pCancelSwitch;
};
