#include "guibase/toolkit/UQDpi.h"

namespace {

typedef BOOL(WINAPI* BehaviourCall)(HWND, DWORD, DWORD);

BehaviourCall lookUp(const char* _pszName) noexcept {
    const HMODULE hUser = GetModuleHandleW(L"user32.dll");
    if (hUser == nullptr)
        return nullptr;
    // The two-step cast keeps -Wcast-function-type quiet: FARPROC is only an address here.
    return reinterpret_cast<BehaviourCall>(reinterpret_cast<void*>(GetProcAddress(hUser, _pszName)));
}

BehaviourCall dialogCall() noexcept {
    static const BehaviourCall s_call = lookUp("SetDialogDpiChangeBehavior");
    return s_call;
}

BehaviourCall controlCall() noexcept {
    static const BehaviourCall s_call = lookUp("SetDialogControlDpiChangeBehavior");
    return s_call;
}

} // namespace

int UQDpi::mf_setDialogDpiChangeBehavior(HWND _hDlg, DWORD _dwMask, DWORD _dwValues) noexcept {
    const BehaviourCall call = dialogCall();
    return call != nullptr && call(_hDlg, _dwMask, _dwValues) ? 1 : 0;
}

int UQDpi::mf_setDialogControlDpiChangeBehavior(HWND _hControl, DWORD _dwMask, DWORD _dwValues) noexcept {
    const BehaviourCall call = controlCall();
    return call != nullptr && call(_hControl, _dwMask, _dwValues) ? 1 : 0;
}

int UQDpi::mf_hasDialogDpiChangeBehavior() noexcept {
    return dialogCall() != nullptr && controlCall() != nullptr ? 1 : 0;
}
