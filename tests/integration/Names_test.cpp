#include <string>

#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"
#include "tests/support/NameTable.h"

// Requests every name of the table. Checks the CRS of each accepted name and the failure of each refused one.
namespace IntegrationTest {
namespace {

using TestSupport::NameFailure;
using TestSupport::NameRow;
using TestSupport::nameTable;

class NameTableTest : public testing::Test {
protected:
    static void expectCrs(const Crs& handle, const NameRow& row) {
        EXPECT_EQ(handle->getPrimaryCode(), row.primaryCode());
        EXPECT_EQ(handle->getSecCompoundCode(), row.secondaryCode());
        EXPECT_EQ(std::to_string(handle->getDim()), row["dimension"]);
        EXPECT_EQ(handle->isAxisOrderEastNorthOrLonLat() ? "EN" : "NE", row["axis order"]);
        EXPECT_EQ(handle->getEpsgVersion(), row["version"]);
        EXPECT_EQ(handle->getAlias(), row.answer() == "alias" || row.isReference() ? row["name"] : "");
        EXPECT_EQ(handle->getPrimaryScaleFactor(), 1.0);
        EXPECT_EQ(handle->getCompoundScaleFactor(), 1.0);
    }
    void expectSharedIfRegistered(const Crs& handle, const NameRow& row) const {
        const bool shared = row.isRegistered();
        EXPECT_EQ(handle.isHoldingConst(), shared);
        EXPECT_EQ(server.config->isCrsConfigured(row["name"]), shared);
        EXPECT_EQ(server.request(row["name"]).get() == handle.get(), shared);
    }
    void expectAnswer(const NameRow& row) const {
        const Crs handle = server.request(row["name"]);
        expectCrs(handle, row);
        expectSharedIfRegistered(handle, row);
    }
    void expectWrittenAsItsAlias(const NameRow& row) const {
        const Crs crs = server.request(row["name"]);
        EXPECT_EQ(crs->getAliasOrIdentifier(true), row["name"]);
        EXPECT_EQ(crs->getAliasOrAsOgcURN(nullptr, true), row["name"]);
    }
    // The text of what() ends at a NUL.
    static Raised failureOf(const NameRow& row) {
        const NameFailure failure = TestSupport::nameFailure(row, row.answer());
        return {row.answer(), failure.text.c_str(), failure.serviceExceptionCode};
    }
    Crs named(const NameRow& row, bool throwOnFailure, bool checkAllowed) const {
        return server.creator().createFromName(row["name"], throwOnFailure, checkAllowed);
    }
    void expectRaised(const NameRow& row, bool throwOnFailure, bool checkAllowed) const {
        EXPECT_EQ(raisedBy([&] { named(row, throwOnFailure, checkAllowed); }), failureOf(row));
    }
    void expectEmptyHandle(const NameRow& row, bool checkAllowed) const {
        const Crs handle = named(row, false, checkAllowed);
        EXPECT_EQ(handle.get(), nullptr);
        EXPECT_FALSE(handle.isHoldingConst());
    }

    const Server server;
};

TEST_F(NameTableTest, AnswersAcceptedNames) {
    for (const NameRow& row : nameTable()) {
        if (!row.isAnswered()) continue;
        SCOPED_TRACE(row.where());
        EXPECT_NO_THROW(expectAnswer(row));
    }
}

TEST_F(NameTableTest, RefusesUnknownNames) {
    for (const NameRow& row : nameTable()) {
        if (row.answer() != "CrsUnknownSyntaxOrAlias") continue;
        SCOPED_TRACE(row.where());
        for (const bool checkAllowed : {true, false}) {
            EXPECT_NO_THROW(expectRaised(row, true, checkAllowed));
            EXPECT_NO_THROW(expectEmptyHandle(row, checkAllowed));
        }
    }
}

TEST_F(NameTableTest, RefusesKnownNamesThatAreNotOffered) {
    for (const NameRow& row : nameTable()) {
        if (row.answer() != "CrsNotConfigured") continue;
        SCOPED_TRACE(row.where());
        EXPECT_NO_THROW(expectRaised(row, true, true));
        EXPECT_NO_THROW(expectEmptyHandle(row, true));
        EXPECT_NO_THROW(EXPECT_NE(named(row, true, false).get(), nullptr));
    }
}

TEST_F(NameTableTest, RaisesOtherFailuresUnconditionally) {
    for (const NameRow& row : nameTable()) {
        const bool isOptional = row.answer() == "CrsUnknownSyntaxOrAlias" || row.answer() == "CrsNotConfigured";
        if (row.isAnswered() || isOptional) continue;
        SCOPED_TRACE(row.where());
        for (const bool throwOnFailure : {true, false}) EXPECT_NO_THROW(expectRaised(row, throwOnFailure, true));
    }
}

TEST_F(NameTableTest, WritesAliases) {
    for (const NameRow& row : nameTable()) {
        if (row.answer() != "alias" && !(row.isAnswered() && row.isReference())) continue;
        SCOPED_TRACE(row.where());
        EXPECT_NO_THROW(expectWrittenAsItsAlias(row));
    }
}

// The configuration maps this name to another code than the one in the name.
TEST(MappedNameTest, TakesPrecedenceOverItsSpelling) {
    const Server server;
    const Crs crs = server.request("EPSG:900913");
    EXPECT_EQ(crs->getPrimaryCode(), 3857U);
    EXPECT_EQ(crs->getAlias(), "EPSG:900913");
    EXPECT_TRUE(crs.isHoldingConst());
}

TEST(UndefinedCodeTest, IsReportedEveryTime) {
    const Server server;
    const Raised first = raisedBy([&] { server.known("EPSG:9999"); });
    EXPECT_EQ(first.type, "Misconfigured");
    EXPECT_EQ(raisedBy([&] { server.known("EPSG:9999"); }), first);
    EXPECT_EQ(server.known("EPSG:3395")->getPrimaryCode(), 3395U);
}

}  // namespace
}  // namespace IntegrationTest
