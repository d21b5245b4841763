/// Export macro of the host's libraries.
#pragma once

#if defined(_WIN32)
#if defined(MIREL_BUILDING_HOST)
#define HOST_API __declspec(dllexport)
#else
#define HOST_API __declspec(dllimport)
#endif
#else
/// Marks what the libraries export.
#define HOST_API __attribute__((visibility("default")))
#endif
