#include "guibase/toolkit/UQDpiIcons.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQDpi.h"

#include <commctrl.h>

#include <map>
#include <tuple>
#include <vector>

namespace {

const wchar_t* const KEEPER_PROPERTY = L"UQDpiIcons.keeper";
const UINT_PTR KEEPER_SUBCLASS = 1;

// An icon's place in the cache: module, resource and size at 96 DPI.
typedef std::tuple<HMODULE, WORD, int> IconKey;

struct ShownIcon {
    HWND hTarget;
    HMODULE hModule;
    WORD wIconId;
    int nSize96;
};

struct ImageList {
    HWND hList;
    std::vector<std::pair<HMODULE, WORD>> icons;
};

void destroyAll(std::map<IconKey, HICON>& _icons) noexcept {
    for (auto& entry : _icons)
        if (entry.second != nullptr)
            DestroyIcon(entry.second);
    _icons.clear();
}

void showOn(HWND _hTarget, HICON _hIcon) noexcept {
    // A dialog takes the first, a static control the second.
    SendMessageW(_hTarget, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(_hIcon));
    SendMessageW(_hTarget, STM_SETICON, reinterpret_cast<WPARAM>(_hIcon), 0);
}

HIMAGELIST makeImageList(UINT _uDpi) noexcept {
    const int nSize = UQDpi::mf_getIconSize(16, _uDpi);
    return ImageList_Create(nSize, nSize, ILC_MASK | ILC_COLOR16, 0, 1);
}

int addTo(HIMAGELIST _hList, HMODULE _hModule, WORD _wIconId) noexcept {
    int cx = 0;
    int cy = 0;
    if (!ImageList_GetIconSize(_hList, &cx, &cy))
        return -1;
    HICON hIcon = UQDpi::mf_loadIcon(_hModule, _wIconId, cx);
    if (hIcon == nullptr)
        return -1;
    // The image list copies the icon's images.
    const int nIndex = ImageList_ReplaceIcon(_hList, -1, hIcon);
    DestroyIcon(hIcon);
    return nIndex;
}

// What one top-level window keeps: the DPI its icons are for, the icons, and who shows them.
class Keeper {
public:
    explicit Keeper(UINT _uDpi) : m_uDpi(_uDpi) {}
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;
    ~Keeper() { destroyAll(m_icons); }

    UINT dpi() const noexcept { return m_uDpi; }

    HICON icon(HMODULE _hModule, WORD _wIconId, int _nSize96) {
        const IconKey key(_hModule, _wIconId, _nSize96);
        const auto found = m_icons.find(key);
        if (found != m_icons.end())
            return found->second;
        HICON hIcon = UQDpi::mf_loadIcon(_hModule, _wIconId, UQDpi::mf_getIconSize(_nSize96, m_uDpi));
        if (hIcon != nullptr) {
            try {
                m_icons.emplace(key, hIcon);
            } catch (...) {
                DestroyIcon(hIcon);
                throw;
            }
        }
        return hIcon;
    }

    void show(HWND _hTarget, HMODULE _hModule, WORD _wIconId, int _nSize96) {
        for (ShownIcon& shown : m_shown)
            if (shown.hTarget == _hTarget) {
                shown = {_hTarget, _hModule, _wIconId, _nSize96};
                return;
            }
        m_shown.push_back({_hTarget, _hModule, _wIconId, _nSize96});
    }

    void forget(HWND _hTarget) noexcept {
        for (auto it = m_shown.begin(); it != m_shown.end(); ++it)
            if (it->hTarget == _hTarget) {
                m_shown.erase(it);
                return;
            }
    }

    ImageList* imageList(HWND _hList) noexcept {
        for (ImageList& list : m_lists)
            if (list.hList == _hList)
                return &list;
        return nullptr;
    }

    void keepImageList(HWND _hList) {
        ImageList* pList = imageList(_hList);
        if (pList != nullptr)
            pList->icons.clear();
        else
            m_lists.push_back({_hList, {}});
    }

