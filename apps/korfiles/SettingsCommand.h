#pragma once

#include "TextOutput.h"

#include "interfaces/korbase.h"

#include <string>
#include <vector>

// korfiles settings: shows the client's GUI defaults and changes them, one at a time, through
// UQGuiRegistry (docs/korfiles.md lists the setting names and their values).
//   settings                  seeds the missing defaults (UQGuiRegistry::mf_initialize) and shows all
//   settings set NAME VALUE   changes one setting and shows it
//   settings mru add PATH     adds an option file to the option-file MRU, mru remove PATH removes it
// Every setting is shown as "name: value" lines, UTF-8. --registry=STORE picks the registry: a database
// file on native builds, a key under HKEY_CURRENT_USER on Windows (RegistryChoice).
class SettingsCommand {
public:
    // The command's line of the usage, without "Usage: ".
    static const char* const SYNOPSIS;

    // _args are the arguments after "settings". Answers KorFilesTool's exit codes: 0 done; 1 nothing was
    // changed (the registry refused, or the MRU already held the path or did not hold it), with one line on
    // _rErr; 2 bad usage, a bad name or a bad value, with one line on _rErr (and the usage after a malformed
    // command line).
    static int mf_run(const std::vector<CString>& _args, TextOutput& _rOut, TextOutput& _rErr);

    // The settings part of the --help text.
    static std::string mf_getHelp();
};
