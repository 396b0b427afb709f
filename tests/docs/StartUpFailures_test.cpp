#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/FailureTable.h"
#include "tests/support/TemporaryDirectory.h"

// Provokes what stops `init` before the PROJ directory is settled. Nothing in this program settles one.
namespace DocsTest {
namespace {

using CoordinateTransformation::CrsConfig;

const std::string DESCRIPTION_COLUMNS =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";

class StartUpFailuresTest : public testing::Test {
protected:
    static void init(const std::string& directory) {
        const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
        config->setConfigProperty("Proj4ConfigDir", directory);
        config->init();
    }

    void initWithAxisOrders(const std::string& content) const {
        directory.write("epsg", "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n");
        directory.write("epsg-axisorder.csv", content);
        init(directory.name());
    }

    void initWithDescriptions(const std::string& content) const {
        directory.write("epsg-info.csv", content);
        initWithAxisOrders("4326;ne\n");
    }

    // A regular file by its type whose first byte no process may read.
    void initWithUnreadable(const std::string& file) const {
        const TestSupport::TemporaryDirectory& root = directory;
        std::filesystem::remove_all(root.file("broken"));
        const std::string broken = root.makeDirectory("broken");
        root.write("broken/epsg", "");
        root.write("broken/epsg-axisorder.csv", "");
        std::filesystem::remove(root.file("broken/" + file));
        root.makeSymlink("broken/" + file, "/proc/self/mem");
        init(broken);
    }

    // The failures, with the directory in place of "DIR".
    std::vector<Failure> failures() const {
        std::vector<Failure> found = failuresOf("directory");
        for (Failure& failure : found) {
            std::string& text = failure.raised.text;
            const std::size_t at = text.find("DIR");
            if (at != std::string::npos) text.replace(at, 3, directory.name());
        }
        return found;
    }

    const TestSupport::TemporaryDirectory directory;
};

TEST_F(StartUpFailuresTest, AreThoseOfTheTable) {
    expectFailures(
        failures(),
        {
            {"no directory", [this] { init(directory.file("none")); }},
            {"no epsg file", [this] { init(directory.makeDirectory("empty")); }},
            {"no axis-order file",
             [this] {
                 const std::string half = directory.makeDirectory("half");
                 directory.write("half/epsg", "");
                 init(half);
             }},
            {"epsg file that breaks off", [this] { initWithUnreadable("epsg"); }},
            {"axis-order file that breaks off", [this] { initWithUnreadable("epsg-axisorder.csv"); }},
            {"axis-order line without two fields", [this] { initWithAxisOrders("4326\n"); }},
            {"unknown axis order", [this] { initWithAxisOrders("4326;EN\n"); }},
            {"axis order of a malformed code", [this] { initWithAxisOrders("EPSG:4326;en\n"); }},
            {"directory in place of a description file",
             [this] {
                 const std::string odd = directory.makeDirectory("odd");
                 directory.write("odd/epsg", "");
                 directory.write("odd/epsg-axisorder.csv", "");
                 directory.makeDirectory("odd/epsg-info.csv");
                 init(odd);
             }},
            {"description file that breaks off", [this] { initWithUnreadable("epsg-info.csv"); }},
            {"description file with other columns", [this] { initWithDescriptions("code,name\n"); }},
            {"truncated description", [this] { initWithDescriptions(DESCRIPTION_COLUMNS + "4326,WGS 84\n"); }},
            {"description with a bad cell",
             [this] {
                 initWithDescriptions(DESCRIPTION_COLUMNS + "4326,WGS 84,geographic,World,-180,-90,180,95,,,,,,,,\n");
             }},
        });
}

}  // namespace
}  // namespace DocsTest
