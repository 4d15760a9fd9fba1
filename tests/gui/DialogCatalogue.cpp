#include "DialogCatalogue.h"

#include "PanelsTestSupport.h"
#include "ProgressTestSupport.h"
#include "WizardTestSupport.h"

#include "guibase/panels/UQSearchUserDialog.h"
#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQCaptionMessageBox.h"
#include "guibase/toolkit/UQHelpDialog.h"
#include "guibase/toolkit/UQInformationBox.h"
#include "guibase/toolkit/UQLineEditor.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "guibase/wizard/UQProgressBarDialog.h"
#include "guibase/wizard/UQProgressDialog.h"
#include "korlang_ids.h"
#include "support/ScratchFile.h"

namespace {

// The frame's Next (or Finish) button, where the focus goes on a panel without fields.
const int FRAME_NEXT = wizardtest::ITEM_NEXT;

void showMessageBox(UQSeverity _severity, UQMessageBox::BUTTONS _buttons, unsigned long _ulDefault) {
    UQMessageBox box(L"Migrate 12 files from C:\\R&D?", _severity, _buttons, L"Migration");
    box.mf_show(nullptr, _ulDefault);
}

void searchUsers() {
    registrytest::RegistrySandbox sandbox;
    ScratchFile directory("access-directory.txt", "controller\tDC01\tDC01\tprimary\n"
                                                  "user\tS-1-5-21-7-8-9-1001\tabc\tAlice Brown\n");
    panelstest::UseDirectoryFile use(directory.mf_getPath());
    UQSearchUserDialog dialog;
    dialog.mf_show(nullptr);
}

// A wizard whose only panel is _wTemplate; the frame comes from the test program.
void runWizard(WORD _wTemplate, bool _bExecute) {
    wizardtest::TestWizard wizard;
    if (_bExecute)
        wizard.addRun();
    else
        wizard.add(_wTemplate);
    wizard.mf_create(GetModuleHandleW(nullptr), nullptr);
}

std::function<void()> wizardWith(WORD _wTemplate, bool _bExecute = false) {
    return [_wTemplate, _bExecute] { runWizard(_wTemplate, _bExecute); };
}

} // namespace

const std::vector<CatalogueEntry>& DialogCatalogue::entries() {
    static const std::vector<CatalogueEntry> list = {
        {IDD_MESSAGE_BOX, "message box", DialogKind::Notice, IDC_MESSAGE_BUTTON2, EscAnswer::Ignored,
         [] { showMessageBox(UQSeverity(UVSeverity::GREEN), UQMessageBox::BUTTONS_SINGLE, 2); }},
        {IDD_MESSAGE_BOX_WARNING, "warning message box", DialogKind::Notice, IDC_MESSAGE_BUTTON1,
         EscAnswer::Closes,
         [] { showMessageBox(UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO, 1); }},
        {IDD_CAPTION_MESSAGE_BOX, "caption message box", DialogKind::Notice, IDC_MESSAGE_BUTTON2,
         EscAnswer::Closes,
         [] {
             UQCaptionMessageBox box(L"Files of C:\\R&D are migrated.", UQMessageBox::BUTTONS_YES_NO, L"R&D",
                                     L"Migration & recall");
             box.mf_show(nullptr, 2);
         }},
        {IDD_INFORMATION_BOX, "information box", DialogKind::Notice, IDC_INFORMATION_CHECK,
         EscAnswer::Ignored,
         [] {
             registrytest::RegistrySandbox sandbox;
             UQInformationBox box(L"Tip", L"Stub files of C:\\R&D", L"are recalled when opened.",
                                  L"AccessTip");
             box.mf_show(nullptr);
         }},
        {IDD_HELP_DIALOG, "help dialog", DialogKind::Dialog, IDCANCEL, EscAnswer::Closes,
         [] {
             UQHelpDialog help(L"Help", L"Type a pattern such as C:\\R&D\\*.");
             help.mf_show(nullptr);
         }},
        {IDD_LINE_EDITOR, "line editor", DialogKind::Dialog, IDC_LINE_EDIT, EscAnswer::Closes,
         [] {
             UQLineEditor editor(L"Rename", L"&Name of the saved search:");
             editor.mf_setText(L"R&D 2024", 1);
             editor.mf_show(nullptr);
         }},
        {IDD_PROGRESS, "progress dialog", DialogKind::Dialog, IDCANCEL, EscAnswer::Closes,
         [] { DialogCatalogue::runProgress(false); }},
        {IDD_PROGRESS_BAR, "progress bar dialog", DialogKind::Dialog, IDC_PROGRESS_CANCEL, EscAnswer::Closes,
         [] { DialogCatalogue::runProgress(true); }},
        {IDD_SEARCH_USER, "user search", DialogKind::Dialog, IDC_SEARCH_USER_AUTHORITY, EscAnswer::Closes,
         searchUsers},
        {IDD_WIZARD_PANEL_WELCOME, "wizard welcome panel", DialogKind::Panel, FRAME_NEXT, EscAnswer::Asks,
         wizardWith(IDD_WIZARD_PANEL_WELCOME)},
        {IDD_WIZARD_PANEL_NAME, "wizard name panel", DialogKind::Panel, IDC_WIZARD_PANEL_EDIT,
         EscAnswer::Asks, wizardWith(IDD_WIZARD_PANEL_NAME)},
        {IDD_WIZARD_PANEL_RUN, "wizard execute panel", DialogKind::Panel, FRAME_NEXT, EscAnswer::Asks,
         wizardWith(IDD_WIZARD_PANEL_RUN, true)},
        {IDD_WIZARD_PANEL_DONE, "wizard last panel", DialogKind::Panel, FRAME_NEXT, EscAnswer::Asks,
         wizardWith(IDD_WIZARD_PANEL_DONE)},
        {IDD_CLIENT_PANEL_FOLDER, "migration folder panel", DialogKind::Panel, IDC_CLIENT_FOLDER_EDIT,
         EscAnswer::Asks, wizardWith(IDD_CLIENT_PANEL_FOLDER)},
        {IDD_CLIENT_PANEL_CLASS, "migration class panel", DialogKind::Panel, IDC_CLIENT_CLASS_COMBO,
         EscAnswer::Asks, wizardWith(IDD_CLIENT_PANEL_CLASS)},
        {IDD_CLIENT_PANEL_BACKUP, "migration backup panel", DialogKind::Panel, IDC_CLIENT_BACKUP_CHECK,
         EscAnswer::Asks, wizardWith(IDD_CLIENT_PANEL_BACKUP)},
        {IDD_CLIENT_PANEL_RUN, "migration run panel", DialogKind::Panel, IDC_CLIENT_RUN_LIST, EscAnswer::Asks,
         wizardWith(IDD_CLIENT_PANEL_RUN)},
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

// The worker ends when the dialog's Cancel has tripped its switch (or after the wait's limit).
void DialogCatalogue::runProgress(bool _bBar) {
    progresstest::ScriptedWorker worker([](progresstest::ScriptedWorker& _worker) {
        progresstest::publish(UQProgressEvent::ACTION_PROGRESS, L"Migrating C:\\R&D\\plan.txt", 1, 2, 50,
                              100);
        _worker.waitCancelled();
        progresstest::publish(UQProgressEvent::ACTION_END);
    });
    if (_bBar) {
        UQProgressBarDialog dialog(L"Retrieving files", worker);
        dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS_BAR);
    } else {
        UQProgressDialog dialog(L"Migrating files", worker);
        dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS);
    }
}
