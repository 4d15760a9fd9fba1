// The texts that the German dialog templates carry themselves (those a dialog class does not set).
// windres reads bytes, so characters beyond ASCII are \xHHHH escapes of UTF-16.
#pragma once

#define KOR_TEXT_BACKGROUND L"&Hintergrund"
#define KOR_TEXT_CANCEL L"Abbrechen"
#define KOR_TEXT_PROGRESS L"Fortschritt:"
#define KOR_TEXT_FILES_PROCESSED L"Verarbeitete Dateien:"
#define KOR_TEXT_FILES_IN_ALL L"Dateien insgesamt:"
#define KOR_TEXT_USERS L"&Benutzer:"
#define KOR_TEXT_WIZARD_WELCOME                                                                              \
    L"Dieser Assistent richtet eine Sicherung Ihrer Dateien ein. W\x00e4hlen Sie \x201eWeiter\x201c, um "    \
    L"fortzufahren."
#define KOR_TEXT_WIZARD_LABEL L"&Bezeichnung der Sicherung:"
#define KOR_TEXT_WIZARD_LABEL_EMPTY L"Die Bezeichnung darf nicht leer sein."
#define KOR_TEXT_WIZARD_RUN                                                                                  \
    L"W\x00e4hlen Sie \x201eAusf\x00fchren\x201c, um die Verbindung zum Server zu pr\x00fcfen."
#define KOR_TEXT_WIZARD_NOT_CHECKED L"Noch nicht gepr\x00fcft."
#define KOR_TEXT_WIZARD_DONE                                                                                 \
    L"Die Sicherung ist eingerichtet. W\x00e4hlen Sie \x201eFertig stellen\x201c, um den Assistenten zu "    \
    L"schlie\x00dfen."
// The migration wizard's panels (korclient); the frame's keys are Z, W, F and A.
#define KOR_TEXT_MIGRATE_INTRO                                                                               \
    L"Jede Datei des Ordners und seiner Unterordner wird auf den Speicherserver kopiert und durch eine "     \
    L"Stub-Datei ersetzt. Das \x00d6ffnen einer Stub-Datei holt ihre Daten zur\x00fcck."
#define KOR_TEXT_MIGRATE_FOLDER L"Zu migrierender &Ordner:"
#define KOR_TEXT_MIGRATE_BROWSE L"&Durchsuchen..."
#define KOR_TEXT_MIGRATE_OWNER L"&Besitzer der migrierten Dateien:"
#define KOR_TEXT_MIGRATE_CHOOSE L"Au&sw\x00e4hlen..."
#define KOR_TEXT_MIGRATE_BACKUP L"Dateien vor dem Migrieren &sichern"
#define KOR_TEXT_MIGRATE_OPTION_FILE L"&Optionsdatei der Sicherung (leer: der Sicherungsclient w\x00e4hlt):"
#define KOR_TEXT_MIGRATE_OPTION_NOTE                                                                         \
    L"Die Optionsdatei wird gepr\x00fcft, wenn Sie \x201eWeiter\x201c w\x00e4hlen."
#define KOR_TEXT_MIGRATE_RUN L"W\x00e4hlen Sie \x201eAusf\x00fchren\x201c, um die Dateien zu migrieren."
#define KOR_TEXT_MIGRATE_SAVE_LIST L"&Liste speichern..."
#define KOR_TEXT_MIGRATE_FILES L"&Migrierte Dateien:"
