#include "guibase/toolkit/UQStatusBarAccessible.h"

#include "interfaces/korbase.h"

#include <commctrl.h>

namespace {

HRESULT answerLong(VARIANT* _pResult, long _lValue) {
    VariantInit(_pResult);
    _pResult->vt = VT_I4;
    _pResult->lVal = _lValue;
    return S_OK;
}

} // namespace

UINT UQStatusBarAccessible::mf_textMessage() {
    static const UINT uMessage = RegisterWindowMessageW(L"KorStatusBarPartText");
    return uMessage;
}

UINT UQStatusBarAccessible::mf_changedMessage() {
    static const UINT uMessage = RegisterWindowMessageW(L"KorStatusBarItemChanged");
    return uMessage;
}

UQStatusBarAccessible::UQStatusBarAccessible(HWND _hBar) noexcept : m_hBar(_hBar), m_ulReferences(1) {}

HRESULT UQStatusBarAccessible::QueryInterface(REFIID _riid, void** _ppObject) {
    if (_ppObject == nullptr)
        return E_POINTER;
    if (IsEqualIID(_riid, IID_IUnknown) || IsEqualIID(_riid, IID_IDispatch) ||
        IsEqualIID(_riid, __uuidof(IAccessible))) {
        *_ppObject = static_cast<IAccessible*>(this);
        AddRef();
        return S_OK;
    }
    *_ppObject = nullptr;
    return E_NOINTERFACE;
}

ULONG UQStatusBarAccessible::AddRef() {
    return ++m_ulReferences;
}

ULONG UQStatusBarAccessible::Release() {
    const ULONG ulLeft = --m_ulReferences;
    if (ulLeft == 0)
        delete this;
    return ulLeft;
}

HRESULT UQStatusBarAccessible::GetTypeInfoCount(UINT* _puCount) {
    if (_puCount == nullptr)
        return E_POINTER;
    *_puCount = 0;
    return S_OK;
}

HRESULT UQStatusBarAccessible::GetTypeInfo(UINT, LCID, ITypeInfo**) {
    return E_NOTIMPL;
}

HRESULT UQStatusBarAccessible::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return E_NOTIMPL;
}

HRESULT UQStatusBarAccessible::Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
    return E_NOTIMPL;
}

long UQStatusBarAccessible::mf_partCount() const {
    return IsWindow(m_hBar) ? static_cast<long>(SendMessageW(m_hBar, SB_GETPARTS, 0, 0)) : 0;
}

long UQStatusBarAccessible::mf_part(const VARIANT& _child) const {
    if (_child.vt != VT_I4)
        return -2;
    if (_child.lVal == CHILDID_SELF)
        return -1;
    return _child.lVal >= 1 && _child.lVal <= mf_partCount() ? _child.lVal - 1 : -2;
}

HRESULT UQStatusBarAccessible::get_accParent(IDispatch** _ppParent) {
    if (_ppParent == nullptr)
        return E_POINTER;
    *_ppParent = nullptr;
    if (!IsWindow(m_hBar))
        return E_FAIL;
    return AccessibleObjectFromWindow(m_hBar, static_cast<DWORD>(OBJID_WINDOW), IID_IDispatch,
                                      reinterpret_cast<void**>(_ppParent));
}

HRESULT UQStatusBarAccessible::get_accChildCount(long* _plCount) {
    if (_plCount == nullptr)
        return E_POINTER;
    *_plCount = mf_partCount();
    return IsWindow(m_hBar) ? S_OK : E_FAIL;
}

HRESULT UQStatusBarAccessible::get_accChild(VARIANT _child, IDispatch** _ppChild) {
    if (_ppChild == nullptr)
        return E_POINTER;
    *_ppChild = nullptr;
    // The parts are simple elements of the bar, not objects of their own.
    return mf_part(_child) >= 0 ? S_FALSE : E_INVALIDARG;
}

