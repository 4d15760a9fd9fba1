#pragma once

#include "interfaces/korbase.h"

// Menus: enabling and checking items by command id, and finding a submenu by its title.
class KORGUIBASE_API UQMenu {
public:
    UQMenu() noexcept = default;
    UQMenu(const UQMenu&) noexcept = default;
    UQMenu& operator=(const UQMenu&) noexcept = default;
    ~UQMenu() = default;

    // Enabled, or grayed.
    static void mf_setItemEnabled(HMENU _hMenu, unsigned _uId, int _bEnabled);
    // Replaces the item's whole state: checking or unchecking also clears a grayed or default state.
    static void mf_setItemChecked(HMENU _hMenu, unsigned _uId, int _bChecked);
    // The submenu of the first top-level item whose text is exactly _sTitle (case-sensitive); null when no
    // item matches, or the matching item is a plain command.
    static HMENU mf_getSubMenuByTitle(HMENU _hMenu, const CString& _sTitle);
};
