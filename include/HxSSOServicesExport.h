#pragma once

// Marks what leaves the library. HXSSO_STATIC is for programs that link the
// library's objects directly (the tests do); hosts define nothing.
#if defined(HXSSO_STATIC)
#define HXSSO_API
#elif defined(_WIN32)
#if defined(HXSSO_BUILDING)
#define HXSSO_API __declspec(dllexport)
#else
#define HXSSO_API __declspec(dllimport)
#endif
#else
#define HXSSO_API __attribute__((visibility("default")))
#endif
