// Shows the library's message box and reports how it ended. With --close-after MS the box presses its
// own default button after that many milliseconds, so the program also runs unattended.
#include "compat/utf8.h"
#include "guibase/toolkit/UQMessageBox.h"

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>

namespace {

const UINT_PTR CLOSE_TIMER = 1;

void CALLBACK f_pressDefaultButton(HWND _hDlg, UINT, UINT_PTR _uTimer, DWORD) {
    KillTimer(_hDlg, _uTimer);
    const LRESULT defId = SendMessageW(_hDlg, DM_GETDEFID, 0, 0);
    if (HIWORD(defId) == DC_HASDEFID)
        PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(LOWORD(defId), BN_CLICKED), 0);
    else
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
}

std::string toUtf8(const CString& _sText) {
    return uqfmt::wideToUtf8(static_cast<const wchar_t*>(_sText),
                             static_cast<std::size_t>(_sText.GetLength()));
}

// The library's box, extended the way a program extends it: one more step when the dialog starts.
class TimedMessageBox : public UQMessageBox {
public:
    TimedMessageBox(const CString& _sMessage, UINT _uCloseAfterMs)
        : UQMessageBox(_sMessage, UVSeverity(UVSeverity::GREEN), BUTTONS_SINGLE, L"korguibase consumer"),
          m_uCloseAfterMs(_uCloseAfterMs) {}

    int mf_onInitDialog(HWND _hDlg) override {
        const int bResult = UQMessageBox::mf_onInitDialog(_hDlg);
        wchar_t caption[256] = {0};
        GetWindowTextW(_hDlg, caption, 256);
        m_sShownCaption = caption;
        if (m_uCloseAfterMs != 0)
            SetTimer(_hDlg, CLOSE_TIMER, m_uCloseAfterMs, &f_pressDefaultButton);
        return bResult;
    }

    const CString& mf_getShownCaption() const noexcept { return m_sShownCaption; }

private:
    UINT m_uCloseAfterMs;
    CString m_sShownCaption;
};

} // namespace

int main(int _nArgs, char** _ppArgs) {
    UINT uCloseAfterMs = 0;
    for (int i = 1; i < _nArgs; ++i) {
        if (std::string(_ppArgs[i]) == "--close-after" && i + 1 < _nArgs) {
            uCloseAfterMs = static_cast<UINT>(std::strtoul(_ppArgs[++i], nullptr, 10));
        } else {
            std::fprintf(stderr, "usage: consumer [--close-after MILLISECONDS]\n");
            return 2;
        }
    }
    try {
        TimedMessageBox box(L"This program was built against the installed korguibase package.",
                            uCloseAfterMs);
        const UQMessageBox::RESULT eResult = box.mf_show(nullptr);
        std::printf("caption: %s\n", toUtf8(box.mf_getShownCaption()).c_str());
        std::printf("result: %s\n", eResult == UQMessageBox::RESULT_YES  ? "yes"
                                    : eResult == UQMessageBox::RESULT_NO ? "no"
                                                                         : "cancel");
        return eResult == UQMessageBox::RESULT_YES ? 0 : 1;
    } catch (const UQErrno& error) {
        std::fprintf(stderr, "consumer: %s\n", toUtf8(error.mf_toString()).c_str());
        return 1;
    }
}
