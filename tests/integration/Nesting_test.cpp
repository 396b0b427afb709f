// Reads nested elements with the built library, on a thread with a small stack.

#include <cstddef>
#include <pthread.h>
#include <sstream>
#include <string>

#include <boost/property_tree/detail/xml_parser_error.hpp>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CoordinateTransformation.h"

namespace {

using boost::property_tree::xml_parser::xml_parser_error;
using CoordinateTransformation::CrsConfig;

std::string nested(std::size_t depth) {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i) xml += "<a>";
    for (std::size_t i = 0; i < depth; ++i) xml += "</a>";
    return xml;
}

bool configure(CrsConfig& config, const std::string& xml) {
    std::istringstream fragment(xml);
    try {
        config.configure(fragment);
        return true;
    } catch (const xml_parser_error&) {
        return false;
    }
}

template <typename Action>
void runOnASmallStack(Action action) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, COORDTRANS_SMALL_STACK), 0);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        (*static_cast<Action*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &action), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(NestingTest, FitsASmallStackToADepthOf256) {
    CrsConfig config;
    runOnASmallStack([&] {
        EXPECT_TRUE(configure(config, nested(256)));
        EXPECT_TRUE(configure(config, "<SRSList><SRS>1" + nested(254) + "</SRS><SRS>2</SRS></SRSList>"));
    });
    EXPECT_EQ(config.getConfiguredCrs()->size(), 2U);
}

TEST(NestingTest, IsRefusedBeyondADepthOf256) {
    CrsConfig config;
    runOnASmallStack([&] {
        for (const std::size_t depth : {256U, 1000U, 20000U, 1000000U})
            EXPECT_FALSE(configure(config, "<SRSList>" + nested(depth) + "</SRSList>")) << depth;
    });
    EXPECT_TRUE(config.getConfiguredCrs()->empty());
}

}  // namespace
