#pragma once

#include <cstdint>

// The records by which Windows describes a structured exception. Other systems get stand-ins of the same names with the
// members that the library reads, so that the translator compiles and can be tested.

#if defined(_WIN32)

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#else

struct _EXCEPTION_RECORD {
    void* ExceptionAddress;
};
using EXCEPTION_RECORD = _EXCEPTION_RECORD;

struct _EXCEPTION_POINTERS {
    EXCEPTION_RECORD* ExceptionRecord;
};
using EXCEPTION_POINTERS = _EXCEPTION_POINTERS;

#endif

// The status codes that get a treatment of their own.
constexpr std::uint32_t BREAKPOINT_FAULT = 0x80000003;
constexpr std::uint32_t SINGLE_STEP_FAULT = 0x80000004;
constexpr std::uint32_t STACK_OVERFLOW_FAULT = 0xC00000FD;
