// Resource numbers of the language modules, beside the string numbers of texts/english.txt.
#pragma once

// Severity icons: information (green), warning (yellow), error (red), and an empty one that clears an icon.
#define IDI_SEVERITY_GREEN 10002
#define IDI_SEVERITY_YELLOW 10004
#define IDI_SEVERITY_RED 10005
#define IDI_BLANK 10006
// The entry of a user in a list.
#define IDI_USER 561

// Message boxes: the information template (green severity), the warning and error template, and the
// template with a caption band.
#define IDD_MESSAGE_BOX 10009
#define IDD_MESSAGE_BOX_WARNING 10025
#define IDD_CAPTION_MESSAGE_BOX 10011
#define IDC_MESSAGE_ICON 30021
#define IDC_MESSAGE_HEADING 1038
#define IDC_MESSAGE_TEXT 30022
#define IDC_MESSAGE_BUTTON1 30026
#define IDC_MESSAGE_BUTTON2 30027
#define IDC_MESSAGE_CAPTION_LINE 10013

// The information box with its "do not show again" check box.
#define IDD_INFORMATION_BOX 10036
#define IDC_INFORMATION_TEXT1 30052
#define IDC_INFORMATION_TEXT2 30037
#define IDC_INFORMATION_OK 30033
#define IDC_INFORMATION_CHECK 30096

// The help dialog.
#define IDD_HELP_DIALOG 10059
#define IDC_HELP_ICON 30359
#define IDC_HELP_TEXT 30375

// The line editor.
#define IDD_LINE_EDITOR 10046
#define IDC_LINE_EDIT 184
#define IDC_LINE_LABEL 30263

// The progress dialogs: the plain one (status text, Cancel, and a button that ends it with 1) and the one
// with a percentage bar and two counters.
#define IDD_PROGRESS 10080
#define IDD_PROGRESS_BAR 10081
#define IDC_PROGRESS_STATUS 341
#define IDC_PROGRESS_CLOSE 376
#define IDC_PROGRESS_BAR 336
#define IDC_PROGRESS_CURRENT 342
#define IDC_PROGRESS_TOTAL 343
#define IDC_PROGRESS_CANCEL 142
// The user search dialog.
#define IDD_SEARCH_USER 10054
#define IDC_SEARCH_USER_OK 30033
#define IDC_SEARCH_USER_CANCEL 142
#define IDC_SEARCH_USER_AUTHORITY_LABEL 30186
#define IDC_SEARCH_USER_AUTHORITY 30059
#define IDC_SEARCH_USER_FILTER_LABEL 30187
#define IDC_SEARCH_USER_FILTER 30078
#define IDC_SEARCH_USER_LIST_BUTTON 30077
#define IDC_SEARCH_USER_USERS_LABEL 30188
#define IDC_SEARCH_USER_LIST 30081
#define IDC_SEARCH_USER_START 30095
// Demonstration panels of the wizard (the tests and the gallery show them in their frame 528).
#define IDD_WIZARD_PANEL_WELCOME 9601
#define IDD_WIZARD_PANEL_NAME 9602
#define IDD_WIZARD_PANEL_RUN 9603
#define IDD_WIZARD_PANEL_DONE 9604
#define IDC_WIZARD_PANEL_TEXT 9610
#define IDC_WIZARD_PANEL_LABEL 9611
#define IDC_WIZARD_PANEL_EDIT 9612
#define IDC_WIZARD_PANEL_RESULT 9613

// The client's migration wizard panels (korclient).
#define IDD_CLIENT_PANEL_FOLDER 9701
#define IDD_CLIENT_PANEL_CLASS 9702
#define IDD_CLIENT_PANEL_BACKUP 9703
#define IDD_CLIENT_PANEL_RUN 9704
#define IDC_CLIENT_FOLDER_EDIT 9710
#define IDC_CLIENT_FOLDER_BROWSE 9711
#define IDC_CLIENT_BACKUP_CHECK 9712
#define IDC_CLIENT_OPTION_FILE_EDIT 9713
#define IDC_CLIENT_OPTION_FILE_BROWSE 9714
#define IDC_CLIENT_OWNER_EDIT 9715
#define IDC_CLIENT_OWNER_CHOOSE 9716
#define IDC_CLIENT_RUN_TEXT 9717
#define IDC_CLIENT_RUN_LIST 9718
#define IDC_CLIENT_RUN_SAVE 9719
#define IDC_CLIENT_CLASS_LABEL 30106
#define IDC_CLIENT_CLASS_COMBO 1027
#define IDC_CLIENT_DESCRIPTION_LABEL 30149
#define IDC_CLIENT_DESCRIPTION 1031
#define IDC_CLIENT_RETENTION_GROUP 244
#define IDC_CLIENT_RETAIN_VERS_LABEL 30145
#define IDC_CLIENT_RETAIN_VERS 1033
#define IDC_CLIENT_RETAIN_INIT_LABEL 30146
#define IDC_CLIENT_RETAIN_INIT 1034
#define IDC_CLIENT_RETAIN_MIN_LABEL 30147
#define IDC_CLIENT_RETAIN_MIN 1035
#define IDC_CLIENT_DEST_NAME_LABEL 30148
#define IDC_CLIENT_DEST_NAME 1036
