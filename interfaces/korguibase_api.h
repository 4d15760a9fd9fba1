// Export macro of korguibase.
#pragma once

#if defined(_WIN32)
#if defined(KORGUIBASE_BUILD)
#define KORGUIBASE_API __declspec(dllexport)
#else
#define KORGUIBASE_API __declspec(dllimport)
#endif
#else
#define KORGUIBASE_API __attribute__((visibility("default")))
#endif
