#include "SettingsCommand.h"

#include "ArgumentText.h"
#include "KorFilesTool.h"
#include "LogTap.h"
#include "RegistryChoice.h"

#include "guibase/settings/UQGuiRegistry.h"

namespace {

// The placeholders as the registry holds them, and the word that the GUI shows for them
// (docs/registry.md).
const wchar_t* const SERVER_MGMT_CLASS = L"<VRS server default mgmt class>";
const wchar_t* const DYNAMIC_OPTION_FILE = L"<B/A client chooses options file>";
const wchar_t* const DEFAULT = L"DEFAULT";
// Catalogue text: the display name of the dynamic option file.
const unsigned DYNAMIC_OPTION_FILE_TEXT = 3144;

enum Kind { FLAG, MGMT_CLASS, OPTION_FILE, OPTION_FILE_MRU, SEARCH_ROOT };

struct Setting {
    const wchar_t* name;
    Kind kind;
    // Flags only.
    int (*isSet)();
    int (*set)(int);
};

// In the order they are shown.
const Setting SETTINGS[] = {
    {L"management-class", MGMT_CLASS, nullptr, nullptr},
    {L"backup-before-migrate", FLAG, &UQGuiRegistry::mf_isDefaultBackupBeforeMigrate,
     &UQGuiRegistry::mf_setDefaultBackupBeforeMigrate},
    {L"migration-file-security", FLAG, &UQGuiRegistry::mf_isDefaultMigrationFileSecurity,
     &UQGuiRegistry::mf_setDefaultMigrationFileSecurity},
    {L"migration-alternate-data-streams", FLAG, &UQGuiRegistry::mf_isDefaultMigrationADStreams,
     &UQGuiRegistry::mf_setDefaultMigrationADStreams},
    {L"retrieval-file-security", FLAG, &UQGuiRegistry::mf_isDefaultRetrieveFileSecurity,
     &UQGuiRegistry::mf_setDefaultRetrieveFileSecurity},
    {L"retrieval-alternate-data-streams", FLAG, &UQGuiRegistry::mf_isDefaultRetrieveADStreams,
     &UQGuiRegistry::mf_setDefaultRetrieveADStreams},
    {L"backup-option-file", OPTION_FILE, nullptr, nullptr},
    {L"option-file-mru", OPTION_FILE_MRU, nullptr, nullptr},
    {L"history-search-root", SEARCH_ROOT, nullptr, nullptr},
};

std::string utf8(const wchar_t* _pszS) {
    return CString(_pszS).ToUtf8();
}

const Setting* findSetting(const CString& _sName) {
    for (const Setting& s : SETTINGS) {
        if (_sName == s.name)
            return &s;
    }
    return nullptr;
}

std::string settingNames() {
    std::string names;
    for (const Setting& s : SETTINGS)
        names += (names.empty() ? "" : ", ") + utf8(s.name);
    return names;
}

// "DEFAULT <display name>": the dynamic option file as the GUI shows it.
CString translatedDynamicOptionFile() {
    CString s;
    s.Format(L"%s <%s>", DEFAULT, UQString(DYNAMIC_OPTION_FILE_TEXT).mf_getText());
    return s;
}

// DEFAULT, or a text that names the dynamic option file as the MRU recognises it.
bool meansDynamicOptionFile(const CString& _sValue) {
    return _sValue == DEFAULT || _sValue.Find(DYNAMIC_OPTION_FILE) >= 0 ||
           _sValue.Find(UQString(DYNAMIC_OPTION_FILE_TEXT).mf_getText()) >= 0;
}

bool hasControlCharacter(const CString& _sValue) {
    for (int i = 0; i < _sValue.GetLength(); ++i) {
        if (_sValue[i] < 0x20 || _sValue[i] == 0x7F)
            return true;
    }
    return false;
}

// One "name: value" line; a stored value with line breaks or other control characters still makes one
// line, with U+FFFD in their place, and an empty value leaves nothing after the colon.
std::string line(const wchar_t* _pszName, const CString& _sValue) {
    CString shown = _sValue;
    for (int i = 0; i < shown.GetLength(); ++i) {
        if (shown[i] < 0x20 || shown[i] == 0x7F)
            shown.SetAt(i, 0xFFFD);
    }
    return utf8(_pszName) + (shown.IsEmpty() ? ":" : ": " + shown.ToUtf8()) + "\n";
}

std::string show(const Setting& _s) {
    switch (_s.kind) {
    case FLAG:
        return line(_s.name, _s.isSet() ? L"yes" : L"no");
    case MGMT_CLASS:
        return line(_s.name, UQGuiRegistry::mf_getDefaultMgmtClass());
    case OPTION_FILE: {
        // An empty default is the dynamic option file.
        const CString path = UQGuiRegistry::mf_getDefaultBackupOptionFilePath();
        return line(_s.name, path.IsEmpty() ? translatedDynamicOptionFile() : path);
    }
    case OPTION_FILE_MRU: {
        UQArray<CString> paths;
        UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths);
        if (paths.GetSize() == 0)
            return line(_s.name, CString());
        std::string lines;
        for (INT_PTR i = 0; i < paths.GetSize(); ++i)
            lines += line(_s.name, paths[i]);
        return lines;
    }
    case SEARCH_ROOT:
        return line(_s.name, UQGuiRegistry::mf_getHistorySearchRoot());
    }
    return std::string();
}

