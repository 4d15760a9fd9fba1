// Every dialog template of the language modules, in one list: what kind of dialog it is, and how the
// library opens it. A template that the modules carry and this list lacks fails the accessibility tests,
// so a new dialog cannot be left out of them.
#pragma once

#include "TemplateRules.h"

#include <windows.h>

#include <vector>

struct CatalogueEntry {
    WORD wTemplate;
    const char* pszName;
    DialogKind kind;
};

class DialogCatalogue {
public:
    static const std::vector<CatalogueEntry>& entries();
    // The entry of a template, or null.
    static const CatalogueEntry* find(WORD _wTemplate);
    // The string numbers of the wizard frame's buttons (Back, Next, Finish, Execute), whose access keys every
    // panel shares.
    static const std::vector<UINT>& frameButtonTexts();
};
