#include "DialogCatalogue.h"

#include "korlang_ids.h"

const std::vector<CatalogueEntry>& DialogCatalogue::entries() {
    static const std::vector<CatalogueEntry> list = {
        {IDD_MESSAGE_BOX, "message box", DialogKind::Notice},
        {IDD_MESSAGE_BOX_WARNING, "warning message box", DialogKind::Notice},
        {IDD_CAPTION_MESSAGE_BOX, "caption message box", DialogKind::Notice},
        {IDD_INFORMATION_BOX, "information box", DialogKind::Notice},
        {IDD_HELP_DIALOG, "help dialog", DialogKind::Dialog},
        {IDD_LINE_EDITOR, "line editor", DialogKind::Dialog},
        {IDD_PROGRESS, "progress dialog", DialogKind::Dialog},
        {IDD_PROGRESS_BAR, "progress bar dialog", DialogKind::Dialog},
        {IDD_SEARCH_USER, "user search", DialogKind::Dialog},
        {IDD_WIZARD_PANEL_WELCOME, "wizard welcome panel", DialogKind::Panel},
        {IDD_WIZARD_PANEL_NAME, "wizard name panel", DialogKind::Panel},
        {IDD_WIZARD_PANEL_RUN, "wizard execute panel", DialogKind::Panel},
        {IDD_WIZARD_PANEL_DONE, "wizard last panel", DialogKind::Panel},
        {IDD_CLIENT_PANEL_FOLDER, "migration folder panel", DialogKind::Panel},
        {IDD_CLIENT_PANEL_CLASS, "migration class panel", DialogKind::Panel},
        {IDD_CLIENT_PANEL_BACKUP, "migration backup panel", DialogKind::Panel},
        {IDD_CLIENT_PANEL_RUN, "migration run panel", DialogKind::Panel},
    };
    return list;
}

const CatalogueEntry* DialogCatalogue::find(WORD _wTemplate) {
    for (const CatalogueEntry& entry : entries())
        if (entry.wTemplate == _wTemplate)
            return &entry;
    return nullptr;
}

const std::vector<UINT>& DialogCatalogue::frameButtonTexts() {
    // < Back, Next >, Next > (after an execute panel), Finish, Execute.
    static const std::vector<UINT> texts = {3880, 3066, 933, 932, 3095};
    return texts;
}
