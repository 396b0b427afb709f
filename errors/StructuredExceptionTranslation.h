#pragma once

#include "platform/WindowsFaults.h"

namespace CoordinateTransformation {

// Turns a platform fault into a structured_exception and throws it. Returns only for a breakpoint and a
// single step, so that debuggers keep their events. On Windows it is registered for the thread that loads
// the library; elsewhere nothing calls it. REQUIRES: `info` and its record are not null.
void translateStructuredException(unsigned int code, EXCEPTION_POINTERS* info);

// Makes it the translator of the calling thread, in place of the one before, which is not kept. False where
// the platform has no translators.
bool registerStructuredExceptionTranslator();

}  // namespace CoordinateTransformation
