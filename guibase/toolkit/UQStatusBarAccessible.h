#pragma once

#include <windows.h>

#include <oleacc.h>

#include <atomic>

// What a screen reader gets for the owner-drawn status bar (WM_GETOBJECT, OBJID_CLIENT): role status bar,
// one child per part named by the part's text. The object keeps only the bar's window and asks it for the
// texts, so a reader that holds it after the bar is gone gets a failure, not a dangling item.
class UQStatusBarAccessible : public IAccessible {
public:
    // Asks the bar for the text of part wParam into the CString that lParam points to; answers 1 if it
    // exists.
    static UINT mf_textMessage();
    // Tells the bar that the item lParam shows another text (the bar raises EVENT_OBJECT_NAMECHANGE).
    static UINT mf_changedMessage();

    explicit UQStatusBarAccessible(HWND _hBar) noexcept;
    UQStatusBarAccessible(const UQStatusBarAccessible&) = delete;
    UQStatusBarAccessible& operator=(const UQStatusBarAccessible&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID _riid, void** _ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* _puCount) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override;

    HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** _ppParent) override;
    HRESULT STDMETHODCALLTYPE get_accChildCount(long* _plCount) override;
    HRESULT STDMETHODCALLTYPE get_accChild(VARIANT _child, IDispatch** _ppChild) override;
    HRESULT STDMETHODCALLTYPE get_accName(VARIANT _child, BSTR* _pbsName) override;
    HRESULT STDMETHODCALLTYPE get_accValue(VARIANT _child, BSTR* _pbsValue) override;
    HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT _child, BSTR* _pbsDescription) override;
    HRESULT STDMETHODCALLTYPE get_accRole(VARIANT _child, VARIANT* _pRole) override;
    HRESULT STDMETHODCALLTYPE get_accState(VARIANT _child, VARIANT* _pState) override;
    HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT _child, BSTR* _pbsHelp) override;
    HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* _pbsFile, VARIANT _child, long* _plTopic) override;
    HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT _child, BSTR* _pbsShortcut) override;
    HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* _pChild) override;
    HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* _pChildren) override;
    HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT _child, BSTR* _pbsAction) override;
    HRESULT STDMETHODCALLTYPE accSelect(long _lFlags, VARIANT _child) override;
    HRESULT STDMETHODCALLTYPE accLocation(long* _plLeft, long* _plTop, long* _plWidth, long* _plHeight,
                                          VARIANT _child) override;
    HRESULT STDMETHODCALLTYPE accNavigate(long _lDirection, VARIANT _start, VARIANT* _pEnd) override;
    HRESULT STDMETHODCALLTYPE accHitTest(long _lLeft, long _lTop, VARIANT* _pChild) override;
    HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT _child) override;
    HRESULT STDMETHODCALLTYPE put_accName(VARIANT _child, BSTR _bsName) override;
    HRESULT STDMETHODCALLTYPE put_accValue(VARIANT _child, BSTR _bsValue) override;

private:
    virtual ~UQStatusBarAccessible() = default;
    // The part a child id names (0-based), -1 for the bar itself, -2 for none.
    long mf_part(const VARIANT& _child) const;
    long mf_partCount() const;

    HWND m_hBar;
    std::atomic<ULONG> m_ulReferences;
};
