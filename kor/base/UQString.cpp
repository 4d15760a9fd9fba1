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

} // namespace

UQString::UQString(unsigned _uNumber) {
    static const wchar_t* const _sFunction_ = L"UQString::UQString";
    const CatalogueEntry* e = find(_uNumber);
    if (e == nullptr) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::ItemNotFound), _sFunction_,
                             L"Message %u not found in the catalogue", _uNumber);
    }
    m_sText = e->text;
}

int UQString::mf_exists(unsigned _uNumber) noexcept {
    return find(_uNumber) != nullptr;
}
