// The names of requests, as a whole through createFromName.

#include <cstddef>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "QSHelpers/ConversionError.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tests/support/PooledCreator.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using TestSupport::FakeCrs;

constexpr std::size_t MEGABYTE = 1 << 20;
const std::string HOST = "www.opengis.net";
const std::string ZEROS(MEGABYTE, '0');

struct Spelling {
    std::string name;
    unsigned int primary;
    unsigned int secondary;
    std::string version;
    std::string alias;
};

const Spelling ACCEPTED[] = {
    {"urn:ogc:def:crs:EPSG::4326", 4326, 0, "", ""},
    {"urn:ogc:def:crs:EPSG:6.12:4326", 4326, 0, "6.12", ""},
    {"urn:x-ogc:def:crs:EPSG:6.12:4326", 4326, 0, "6.12", ""},
    {"urn:ogc:def:crs:epsg::4326", 4326, 0, "", ""},
    {"urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701", 27700, 5701, "", ""},
    {"urn:ogc:def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701", 27700, 5701, "6.126.12", ""},
    {"urn:ogc:def:crs:EPSG::4326,crs:EPSG::5783", 4326, 5783, "", ""},
    {"http://" + HOST + "/def/crs/EPSG/0/4326", 4326, 0, "0", ""},
    {"http://" + HOST + "/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701", 27700, 5701, "00", ""},
    {"http:" + HOST + "/def/crs/EPSG/0/4326", 4326, 0, "0", ""},
    {"http:////" + HOST + "/def:crs:EPSG::4326", 4326, 0, "", ""},
    {"urn:ogc:def/crs/EPSG/0/4326", 4326, 0, "0", ""},
    {"http://" + HOST + "/gml/srs/epsg.xml#4326", 4326, 0, "", "http://" + HOST + "/gml/srs/epsg.xml#4326"},
    {"epsg.xml#4326", 4326, 0, "", "epsg.xml#4326"},
    {"x/epsg.xml#4326/epsg.xml#31467", 31467, 0, "", "x/epsg.xml#4326/epsg.xml#31467"},
    {"https://example.org/epsg.xml#4326", 4326, 0, "", "https://example.org/epsg.xml#4326"},
    {"EPSG:4326", 4326, 0, "", ""},
    {"EPSG:27700*EPSG:5701", 27700, 5701, "", ""},
    {"EPSG:4326*EPSG:5783", 4326, 5783, "", ""},
    {"EPSG:4326*XXXXX5783", 4326, 5783, "", ""},
    {"EPSG:00000000004326", 4326, 0, "", ""},
    {"4326", 4326, 0, "", ""},
    {"0000000004326", 4326, 0, "", ""},
    {"27700*5701", 27700, 5701, "", ""},
    {"urn:EPSG:geographicCRS:4326", 4326, 0, "", ""},
    {"EPSG:4294967295", 4294967295, 0, "", ""},
    {"EPSG: +4326 ", 4326, 0, "", ""},
    {"EPSG:0", 0, 0, "", ""},
};

class CrsSpellingsTest : public testing::Test {
protected:
    static void expectNames(const Crs& handle, const Spelling& expected) {
        SCOPED_TRACE(expected.name.substr(0, 60));
        ASSERT_NE(handle.get(), nullptr);
        EXPECT_FALSE(handle.isHoldingConst());
        EXPECT_EQ(handle->getPrimaryCode(), expected.primary);
        EXPECT_EQ(handle->getSecCompoundCode(), expected.secondary);
        EXPECT_EQ(handle->getEpsgVersion(), expected.version);
        EXPECT_EQ(handle->getAlias(), expected.alias);
    }
    void expectAccepted(const Spelling& expected) {
        expectNames(creator.createFromName(expected.name, true, true), expected);
        expectNames(creator.createFromName(expected.name, false, false), expected);
    }

    void expectUnknown(const std::string& name) {
        SCOPED_TRACE(name.substr(0, 60));
        EXPECT_EQ(creator.createFromName(name, false, true).get(), nullptr);
        try {
            creator.createFromName(name, true, false);
            ADD_FAILURE() << "accepted";
        } catch (const CrsUnknownSyntaxOrAlias& unknown) {
            EXPECT_EQ(unknown.getDetailedMessage(),
                      "The requested CRS " + name +
                          " is not available due to an unknown syntax or a missing identifier mapping");
            EXPECT_EQ(unknown.getServiceExceptionCode(), "qvCrsUnavailable");
        }
    }

    void expectConversionError(const std::string& name, const std::string& value) {
        SCOPED_TRACE(name.substr(0, 60));
        for (const bool throwOnFailure : {false, true}) {
            try {
                creator.createFromName(name, throwOnFailure, true);
                ADD_FAILURE() << "accepted";
            } catch (const QSHelpers::ConversionError& error) {
                EXPECT_EQ(error.getDetailedMessage(), "convertTextToNumeric: Value '" + value + "'");
                EXPECT_EQ(error.getServiceExceptionCode(), "qvConversionError");
            }
        }
    }

    TestSupport::LiveCrs live;
    PooledCreator creator{&live};
};

