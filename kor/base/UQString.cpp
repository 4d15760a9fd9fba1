#include "interfaces/korbase.h"
#include "kor/KorReport.h"

#include <algorithm>
#include <iterator>

namespace {

struct CatalogueEntry {
    unsigned number;
    const wchar_t* text;
};

const CatalogueEntry CATALOGUE[] = {
#include "catalogue_english.inc"
};

const CatalogueEntry* find(unsigned _uNumber) noexcept {
    // The source is kept in ascending order by its authors, but a linear fallback keeps it forgiving.
    const auto it = std::find_if(std::begin(CATALOGUE), std::end(CATALOGUE),
                                 [_uNumber](const CatalogueEntry& _e) { return _e.number == _uNumber; });
    return it != std::end(CATALOGUE) ? it : nullptr;
}

#if defined(_WIN32)
// The text in the user's language module, which holds the same numbers as the catalogue; null when there
// is none. Loading the module may itself need a text (its failure is reported), so a nested look-up takes
// the catalogue's.
const wchar_t* translated(unsigned _uNumber, int& _rnLength) noexcept {
    thread_local bool t_bLooking = false;
    if (t_bLooking)
        return nullptr;
    t_bLooking = true;
    HMODULE hModule = UQLanguage::mf_getUserLanguageHandle();
    t_bLooking = false;
    if (hModule == nullptr || _uNumber > 0xFFFF)
        return nullptr;
    const wchar_t* pszText = nullptr;
    // With a zero buffer size LoadStringW points at the text in the module.
    _rnLength = LoadStringW(hModule, _uNumber, reinterpret_cast<LPWSTR>(&pszText), 0);
    return _rnLength > 0 ? pszText : nullptr;
}
#endif

} // namespace

UQString::UQString(unsigned _uNumber) {
    static const wchar_t* const _sFunction_ = L"UQString::UQString";
    const CatalogueEntry* e = find(_uNumber);
    if (e == nullptr) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::ItemNotFound), _sFunction_,
                             L"Message %u not found in the catalogue", _uNumber);
    }
#if defined(_WIN32)
    int nLength = 0;
    if (const wchar_t* pszText = translated(_uNumber, nLength)) {
        m_sText = CString(pszText, nLength);
        return;
    }
#endif
    m_sText = e->text;
}

int UQString::mf_exists(unsigned _uNumber) noexcept {
    return find(_uNumber) != nullptr;
}
