#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"

// A server can catch every failure of the library, and the library prints nothing.
namespace IntegrationTest {
namespace {

void transform(const Server& server, const std::string& source, const std::string& target, double x, double y) {
    server.known(source)->transformTo(server.known(target).get(), x, y);
}

struct Failure {
    const char* name;
    std::function<void(const Server&)> provoke;
};

void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.name; }

const Failure FAILURES[] = {
    {"CrsUnknownSyntaxOrAlias", [](const Server& server) { server.request("anything"); }},
    {"CrsNotConfigured", [](const Server& server) { server.request("EPSG:3395"); }},
    {"Misconfigured", [](const Server& server) { server.known("EPSG:9999"); }},
    {"Misconfigured by an unknown subsystem", [](const Server&) { CrsConfig::createConfigFromId("other"); }},
    {"TransExecException", [](const Server& server) { transform(server, "EPSG:4326", "EPSG:25832", 0, 99); }},
    {"ConversionError", [](const Server& server) { server.request("urn:ogc:def:crs:EPSG::abc"); }},
    {"UnexpectedException",
     [](const Server& server) { std::unique_ptr<AbstractCrs>(server.creator().createUnknown())->getAsText(); }},
};

class FailureTest : public testing::TestWithParam<Failure> {
protected:
    // Returns whether the failure can be caught as a T and has a text.
    template <typename T>
    bool isCaughtAs() const {
        try {
            GetParam().provoke(server);
        } catch (const T& failure) {
            return failure.what() != nullptr && *failure.what() != '\0';
        } catch (...) {
        }
        return false;
    }

    const Server server;
};

TEST_P(FailureTest, IsCaughtAsAStandardException) { EXPECT_TRUE(isCaughtAs<std::exception>()); }

TEST_P(FailureTest, IsCaughtAsTheRootOfTheFamily) { EXPECT_TRUE(isCaughtAs<structured_exception>()); }

TEST_P(FailureTest, IsCaughtAsOneOfTheBranches) {
    EXPECT_NE(isCaughtAs<CoordinateTransformation::TransformationException>(), isCaughtAs<QSHelpers::Exception>());
}

TEST_P(FailureTest, OutlivesTheConfiguration) {
    auto anotherServer = std::make_unique<Server>();
    std::exception_ptr kept;
    try {
        GetParam().provoke(*anotherServer);
    } catch (...) {
        kept = std::current_exception();
    }
    anotherServer.reset();
    const std::string text = raisedBy([&] { std::rethrow_exception(kept); }).text;
    EXPECT_EQ(text, raisedBy([this] { GetParam().provoke(server); }).text);
    EXPECT_FALSE(text.empty());
}

INSTANTIATE_TEST_SUITE_P(Classes, FailureTest, testing::ValuesIn(FAILURES));

TEST(ForeignFailureTest, PassesThroughFromTheXmlReader) {
    try {
        Server server(std::istringstream("<SRSList>\n<SRS>4326</SRS>\n"));
        FAIL() << "the fragment is accepted";
    } catch (const boost::property_tree::xml_parser_error& failure) {
        EXPECT_FALSE(failure.message().empty());
    }
}

TEST(ForeignFailureTest, PassesThroughFromTheStandardLibrary) {
    const Server server;
    EXPECT_THROW(server.request("EPSG:4326*5783"), std::out_of_range);
}

TEST(TypesTest, AreTheSameInServerAndLibrary) {
    const Server server;
    EXPECT_NE(dynamic_cast<const CoordinateTransformation::Proj4Crs*>(server.request("4326").get()), nullptr);
    EXPECT_NE(dynamic_cast<const CoordinateTransformation::Proj4CrsCreator*>(&server.creator()), nullptr);
}

// Starts, uses and destroys a server, with failures of every kind.
void runServer() {
    const Server server;
    for (const Failure& failure : FAILURES) raisedBy([&] { failure.provoke(server); });
    transform(server, "EPSG:4326", "EPSG:25832", 52, 9);
    transform(server, "EPSG:31467", "EPSG:4326", 5596000, 3500000);
    for (const char* const entry : {"<SRS>9999</SRS>", "<SRS>anything</SRS>"})
        raisedBy([&] { Server(std::istringstream("<SRSList>" + std::string(entry) + "</SRSList>")); });
    server.known("EPSG:4326")->getAsText();
}

TEST(OutputTest, IsEmptyOnBothStreams) {
    setenv("PROJ_DEBUG", "3", 1);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    runServer();
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(errors, "");
    unsetenv("PROJ_DEBUG");
}

}  // namespace
}  // namespace IntegrationTest