TEST_F(CrsSpellingsTest, AcceptsTheSpellingsOfRequests) {
    for (const Spelling& spelling : ACCEPTED) expectAccepted(spelling);
}

TEST_F(CrsSpellingsTest, AnswersAConfiguredSpellingFromThePoolWhateverItsSyntax) {
    for (const std::string name :
         {"CRS:84", "my alias", "epsg:4326", "urn:ogc:def:crs:OGC:1.3:CRS84", "EPSG:4326", ""}) {
        const FakeCrs& configured = creator.givenConfigured(name, 4326);
        const Crs handle = creator.createFromName(name, true, true);
        EXPECT_EQ(handle.get(), &configured) << name;
        EXPECT_TRUE(handle.isHoldingConst());
    }
}

TEST_F(CrsSpellingsTest, ReportsEverythingElseAsUnknown) {
    const std::string refused[] = {
        "",
        "epsg:4326",
        "Epsg:4326",
        "CRS:84",
        "urn:ogc:def:crs:OGC:1.3:CRS84",
        "https://" + HOST + "/def/crs/EPSG/0/4326",
        "http://example.org/def/crs/EPSG/0/4326",
        "HTTP://" + HOST + "/def/crs/EPSG/0/4326",
        "http://" + HOST + "/def/crs/OGC/1.3/CRS84",
        "URN:OGC:def:crs:EPSG::4326",
        "URN:ogc:def:crs:EPSG::4326",
        "urn:OGC:def:crs:EPSG::4326",
        "urn:ogc",
        "urn:ogc:",
        "urn:ogc:def:crs:EPSG",
        "urn:ogc:def:crs:EPSG:",
        "urn:ogc:def:crs:EPSG::",
        "urn:ogc:def:crs:EPSG:4326",
        "http://" + HOST,
        "http://" + HOST + "/",
        "http://" + HOST + "/def/crs/EPSG/0/",
        "http://" + HOST + "/def/crs/EPSG/4326",
        "urn:ogc:def:crs,crs,crs:EPSG::1,crs:EPSG::2,crs:EPSG::3",
        "http://" + HOST + "/def/crs,crs/EPSG/0/1,crs/EPSG/0/2,crs/EPSG/0/3",
        "12345678901234",
        "00000000004326",
        "EPSG:abc",
        "EPSG:",
        "EPSG:4326*EPSG:",
        "EPSG:1*EPSG:2*EPSG:3",
        "EPSG:-4326",
        "EPSG:4326.0",
        "EPSG:4294967296",
        "EPSG:43 26",
        " EPSG:4326",
        "1*2*3",
        "*",
        "4326*",
        "epsg.xml#",
        "epsg.xml#abc",
        "EPSG.XML#4326",
        "urn:EPSG:geographicCRS:",
        "urn:EPSG:geographicCRS:abc",
        "urn:EPSG:geographicCRS:27700*5701",
        "urn:epsg:geographicCRS:4326",
    };
    for (const std::string& name : refused) expectUnknown(name);
}

TEST_F(CrsSpellingsTest, RaisesConversionErrorForAUrnOrUrlWhoseCodeIsNoNumber) {
    expectConversionError("urn:ogc:def:crs:EPSG::abc", "abc");
    expectConversionError("urn:ogc:def:crs:EPSG::4326:5783", "4326:5783");
    expectConversionError("http://" + HOST + "/def/crs/EPSG/0/4326/", "4326/");
    expectConversionError("http://" + HOST + "/def/crs/EPSG/0/4326#x", "4326#x");
    expectConversionError("urn:ogc:def:crs:EPSG::-1", "-1");
    expectConversionError("urn:ogc:def:crs:EPSG::4294967296", "4294967296");
    expectConversionError("urn:ogc:def:crs:EPSG::4326,crs:EPSG::x", "x");
    expectConversionError("urn:ogc:def:crs:EPSG::first,crs:EPSG::second", "second");
    expectConversionError("urn:ogc:def:crs:EPSG::epsg.xml#4326", "epsg.xml#4326");
}

TEST_F(CrsSpellingsTest, RaisesOutOfRangeForASecondCodeWithoutItsPrefix) {
    for (const bool throwOnFailure : {false, true}) {
        try {
            creator.createFromName("EPSG:4326*5783", throwOnFailure, true);
            ADD_FAILURE() << "accepted";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid string position");
        }
    }
}

