#pragma once

#include "tools/projdir/Options.h"

namespace ProjDir {

// Makes the directory that the options ask for. 0, or 1 after a failure, whose message stands on the standard
// error output and of which no file is left.
int makeDirectory(const Options& options);

}  // namespace ProjDir