std::string showAll() {
    std::string lines;
    for (const Setting& s : SETTINGS)
        lines += show(s);
    return lines;
}

// Answers 0 when the value is not one of the words for a flag.
int parseFlag(const CString& _sValue, int& _rnFlag) {
    if (_sValue == L"yes" || _sValue == L"true" || _sValue == L"1")
        _rnFlag = 1;
    else if (_sValue == L"no" || _sValue == L"false" || _sValue == L"0")
        _rnFlag = 0;
    else
        return 0;
    return 1;
}

// Answers an empty string when the value suits the setting, else the one line that says what is wrong.
std::string checkValue(const Setting& _s, const CString& _sValue) {
    const std::string name = utf8(_s.name);
    if (hasControlCharacter(_sValue))
        return "the value for " + name + " holds a control character";
    if (ArgumentText::mf_findUnpairedSurrogate(_sValue) >= 0)
        return "the value for " + name + " is not valid UTF-8";
    switch (_s.kind) {
    case FLAG: {
        int flag = 0;
        if (!parseFlag(_sValue, flag))
            return name + " takes yes or no (or true, false, 1, 0), not '" + _sValue.ToUtf8() + "'";
        return std::string();
    }
    case MGMT_CLASS:
        if (_sValue.IsEmpty())
            return "management-class needs a class name, or DEFAULT for the server's default class";
        return std::string();
    case OPTION_FILE:
        if (_sValue.IsEmpty())
            return "backup-option-file needs a file path, or DEFAULT for the option file the backup client "
                   "chooses";
        return std::string();
    case OPTION_FILE_MRU:
        return "option-file-mru is changed with 'korfiles settings mru add PATH' and 'mru remove PATH'";
    case SEARCH_ROOT:
        return std::string();
    }
    return std::string();
}

// A change that the registry did not take, in the words of the error that the GUI registry logged.
std::string refused(const std::string& _sWhat, const CString& _sReason) {
    return "korfiles: " + _sWhat + ": " +
           (_sReason.IsEmpty() ? std::string("the registry refused it; see the product log")
                               : _sReason.ToUtf8()) +
           "\n";
}

