// The settings command of korfiles on a registry of the test's own.
#pragma once

#include "KorFilesTestSupport.h"
#include "KorFilesTool.h"

#include "guibase/settings/GuiRegistryTestSupport.h"

#include <string>
#include <vector>

namespace korfilessettings {

using namespace settingstest;

const std::string BACKUP_CLIENT = "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient";
// The option-file MRU's dynamic entry as it is shown.
const std::string SHOWN_DYNAMIC = "option-file-mru: " + TRANSLATED + "\n";

// What "korfiles settings" prints for a registry that holds nothing but what it seeds itself.
inline std::string seededDefaults() {
    return "management-class: DEFAULT\n"
           "backup-before-migrate: yes\n"
           "migration-file-security: yes\n"
           "migration-alternate-data-streams: yes\n"
           "retrieval-file-security: yes\n"
           "retrieval-alternate-data-streams: yes\n"
           "backup-option-file: " +
           TRANSLATED + "\n" + SHOWN_DYNAMIC + "history-search-root:\n";
}

class KorFilesSettingsTest : public GuiRegistryTest {
protected:
    // "korfiles ARGS"; out and err hold only this run's text.
    int run(const std::vector<CString>& args) {
        out.text.clear();
        err.text.clear();
        return KorFilesTool::mf_run(args, L"no-default-input.txt", L"no-default-listing.txt", out, err);
    }

    // "korfiles settings ARGS".
    int settings(std::vector<CString> args = {}) {
        args.insert(args.begin(), L"settings");
        return run(args);
    }

    StringOutput out;
    StringOutput err;
};

} // namespace korfilessettings