    void forgetImageList(HWND _hList) noexcept {
        for (auto it = m_lists.begin(); it != m_lists.end(); ++it)
            if (it->hList == _hList) {
                m_lists.erase(it);
                return;
            }
    }

    // Every kept icon again at _uDpi; the old ones go once nothing shows them any longer.
    void changeDpi(HWND _hRoot, UINT _uDpi) {
        if (_uDpi == 0 || _uDpi == m_uDpi)
            return;
        std::map<IconKey, HICON> old;
        old.swap(m_icons);
        m_uDpi = _uDpi;
        // A control destroyed before its window (or a handle used again by another window) is dropped.
        auto isOurs = [_hRoot](HWND _hWnd) {
            return IsWindow(_hWnd) && GetAncestor(_hWnd, GA_ROOT) == _hRoot;
        };
        for (auto it = m_shown.begin(); it != m_shown.end();) {
            if (!isOurs(it->hTarget)) {
                it = m_shown.erase(it);
                continue;
            }
            showOn(it->hTarget, icon(it->hModule, it->wIconId, it->nSize96));
            ++it;
        }
        for (auto it = m_lists.begin(); it != m_lists.end();) {
            HIMAGELIST hOld =
                isOurs(it->hList)
                    ? reinterpret_cast<HIMAGELIST>(SendMessageW(it->hList, LVM_GETIMAGELIST, LVSIL_SMALL, 0))
                    : nullptr;
            if (hOld == nullptr) {
                it = m_lists.erase(it);
                continue;
            }
            HIMAGELIST hNew = makeImageList(m_uDpi);
            if (hNew != nullptr) {
                for (const auto& image : it->icons)
                    addTo(hNew, image.first, image.second);
                SendMessageW(it->hList, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(hNew));
                ImageList_Destroy(hOld);
                InvalidateRect(it->hList, nullptr, TRUE);
            }
            ++it;
        }
        destroyAll(old);
    }

private:
    UINT m_uDpi;
    std::map<IconKey, HICON> m_icons;
    std::vector<ShownIcon> m_shown;
    std::vector<ImageList> m_lists;
};

LRESULT CALLBACK keeperProcedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam, UINT_PTR,
                                 DWORD_PTR _dwKeeper) noexcept {
    static const wchar_t* const _sFunction_ = L"UQDpiIcons::keeperProcedure";
    Keeper* pKeeper = reinterpret_cast<Keeper*>(_dwKeeper);
    if (_uMsg == WM_NCDESTROY) {
        // The controls are gone by now: nothing shows the icons any longer.
        RemoveWindowSubclass(_hWnd, keeperProcedure, KEEPER_SUBCLASS);
        RemovePropW(_hWnd, KEEPER_PROPERTY);
        delete pKeeper;
        return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    }
    if (_uMsg != WM_DPICHANGED)
        return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    const LRESULT lResult = DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    try {
        pKeeper->changeDpi(_hWnd, LOWORD(_wParam));
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure choosing icons for %u DPI",
                         static_cast<unsigned>(LOWORD(_wParam)));
    }
    return lResult;
}

Keeper* existingKeeper(HWND _hRoot) noexcept {
    return _hRoot != nullptr ? static_cast<Keeper*>(GetPropW(_hRoot, KEEPER_PROPERTY)) : nullptr;
}

// The keeper of _hWnd's top-level window, made on first use; null without a window or memory.
Keeper* keeperOf(HWND _hWnd) {
    const HWND hRoot = _hWnd != nullptr ? GetAncestor(_hWnd, GA_ROOT) : nullptr;
    if (hRoot == nullptr)
        return nullptr;
    Keeper* pKeeper = existingKeeper(hRoot);
    if (pKeeper != nullptr)
        return pKeeper;
    pKeeper = new Keeper(UQDpi::mf_getWindowDpi(hRoot));
    if (!SetPropW(hRoot, KEEPER_PROPERTY, pKeeper)) {
        delete pKeeper;
        return nullptr;
    }
    if (!SetWindowSubclass(hRoot, keeperProcedure, KEEPER_SUBCLASS, reinterpret_cast<DWORD_PTR>(pKeeper))) {
        RemovePropW(hRoot, KEEPER_PROPERTY);
        delete pKeeper;
        return nullptr;
    }
    return pKeeper;
}

} // namespace

