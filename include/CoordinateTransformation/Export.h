#pragma once

/// Marks the exported classes and functions. A program that links the static library defines COORDTRANS_STATIC; the
/// CMake targets and the pkg-config file define it for their users.
#if defined(COORDTRANS_STATIC)
#define COORDTRANS_EXPORT
#elif defined(_WIN32)
#if defined(COORDTRANS_BUILDING)
#define COORDTRANS_EXPORT __declspec(dllexport)
#else
#define COORDTRANS_EXPORT __declspec(dllimport)
#endif
#else
#define COORDTRANS_EXPORT __attribute__((visibility("default")))
#endif

/// Hides a private function of an exported class.
#if defined(_WIN32)
#define COORDTRANS_INTERNAL
#else
#define COORDTRANS_INTERNAL __attribute__((visibility("hidden")))
#endif
