#include "guibase/toolkit/UQDpi.h"

#include <commctrl.h>

namespace {

typedef BOOL(WINAPI* BehaviourCall)(HWND, DWORD, DWORD);
typedef UINT(WINAPI* WindowDpiCall)(HWND);
typedef int(WINAPI* MetricForDpiCall)(int, UINT);
typedef HRESULT(WINAPI* ScaleDownCall)(HINSTANCE, PCWSTR, int, int, HICON*);

template <typename CALL> CALL lookUp(const wchar_t* _pszModule, const char* _pszName) noexcept {
    const HMODULE hModule = GetModuleHandleW(_pszModule);
    if (hModule == nullptr)
        return nullptr;
    // The two-step cast keeps -Wcast-function-type quiet: FARPROC is only an address here.
    return reinterpret_cast<CALL>(reinterpret_cast<void*>(GetProcAddress(hModule, _pszName)));
}

BehaviourCall dialogCall() noexcept {
    static const BehaviourCall s_call = lookUp<BehaviourCall>(L"user32.dll", "SetDialogDpiChangeBehavior");
    return s_call;
}

BehaviourCall controlCall() noexcept {
    static const BehaviourCall s_call =
        lookUp<BehaviourCall>(L"user32.dll", "SetDialogControlDpiChangeBehavior");
    return s_call;
}

WindowDpiCall windowDpiCall() noexcept {
    static const WindowDpiCall s_call = lookUp<WindowDpiCall>(L"user32.dll", "GetDpiForWindow");
    return s_call;
}

MetricForDpiCall metricCall() noexcept {
    static const MetricForDpiCall s_call = lookUp<MetricForDpiCall>(L"user32.dll", "GetSystemMetricsForDpi");
    return s_call;
}

// comctl32 is one of the library's imports, so it is loaded; version 5 lacks the call.
ScaleDownCall scaleDownCall() noexcept {
    static const ScaleDownCall s_call = lookUp<ScaleDownCall>(L"comctl32.dll", "LoadIconWithScaleDown");
    return s_call;
}

UINT dpiOfDC(HWND _hWnd) noexcept {
    HDC hDC = GetDC(_hWnd);
    if (hDC == nullptr)
        return 0;
    const int nDpi = GetDeviceCaps(hDC, LOGPIXELSY);
    ReleaseDC(_hWnd, hDC);
    return nDpi > 0 ? static_cast<UINT>(nDpi) : 0;
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

UINT UQDpi::mf_getWindowDpi(HWND _hWnd) noexcept {
    const WindowDpiCall call = windowDpiCall();
    UINT uDpi = call != nullptr && _hWnd != nullptr ? call(_hWnd) : 0;
    if (uDpi == 0 && _hWnd != nullptr)
        uDpi = dpiOfDC(_hWnd);
    return uDpi != 0 ? uDpi : mf_getSystemDpi();
}

UINT UQDpi::mf_getSystemDpi() noexcept {
    const UINT uDpi = dpiOfDC(nullptr);
    return uDpi != 0 ? uDpi : 96;
}

int UQDpi::mf_getSystemMetricForDpi(int _nIndex, UINT _uDpi) noexcept {
    const MetricForDpiCall call = metricCall();
    if (call != nullptr && _uDpi != 0) {
        const int nMetric = call(_nIndex, _uDpi);
        if (nMetric != 0)
            return nMetric;
    }
    const int nMetric = GetSystemMetrics(_nIndex);
    return _uDpi != 0 ? MulDiv(nMetric, static_cast<int>(_uDpi), static_cast<int>(mf_getSystemDpi()))
                      : nMetric;
}

int UQDpi::mf_getIconSize(int _nSize96, UINT _uDpi) noexcept {
    if (_uDpi == 0)
        _uDpi = 96;
    if (_nSize96 == 16)
        return mf_getSystemMetricForDpi(SM_CXSMICON, _uDpi);
    if (_nSize96 == 32)
        return mf_getSystemMetricForDpi(SM_CXICON, _uDpi);
    return MulDiv(_nSize96, static_cast<int>(_uDpi), 96);
}

HICON UQDpi::mf_loadIcon(HMODULE _hModule, WORD _wIconId, int _nSize) noexcept {
    if (_hModule == nullptr || _nSize <= 0)
        return nullptr;
    const ScaleDownCall call = scaleDownCall();
    HICON hIcon = nullptr;
    if (call != nullptr && SUCCEEDED(call(_hModule, MAKEINTRESOURCEW(_wIconId), _nSize, _nSize, &hIcon)) &&
        hIcon != nullptr)
        return hIcon;
    return static_cast<HICON>(
        LoadImageW(_hModule, MAKEINTRESOURCEW(_wIconId), IMAGE_ICON, _nSize, _nSize, 0));
}