int setOne(const Setting& _s, const CString& _sValue, LogTap& _rTap, TextOutput& _rOut, TextOutput& _rErr) {
    const std::string problem = checkValue(_s, _sValue);
    if (!problem.empty()) {
        _rErr.mf_write("korfiles: " + problem + "\n");
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    _rTap.mf_mark();
    int done = 0;
    CString reason;
    switch (_s.kind) {
    case FLAG: {
        int flag = 0;
        parseFlag(_sValue, flag);
        done = _s.set(flag);
        break;
    }
    case MGMT_CLASS:
        // What is shown as DEFAULT is stored as the placeholder, so that the shown value can be set again.
        done =
            UQGuiRegistry::mf_setDefaultMgmtClass(_sValue == DEFAULT ? CString(SERVER_MGMT_CLASS) : _sValue);
        break;
    case OPTION_FILE:
        try {
            done = UQGuiRegistry::mf_setDefaultBackupOptionFilePath(
                meansDynamicOptionFile(_sValue) ? CString() : _sValue);
        } catch (const UQErrno& e) {
            // Its log record names another value, so the error itself tells what went wrong.
            done = 0;
            reason = e.mf_toString();
        }
        break;
    case SEARCH_ROOT:
        done = UQGuiRegistry::mf_setHistorySearchRoot(_sValue);
        break;
    case OPTION_FILE_MRU:
        break;
    }
    if (!done || _rTap.mf_hasFailure()) {
        _rErr.mf_write(
            refused("cannot set " + utf8(_s.name), reason.IsEmpty() ? _rTap.mf_getFailure() : reason));
        return KorFilesTool::EXIT_NOT_CHANGED;
    }
    _rOut.mf_write(show(_s));
    return KorFilesTool::EXIT_ALL_READ;
}

int updateMru(const CString& _sPath, bool _bRemove, LogTap& _rTap, TextOutput& _rOut, TextOutput& _rErr) {
    if (_sPath.IsEmpty()) {
        _rErr.mf_write("korfiles: an option file path cannot be empty\n");
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    if (hasControlCharacter(_sPath)) {
        _rErr.mf_write("korfiles: the option file path holds a control character\n");
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    if (ArgumentText::mf_findUnpairedSurrogate(_sPath) >= 0) {
        _rErr.mf_write("korfiles: the option file path is not valid UTF-8\n");
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    const std::string quoted = "'" + _sPath.ToUtf8() + "'";
    _rTap.mf_mark();
    // DEFAULT is the dynamic option file here as everywhere; the update itself recognises the other ways
    // of naming it.
    const int changed = UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(
        _sPath == DEFAULT ? CString(DYNAMIC_OPTION_FILE) : _sPath, _bRemove ? 1 : 0);
    // A failed write is logged at E even where the update answers 1.
    if (_rTap.mf_hasFailure()) {
        _rErr.mf_write(refused(_bRemove ? "cannot remove " + quoted + " from the option-file MRU"
                                        : "cannot add " + quoted + " to the option-file MRU",
                               _rTap.mf_getFailure()));
        return KorFilesTool::EXIT_NOT_CHANGED;
    }
    if (!changed) {
        _rErr.mf_write(
            "korfiles: " + quoted +
            (_bRemove ? " is not in the option-file MRU\n" : " is in the option-file MRU already\n"));
        return KorFilesTool::EXIT_NOT_CHANGED;
    }
    _rOut.mf_write(show(*findSetting(L"option-file-mru")));
    return KorFilesTool::EXIT_ALL_READ;
}

struct Options {
    bool bHelp = false;
    bool bRegistry = false;
    CString sRegistry;
    std::vector<CString> words;
};

#if defined(_WIN32)
const char* const STORE_WORD = "KEY";
#else
const char* const STORE_WORD = "FILE";
#endif

// The store read, as a failure names it.
std::string storeName() {
#if defined(_WIN32)
    // Under --registry, HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER stand for that key's sub keys.
    return "the registry";
#else
    return "the registry store '" + UQRegistry::mf_getStoreFile().ToUtf8() + "'";
#endif
}

// Answers an empty string when the arguments are good, else the one line that says what is wrong.
std::string parseOptions(const std::vector<CString>& _args, Options& _rOptions) {
    bool optionsEnded = false;
    for (const CString& arg : _args) {
        if (!optionsEnded && arg.GetLength() > 1 && arg[0] == L'-') {
            if (arg == L"--") {
                optionsEnded = true;
            } else if (arg == L"--help" || arg == L"-h") {
                _rOptions.bHelp = true;
            } else if (arg == L"--registry" || arg.Left(11) == L"--registry=") {
                if (arg.GetLength() <= 11)
                    return "--registry needs a " + std::string(STORE_WORD) +
                           ", as in --registry=" + STORE_WORD;
                if (_rOptions.bRegistry)
                    return "only one --registry may be given";
                _rOptions.bRegistry = true;
                _rOptions.sRegistry = arg.Mid(11);
            } else {
                return "unknown option '" + arg.ToUtf8() + "'";
            }
            continue;
        }
        _rOptions.words.push_back(arg);
    }
    const std::vector<CString>& w = _rOptions.words;
    if (w.empty())
        return std::string();
    if (w[0] == L"set") {
        if (w.size() != 3)
            return "settings set needs NAME and VALUE";
    } else if (w[0] == L"mru") {
        if (w.size() != 3 || (w[1] != L"add" && w[1] != L"remove"))
            return "settings mru needs add PATH or remove PATH";
    } else {
        return "unknown settings command '" + w[0].ToUtf8() + "'; the commands are set and mru";
    }
    return std::string();
}

} // namespace

const char* const SettingsCommand::SYNOPSIS =
    "korfiles settings [--registry=STORE] [set NAME VALUE | mru add PATH | mru remove PATH]";

int SettingsCommand::mf_run(const std::vector<CString>& _args, TextOutput& _rOut, TextOutput& _rErr) {
    Options options;
    const std::string usageError = parseOptions(_args, options);
    if (!usageError.empty()) {
        _rErr.mf_write("korfiles: " + usageError + "\n" + KorFilesTool::mf_getUsage());
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    if (options.bHelp) {
        _rOut.mf_write("Usage: " + std::string(SYNOPSIS) + "\n\n" + mf_getHelp());
        return KorFilesTool::EXIT_ALL_READ;
    }
    const std::vector<CString>& w = options.words;
    const Setting* setting = nullptr;
    if (!w.empty() && w[0] == L"set") {
        setting = findSetting(w[1]);
        // Checked before the registry is touched.
        if (setting == nullptr) {
            _rErr.mf_write("korfiles: unknown setting '" + w[1].ToUtf8() + "'; the settings are " +
                           settingNames() + "\n");
            return KorFilesTool::EXIT_BAD_USAGE;
        }
    }

    LogTap tap;
    RegistryChoice registry;
    std::string reason;
    if (options.bRegistry && !registry.mf_choose(options.sRegistry, reason)) {
        _rErr.mf_write("korfiles: " + reason + "\n");
        return KorFilesTool::EXIT_NOT_CHANGED;
    }
    if (w.empty()) {
        tap.mf_mark();
        UQGuiRegistry::mf_initialize();
        const std::string shown = showAll();
        // The getters answer their defaults for a store that cannot be read as for one that lacks the
        // value: shown, those would pass for the settings.
        const CString broken = tap.mf_getStoreFailure();
        if (!broken.IsEmpty()) {
            _rErr.mf_write("korfiles: cannot read the settings from " + storeName() + ": " + broken.ToUtf8() +
                           "\n");
            return KorFilesTool::EXIT_UNREADABLE;
        }
        _rOut.mf_write(shown);
        return KorFilesTool::EXIT_ALL_READ;
    }
    if (setting != nullptr)
        return setOne(*setting, w[2], tap, _rOut, _rErr);
    return updateMru(w[2], w[1] == L"remove", tap, _rOut, _rErr);
}

std::string SettingsCommand::mf_getHelp() {
    return std::string(
               "korfiles settings shows and changes the client's GUI defaults in the registry:\n"
               "  korfiles settings                  write the missing defaults, as the client does when it\n"
               "                                     starts, and show every setting as NAME: VALUE\n"
               "  korfiles settings set NAME VALUE   change one setting and show it\n"
               "  korfiles settings mru add PATH     add an option file to the option-file MRU, unless it\n"
               "                                     is there already in any case\n"
               "  korfiles settings mru remove PATH  remove it (compared ignoring case)\n"
               "\n"
               "Settings (NAME):\n"
               "  management-class                   the default management class; DEFAULT: the server's\n"
               "                                     default class\n"
               "  backup-before-migrate              yes or no (true, false, 1 and 0 are taken too)\n"
               "  migration-file-security            yes or no: migrate file security by default\n"
               "  migration-alternate-data-streams   yes or no: migrate alternate data streams by default\n"
               "  retrieval-file-security            yes or no: retrieve file security by default\n"
               "  retrieval-alternate-data-streams   yes or no: retrieve alternate data streams by default\n"
               "  backup-option-file                 the default backup option file; DEFAULT: the option\n"
               "                                     file that the backup client chooses\n"
               "  option-file-mru                    the option files used recently, one line each, sorted;\n"
               "                                     changed with mru add and mru remove\n"
               "  history-search-root                the directory the history search starts from; empty:\n"
               "                                     none\n"
               "An empty value shows as nothing after the colon.\n"
               "\n"
               "Options of settings:\n") +
#if defined(_WIN32)
           "  --registry=KEY      work on HKEY_CURRENT_USER\\KEY instead of the registry: its sub keys HKLM\n"
           "                      and HKCU stand for HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER\n"
#else
           "  --registry=FILE     work on this registry database instead of the one named by\n"
           "                      KOR_REGISTRY_FILE, or else $XDG_CONFIG_HOME (or ~/.config)/korguibase/\n"
           "                      registry.sqlite\n"
#endif
           "  -h, --help          print this help and exit\n"
           "  --                  take the next arguments as they are even if they start with '-'\n"
           "\n"
           "Exit status of settings: 0 done, 1 nothing was changed (the registry refused the change, or the\n"
           "MRU held the path already or did not hold it), 2 bad usage, an unknown NAME or a bad VALUE,\n"
           "3 the settings cannot be read (the store is broken or a value is of the wrong type).\n";
}
