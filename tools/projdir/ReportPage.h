#pragma once

namespace ProjDir {

// The files of the folder "report", as they were when the program was built. In the page, comments such as
// "<!--[STYLE]-->" have the places of the others and of the data.
extern const char REPORT_PAGE[];
extern const char REPORT_STYLE[];
extern const char REPORT_SCRIPT[];
// Of an SVG path: tenths of degrees, eastwards from 180 W and southwards from 90 N.
extern const char REPORT_COASTLINE[];

}  // namespace ProjDir
