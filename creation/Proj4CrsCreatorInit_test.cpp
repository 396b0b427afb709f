// How the creator settles the PROJ directory.

#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>

#include <boost/filesystem/exception.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4CrsCreator.h"
#include "proj/classic/ClassicProj.h"
#include "tests/support/Failures.h"
#include "tests/support/FreshProj4Settings.h"
#include "tests/support/GoneWorkingDirectory.h"
#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr char BUILT_IN_DIRECTORY[] = "/opt/quarvelserver/share/proj4";

class Proj4CrsCreatorInitTest : public testing::Test {
protected:
    // A code that this process has not bound before.
    static unsigned int newCode() {
        static unsigned int last = 910000;
        return ++last;
    }
    // A complete directory: its files have only `code`, in east-north order.
    std::string givenDirectoryFor(unsigned int code) {
        const std::string name = std::to_string(code);
        temporary.makeDirectory(name);
        temporary.write(name + "/epsg", "<" + name + "> +proj=longlat +datum=WGS84 +no_defs <>\n");
        temporary.write(name + "/epsg-axisorder.csv", name + ";en\n");
        return temporary.file(name);
    }
    std::string givenDirectoryOf(const std::string& epsg, const std::string& axisOrders) {
        temporary.makeDirectory("proj");
        temporary.write("proj/epsg", epsg);
        temporary.write("proj/epsg-axisorder.csv", axisOrders);
        return temporary.file("proj");
    }

    static void init(const std::string& property) {
        CrsConfig config;
        config.setConfigProperty("Proj4ConfigDir", property);
        Proj4CrsCreator(config).init();
    }
    static void initWithoutProperty() {
        const CrsConfig config;
        Proj4CrsCreator(config).init();
    }
    template <typename Init>
    static void expectMisconfigured(Init initialise, const std::string& message) {
        EXPECT_EQ(TestSupport::reportOf<Misconfigured>(initialise), "qvConfigurationError: " + message);
        EXPECT_FALSE(searchPathSet);
    }
    static void expectMisconfiguredBy(const std::string& property, const std::string& message) {
        expectMisconfigured([&] { init(property); }, message);
    }
    static void expectSettledFor(unsigned int code) {
        EXPECT_TRUE(searchPathSet);
        EXPECT_THAT(axisOrderTable, ElementsAre(Pair(code, true)));
        EXPECT_TRUE(isKnownToProj(code));
    }
    static bool isKnownToProj(unsigned int code) {
        const CrsConfig config;
        try {
            const std::unique_ptr<AbstractCrs> crs(Proj4CrsCreator(config).createFromCode(code, 0, true));
            return crs != nullptr;
        } catch (const Misconfigured&) {
            return false;
        }
    }
    static std::string directoryNotFound(const std::string& directory) {
        return "Configured Proj4 directory \"" + directory + "\" not found!";
    }
    static std::string fileNotFound(const std::string& path) { return "File \"" + path + "\" not found!\""; }

    FreshProj4Settings settings;
    TestSupport::TemporaryDirectory temporary;
};

