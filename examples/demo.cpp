// Does what a web feature server does with the library: initialises it, reads and writes names of CRS, transforms
// coordinates and reports failures. The exit code is 1 when a control point misses its tolerance.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"

using namespace CoordinateTransformation;

namespace {

std::string readFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw QSHelpers::FileNotFoundException("File \"" + path + "\" not found!");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::unique_ptr<CrsConfig> startLibrary(const std::string& dataDirectory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->setConfigProperty("Proj4ConfigDir", dataDirectory + "/proj");
    std::istringstream fragment(readFile(dataDirectory + "/crs-configuration.xml"));
    config->configure(fragment);
    config->init();
    return config;
}

const char* axisOrderOf(const AbstractCrs& crs) {
    if (crs.isGeographic()) return crs.isAxisOrderEastNorthOrLonLat() ? "longitude, latitude" : "latitude, longitude";
    return crs.isAxisOrderEastNorthOrLonLat() ? "easting, northing" : "northing, easting";
}

void printHeading(const char* heading) { std::printf("\n%s\n\n", heading); }

void printOffer(const CrsConfig& config) {
    std::map<std::string, std::string> aliases;
    for (const CrsConfigData& entry : *config.getConfiguredCrs()) {
        std::string& names = aliases[entry.getIdentifier()];
        if (entry.isMapped()) names += (names.empty() ? "" : ", ") + entry.getAlias();
    }
    printHeading("1. The CRS that the server offers, each under its identifier, code and URNs, some under aliases too");
    for (const auto& [identifier, names] : aliases) {
        const Crs crs = config.getCreator().createFromName(identifier, true, true);
        std::printf("  %-22s %-20s %s\n", identifier.c_str(), axisOrderOf(*crs.get()), names.c_str());
    }
}

void printSpelling(const CrsCreator& creator, const std::string& name) {
    const Crs crs = creator.createFromName(name, true, true);
    std::printf("  %-58s -> %-22s %s%s\n", name.c_str(), crs->getAliasOrIdentifier(false).c_str(),
                axisOrderOf(*crs.get()), crs.isHoldingConst() ? " (configured)" : "");
}

void printNamesIn(const CrsCreator& creator) {
    printHeading("2. Names in: every accepted spelling of one CRS, and of a compound one");
    for (const char* name : {"UTM32", "EPSG:25832", "25832", "urn:ogc:def:crs:EPSG::25832",
                             "urn:ogc:def:crs:EPSG:8.9:25832", "urn:x-ogc:def:crs:EPSG:6.12:25832",
                             "urn:ogc:def:crs:epsg::25832", "http://www.opengis.net/def/crs/EPSG/0/25832",
                             "http://www.opengis.net/gml/srs/epsg.xml#25832", "urn:EPSG:geographicCRS:25832", "CRS:84",
                             "EPSG:27700*EPSG:5701", "27700*5701", "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701",
                             "http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701"})
        printSpelling(creator, name);
}

void printForms(const Crs& crs) {
    const QuarvelSrv::SrsFormattingOptions url{"0", "", 2};
    const QuarvelSrv::SrsFormattingOptions versioned{"6.12", "", 0};
    std::printf("  alias or identifier   %s\n", crs->getAliasOrIdentifier(true).c_str());
    std::printf("  identifier            %s\n", crs->getAliasOrIdentifier(false).c_str());
    std::printf("  OGC URN               %s\n", crs->getAliasOrAsOgcURN(nullptr, false).c_str());
    std::printf("  OGC URN, version 6.12 %s\n", crs->getAliasOrAsOgcURN(&versioned, false).c_str());
    std::printf("  OGC http URL          %s\n", crs->getAliasOrAsOgcURN(&url, false).c_str());
    std::printf("  template URL          %s\n",
                crs->getAsURL("http://www.opengis.net/gml/srs/epsg.xml", "\x01", "\x01-\x02").c_str());
    std::printf("  text form             %s\n\n", crs->getAsText().c_str());
}

void printNamesOut(const CrsCreator& creator) {
    printHeading("3. Names out: the forms in which responses write a CRS");
    printForms(creator.createFromName("UTM32", true, true));
    printForms(creator.createFromName("EPSG:27700*EPSG:5701", true, true));
}

// name;source;latitude;longitude;target;easting;northing;tolerance_m;published_in
struct ControlPoint {
    std::string name;
    std::string source;
    double latitude;
    double longitude;
    std::string target;
    double easting;
    double northing;
    double tolerance;
};

std::vector<ControlPoint> readControlPoints(const std::string& path) {
    std::istringstream lines(readFile(path));
    std::vector<ControlPoint> points;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        std::istringstream cells(line);
        std::vector<std::string> cell(8);
        for (std::string& text : cell) std::getline(cells, text, ';');
        points.push_back({cell[0], cell[1], std::stod(cell[2]), std::stod(cell[3]), cell[4], std::stod(cell[5]),
                          std::stod(cell[6]), std::stod(cell[7])});
    }
    return points;
}

// Transforms (east, north) of the source into (east, north) of the target for any axis orders of the two.
void transformEastNorth(const AbstractCrs& source, const AbstractCrs& target, double& east, double& north) {
    if (!source.isAxisOrderEastNorthOrLonLat()) std::swap(east, north);
    source.transformTo(&target, east, north);
    if (!target.isAxisOrderEastNorthOrLonLat()) std::swap(east, north);
}