HRESULT UQStatusBarAccessible::get_accName(VARIANT _child, BSTR* _pbsName) {
    if (_pbsName == nullptr)
        return E_POINTER;
    *_pbsName = nullptr;
    const long lPart = mf_part(_child);
    if (lPart == -2)
        return E_INVALIDARG;
    if (lPart == -1)
        return S_FALSE;
    CString sText;
    if (SendMessageW(m_hBar, mf_textMessage(), static_cast<WPARAM>(lPart),
                     reinterpret_cast<LPARAM>(&sText)) == 0)
        return E_FAIL;
    *_pbsName = SysAllocString(sText);
    return *_pbsName != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT UQStatusBarAccessible::get_accValue(VARIANT, BSTR* _pbsValue) {
    if (_pbsValue != nullptr)
        *_pbsValue = nullptr;
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::get_accDescription(VARIANT, BSTR* _pbsDescription) {
    if (_pbsDescription != nullptr)
        *_pbsDescription = nullptr;
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::get_accRole(VARIANT _child, VARIANT* _pRole) {
    if (_pRole == nullptr)
        return E_POINTER;
    const long lPart = mf_part(_child);
    if (lPart == -2)
        return E_INVALIDARG;
    return answerLong(_pRole, lPart == -1 ? ROLE_SYSTEM_STATUSBAR : ROLE_SYSTEM_STATICTEXT);
}

HRESULT UQStatusBarAccessible::get_accState(VARIANT _child, VARIANT* _pState) {
    if (_pState == nullptr)
        return E_POINTER;
    if (mf_part(_child) == -2)
        return E_INVALIDARG;
    return answerLong(_pState,
                      STATE_SYSTEM_READONLY | (IsWindowVisible(m_hBar) ? 0 : STATE_SYSTEM_INVISIBLE));
}

HRESULT UQStatusBarAccessible::get_accHelp(VARIANT, BSTR* _pbsHelp) {
    if (_pbsHelp != nullptr)
        *_pbsHelp = nullptr;
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::get_accHelpTopic(BSTR* _pbsFile, VARIANT, long* _plTopic) {
    if (_pbsFile != nullptr)
        *_pbsFile = nullptr;
    if (_plTopic != nullptr)
        *_plTopic = 0;
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::get_accKeyboardShortcut(VARIANT, BSTR* _pbsShortcut) {
    if (_pbsShortcut != nullptr)
        *_pbsShortcut = nullptr;
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::get_accFocus(VARIANT* _pChild) {
    if (_pChild == nullptr)
        return E_POINTER;
    VariantInit(_pChild);
    return S_FALSE;
}

HRESULT UQStatusBarAccessible::get_accSelection(VARIANT* _pChildren) {
    if (_pChildren == nullptr)
        return E_POINTER;
    VariantInit(_pChildren);
    return S_FALSE;
}

HRESULT UQStatusBarAccessible::get_accDefaultAction(VARIANT, BSTR* _pbsAction) {
    if (_pbsAction != nullptr)
        *_pbsAction = nullptr;
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::accSelect(long, VARIANT) {
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::accLocation(long* _plLeft, long* _plTop, long* _plWidth, long* _plHeight,
                                           VARIANT _child) {
    if (_plLeft == nullptr || _plTop == nullptr || _plWidth == nullptr || _plHeight == nullptr)
        return E_POINTER;
    const long lPart = mf_part(_child);
    if (lPart == -2)
        return E_INVALIDARG;
    RECT rc = {0, 0, 0, 0};
    if (lPart == -1)
        GetClientRect(m_hBar, &rc);
    else
        SendMessageW(m_hBar, SB_GETRECT, static_cast<WPARAM>(lPart), reinterpret_cast<LPARAM>(&rc));
    MapWindowPoints(m_hBar, nullptr, reinterpret_cast<POINT*>(&rc), 2);
    *_plLeft = rc.left;
    *_plTop = rc.top;
    *_plWidth = rc.right - rc.left;
    *_plHeight = rc.bottom - rc.top;
    return S_OK;
}

HRESULT UQStatusBarAccessible::accNavigate(long _lDirection, VARIANT _start, VARIANT* _pEnd) {
    if (_pEnd == nullptr)
        return E_POINTER;
    VariantInit(_pEnd);
    const long lPart = mf_part(_start);
    const long lCount = mf_partCount();
    if (lPart == -2)
        return E_INVALIDARG;
    long lTo = 0;
    switch (_lDirection) {
    case NAVDIR_FIRSTCHILD:
        lTo = lPart == -1 && lCount > 0 ? 1 : 0;
        break;
    case NAVDIR_LASTCHILD:
        lTo = lPart == -1 && lCount > 0 ? lCount : 0;
        break;
    case NAVDIR_NEXT:
    case NAVDIR_RIGHT:
        lTo = lPart >= 0 && lPart + 1 < lCount ? lPart + 2 : 0;
        break;
    case NAVDIR_PREVIOUS:
    case NAVDIR_LEFT:
        lTo = lPart >= 1 ? lPart : 0;
        break;
    default:
        break;
    }
    return lTo > 0 ? answerLong(_pEnd, lTo) : S_FALSE;
}

HRESULT UQStatusBarAccessible::accHitTest(long _lLeft, long _lTop, VARIANT* _pChild) {
    if (_pChild == nullptr)
        return E_POINTER;
    VariantInit(_pChild);
    POINT point = {_lLeft, _lTop};
    ScreenToClient(m_hBar, &point);
    RECT rcBar = {0, 0, 0, 0};
    GetClientRect(m_hBar, &rcBar);
    if (!PtInRect(&rcBar, point))
        return S_FALSE;
    for (long i = 0; i < mf_partCount(); ++i) {
        RECT rc = {0, 0, 0, 0};
        SendMessageW(m_hBar, SB_GETRECT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&rc));
        if (PtInRect(&rc, point))
            return answerLong(_pChild, i + 1);
    }
    return answerLong(_pChild, CHILDID_SELF);
}

HRESULT UQStatusBarAccessible::accDoDefaultAction(VARIANT) {
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT UQStatusBarAccessible::put_accName(VARIANT, BSTR) {
    return E_NOTIMPL;
}

HRESULT UQStatusBarAccessible::put_accValue(VARIANT, BSTR) {
    return E_NOTIMPL;
}
