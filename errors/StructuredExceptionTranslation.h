#pragma once

#include "platform/WindowsFaults.h"

namespace CoordinateTransformation {

// Translates a platform fault into a structured_exception and throws it. Returns only for a breakpoint and a single
// step, so that debuggers get these events. On Windows it is registered for the thread that loads the library; on other
// systems nothing calls it. REQUIRES: `info` and its record are not null.
void translateStructuredException(unsigned int code, EXCEPTION_POINTERS* info);

// Registers translateStructuredException for the calling thread. The previous translator is lost. Returns false on
// systems without translators.
bool registerStructuredExceptionTranslator();

}  // namespace CoordinateTransformation
