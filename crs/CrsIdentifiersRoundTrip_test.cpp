#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CRSindicationFormatInfo.h"
#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tests/support/FakeCrs.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/NameTable.h"
#include "tests/support/WrittenForms.h"

namespace CoordinateTransformation {
namespace {

using QuarvelSrv::SrsFormattingOptions;
using TestSupport::FakeCrs;
using TestSupport::FakeTransformer;
using TestSupport::LiveCrs;
using TestSupport::NameRow;
using Writer = std::function<std::string(const AbstractCrs&)>;

constexpr int URN_STYLE = 0;
constexpr int URL_STYLE = 2;

// A creator whose pool contains each added CRS under its identifier.
class PoolingCreator : public TestSupport::FakeCreator {
public:
    using FakeCreator::FakeCreator;
    void add(const AbstractCrs* crs) { pool[crs->getAliasOrIdentifier(false)] = crs; }
    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override {
        const auto found = pool.find(name);
        if (found != pool.end()) return found->second;
        if (throwIfMissing) throw CrsNotConfigured(name);
        return nullptr;
    }

private:
    std::map<std::string, const AbstractCrs*> pool;
};

Writer asUrn(const std::string& version) {
    return [version](const AbstractCrs& crs) {
        const SrsFormattingOptions options{version, "", URN_STYLE};
        return crs.getAliasOrAsOgcURN(&options, false);
    };
}

Writer asUrl(const std::string& version) {
    return [version](const AbstractCrs& crs) {
        const SrsFormattingOptions options{version, "", URL_STYLE};
        return crs.getAliasOrAsOgcURN(&options, false);
    };
}

Writer withPrefix(const std::string& prefix) {
    return [prefix](const AbstractCrs& crs) {
        const SrsFormattingOptions options{"", prefix, URN_STYLE};
        return crs.getAliasOrAsOgcURN(&options, false);
    };
}

Writer inFormat(unsigned int format) {
    return [format](const AbstractCrs& crs) {
        const CRSindicationFormatInfo info{format, "", "http://www.opengis.net/gml/srs/epsg.xml", "\x01", "\x01"};
        return crs.getAliasOrAsFormat(info, false);
    };
}

std::string asIdentifier(const AbstractCrs& crs) { return crs.getAliasOrIdentifier(false); }

struct Codes {
    unsigned int primary;
    unsigned int secondary;
};

// The CRS that the table writes.
std::vector<Codes> codesOfTheTable(bool compound) {
    std::vector<Codes> codes;
    for (const NameRow& row : TestSupport::nameRowsWith("identifier"))
        if ((row.secondaryCode() != 0) == compound) codes.push_back({row.primaryCode(), row.secondaryCode()});
    return codes;
}

class CrsIdentifiersRoundTripTest : public testing::Test {
protected:
    FakeCrs given(const Codes& codes) const { return {creator, transformer, codes.primary, codes.secondary}; }

    void expectReadsBack(const Codes& codes, const Writer& write) const {
        const std::string written = write(given(codes));
        SCOPED_TRACE(written);
        const Crs read = creator.createFromName(written, true, true);
        EXPECT_FALSE(read.isHoldingConst());
        EXPECT_EQ(read->getPrimaryCode(), codes.primary);
        EXPECT_EQ(read->getSecCompoundCode(), codes.secondary);
        EXPECT_EQ(read->getDim(), given(codes).getDim());
        EXPECT_EQ(write(*read.get()), written);
    }