double distanceInMillimetres(const AbstractCrs& crs, double east, double north, double atLatitude) {
    constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;
    const double shrink = crs.isGeographic() ? std::cos(atLatitude * RADIANS_PER_DEGREE) : 1.0;
    return 1000 * crs.getUnitEquivalentInM() * std::hypot(east * shrink, north);
}

bool checkControlPoint(const CrsCreator& creator, const ControlPoint& point) {
    const Crs source = creator.createFromName("EPSG:" + point.source, true, true);
    const Crs target = creator.createFromName("EPSG:" + point.target, true, true);
    double east = point.longitude;
    double north = point.latitude;
    transformEastNorth(*source.get(), *target.get(), east, north);
    const double there =
        distanceInMillimetres(*target.get(), east - point.easting, north - point.northing, point.latitude);
    double longitude = point.easting;
    double latitude = point.northing;
    transformEastNorth(*target.get(), *source.get(), longitude, latitude);
    const double back =
        distanceInMillimetres(*source.get(), longitude - point.longitude, latitude - point.latitude, point.latitude);
    const bool met = there <= 1000 * point.tolerance && back <= 1000 * point.tolerance;
    std::printf(
        "  %s\n    %s > %s  computed %14.4f %14.4f  published %13.3f %13.3f  difference %6.2f mm\n"
        "    %s > %s  computed %14.9f %14.9f  published %13.9f %13.9f  difference %6.2f mm  %s\n",
        point.name.c_str(), point.source.c_str(), point.target.c_str(), east, north, point.easting, point.northing,
        there, point.target.c_str(), point.source.c_str(), longitude, latitude, point.longitude, point.latitude, back,
        met ? "ok" : "MISSED");
    return met;
}

int checkControlPoints(const CrsCreator& creator, const std::string& path) {
    printHeading("4. Coordinates: published control points, there and back (easting, northing; longitude, latitude)");
    int missed = 0;
    for (const ControlPoint& point : readControlPoints(path)) missed += checkControlPoint(creator, point) ? 0 : 1;
    std::printf("\n  %s\n", missed == 0 ? "Every point is within its tolerance, both ways." : "POINTS WERE MISSED.");
    return missed;
}

// Prints what the server would write into its exception report.
template <typename Action>
void printFailure(const char* occasion, Action action) {
    try {
        action();
        std::printf("  %-34s nothing failed\n", occasion);
    } catch (const TransformationException& failure) {
        std::printf("  %-34s %-21s %s\n", occasion, failure.getServiceExceptionCode().c_str(), failure.what());
    } catch (const QSHelpers::Exception& failure) {
        std::printf("  %-34s %-21s %s\n", occasion, failure.getServiceExceptionCode().c_str(), failure.what());
    }
}

void printFailures(const CrsCreator& creator) {
    printHeading("5. Failures: service exception code and text");
    printFailure("unknown spelling", [&] { creator.createFromName("epsg:25832", true, true); });
    printFailure("known, but not offered", [&] { creator.createFromName("EPSG:3395", true, true); });
    printFailure("code that is not a number",
                 [&] { creator.createFromName("urn:ogc:def:crs:EPSG::25x32", true, true); });
    printFailure("undefined code", [&] { creator.createFromName("EPSG:99999", true, true); });
    printFailure("point outside the projection", [&] {
        double latitude = 95;
        double longitude = 9;
        const Crs source = creator.createFromName("EPSG:4326", true, true);
        const Crs target = creator.createFromName("EPSG:25832", true, true);
        source->transformTo(target.get(), latitude, longitude);
    });
}

// The codes that an "epsg" file defines, except 0.
std::vector<std::string> readCodes(const std::string& path) {
    std::istringstream lines(readFile(path));
    std::vector<std::string> codes;
    for (std::string line; std::getline(lines, line);)
        if (line.front() == '<' && line.compare(0, 3, "<0>") != 0) codes.push_back(line.substr(1, line.find('>') - 1));
    return codes;
}

double startWithAll(const std::string& projDirectory, const std::vector<std::string>& codes) {
    const auto start = std::chrono::steady_clock::now();
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->setConfigProperty("Proj4ConfigDir", projDirectory);
    for (const std::string& code : codes) config->addCrsConfigData(CrsConfigData("EPSG:" + code));
    config->init();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Runs in a process of its own, because a process has one PROJ directory.
int showProjDirectory(const std::string& projDirectory, const std::string& summaryFile) {
    printHeading("6. A PROJ directory of the whole registry, made by crs-projdir");
    std::istringstream lines(readFile(summaryFile));
    for (std::string line; std::getline(lines, line);) std::printf("%s%s\n", line.empty() ? "" : "  ", line.c_str());
    const std::vector<std::string> codes = readCodes(projDirectory + "/epsg");
    const double seconds = startWithAll(projDirectory, codes);
    std::printf("\n  A server that offers all %zu of them starts in %.2f s.\n", codes.size(), seconds);
    return 0;
}

int showSmallDirectory(const std::string& dataDirectory) {
    const std::unique_ptr<CrsConfig> config = startLibrary(dataDirectory);
    printOffer(*config);
    printNamesIn(config->getCreator());
    printNamesOut(config->getCreator());
    const int missed = checkControlPoints(config->getCreator(), dataDirectory + "/control-points.csv");
    printFailures(config->getCreator());
    return missed == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: %s DATA_DIRECTORY\n       %s PROJ_DIRECTORY SUMMARY_FILE\n", argv[0], argv[0]);
        return 2;
    }
    try {
        return argc == 2 ? showSmallDirectory(argv[1]) : showProjDirectory(argv[1], argv[2]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "demo: %s\n", failure.what());
        return 2;
    }
}
