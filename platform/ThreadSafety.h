#pragma once

// Attributes for clang's -Wthread-safety. They are empty for other compilers.
#if defined(__clang__)
#define COORDTRANS_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define COORDTRANS_THREAD_SAFETY(attribute)
#endif