    // Also releases the object that reading a URN or URL does not release.
    LiveCrs live;
    PoolingCreator creator{&live};
    FakeTransformer transformer;
};

TEST_F(CrsIdentifiersRoundTripTest, ReadsBackTheCodesOfASimpleCrs) {
    const Writer writers[] = {
        asUrn(""),
        asUrn("6.12"),
        asUrl(""),
        asUrl("6.12"),
        inFormat(0),
        inFormat(1),
        inFormat(3),
        asIdentifier,
        withPrefix("EPSG:"),
        withPrefix("epsg.xml#"),
        withPrefix("urn:ogc:def:crs:EPSG::"),
        withPrefix("urn:EPSG:geographicCRS:"),
    };
    for (const Writer& write : writers) {
        for (const Codes& codes : codesOfTheTable(false)) expectReadsBack(codes, write);
    }
}

TEST_F(CrsIdentifiersRoundTripTest, ReadsBackTheCodesOfACompound) {
    const Writer writers[] = {asUrn(""),   asUrn("6.12"), asUrl("0"),  asUrl("6.12"),
                              inFormat(0), inFormat(3),   asIdentifier};
    for (const Writer& write : writers) {
        for (const Codes& codes : codesOfTheTable(true)) expectReadsBack(codes, write);
    }
}

TEST_F(CrsIdentifiersRoundTripTest, ReadsBackTheCodesInEveryLocale) {
    const GroupingLocale locale;
    for (const Codes& codes : codesOfTheTable(true)) {
        expectReadsBack(codes, asUrn("6.12"));
        expectReadsBack(codes, asUrl("6.12"));
        expectReadsBack(codes, asIdentifier);
    }
}

TEST_F(CrsIdentifiersRoundTripTest, ReadsACompoundReducedToTwoDimensionsAsItsPrimary) {
    FakeCrs crs = given({27700, 5701});
    crs.forceDim2D();
    for (const Writer& write : {asUrn(""), asUrl("")}) {
        const Crs read = creator.createFromName(write(crs), true, true);
        EXPECT_EQ(read->getPrimaryCode(), 27700U);
        EXPECT_EQ(read->getSecCompoundCode(), 0U);
    }
}

TEST_F(CrsIdentifiersRoundTripTest, WritesWhatItReadAsInTheTable) {
    for (const NameRow& row : TestSupport::nameRowsWith("identifier")) {
        SCOPED_TRACE(row.where());
        const Crs read = creator.createFromName(row["name"], true, true);
        EXPECT_EQ(read->getEpsgVersion(), row["version"]);
        for (const TestSupport::FormRequest& form : TestSupport::WRITTEN_FORMS)
            EXPECT_EQ(form.write(*read.get(), false), row[form.title]);
    }
}

TEST_F(CrsIdentifiersRoundTripTest, EchoesAGmlReferenceAsTheAlias) {
    const std::string name = inFormat(1)(given({4326, 0}));
    const Crs read = creator.createFromName(name, true, true);
    EXPECT_EQ(read->getAliasOrIdentifier(true), name);
    EXPECT_EQ(read->getAliasOrAsOgcURN(nullptr, true), name);
    EXPECT_EQ(read->getAliasOrIdentifier(false), "EPSG:4326");
}

TEST_F(CrsIdentifiersRoundTripTest, ReadsBackAxisOrderAndScaleFactorsFromText) {
    const struct {
        Codes codes;
        bool eastNorth;
        double primary;
        double secondary;
    } rows[] = {
        {{4326, 0}, false, 1, 1},           {{4326, 0}, true, 0.9996, 1},
        {{25832, 0}, true, 2.5e-7, 1},      {{25832, 0}, false, 1e20, 1},
        {{4979, 0}, true, -2, 1},           {{27700, 5701}, false, 1, 1},
        {{27700, 5701}, true, 0.5, 0.3048}, {{27700, 5701}, false, -1e20, 2.5e-7},
    };
    for (const auto& row : rows) {
        const FakeCrs pooled = given(row.codes);
        creator.add(&pooled);
        FakeCrs crs = given(row.codes);
        crs.setAxisOrderEastNorthOrLonLat(row.eastNorth);
        crs.setScaleFactors(row.primary, row.secondary);
        const std::string text = crs.getAsText();
        SCOPED_TRACE(text);
        const Crs read(creator.createFromSpecialTextFormat(text));
        EXPECT_TRUE(read->isEqual(&crs));
        EXPECT_DOUBLE_EQ(read->getPrimaryScaleFactor(), row.primary);
        EXPECT_DOUBLE_EQ(read->getCompoundScaleFactor(), crs.getCompoundScaleFactor());
        EXPECT_EQ(read->getAsText(), text);
    }
}

TEST_F(CrsIdentifiersRoundTripTest, ReadsBackTextInEveryLocale) {
    const GroupingLocale locale;
    const FakeCrs pooled = given({27700, 5701});
    creator.add(&pooled);
    const std::string text = "EPSG:27700*EPSG:5701;EN;1234567.25;0.3048";
    const Crs read(creator.createFromSpecialTextFormat(text));
    EXPECT_EQ(read->getAsText(), text);
}

}  // namespace
}  // namespace CoordinateTransformation
