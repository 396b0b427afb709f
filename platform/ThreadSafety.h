#pragma once

// What -Wthread-safety of clang checks about locks. Other compilers see nothing of it.
#if defined(__clang__)
#define COORDTRANS_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define COORDTRANS_THREAD_SAFETY(attribute)
#endif
