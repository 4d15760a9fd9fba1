// The keyboard and screen-reader rules that a dialog template must keep, checked on the template alone
// (before any dialog is made from it). Each rule answers its own findings, one per control that breaks it.
#pragma once

#include "DialogTemplate.h"

#include <string>
#include <vector>

// How a dialog is used decides which rules apply to its buttons.
enum class DialogKind {
    // A modal dialog with buttons of its own: exactly one default button and a Cancel.
    Dialog,
    // A box that tells something and has no choice to cancel (the message boxes, whose buttons are chosen
    // when they are shown and whose Esc follows their button set, and the information box with one OK): one
    // default button, no Cancel required.
    Notice,
    // A panel hosted in the wizard frame: the frame owns the default button and Cancel, so the panel has
    // none, and its access keys are counted together with the frame's buttons.
    Panel,
};

enum class Rule {
    AccessKeys,
    LabelBeforeInput,
    TabStop,
    RadioGroup,
    DefaultButton,
    Cancel,
    InsideDialog,
    ReadingOrder,
    ShellFont,
    NoPrefix,
};

struct RuleFinding {
    int nControlId;
    Rule rule;
    std::string detail;
};

class TemplateRules {
public:
    // _hostTexts: texts whose access keys the dialog shares (a panel: the wizard's Back, Next, Finish and
    // Execute).
    TemplateRules(const DialogTemplate& _template, DialogKind _kind,
                  std::vector<std::wstring> _hostTexts = {});

    std::vector<RuleFinding> check(Rule _rule) const;
    std::vector<RuleFinding> checkAll() const;

    static const char* name(Rule _rule);
    static const std::vector<Rule>& all();
    // "<language> dialog <id> control <id>: <rule>: <detail>"
    static std::string line(const std::string& _sLanguage, int _nDialogId, const RuleFinding& _finding);
    // The access key of a text ('&' before it), upper case, or 0.
    static wchar_t accessKey(const std::wstring& _text);

private:
    std::vector<RuleFinding> mf_accessKeys() const;
    std::vector<RuleFinding> mf_labelBeforeInput() const;
    std::vector<RuleFinding> mf_tabStop() const;
    std::vector<RuleFinding> mf_radioGroup() const;
    std::vector<RuleFinding> mf_defaultButton() const;
    std::vector<RuleFinding> mf_cancel() const;
    std::vector<RuleFinding> mf_insideDialog() const;
    std::vector<RuleFinding> mf_readingOrder() const;
    std::vector<RuleFinding> mf_shellFont() const;
    std::vector<RuleFinding> mf_noPrefix() const;

    const DialogTemplate& m_template;
    DialogKind m_kind;
    std::vector<std::wstring> m_hostTexts;
};
