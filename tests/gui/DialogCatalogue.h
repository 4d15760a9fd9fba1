// Every dialog template of the language modules, in one list: what kind of dialog it is, and how the
// library opens it. A template that the modules carry and this list lacks fails the accessibility tests,
// so a new dialog cannot be left out of them.
#pragma once

#include "TemplateRules.h"

#include <windows.h>

#include <functional>
#include <vector>

// What Esc does in a dialog.
enum class EscAnswer {
    Closes,
    // The box has nothing to cancel and its procedure ignores IDCANCEL by design (the single-button
    // message box, the information box); Enter closes it.
    Ignored,
    // The wizard asks whether to cancel; Alt+Y (Alt+J in German) answers yes.
    Asks,
};

struct CatalogueEntry {
    WORD wTemplate;
    const char* pszName;
    DialogKind kind;
    // The control that has the focus when the dialog opens.
    int nFirstFocus;
    EscAnswer esc;
    // Opens the dialog through the library's own call on this thread and answers when it has been closed;
    // the caller's DialogDriver drives it (a wizard frame's panel is its first and only panel).
    std::function<void()> open;
};

class DialogCatalogue {
public:
    static const std::vector<CatalogueEntry>& entries();
    // Runs the progress dialog (the bar dialog when _bBar) on this thread with a worker that reports one step
    // and ends when Cancel is pressed; the caller's DialogDriver drives it.
    static void runProgress(bool _bBar);
    // The entry of a template, or null.
    static const CatalogueEntry* find(WORD _wTemplate);
    // The string numbers of the wizard frame's buttons (Back, Next, Finish, Execute), whose access keys every
    // panel shares.
    static const std::vector<UINT>& frameButtonTexts();
};
