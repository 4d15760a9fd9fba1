#include "TemplateRules.h"

#include <commctrl.h>

#include <algorithm>
#include <cwctype>
#include <map>
#include <utility>

namespace {

enum class Sort {
    TextStatic,
    OtherStatic, // icons, bitmaps, frames and lines
    GroupBox,
    PushButton,
    DefaultButton,
    CheckBox,
    Radio,
    Edit,
    ReadOnlyEdit,
    Field, // combo boxes, list views, list boxes, tree views, date-time pickers
    OtherInteractive,
    Indicator, // progress bars: not reachable, but read out under the name of the label before them
    Passive,   // up-down buddies and the like
};

bool sameClass(const std::wstring& _className, const wchar_t* _pszName) {
    return lstrcmpiW(_className.c_str(), _pszName) == 0;
}

Sort sortOf(const TemplateControl& _control) {
    const DWORD dwStyle = _control.dwStyle;
    if (sameClass(_control.className, L"Static")) {
        switch (dwStyle & SS_TYPEMASK) {
        case SS_LEFT:
        case SS_CENTER:
        case SS_RIGHT:
        case SS_SIMPLE:
        case SS_LEFTNOWORDWRAP:
            return Sort::TextStatic;
        default:
            return Sort::OtherStatic;
        }
    }
    if (sameClass(_control.className, L"Button")) {
        switch (dwStyle & BS_TYPEMASK) {
        case BS_DEFPUSHBUTTON:
        case BS_DEFSPLITBUTTON:
        case BS_DEFCOMMANDLINK:
            return Sort::DefaultButton;
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_3STATE:
        case BS_AUTO3STATE:
            return Sort::CheckBox;
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            return Sort::Radio;
        case BS_GROUPBOX:
            return Sort::GroupBox;
        default:
            return Sort::PushButton;
        }
    }
    if (sameClass(_control.className, L"Edit"))
        return (dwStyle & ES_READONLY) != 0 ? Sort::ReadOnlyEdit : Sort::Edit;
    for (const wchar_t* pszField : {L"ComboBox", WC_COMBOBOXEXW, WC_LISTVIEWW, L"ListBox", WC_TREEVIEWW,
                                    DATETIMEPICK_CLASSW, MONTHCAL_CLASSW}) {
        if (sameClass(_control.className, pszField))
            return Sort::Field;
    }
    if (sameClass(_control.className, PROGRESS_CLASSW))
        return Sort::Indicator;
    for (const wchar_t* pszOther : {TRACKBAR_CLASSW, WC_TABCONTROLW, L"SysLink"})
        if (sameClass(_control.className, pszOther))
            return Sort::OtherInteractive;
    return Sort::Passive;
}

bool isButton(Sort _sort) {
    return _sort == Sort::PushButton || _sort == Sort::DefaultButton;
}

bool isInteractive(Sort _sort) {
    return isButton(_sort) || _sort == Sort::CheckBox || _sort == Sort::Radio || _sort == Sort::Edit ||
           _sort == Sort::ReadOnlyEdit || _sort == Sort::Field || _sort == Sort::OtherInteractive;
}

// An input, or a bar a reader announces, is named by the label before it.
bool isInput(Sort _sort) {
    return _sort == Sort::Edit || _sort == Sort::Field || _sort == Sort::Indicator;
}

bool isVisible(const TemplateControl& _control) {
    return (_control.dwStyle & WS_VISIBLE) != 0;
}

bool showsData(const TemplateControl& _control) {
    return (_control.dwStyle & SS_NOPREFIX) != 0;
}

std::string utf8(const std::wstring& _text) {
    if (_text.empty())
        return std::string();
    const int nBytes = WideCharToMultiByte(CP_UTF8, 0, _text.c_str(), static_cast<int>(_text.size()), nullptr,
                                           0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(nBytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, _text.c_str(), static_cast<int>(_text.size()), &text[0], nBytes, nullptr,
                        nullptr);
    return text;
}

std::string quoted(const std::wstring& _text) {
    return "\"" + utf8(_text) + "\"";
}

// The index of the control that names input _uIndex: the nearest visible text static before it, passing
// only controls that a user cannot reach (icons, lines, group boxes, hidden controls); npos when a reachable
// control or nothing comes first.
std::size_t labelIndex(const std::vector<TemplateControl>& _controls, std::size_t _uIndex) {
    for (std::size_t i = _uIndex; i-- > 0;) {
        const TemplateControl& control = _controls[i];
        const Sort sort = sortOf(control);
        if (!isVisible(control) || sort == Sort::OtherStatic || sort == Sort::GroupBox ||
            sort == Sort::Passive || sort == Sort::Indicator)
            continue;
        return sort == Sort::TextStatic ? i : std::string::npos;
    }
    return std::string::npos;
}

// Whether the static _uIndex names an input: the next reachable control after it is one.
bool labelsAnInput(const std::vector<TemplateControl>& _controls, std::size_t _uIndex) {
    for (std::size_t i = _uIndex + 1; i < _controls.size(); ++i) {
        const TemplateControl& control = _controls[i];
        const Sort sort = sortOf(control);
        if (!isVisible(control) || sort == Sort::OtherStatic || sort == Sort::GroupBox ||
            sort == Sort::Passive)
            continue;
        return isInput(sort);
    }
    return false;
}

// A combo box's height in its template is that of its drop-down list; the box itself is one line.
int shownHeight(const TemplateControl& _control) {
    return sameClass(_control.className, L"ComboBox") ? std::min<int>(_control.cy, 14) : _control.cy;
}

bool isCancel(const TemplateControl& _control) {
    // 142 is the library's second cancel id (the progress bar dialog and the user search dialog answer it
    // as they answer IDCANCEL).
    return isButton(sortOf(_control)) && (_control.nId == IDCANCEL || _control.nId == 142);
}

} // namespace

TemplateRules::TemplateRules(const DialogTemplate& _template, DialogKind _kind,
                             std::vector<std::wstring> _hostTexts)
    : m_template(_template), m_kind(_kind), m_hostTexts(std::move(_hostTexts)) {}

const char* TemplateRules::name(Rule _rule) {
    switch (_rule) {
    case Rule::AccessKeys:
        return "access keys";
    case Rule::LabelBeforeInput:
        return "label before input";
    case Rule::TabStop:
        return "tab stop";
    case Rule::RadioGroup:
        return "radio group";
    case Rule::DefaultButton:
        return "default button";
    case Rule::Cancel:
        return "cancel";
    case Rule::InsideDialog:
        return "inside the dialog";
    case Rule::ReadingOrder:
        return "reading order";
    case Rule::ShellFont:
        return "shell font";
    case Rule::NoPrefix:
        return "no prefix";
    }
    return "?";
}

const std::vector<Rule>& TemplateRules::all() {
    static const std::vector<Rule> rules = {
        Rule::AccessKeys, Rule::LabelBeforeInput, Rule::TabStop,      Rule::RadioGroup, Rule::DefaultButton,
        Rule::Cancel,     Rule::InsideDialog,     Rule::ReadingOrder, Rule::ShellFont,  Rule::NoPrefix};
    return rules;
}

std::string TemplateRules::line(const std::string& _sLanguage, int _nDialogId, const RuleFinding& _finding) {
    return _sLanguage + " dialog " + std::to_string(_nDialogId) + " control " +
           std::to_string(_finding.nControlId) + ": " + name(_finding.rule) + ": " + _finding.detail;
}

wchar_t TemplateRules::accessKey(const std::wstring& _text) {
    for (std::size_t i = 0; i + 1 < _text.size(); ++i) {
        if (_text[i] != L'&')
            continue;
        if (_text[i + 1] != L'&')
            return static_cast<wchar_t>(std::towupper(_text[i + 1]));
        ++i; // "&&" is a literal '&'
    }
    return 0;
}

std::vector<RuleFinding> TemplateRules::check(Rule _rule) const {
    switch (_rule) {
    case Rule::AccessKeys:
        return mf_accessKeys();
    case Rule::LabelBeforeInput:
        return mf_labelBeforeInput();
    case Rule::TabStop:
        return mf_tabStop();
    case Rule::RadioGroup:
        return mf_radioGroup();
    case Rule::DefaultButton:
        return mf_defaultButton();
    case Rule::Cancel:
        return mf_cancel();
    case Rule::InsideDialog:
        return mf_insideDialog();
    case Rule::ReadingOrder:
        return mf_readingOrder();
    case Rule::ShellFont:
        return mf_shellFont();
    case Rule::NoPrefix:
        return mf_noPrefix();
    }
    return {};
}

std::vector<RuleFinding> TemplateRules::checkAll() const {
    std::vector<RuleFinding> findings;
    for (Rule rule : all()) {
        std::vector<RuleFinding> found = check(rule);
        findings.insert(findings.end(), found.begin(), found.end());
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_accessKeys() const {
    std::vector<RuleFinding> findings;
    // Key -> who has it first: a host text (the wizard's buttons come first) or a control.
    std::map<wchar_t, std::string> owners;
    for (const std::wstring& hostText : m_hostTexts) {
        const wchar_t key = accessKey(hostText);
        if (key != 0 && owners.count(key) == 0)
            owners[key] = "the frame's button " + quoted(hostText);
    }
    for (const TemplateControl& control : m_template.controls) {
        const Sort sort = sortOf(control);
        if (sort == Sort::TextStatic && showsData(control))
            continue;
        const wchar_t key = accessKey(control.text);
        if (key == 0)
            continue;
        const auto owner = owners.find(key);
        if (owner != owners.end()) {
            findings.push_back(
                {control.nId, Rule::AccessKeys, quoted(control.text) + " has the key of " + owner->second});
            continue;
        }
        owners[key] = "control " + std::to_string(control.nId) + " " + quoted(control.text);
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_labelBeforeInput() const {
    std::vector<RuleFinding> findings;
    const std::vector<TemplateControl>& controls = m_template.controls;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        if (!isInput(sortOf(controls[i])))
            continue;
        const std::size_t uLabel = labelIndex(controls, i);
        if (uLabel == std::string::npos)
            findings.push_back({controls[i].nId, Rule::LabelBeforeInput,
                                "no text static comes right before it in tab order"});
        else if (showsData(controls[uLabel]))
            findings.push_back({controls[i].nId, Rule::LabelBeforeInput,
                                "the static before it (" + std::to_string(controls[uLabel].nId) +
                                    ") shows data (SS_NOPREFIX), not a label"});
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_tabStop() const {
    std::vector<RuleFinding> findings;
    const std::vector<TemplateControl>& controls = m_template.controls;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const TemplateControl& control = controls[i];
        const Sort sort = sortOf(control);
        const bool bTabStop = (control.dwStyle & WS_TABSTOP) != 0;
        // In a radio group only the first button is a tab stop; the arrows move within the group.
        const bool bLaterRadio = sort == Sort::Radio && i > 0 && sortOf(controls[i - 1]) == Sort::Radio &&
                                 (control.dwStyle & WS_GROUP) == 0;
        // A read-only edit is a text to read (the help text): a tab stop or not, as its dialog wants.
        if (sort == Sort::ReadOnlyEdit)
            continue;
        if (isInteractive(sort) && !bLaterRadio && !bTabStop)
            findings.push_back({control.nId, Rule::TabStop, "interactive control without WS_TABSTOP"});
        else if (bLaterRadio && bTabStop)
            findings.push_back({control.nId, Rule::TabStop,
                                "a radio button after the first of its group has "
                                "WS_TABSTOP"});
        else if (!isInteractive(sort) && bTabStop)
            findings.push_back({control.nId, Rule::TabStop, "a control that takes no input has WS_TABSTOP"});
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_radioGroup() const {
    std::vector<RuleFinding> findings;
    const std::vector<TemplateControl>& controls = m_template.controls;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const bool bRadio = sortOf(controls[i]) == Sort::Radio;
        const bool bAfterRadio = i > 0 && sortOf(controls[i - 1]) == Sort::Radio;
        const bool bGroup = (controls[i].dwStyle & WS_GROUP) != 0;
        if (bRadio && !bAfterRadio && !bGroup)
            findings.push_back({controls[i].nId, Rule::RadioGroup, "the first radio button lacks WS_GROUP"});
        else if (!bRadio && bAfterRadio && !bGroup)
            findings.push_back({controls[i].nId, Rule::RadioGroup,
                                "the control after a radio group lacks WS_GROUP, so the group does not end"});
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_defaultButton() const {
    std::vector<RuleFinding> findings;
    std::vector<int> defaults;
    for (const TemplateControl& control : m_template.controls)
        if (sortOf(control) == Sort::DefaultButton)
            defaults.push_back(control.nId);
    if (m_kind == DialogKind::Panel) {
        for (int nId : defaults)
            findings.push_back(
                {nId, Rule::DefaultButton, "a panel has a default button (the frame's Next is)"});
    } else if (defaults.empty()) {
        findings.push_back({0, Rule::DefaultButton, "no default button"});
    } else {
        for (std::size_t i = 1; i < defaults.size(); ++i)
            findings.push_back({defaults[i], Rule::DefaultButton,
                                "a second default button besides " + std::to_string(defaults[0])});
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_cancel() const {
    if (m_kind != DialogKind::Dialog)
        return {};
    for (const TemplateControl& control : m_template.controls)
        if (isCancel(control))
            return {};
    return {{0, Rule::Cancel, "no Cancel button (IDCANCEL or 142)"}};
}

std::vector<RuleFinding> TemplateRules::mf_insideDialog() const {
    std::vector<RuleFinding> findings;
    for (const TemplateControl& control : m_template.controls) {
        const int nHeight = shownHeight(control);
        if (control.x < 0 || control.y < 0 || control.x + control.cx > m_template.cx ||
            control.y + nHeight > m_template.cy)
            findings.push_back({control.nId, Rule::InsideDialog,
                                "(" + std::to_string(control.x) + ", " + std::to_string(control.y) + ", " +
                                    std::to_string(control.cx) + ", " + std::to_string(nHeight) +
                                    ") leaves the dialog of " + std::to_string(m_template.cx) + " x " +
                                    std::to_string(m_template.cy)});
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_readingOrder() const {
    std::vector<RuleFinding> findings;
    const TemplateControl* pPrevious = nullptr;
    for (const TemplateControl& control : m_template.controls) {
        if (!isVisible(control))
            continue;
        if (pPrevious != nullptr) {
            const int nHeight = shownHeight(control);
            const int nPreviousHeight = shownHeight(*pPrevious);
            const bool bAbove = control.y + nHeight <= pPrevious->y;
            const bool bSameRow =
                control.y < pPrevious->y + nPreviousHeight && pPrevious->y < control.y + nHeight;
            const bool bLeft = control.x + control.cx <= pPrevious->x;
            if (bAbove || (bSameRow && bLeft))
                findings.push_back({control.nId, Rule::ReadingOrder,
                                    std::string(bAbove ? "above" : "left of") + " control " +
                                        std::to_string(pPrevious->nId) + " that comes before it"});
        }
        pPrevious = &control;
    }
    return findings;
}

std::vector<RuleFinding> TemplateRules::mf_shellFont() const {
    if ((m_template.dwStyle & DS_SHELLFONT) != DS_SHELLFONT)
        return {{0, Rule::ShellFont, "DS_SETFONT | DS_FIXEDSYS (DS_SHELLFONT) is not set"}};
    if (m_template.fontFace != L"MS Shell Dlg")
        return {{0, Rule::ShellFont, "font " + quoted(m_template.fontFace) + " instead of \"MS Shell Dlg\""}};
    return {};
}

std::vector<RuleFinding> TemplateRules::mf_noPrefix() const {
    std::vector<RuleFinding> findings;
    const std::vector<TemplateControl>& controls = m_template.controls;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const TemplateControl& control = controls[i];
        // A text filled in at run time that labels no input shows data: a path, a message, a name.
        if (sortOf(control) == Sort::TextStatic && control.text.empty() && !showsData(control) &&
            !labelsAnInput(controls, i))
            findings.push_back({control.nId, Rule::NoPrefix,
                                "a text set at run time that labels no input lacks SS_NOPREFIX"});
    }
    return findings;
}
