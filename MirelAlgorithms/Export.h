/// Export macro of the library.
#pragma once

#if defined(_WIN32)
#if defined(MIREL_BUILDING_LIBRARY)
#define MIREL_API __declspec(dllexport)
#else
#define MIREL_API __declspec(dllimport)
#endif
#else
/// Marks what the library exports.
#define MIREL_API __attribute__((visibility("default")))
#endif
