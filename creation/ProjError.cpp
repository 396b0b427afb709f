#include "creation/ProjError.h"

#include "CoordinateTransformation/Misconfigured.h"
#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {

// Joined without a separator on purpose: the text is part of the interface.
void requireNoProjError(int error, const std::string& directory) {
    if (error != 0)
        throw Misconfigured("Proj4 reported an error using configuration directory " + directory +
                            ClassicProj::pj_strerrno(error));
}

}  // namespace CoordinateTransformation
