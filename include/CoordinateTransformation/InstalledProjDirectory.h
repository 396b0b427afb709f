#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// The PROJ directory that is installed with the library, for the property "Proj4ConfigDir". CrsConfig::init never uses
/// it on its own.
///
/// The place is relative to the shared library, or to a program with the static library, so that an installation can be
/// moved. Without a directory there, it is the place that the build was configured for, whether or not there is one.
/// Empty for a library built without installation.
///
/// Threads: any thread may call it.
COORDTRANS_EXPORT std::string installedProjDirectory();

}  // namespace CoordinateTransformation