TEST_F(CrsSpellingsTest, AcceptsLongAndOddNamesThatFollowTheirGrammar) {
    const std::string longVersion(MEGABYTE, 'v');
    const std::string longReference = std::string(MEGABYTE, '/') + "epsg.xml#4326";
    const Spelling accepted[] = {
        {"urn:ogc:def:crs:EPSG:" + longVersion + ":4326", 4326, 0, longVersion, ""},
        {"urn:ogc:def:crs:EPSG::" + ZEROS + "4326", 4326, 0, "", ""},
        {"urn:ogc:def:" + std::string(MEGABYTE, ',') + "crs:EPSG::4326", 4326, 0, "", ""},
        {"http:" + std::string(MEGABYTE, '/') + HOST + "/def/crs/EPSG/0/4326", 4326, 0, "0", ""},
        {"EPSG:" + ZEROS + "4326*EPSG:" + ZEROS + "5783", 4326, 5783, "", ""},
        {"urn:EPSG:geographicCRS:" + std::string(MEGABYTE, ' ') + "4326", 4326, 0, "", ""},
        {longReference, 4326, 0, "", longReference},
        {"urn:ogc:def:crs:EPSG:6\0x:4326"s, 4326, 0, "6\0x"s, ""},
        {"\0epsg.xml#4326"s, 4326, 0, "", "\0epsg.xml#4326"s},
        {"urn:ogc:def:crs:EPSG:\xC3\xA9:4326", 4326, 0, "\xC3\xA9", ""},
        {"\xC3\xA9\xFF/epsg.xml#4326", 4326, 0, "", "\xC3\xA9\xFF/epsg.xml#4326"},
    };
    for (const Spelling& spelling : accepted) expectAccepted(spelling);
}

TEST_F(CrsSpellingsTest, ReportsHostileNamesAsUnknown) {
    const std::string refused[] = {
        std::string(MEGABYTE, ':'),
        std::string(MEGABYTE, '/'),
        std::string(MEGABYTE, ','),
        std::string(MEGABYTE, '*'),
        std::string(MEGABYTE, '#'),
        std::string(MEGABYTE, 'a'),
        std::string(MEGABYTE, '\0'),
        ZEROS,
        "urn:ogc:" + std::string(MEGABYTE, ':'),
        "http:" + std::string(MEGABYTE, '/'),
        "http://" + HOST + std::string(MEGABYTE, '/'),
        "EPSG:" + std::string(MEGABYTE, '*'),
        "EPSG:" + std::string(MEGABYTE, '9'),
        "epsg.xml" + std::string(MEGABYTE, '#'),
        "urn:EPSG:geographicCRS:" + std::string(MEGABYTE, ':'),
        "\0"s,
        "\0EPSG:4326"s,
        "EPSG\0:4326"s,
        "EPSG:4326\0"s,
        "EPSG:\0"
        "4326"s,
        "urn\0:ogc:def:crs:EPSG::4326"s,
        "urn:ogc:def:crs:EPSG\0::4326"s,
        "epsg.xml#4326\0"s,
        "urn:EPSG:geographicCRS:4326\0"s,
        "EPSG:\xEF\xBC\x94\xEF\xBC\x93\xEF\xBC\x92\xEF\xBC\x96",
        "EPSG:4326\xC2\xA0",
        "\xEF\xBB\xBF"
        "EPSG:4326",
        "\xC3\xBCrn:ogc:def:crs:EPSG::4326",
        "\xFF\xFE",
    };
    for (const std::string& name : refused) expectUnknown(name);
}

TEST_F(CrsSpellingsTest, RaisesConversionErrorForHostileCodesOfUrns) {
    const std::string nines(MEGABYTE, '9');
    const std::string colons(MEGABYTE, ':');
    const std::string head = "urn:ogc:def:crs:EPSG::";
    for (const std::string& code : {nines, colons, "4326\0"s, "\xEF\xBC\x94"s, "\xFF"s, "\0"s})
        expectConversionError(head + code, code);
}

TEST_F(CrsSpellingsTest, ReadsBackEveryFormThatIsWritten) {
    const QuarvelSrv::SrsFormattingOptions asUrl{"", "", 2};
    const QuarvelSrv::SrsFormattingOptions asVersionedUrn{"6.12", "", 0};
    const CRSindicationFormatInfo asReference{1, "", "http://" + HOST + "/gml/srs/epsg.xml", "\1", "\1"};
    for (const auto& [primary, secondary] : {std::pair(4326U, 0U), {27700U, 5701U}, {4294967295U, 4294967295U}}) {
        const FakeCrs& written = creator.givenConfigured("written", primary, secondary);
        for (const std::string& name :
             {written.getAliasOrIdentifier(false), written.getAliasOrAsOgcURN(nullptr, false),
              written.getAliasOrAsOgcURN(&asVersionedUrn, false), written.getAliasOrAsOgcURN(&asUrl, false)}) {
            const Crs handle = creator.createFromName(name, true, true);
            EXPECT_EQ(handle->getPrimaryCode(), primary) << name;
            EXPECT_EQ(handle->getSecCompoundCode(), secondary) << name;
        }
        const Crs handle = creator.createFromName(written.getAliasOrAsFormat(asReference, false), true, true);
        EXPECT_EQ(handle->getPrimaryCode(), primary);
    }
}

TEST_F(CrsSpellingsTest, MayBeReadByManyThreadsAtOnce) {
    PooledCreator shared;
    const AbstractCrs* const pooled = &shared.givenConfigured("CRS:84", 4326);
    const auto readAll = [&] {
        for (const Spelling& spelling : ACCEPTED)
            expectNames(shared.createFromName(spelling.name, true, true), spelling);
        EXPECT_EQ(shared.createFromName("CRS:84", true, true).get(), pooled);
        EXPECT_EQ(shared.createFromName("unknown", false, true).get(), nullptr);
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(readAll);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace CoordinateTransformation