int UQDpiIcons::mf_show(HWND _hTarget, HMODULE _hModule, WORD _wIconId, int _nSize96) noexcept {
    static const wchar_t* const _sFunction_ = L"UQDpiIcons::mf_show";
    if (_hTarget == nullptr)
        return 0;
    try {
        Keeper* pKeeper = keeperOf(_hTarget);
        HICON hIcon = pKeeper != nullptr ? pKeeper->icon(_hModule, _wIconId, _nSize96) : nullptr;
        if (hIcon == nullptr) {
            if (pKeeper != nullptr)
                pKeeper->forget(_hTarget);
            showOn(_hTarget, nullptr);
            return 0;
        }
        pKeeper->show(_hTarget, _hModule, _wIconId, _nSize96);
        showOn(_hTarget, hIcon);
        return 1;
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure showing icon %u", _wIconId);
        return 0;
    }
}

void UQDpiIcons::mf_clear(HWND _hTarget) noexcept {
    if (_hTarget == nullptr)
        return;
    Keeper* pKeeper = existingKeeper(GetAncestor(_hTarget, GA_ROOT));
    if (pKeeper != nullptr)
        pKeeper->forget(_hTarget);
    showOn(_hTarget, nullptr);
}

UINT UQDpiIcons::mf_getDpi(HWND _hWnd) noexcept {
    const HWND hRoot = _hWnd != nullptr ? GetAncestor(_hWnd, GA_ROOT) : nullptr;
    const Keeper* pKeeper = existingKeeper(hRoot);
    return pKeeper != nullptr ? pKeeper->dpi() : UQDpi::mf_getWindowDpi(hRoot != nullptr ? hRoot : _hWnd);
}

int UQDpiIcons::mf_createImageList(HWND _hList) noexcept {
    static const wchar_t* const _sFunction_ = L"UQDpiIcons::mf_createImageList";
    if (_hList == nullptr)
        return 0;
    try {
        Keeper* pKeeper = keeperOf(_hList);
        HIMAGELIST hList =
            makeImageList(pKeeper != nullptr ? pKeeper->dpi() : UQDpi::mf_getWindowDpi(_hList));
        if (hList == nullptr)
            return 0;
        if (pKeeper != nullptr)
            pKeeper->keepImageList(_hList);
        SendMessageW(_hList, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(hList));
        return 1;
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure making an image list");
        return 0;
    }
}

int UQDpiIcons::mf_addImage(HWND _hList, HMODULE _hModule, WORD _wIconId) noexcept {
    static const wchar_t* const _sFunction_ = L"UQDpiIcons::mf_addImage";
    HIMAGELIST hList =
        _hList != nullptr
            ? reinterpret_cast<HIMAGELIST>(SendMessageW(_hList, LVM_GETIMAGELIST, LVSIL_SMALL, 0))
            : nullptr;
    if (hList == nullptr)
        return -1;
    const int nIndex = addTo(hList, _hModule, _wIconId);
    if (nIndex < 0)
        return -1;
    try {
        Keeper* pKeeper = existingKeeper(GetAncestor(_hList, GA_ROOT));
        ImageList* pKept = pKeeper != nullptr ? pKeeper->imageList(_hList) : nullptr;
        if (pKept != nullptr)
            pKept->icons.emplace_back(_hModule, _wIconId);
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure keeping icon %u for a new DPI", _wIconId);
    }
    return nIndex;
}

void UQDpiIcons::mf_forgetImageList(HWND _hList) noexcept {
    if (_hList == nullptr)
        return;
    Keeper* pKeeper = existingKeeper(GetAncestor(_hList, GA_ROOT));
    if (pKeeper != nullptr)
        pKeeper->forgetImageList(_hList);
}
