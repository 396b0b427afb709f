#include "tools/projdir/Options.h"

#include <CLI/CLI.hpp>

namespace ProjDir {
namespace {

constexpr char DESCRIPTION[] =
    "Makes a PROJ directory, the files \"epsg\" and \"epsg-axisorder.csv\", from the EPSG registry that the\n"
    "installed PROJ carries.";

constexpr int USAGE_ERROR = 2;

std::string describeFailure(const CLI::App* /*app*/, const CLI::Error& failure) {
    return std::string("crs-projdir: ") + failure.what() + "; see crs-projdir --help\n";
}

void addOptions(CLI::App& app, Options& options) {
    app.add_option("OUTDIR", options.directory, "The directory to make; it may be there already")->required();
    app.add_option("--codes", options.codesFile, "Only the codes in FILE, one a line")->type_name("FILE");
    app.add_flag("--include-deprecated", options.includeDeprecated, "Deprecated CRS as well");
    app.add_flag("--grids", options.useGrids,
                 "Where no published shift is within a metre, the installed grid if it covers the whole area");
    app.add_option("--report", options.reportFile, "Write what was left out, and why, to FILE")->type_name("FILE");
    app.add_flag("--verify", options.verify, "Compare the definitions with PROJ's own best operations");
    app.add_flag("--force", options.force, "Overwrite files that are there");
    app.set_version_flag("--version", std::string("crs-projdir ") + PROJDIR_VERSION);
}

}  // namespace

bool readOptions(int argc, const char* const* argv, Options& options, int& exitCode) {
    CLI::App app(DESCRIPTION, "crs-projdir");
    app.failure_message(describeFailure);
    addOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        exitCode = app.exit(end) == 0 ? 0 : USAGE_ERROR;
        return false;
    }
    return true;
}

}  // namespace ProjDir
