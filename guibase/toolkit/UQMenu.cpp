#include "guibase/toolkit/UQMenu.h"

#include <vector>

#if defined(_WIN64)
static_assert(sizeof(MENUITEMINFOW) == 80, "MENUITEMINFOW of 64-bit Windows");
#endif

void UQMenu::mf_setItemEnabled(HMENU _hMenu, unsigned _uId, int _bEnabled) {
    EnableMenuItem(_hMenu, _uId, MF_BYCOMMAND | (_bEnabled ? MF_ENABLED : MF_GRAYED));
}

void UQMenu::mf_setItemChecked(HMENU _hMenu, unsigned _uId, int _bChecked) {
    MENUITEMINFOW info;
    ZeroMemory(&info, sizeof info);
    info.cbSize = sizeof info;
    info.fMask = MIIM_STATE;
    info.fState = _bChecked ? MFS_CHECKED : 0;
    SetMenuItemInfoW(_hMenu, _uId, FALSE, &info);
}

HMENU UQMenu::mf_getSubMenuByTitle(HMENU _hMenu, const CString& _sTitle) {
    for (UINT uPosition = 0;; ++uPosition) {
        MENUITEMINFOW info;
        ZeroMemory(&info, sizeof info);
        info.cbSize = sizeof info;
        info.fMask = MIIM_TYPE;
        // Past the last item the query fails.
        if (!GetMenuItemInfoW(_hMenu, uPosition, TRUE, &info))
            return nullptr;
        if (info.fType != MFT_STRING)
            continue;
        std::vector<wchar_t> text(static_cast<std::size_t>(info.cch) + 1, L'\0');
        info.dwTypeData = text.data();
        info.cch = info.cch + 1;
        if (!GetMenuItemInfoW(_hMenu, uPosition, TRUE, &info))
            continue;
        if (_sTitle.Compare(text.data()) != 0)
            continue;
        MENUITEMINFOW sub;
        ZeroMemory(&sub, sizeof sub);
        sub.cbSize = sizeof sub;
        sub.fMask = MIIM_SUBMENU;
        if (!GetMenuItemInfoW(_hMenu, uPosition, TRUE, &sub))
            return nullptr;
        return sub.hSubMenu;
    }
}
