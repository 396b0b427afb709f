#include <atomic>
#include <cstdint>
#include <cstring>
#include <future>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"

// Many threads use one configuration.
namespace IntegrationTest {
namespace {

using Bits = std::vector<std::uint64_t>;

constexpr int THREADS = 8;
constexpr int ROUNDS = 25;

struct Request {
    const char* source;
    double x;
    double y;
    double z;
    const char* target;
    bool isOutOfReach = false;
};

// Twenty pairs: configured and new names, with and without PROJ, with a datum shift, and with one point out of reach.
const Request REQUESTS[] = {
    {"urn:ogc:def:crs:EPSG::4326", 50.5, 7.25, 10, "EPSG:25832"},
    {"CRS:84", 7.25, 50.5, 10, "http://www.opengis.net/def/crs/EPSG/0/31467"},
    {"EPSG:31467*EPSG:5783", 5596000, 3500000, 10, "EPSG:4979"},
    {"urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701", 651409.903, 313177.27, 10, "epsg.xml#4277"},
    {"EPSG:4326", 0, 99, 10, "EPSG:25832", true},
    {"EPSG:3395", 812345.678, 6543210.987, 10, "urn:x-ogc:def:crs:EPSG:7.9:3857"},
    {"UTM32", 500000, 5761038.25, 10, "UTM32-NE"},
    {"urn:EPSG:geographicCRS:2154", 700000, 6600000, 10, "EPSG:3035*EPSG:5783"},
    {"EPSG:2154", 651234.5, 6861234.5, 0, "CRS:84"},
    {"EPSG:25833", 391234.25, 5819876.5, 34, "EPSG:31468"},
    {"EPSG:21781", 600000, 200000, 550, "EPSG:2056"},
    {"EPSG:2056", 2683141.2, 1247321.9, 408, "EPSG:4326"},
    {"EPSG:28992", 121687.25, 487326.5, -2, "EPSG:25831"},
    {"EPSG:31370", 150000.125, 170000.75, 60, "EPSG:3034"},
    {"EPSG:3857", 1113194.9, 6446275.8, 0, "EPSG:4258"},
    {"EPSG:4258", 48.2, 16.37, 171, "EPSG:31256"},
    {"EPSG:27572", 600000, 2428000, 35, "EPSG:2154"},
    {"EPSG:4979", 60.17, 24.94, 26, "EPSG:4936"},
    {"EPSG:23030", 440000.5, 4474000.5, 650, "EPSG:25830"},
    {"EPSG:29902", 315904.5, 234671.25, 12, "EPSG:2157"},
};

void append(Bits& bits, double value) {
    std::uint64_t pattern = 0;
    std::memcpy(&pattern, &value, sizeof value);
    bits.push_back(pattern);
}

void answer(const Server& server, const Request& request, Bits& answers) {
    double x = request.x;
    double y = request.y;
    double z = request.z;
    const Crs source = server.known(request.source);
    const Crs target = server.known(request.target);
    const Raised raised = raisedBy([&] { source->transformTo(target.get(), x, y, z); });
    EXPECT_EQ(raised.type, request.isOutOfReach ? "TransExecException" : "nothing") << request.source;
    for (const double value : {x, y, z}) append(answers, value);
}

Bits answerAll(const Server& server) {
    Bits answers;
    for (int round = 0; round < ROUNDS; ++round)
        for (const Request& request : REQUESTS) answer(server, request, answers);
    return answers;
}

// All threads start at once.
std::vector<Bits> answerOnThreads(const Server& server) {
    std::vector<Bits> answers(THREADS);
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    std::vector<std::thread> threads;
    for (Bits& threadAnswers : answers)
        threads.emplace_back([&server, &threadAnswers, started] {
            started.wait();
            threadAnswers = answerAll(server);
        });
    start.set_value();
    for (std::thread& thread : threads) thread.join();
    return answers;
}

TEST(ThreadsTest, GetTheSameBitsAsOneThread) {
    const Server server;
    const std::vector<Bits> answers = answerOnThreads(server);
    const Bits expected = answerAll(server);
    for (const Bits& threadAnswers : answers) EXPECT_EQ(threadAnswers, expected);
}

// Only two codes are configured, and the threads run before anything else. They bind the other codes and meet at the
// first use of each pair.
TEST(ThreadsTest, MayBeTheFirstToUseACode) {
    const Server server(
        std::istringstream("<SRSList><SRS mapToEpsgCode='25832'>UTM32</SRS>"
                           "<SRS mapToEpsgCode='25832' axisOrder='NE'>UTM32-NE</SRS>"
                           "<SRS>CRS:84</SRS></SRSList>"));
    const std::vector<Bits> answers = answerOnThreads(server);
    const Bits expected = answerAll(server);
    for (const Bits& threadAnswers : answers) EXPECT_EQ(threadAnswers, expected);
}

TEST(ThreadsTest, GetTheSameFailures) {
    const Server server;
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([&server] {
            for (int round = 0; round < ROUNDS; ++round) {
                EXPECT_EQ(raisedBy([&] { server.known("EPSG:9999"); }).type, "Misconfigured");
                EXPECT_EQ(raisedBy([&] { server.request("EPSG:3395"); }).type, "CrsNotConfigured");
                EXPECT_EQ(server.request("UTM32")->getPrimaryCode(), 25832U);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

// A server that reads its configuration again while it works. A request keeps the configuration with which it began.
class ReloadingServer {
public:
    ReloadingServer() : current(makeConfig(0)) {}

    std::shared_ptr<const CrsConfig> config() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return current;
    }

    void reload(unsigned int decimals) {
        std::shared_ptr<const CrsConfig> next = makeConfig(decimals);
        const std::lock_guard<std::mutex> lock(mutex);
        current.swap(next);
    }

private:
    static std::shared_ptr<const CrsConfig> makeConfig(unsigned int decimals) {
        std::shared_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
        config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
        if (decimals % 2 != 0) config->setConfigProperty("AxisOrderConvention", "established");
        std::istringstream document("<SRSList><SRS>4326</SRS><SRS mapToEpsgCode='25832' numberOfDecimalPlaces='" +
                                    std::to_string(decimals) + "'>UTM32</SRS></SRSList>");
        config->configure(document);
        config->init();
        return config;
    }

    mutable std::mutex mutex;
    std::shared_ptr<const CrsConfig> current;
};

void serveOnce(const ReloadingServer& server) {
    const std::shared_ptr<const CrsConfig> config = server.config();
    const CrsCreator& creator = config->getCreator();
    const Crs utm = creator.createFromName("UTM32", true, true);
    const bool isEstablished = config->getConfigProperty("AxisOrderConvention") == "established";
    for (const char* const name : {"EPSG:4326", "epsg.xml#4326", "urn:ogc:def:crs:EPSG::4326"}) {
        const Crs geographic = creator.createFromName(name, true, true);
        const bool isEastFirst = isEstablished && std::string(name).rfind("urn", 0) != 0;
        double x = 500000;
        double y = 5538630.7027;
        utm->transformTo(geographic.get(), x, y);
        EXPECT_NEAR(isEastFirst ? x : y, 9, 1e-8) << name;
        EXPECT_NEAR(isEastFirst ? y : x, 50, 1e-8) << name;
    }
}

TEST(ReloadTest, SwapsConfigurationsWhileRequestsRun) {
    ReloadingServer server;
    std::atomic<bool> ended = false;
    std::vector<std::thread> requests;
    for (int i = 0; i < THREADS; ++i)
        requests.emplace_back([&server, &ended] {
            do serveOnce(server);
            while (!ended);
        });
    std::vector<std::thread> reloads;
    for (unsigned int first : {1U, 2U})
        reloads.emplace_back([&server, first] {
            for (unsigned int decimals = first; decimals < ROUNDS; decimals += 3) server.reload(decimals);
        });
    for (std::thread& thread : reloads) thread.join();
    ended = true;
    for (std::thread& thread : requests) thread.join();
}

}  // namespace
}  // namespace IntegrationTest