TEST_F(Proj4CrsCreatorInitTest, DoesNothingUntilItIsCalled) {
    FreshProj4Settings::givenEnvironment(givenDirectoryFor(newCode()));
    const CrsConfig config;
    const Proj4CrsCreator creator(config);
    EXPECT_FALSE(searchPathSet);
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(Proj4CrsCreatorInitTest, TakesThePropertyBeforeTheEnvironment) {
    const unsigned int code = newCode();
    FreshProj4Settings::givenEnvironment(givenDirectoryFor(newCode()));
    init(givenDirectoryFor(code));
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, DoesNotFallBackFromAPropertyThatDoesNotServe) {
    FreshProj4Settings::givenEnvironment(givenDirectoryFor(newCode()));
    expectMisconfiguredBy(temporary.file("missing"), directoryNotFound(temporary.file("missing")));
}

TEST_F(Proj4CrsCreatorInitTest, TakesTheEnvironmentWithoutAProperty) {
    const unsigned int code = newCode();
    FreshProj4Settings::givenEnvironment(givenDirectoryFor(code));
    initWithoutProperty();
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, TakesTheEnvironmentForAnEmptyProperty) {
    const unsigned int code = newCode();
    FreshProj4Settings::givenEnvironment(givenDirectoryFor(code));
    init("");
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, DoesNotFallBackFromAnEnvironmentThatDoesNotServe) {
    FreshProj4Settings::givenEnvironment(temporary.file("missing"));
    expectMisconfigured(initWithoutProperty, directoryNotFound(temporary.file("missing")));
}

TEST_F(Proj4CrsCreatorInitTest, TakesTheBuiltInDirectoryWithoutBoth) {
    ASSERT_FALSE(std::filesystem::exists(BUILT_IN_DIRECTORY)) << "this test needs a machine without the server";
    expectMisconfigured(initWithoutProperty, directoryNotFound(BUILT_IN_DIRECTORY));
    FreshProj4Settings::givenEnvironment("");
    expectMisconfigured(initWithoutProperty, directoryNotFound(BUILT_IN_DIRECTORY));
    expectMisconfiguredBy("", directoryNotFound(BUILT_IN_DIRECTORY));
}

TEST_F(Proj4CrsCreatorInitTest, ReportsWhatIsNoDirectory) {
    const std::string file = temporary.write("file", "");
    const std::string dangling = temporary.makeSymlink("dangling", temporary.file("missing"));
    for (const std::string& property : {temporary.file("missing"), file, file + "/below", dangling, std::string(" ")})
        expectMisconfiguredBy(property, directoryNotFound(property));
}

TEST_F(Proj4CrsCreatorInitTest, AcceptsALinkToADirectory) {
    const unsigned int code = newCode();
    init(temporary.makeSymlink("link", givenDirectoryFor(code)));
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, AcceptsADirectoryWithBlanksAndOtherLetters) {
    const unsigned int code = newCode();
    const std::string odd = temporary.file("proj \xC3\xA9;*");
    std::filesystem::rename(givenDirectoryFor(code), odd);
    init(odd);
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, ReportsAMissingInitFileFirst) {
    const std::string directory = temporary.makeDirectory("proj");
    expectMisconfiguredBy(directory, fileNotFound(directory + "/epsg"));
    temporary.write("proj/epsg-axisorder.csv", "4326;ne\n");
    expectMisconfiguredBy(directory, fileNotFound(directory + "/epsg"));
    temporary.makeDirectory("proj/epsg");
    expectMisconfiguredBy(directory, fileNotFound(directory + "/epsg"));
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(Proj4CrsCreatorInitTest, ReportsAMissingAxisOrderFile) {
    const std::string directory = temporary.makeDirectory("proj");
    temporary.write("proj/epsg", "");
    expectMisconfiguredBy(directory, fileNotFound(directory + "/epsg-axisorder.csv"));
    temporary.makeDirectory("proj/epsg-axisorder.csv");
    expectMisconfiguredBy(directory, fileNotFound(directory + "/epsg-axisorder.csv"));
}

TEST_F(Proj4CrsCreatorInitTest, ReportsAnInitFileThatCannotBeRead) {
    const std::string directory = givenDirectoryOf("", "4326;ne\n");
    std::filesystem::remove(directory + "/epsg");
    temporary.makeSymlink("proj/epsg", "/proc/self/mem");
    expectMisconfiguredBy(directory, "Unable to read init file \"" + directory + "/epsg\": Input/output error");
}

TEST_F(Proj4CrsCreatorInitTest, ReportsAnInitFileBeyondAllMeasure) {
    const std::string directory = givenDirectoryOf("", "4326;ne\n");
    std::filesystem::resize_file(directory + "/epsg", (std::uintmax_t{256} << 20) + 1);
    expectMisconfiguredBy(directory, "Unable to read init file \"" + directory + "/epsg\": it is larger than 256 MB");
    std::filesystem::resize_file(directory + "/epsg", 0);
    init(directory);
    EXPECT_TRUE(searchPathSet);
}

TEST_F(Proj4CrsCreatorInitTest, LetsTheFaultOfAMalformedAxisOrderFilePass) {
    const std::string directory = givenDirectoryOf("", "4326;NE\n");
    const std::string message = "Error in AxisOrder configuration file \"" + directory +
                                "/epsg-axisorder.csv\", line 2: only the values \"en\" or \"ne\" are allowed";
    expectMisconfiguredBy(directory, message);
    expectMisconfiguredBy(directory, message);
}

TEST_F(Proj4CrsCreatorInitTest, GoesOnWithThePartialTableOfAMalformedAxisOrderFile) {
    const std::string directory = givenDirectoryOf("", "4326;ne\nabc;en\n");
    expectMisconfiguredBy(directory, "Error in AxisOrder configuration file \"" + directory +
                                         "/epsg-axisorder.csv\", line 3: abc is not a valid EPSG code");
    init(directory);
    EXPECT_TRUE(searchPathSet);
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, false)));
}

