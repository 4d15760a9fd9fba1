// Export macro of the MFC subset library (korcompat).
#pragma once

#if defined(_WIN32)
#if defined(KORCOMPAT_BUILD)
#define KORCOMPAT_API __declspec(dllexport)
#else
#define KORCOMPAT_API __declspec(dllimport)
#endif
#else
#define KORCOMPAT_API __attribute__((visibility("default")))
#endif
