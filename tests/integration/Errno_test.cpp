#include <cerrno>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"

// The library leaves errno unchanged, because a server may read it after a call.
namespace IntegrationTest {
namespace {

// A value that no operation sets.
constexpr int SENTINEL = 4711;

std::istringstream fragment(const std::string& entries) {
    return std::istringstream("<CrsConfiguration>" + entries + "</CrsConfiguration>");
}

std::unique_ptr<CrsConfig> givenDirectory(const std::string& directory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", directory);
    return config;
}

void initialise(const std::string& directory, const std::string& entries) {
    const std::unique_ptr<CrsConfig> config = givenDirectory(directory);
    std::istringstream document = fragment(entries);
    errno = SENTINEL;
    config->init();
    config->configure(document);
    config->init();
}

void configure(const std::string& text) {
    CrsConfig config;
    std::istringstream document(text);
    errno = SENTINEL;
    config.configure(document);
}

void transform(const std::string& source, const std::string& target, double x, double y) {
    const Server server;
    const Crs from = server.known(source);
    const Crs to = server.known(target);
    double horizontal[] = {x, y};
    double z = 0;
    errno = SENTINEL;
    from->transformTo(to.get(), horizontal[0], horizontal[1]);
    from->transformTo(to.get(), x, y, z);
}

// Creates, uses, moves and destroys a transformer.
void transformArrays(const std::string& source, const std::string& target, double x, double y) {
    const Server server;
    const Crs from = server.known(source);
    const Crs to = server.known(target);
    double points[] = {x, y, 1e30, 1e30};
    errno = SENTINEL;
    CoordinateTransformation::PointTransformer transformer(*from.get(), *to.get());
    transformer.transform(2, &points[0], &points[1], nullptr, 2);
    transformer.transformBounds({x, y, x + 1, y + 1});
    transformer = CoordinateTransformation::PointTransformer(*to.get(), *from.get());
}

std::function<void()> creating(const std::string& name) {
    return [name] {
        const Server server;
        errno = SENTINEL;
        server.known(name);
    };
}

// An operation, and whether it fails. `run` sets errno to SENTINEL just before the operation.
struct Operation {
    const char* name;
    std::function<void()> run;
    bool fails;
};

void PrintTo(const Operation& operation, std::ostream* stream) { *stream << operation.name; }

const char DATA[] = COORDTRANS_SOURCE_DIR "/data/proj";

const Operation OPERATIONS[] = {
    // These two are first, because a process keeps the first directory that works.
    {"init with a directory that does not exist", [] { initialise("/no/such/directory", ""); }, true},
    {"init with a directory without the files", [] { initialise(COORDTRANS_SOURCE_DIR "/docs", ""); }, true},
    {"init", [] { initialise(DATA, "<CRS>4326</CRS><CRS>27700</CRS>"); }, false},
    {"init with an unknown code", [] { initialise(DATA, "<CRS>99999</CRS>"); }, true},
    {"init with an unknown name", [] { initialise(DATA, "<CRS>anything</CRS>"); }, true},
    {"configure",
     [] {
         configure(
             "<SRSList><SRS numberOfDecimalPlaces=\"99999999999999999999\" axisOrder=\"EN\">4326</SRS>"
             "<SRS numberOfDecimalPlaces=\"3\" suppressDuplicatCoordinates=\"1\">25832</SRS></SRSList>");
     },
     false},
    {"configure with a malformed fragment", [] { configure("<SRSList><SRS>4326</SRS>"); }, true},
    {"merge",
     [] {
         const Server server;
         const Server other(fragment("<CRS>3395</CRS>"));
         errno = SENTINEL;
         server.config->merge(*other.config);
     },
     false},
    {"a configuration for the environment",
     [] {
         unsetenv("USE_COORD_TRANSFORMATION_SUBSYSTEM");
         errno = SENTINEL;
         const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
     },
     false},
    {"a configuration for an unknown subsystem", [] { CrsConfig::createConfigFromId("other"); }, true},
    {"a registered name", creating("EPSG:4326"), false},
    {"a URN", creating("urn:ogc:def:crs:EPSG:7.1:3395"), false},
    {"a URL", creating("http://www.opengis.net/def/crs/EPSG/7/3395"), false},
    {"a GML reference", creating("epsg.xml#3395"), false},
    {"a code", creating("3395"), false},
    {"a WFS 1.1 URN", creating("urn:EPSG:geographicCRS:4258"), false},
    {"an unknown name", creating("anything"), true},
    {"an unknown code", creating("EPSG:99998"), true},
    {"a URN without a number", creating("urn:ogc:def:crs:EPSG::abc"), true},
    {"a truncated EPSG name", creating("EPSG:4326*5783"), true},
    {"a text form",
     [] {
         const Server server;
         errno = SENTINEL;
         const std::unique_ptr<AbstractCrs> crs(server.creator().createFromSpecialTextFormat("EPSG:4326;EN;1e-300"));
     },
     false},
    {"a text form with a factor that is too small",
     [] {
         const Server server;
         errno = SENTINEL;
         const std::unique_ptr<AbstractCrs> crs(server.creator().createFromSpecialTextFormat("EPSG:4326;EN;1e-400"));
     },
     false},
    {"a text form with a factor that is too large",
     [] {
         const Server server;
         errno = SENTINEL;
         server.creator().createFromSpecialTextFormat("EPSG:4326;EN;1e400");
     },
     true},
    {"transformTo", [] { transform("EPSG:4326", "EPSG:25832", 52, 9); }, false},
    {"transformTo with a datum shift", [] { transform("EPSG:31467", "EPSG:4326", 5596000, 3500000); }, false},
    {"transformTo between CRS of one code", [] { transform("EPSG:4326", "EPSG:4979", 52, 9); }, false},
    {"transformTo beyond the projection", [] { transform("EPSG:4326", "EPSG:25832", 0, 99); }, true},
    {"arrays and boxes", [] { transformArrays("EPSG:4326", "EPSG:25832", 52, 9); }, false},
    {"arrays and boxes with a datum shift", [] { transformArrays("EPSG:31467", "EPSG:4326", 5596000, 3500000); },
     false},
    {"arrays and boxes between CRS of one code", [] { transformArrays("EPSG:4326", "EPSG:4979", 52, 9); }, false},
    {"a box beyond the projection", [] { transformArrays("EPSG:4326", "EPSG:25832", 98, 9); }, true},
    {"the forms of a CRS",
     [] {
         const Server server;
         const Crs crs = server.request("27700*5701");
         errno = SENTINEL;
         crs->getAsText();
         crs->getAsURL("base", "\1", "\1\2");
         crs->getAliasOrAsOgcURN(nullptr, true);
     },
     false},
    {"the text form of an unknown CRS",
     [] { std::unique_ptr<AbstractCrs>(Server().creator().createUnknown())->getAsText(); }, true},
    {"a change of code",
     [] {
         const Server server;
         Crs crs = server.known("EPSG:4326");
         errno = SENTINEL;
         crs.mod()->setCode(3395, 0, true);
     },
     false},
    {"a change to an unknown code",
     [] {
         const Server server;
         Crs crs = server.known("EPSG:4326");
         errno = SENTINEL;
         crs.mod()->setCode(99997, 0, true);
     },
     true},
};

class ErrnoTest : public testing::TestWithParam<Operation> {};

TEST_P(ErrnoTest, IsUnchanged) {
    bool failed = false;
    errno = SENTINEL;
    try {
        GetParam().run();
    } catch (const std::exception&) {
        failed = true;
    }
    const int found = errno;
    EXPECT_EQ(found, SENTINEL);
    EXPECT_EQ(failed, GetParam().fails);
}

INSTANTIATE_TEST_SUITE_P(Operations, ErrnoTest, testing::ValuesIn(OPERATIONS));

}  // namespace
}  // namespace IntegrationTest
