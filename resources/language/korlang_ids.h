// Resource numbers of the language modules, beside the string numbers of texts/english.txt.
#pragma once

// Severity icons: information (green), warning (yellow), error (red), and an empty one that clears an icon.
#define IDI_SEVERITY_GREEN 10002
#define IDI_SEVERITY_YELLOW 10004
#define IDI_SEVERITY_RED 10005
#define IDI_BLANK 10006
// The entry of a user in a list.
#define IDI_USER 561
