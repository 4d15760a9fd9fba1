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