constexpr char DESCRIPTION_HEADER[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";

std::string descriptionOf(unsigned int code) {
    return DESCRIPTION_HEADER + std::to_string(code) + ",a CRS,geographic,,,,,,degree,0.0174532925199433,,,,,,\n";
}

TEST_F(Proj4CrsCreatorInitTest, ReadsTheDescriptionsOfADirectoryThatHasThem) {
    const unsigned int code = newCode();
    const std::string directory = givenDirectoryFor(code);
    temporary.write(std::to_string(code) + "/epsg-info.csv", descriptionOf(code));
    const CrsDescriptions& descriptions = CrsDescriptions::ofProjDirectory();
    EXPECT_EQ(descriptions.size(), 0U);
    init(directory);
    ASSERT_EQ(descriptions.size(), 1U);
    EXPECT_EQ(descriptions.find(code)->name, "a CRS");
    temporary.write(std::to_string(code) + "/epsg-info.csv", "not read again");
    init(directory);
    EXPECT_EQ(CrsDescriptions::ofProjDirectory().size(), 1U);
}

TEST_F(Proj4CrsCreatorInitTest, NeedsNoDescriptions) {
    const unsigned int code = newCode();
    init(givenDirectoryFor(code));
    expectSettledFor(code);
    EXPECT_EQ(CrsDescriptions::ofProjDirectory().size(), 0U);
}

TEST_F(Proj4CrsCreatorInitTest, RefusesDescriptionsThatAreDamaged) {
    const unsigned int code = newCode();
    const std::string directory = givenDirectoryFor(code);
    const std::string path = temporary.write(std::to_string(code) + "/epsg-info.csv", descriptionOf(code) + "7\n");
    expectMisconfiguredBy(directory,
                          "Error in CRS description file \"" + path + "\", line 3: the line has 1 cells instead of 16");
    EXPECT_EQ(CrsDescriptions::ofProjDirectory().size(), 0U);
    std::filesystem::remove(path);
    init(directory);
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, RefusesDescriptionsThatAreNoRegularFile) {
    const unsigned int code = newCode();
    const std::string directory = givenDirectoryFor(code);
    const std::string path = directory + "/epsg-info.csv";
    std::filesystem::create_directory(path);
    expectMisconfiguredBy(directory, fileNotFound(path));
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expectMisconfiguredBy(directory, fileNotFound(path));
    std::filesystem::remove(path);
    std::filesystem::create_symlink(temporary.file("missing"), path);
    expectMisconfiguredBy(directory, fileNotFound(path));
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/proc/self/mem", path);
    expectMisconfiguredBy(directory, "Unable to read CRS description file \"" + path + "\": Input/output error");
    std::filesystem::remove(path);
    std::filesystem::create_symlink(path, path);
    EXPECT_THROW(init(directory), boost::filesystem::filesystem_error);
}

// The descriptions of an unusable directory never take effect.
TEST_F(Proj4CrsCreatorInitTest, ForgetsTheDescriptionsOfADirectoryThatProjCannotSearch) {
    const unsigned int code = newCode();
    givenDirectoryFor(code);
    temporary.write(std::to_string(code) + "/epsg-info.csv", descriptionOf(code));
    const TestSupport::GoneWorkingDirectory gone(temporary.file("work"));
    EXPECT_THROW(init("../" + std::to_string(code)), Misconfigured);
    EXPECT_EQ(CrsDescriptions::ofProjDirectory().size(), 0U);
}

TEST_F(Proj4CrsCreatorInitTest, LetsFailuresOfTheFileSystemPass) {
    const std::string loop = temporary.makeSymlink("loop", temporary.file("loop"));
    EXPECT_THROW(init(loop), boost::filesystem::filesystem_error);
    temporary.makeDirectory("proj");
    temporary.makeSymlink("proj/epsg", loop);
    EXPECT_THROW(init(temporary.file("proj")), boost::filesystem::filesystem_error);
    EXPECT_FALSE(searchPathSet);
}

// The files exist, but the search path needs an absolute name. PROJ's text follows the directory without a separator.
TEST_F(Proj4CrsCreatorInitTest, ReportsADirectoryThatProjCannotSearch) {
    const unsigned int code = newCode();
    givenDirectoryFor(code);
    const std::string directory = "../" + std::to_string(code);
    const TestSupport::GoneWorkingDirectory gone(temporary.file("work"));
    const std::string report = TestSupport::reportOf<Misconfigured>([&] { init(directory); });
    const int error = *ClassicProj::pj_get_errno_ref();
    ASSERT_NE(error, 0);
    EXPECT_EQ(report, "qvConfigurationError: Proj4 reported an error using configuration directory " + directory +
                          ClassicProj::pj_strerrno(error));
    EXPECT_FALSE(searchPathSet);
}

TEST_F(Proj4CrsCreatorInitTest, RepeatsItsChecksAfterAFailure) {
    const unsigned int code = newCode();
    const std::string directory = temporary.file(std::to_string(code));
    expectMisconfiguredBy(directory, directoryNotFound(directory));
    expectMisconfiguredBy(directory, directoryNotFound(directory));
    expectMisconfiguredBy(temporary.file("missing"), directoryNotFound(temporary.file("missing")));
    givenDirectoryFor(code);
    init(directory);
    expectSettledFor(code);
}

TEST_F(Proj4CrsCreatorInitTest, StaysWithTheFirstDirectory) {
    const unsigned int first = newCode();
    const unsigned int second = newCode();
    init(givenDirectoryFor(first));
    init(givenDirectoryFor(second));
    EXPECT_FALSE(isKnownToProj(second));
    expectSettledFor(first);
}

TEST_F(Proj4CrsCreatorInitTest, ChecksNothingOnceTheDirectoryIsSettled) {
    const unsigned int code = newCode();
    const std::string directory = givenDirectoryFor(code);
    init(directory);
    std::filesystem::remove_all(directory);
    EXPECT_NO_THROW(init(directory));
    EXPECT_NO_THROW(init(temporary.file("missing")));
    EXPECT_NO_THROW(initWithoutProperty());
    EXPECT_TRUE(searchPathSet);
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(code, true)));
}

TEST_F(Proj4CrsCreatorInitTest, OutlivesTheCreatorThatSettledTheDirectory) {
    const unsigned int code = newCode();
    {
        const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
        config->setConfigProperty("Proj4ConfigDir", givenDirectoryFor(code));
        config->init();
    }
    expectSettledFor(code);
}

}  // namespace
}  // namespace CoordinateTransformation
