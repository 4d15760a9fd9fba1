#include "interfaces/korbase.h"
#include "kor/KorReport.h"

#include <algorithm>
#include <iterator>

namespace {

struct CatalogueEntry {
    unsigned number;
    const wchar_t* text;
};

const CatalogueEntry kCatalogue[] = {
#include "catalogue_english.inc"
};

const CatalogueEntry* find(unsigned number) noexcept {
    // The source is kept in ascending order by its authors, but a linear fallback keeps it forgiving.
    const auto it = std::find_if(std::begin(kCatalogue), std::end(kCatalogue),
                                 [number](const CatalogueEntry& e) { return e.number == number; });
    return it != std::end(kCatalogue) ? it : nullptr;
}

} // namespace

UQString::UQString(unsigned number) {
    static const wchar_t* const _sFunction_ = L"UQString::UQString";
    const CatalogueEntry* e = find(number);
    if (e == nullptr) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::ItemNotFound), _sFunction_,
                             L"Message %u not found in the catalogue", number);
    }
    m_sText = e->text;
}

int UQString::mf_exists(unsigned number) noexcept {
    return find(number) != nullptr;
}
