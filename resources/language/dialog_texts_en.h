// The texts that the English dialog templates carry themselves (those a dialog class does not set).
#pragma once

#define KOR_TEXT_BACKGROUND L"&Background"
#define KOR_TEXT_CANCEL L"Cancel"
#define KOR_TEXT_PROGRESS L"Progress:"
#define KOR_TEXT_FILES_PROCESSED L"Files processed:"
#define KOR_TEXT_FILES_IN_ALL L"Files in all:"
#define KOR_TEXT_USERS L"&Users:"
#define KOR_TEXT_WIZARD_WELCOME L"This wizard sets up a backup of your files. Choose Next to go on."
#define KOR_TEXT_WIZARD_LABEL L"&Label of the backup:"
#define KOR_TEXT_WIZARD_LABEL_EMPTY L"The label must not be empty."
#define KOR_TEXT_WIZARD_RUN L"Choose Execute to check the connection to the server."
#define KOR_TEXT_WIZARD_NOT_CHECKED L"Not checked yet."
#define KOR_TEXT_WIZARD_DONE L"The backup is set up. Choose Finish to close the wizard."
// The migration wizard's panels (korclient).
#define KOR_TEXT_MIGRATE_INTRO                                                                               \
    L"Every file of the folder and its subfolders is copied to the storage server and replaced by a stub "   \
    L"file. "                                                                                                \
    L"Opening a stub recalls its data."
#define KOR_TEXT_MIGRATE_FOLDER L"Fol&der to migrate:"
#define KOR_TEXT_MIGRATE_BROWSE L"B&rowse..."
#define KOR_TEXT_MIGRATE_OWNER L"&Owner of the migrated files:"
#define KOR_TEXT_MIGRATE_CHOOSE L"&Choose..."
#define KOR_TEXT_MIGRATE_BACKUP L"Bac&k the files up before they are migrated"
#define KOR_TEXT_MIGRATE_OPTION_FILE L"&Option file of the backup (empty: the backup client chooses):"
#define KOR_TEXT_MIGRATE_OPTION_NOTE L"The option file is checked when you choose Next."
#define KOR_TEXT_MIGRATE_RUN L"Choose Execute to migrate the files."
#define KOR_TEXT_MIGRATE_SAVE_LIST L"&Save list..."
#define KOR_TEXT_MIGRATE_FILES L"&Migrated files:"
